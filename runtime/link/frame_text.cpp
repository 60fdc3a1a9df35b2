#include "link/frame_text.h"

#include "link/fins_codes.h"
#include "link/fins_layout.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

enum { MEMORY_READ = 0x0101, MEMORY_WRITE = 0x0102, RUN = 0x0401 };

const std::size_t BYTES_PER_LINE = 16;

struct Area {
    const char *name;
    unsigned    code;
    bool        isBit;
};

const Area AREAS[] = {
    {"CIO_bit", 0x30, true}, {"WR_bit", 0x31, true}, {"HR_bit", 0x32, true}, {"AR_bit", 0x33, true},
    {"DM_bit", 0x02, true},  {"CIO", 0xB0, false},   {"WR", 0xB1, false},    {"HR", 0xB2, false},
    {"AR", 0xB3, false},     {"T", 0x89, false},     {"DM", 0x82, false},
};

const unsigned COUNTER_AREA   = 0x89;
const unsigned COUNTER_OFFSET = 0x8000;

// A frame that may end anywhere: bytes past its end read as 0.
class Frame {
public:
    Frame(const std::uint8_t *bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::size_t size() const { return size_; }
    bool has(std::size_t offset, std::size_t size) const { return offset + size <= size_; }
    const std::uint8_t *at(std::size_t offset) const { return bytes_ + offset; }

    unsigned get(std::size_t offset, std::size_t size) const
    {
        unsigned value = 0;
        for (std::size_t i = offset; i < offset + size; ++i)
            value = value << 8 | (i < size_ ? bytes_[i] : 0U);
        return value;
    }

    bool isFins() const { return has(FINS_COMMAND, 2) && get(TCP_COMMAND, 4) == 2; }
    bool isReply() const { return (get(FINS_ICF, 1) & ICF_RESPONSE) != 0; }
    unsigned command() const { return get(FINS_COMMAND, 2); }

private:
    const std::uint8_t *bytes_;
    std::size_t         size_;
};

const Area *findArea(unsigned code)
{
    const auto found = std::find_if(std::begin(AREAS), std::end(AREAS), [&](const Area &a) { return a.code == code; });
    return found == std::end(AREAS) ? nullptr : found;
}

bool isCounter(const Frame &frame)
{
    return frame.get(MEM_AREA, 1) == COUNTER_AREA && frame.get(MEM_WORD, 2) >= COUNTER_OFFSET;
}

std::string areaText(const Frame &frame)
{
    const Area *area = findArea(frame.get(MEM_AREA, 1));
    if (!area)
        return "area " + fmt::format("{:02X}", frame.get(MEM_AREA, 1));
    return isCounter(frame) ? "C" : area->name;
}

bool isBitRequest(const Frame &frame)
{
    const Area *area = findArea(frame.get(MEM_AREA, 1));
    return area && area->isBit;
}

std::string addressText(const Frame &frame)
{
    const unsigned word = frame.get(MEM_WORD, 2) - (isCounter(frame) ? COUNTER_OFFSET : 0);
    const std::string bit = isBitRequest(frame) ? "." + std::to_string(frame.get(MEM_BIT, 1)) : "";
    return areaText(frame) + ":" + std::to_string(word) + bit;
}

std::string commandName(unsigned command)
{
    switch (command) {
    case MEMORY_READ:  return "read";
    case MEMORY_WRITE: return "write";
    case RUN:          return "run";
    case 0x0402:       return "stop";
    case 0x0501:       return "controller data";
    case 0x0601:       return "controller status";
    case 0x0620:       return "cycle time";
    case 0x0701:       return "clock";
    case 0x0702:       return "set clock";
    case 0x2101:       return "clear errors";
    case 0x2102:       return "error log";
    default:           return "command " + fmt::format("{:04X}", command);
    }
}

std::string endText(const Frame &frame)
{
    const auto code = static_cast<std::uint16_t>(frame.get(FINS_END, 2));
    const std::string kinds = cpuErrorText(code);
    return (isNormalEnd(code) ? "done" : "end code " + endCodeText(code)) + (kinds.empty() ? "" : ", with " + kinds);
}

std::string modeText(unsigned mode)
{
    return mode == 2 ? "MONITOR" : mode == 4 ? "RUN" : fmt::format("{:02X}", mode);
}

// The data from `offset` on, as they are on the wire: words, or bytes of one bit each.
std::string dataText(const Frame &frame, std::size_t offset, std::size_t unit)
{
    std::string text;
    for (std::size_t i = offset; frame.has(i, unit); i += unit)
        text += " " + fmt::format(unit == 2 ? "{:04X}" : "{}", frame.get(i, unit));
    return text.empty() ? "" : ":" + text;
}

std::string requestText(const Frame &frame)
{
    std::string name = commandName(frame.command());
    if (frame.command() == RUN)
        return "run in " + modeText(frame.get(RUN_MODE, 1)) + " mode";
    if ((frame.command() != MEMORY_READ && frame.command() != MEMORY_WRITE) || !frame.has(MEM_COUNT, 2))
        return name;
    const std::string target = name + " " + addressText(frame) + " count " + std::to_string(frame.get(MEM_COUNT, 2));
    return target + (frame.command() == MEMORY_WRITE ? dataText(frame, MEM_DATA, isBitRequest(frame) ? 1 : 2) : "");
}

std::string replyText(const Frame &frame)
{
    if (!frame.has(FINS_END, 2))
        return commandName(frame.command()) + " reply without an end code";
    const std::string data = frame.command() == MEMORY_READ ? dataText(frame, REPLY_DATA, 2) : "";
    return commandName(frame.command()) + " reply, " + endText(frame) + data;
}

std::string tcpCommandText(const Frame &frame)
{
    switch (frame.get(TCP_COMMAND, 4)) {
    case 0:  return "node address request";
    case 1:  return "node address reply";
    case 2:  return "FINS frame";
    case 3:  return "error notice";
    default: return "unknown command " + std::to_string(frame.get(TCP_COMMAND, 4));
    }
}

std::string nodesText(const Frame &frame)
{
    std::string text = ", client node " + std::to_string(frame.get(CLIENT_NODE, 4));
    if (frame.has(SERVER_NODE, 4))
        text += ", PLC node " + std::to_string(frame.get(SERVER_NODE, 4));
    return text;
}

// The table of fields, line by line.
class FieldTable {
public:
    explicit FieldTable(const Frame &frame) : frame_(frame) {}

    void add(std::size_t offset, std::size_t size, const char *name, const std::string &meaning)
    {
        if (offset >= frame_.size())
            return;
        const bool whole = frame_.has(offset, size);
        const std::size_t shown = whole ? size : frame_.size() - offset;
        lines_ += fmt::format("{:6}  {:<12} {:<15} {}\n", offset, hexText(frame_.at(offset), shown), name,
                              whole ? meaning : "(the frame ends here)");
    }

    void addNumber(std::size_t offset, std::size_t size, const char *name)
    {
        add(offset, size, name, std::to_string(frame_.get(offset, size)));
    }

    void addData(std::size_t offset)
    {
        for (std::size_t at = offset; at < frame_.size(); at += BYTES_PER_LINE) {
            const std::size_t size = std::min(BYTES_PER_LINE, frame_.size() - at);
            lines_ += fmt::format("{:6}  {}\n", at, hexText(frame_.at(at), size));
        }
    }

    const std::string &lines() const { return lines_; }

private:
    const Frame &frame_;
    std::string  lines_;
};

std::string errorText(const Frame &frame)
{
    const unsigned error = frame.get(TCP_ERROR, 4);
    return error == 0 ? "none" : tcpErrorText(error);
}

std::string icfText(const Frame &frame)
{
    const std::string kind = frame.isReply() ? "response" : "command";
    return kind + ((frame.get(FINS_ICF, 1) & 1) != 0 ? ", no response required" : "");
}

void addFinsHeader(FieldTable &table, const Frame &frame)
{
    table.add(FINS_ICF, 1, "ICF", icfText(frame));
    table.addNumber(FINS_RSV, 1, "RSV");
    table.addNumber(FINS_GCT, 1, "GCT");
    table.addNumber(FINS_DNA, 1, "DNA, to net");
    table.addNumber(FINS_DA1, 1, "DA1, to node");
    table.addNumber(FINS_DA2, 1, "DA2, to unit");
    table.addNumber(FINS_SNA, 1, "SNA, from net");
    table.addNumber(FINS_SA1, 1, "SA1, from node");
    table.addNumber(FINS_SA2, 1, "SA2, from unit");
    table.addNumber(FINS_SID, 1, "SID, service");
    table.add(FINS_COMMAND, 2, "command", commandName(frame.command()));
}

void addMemoryRequest(FieldTable &table, const Frame &frame)
{
    table.add(MEM_AREA, 1, "area", areaText(frame));
    table.add(MEM_WORD, 2, "word", addressText(frame));
    table.addNumber(MEM_BIT, 1, "bit");
    table.addNumber(MEM_COUNT, 2, "count");
    table.addData(MEM_DATA);
}

void addFinsBody(FieldTable &table, const Frame &frame)
{
    if (frame.isReply()) {
        table.add(FINS_END, 2, "end code", endText(frame));
        table.addData(REPLY_DATA);
    } else if (frame.command() == MEMORY_READ || frame.command() == MEMORY_WRITE) {
        addMemoryRequest(table, frame);
    } else if (frame.command() == RUN) {
        table.add(RUN_PROGRAM, 2, "program", fmt::format("{:04X}", frame.get(RUN_PROGRAM, 2)));
        table.add(RUN_MODE, 1, "mode", modeText(frame.get(RUN_MODE, 1)));
    } else {
        table.addData(FINS_END);
    }
}

} // namespace

std::string hexText(const std::uint8_t *bytes, std::size_t size)
{
    return fmt::format("{:02X}", fmt::join(bytes, bytes + size, " "));
}

std::string frameLine(const std::uint8_t *bytes, std::size_t size)
{
    const Frame frame(bytes, size);
    if (!frame.has(TCP_ERROR, 4) || frame.get(TCP_MAGIC, 4) != 0x46494E53)
        return "no FINS/TCP frame: " + hexText(bytes, size);
    const std::string error = frame.get(TCP_ERROR, 4) == 0 ? "" : ", FINS/TCP error " + errorText(frame);
    const std::string sid = ", sid " + std::to_string(frame.get(FINS_SID, 1));
    if (frame.isFins())
        return (frame.isReply() ? replyText(frame) : requestText(frame)) + sid + error;
    const bool hasNodes = frame.get(TCP_COMMAND, 4) <= 1 && frame.has(CLIENT_NODE, 4);
    return tcpCommandText(frame) + (hasNodes ? nodesText(frame) : "") + error;
}

std::string frameFields(const std::uint8_t *bytes, std::size_t size)
{
    const Frame frame(bytes, size);
    FieldTable table(frame);
    table.add(TCP_MAGIC, 4, "magic", frame.get(TCP_MAGIC, 4) == 0x46494E53 ? "FINS" : "not FINS");
    table.add(TCP_LENGTH, 4, "length", std::to_string(frame.get(TCP_LENGTH, 4)) + " bytes follow");
    table.add(TCP_COMMAND, 4, "TCP command", tcpCommandText(frame));
    table.add(TCP_ERROR, 4, "TCP error", errorText(frame));
    if (frame.isFins()) {
        addFinsHeader(table, frame);
        addFinsBody(table, frame);
    } else if (frame.get(TCP_COMMAND, 4) <= 1) {
        table.addNumber(CLIENT_NODE, 4, "client node");
        table.addNumber(SERVER_NODE, 4, "PLC node");
    } else {
        table.addData(TCP_SIZE);
    }
    return table.lines();
}
