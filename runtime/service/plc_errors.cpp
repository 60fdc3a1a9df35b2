#include "service/plc_errors.h"

#include "link/fins_layout.h"

#include <fmt/format.h>

namespace {

struct BitText {
    int         bit;
    const char *text;
};

const BitText FATAL[] = {
    {15, "memory error"},      {14, "I/O bus error"},     {13, "a number is used twice"},
    {12, "inner board error"}, {11, "too many I/O points"}, {10, "I/O setting error"},
    {9, "program error"},      {8, "cycle time too long"}, {6, "FALS: the program has stopped the PLC"},
};

const BitText NON_FATAL[] = {
    {15, "FAL: reported by the program"}, {13, "interrupt task error"}, {12, "basic I/O error"},
    {10, "PLC setup error"},              {9, "I/O verification error"}, {8, "inner board error"},
    {7, "CPU bus unit error"},            {6, "special I/O unit error"}, {5, "remote I/O error"},
    {4, "battery error"},                 {3, "CPU bus unit setting error"}, {2, "special I/O unit setting error"},
};

struct CodeRange {
    int         first;
    int         last;
    const char *text;
    int         zero; // the code that would have number 0; -1: there are no numbers
};

const CodeRange CODES[] = {
    {0x00F7, 0x00F7, "battery", -1},
    {0x0200, 0x020F, "CPU bus unit", 0x0200},
    {0x0400, 0x040F, "setting of CPU bus unit", 0x0400},
    {0x4101, 0x42FF, "FAL", 0x4100},
    {0x809F, 0x809F, "cycle time too long", -1},
    {0x80C0, 0x80CF, "I/O bus", 0x80C0},
    {0x80F0, 0x80F0, "program", -1},
    {0x80F1, 0x80F1, "memory", -1},
    {0xC101, 0xC2FF, "FALS", 0xC100},
};

template <std::size_t N>
std::vector<std::string> textsOf(const BitText (&table)[N], std::uint16_t bits)
{
    std::vector<std::string> texts;
    for (int bit = 15; bit >= 0; --bit) {
        if ((bits >> bit & 1) == 0)
            continue;
        std::string text = "bit " + std::to_string(bit);
        for (const BitText &row : table) {
            if (row.bit == bit)
                text = row.text;
        }
        texts.push_back(text);
    }
    return texts;
}

// Error log: offset, size in bytes, field.
enum {
    LOG_ROOM    = 0, // 2  records
    LOG_STORED  = 2, // 2
    LOG_COUNT   = 4, // 2  of this answer
    LOG_RECORDS = 6,

    RECORD_CODE   = 0, // 2
    RECORD_DETAIL = 2, // 2
    RECORD_MINUTE = 4, // 1  BCD, as the others
    RECORD_SECOND = 5, // 1
    RECORD_DAY    = 6, // 1
    RECORD_HOUR   = 7, // 1
    RECORD_YEAR   = 8, // 1
    RECORD_MONTH  = 9, // 1
    RECORD_SIZE   = 10
};

std::optional<PlcTime> timeOf(const std::uint8_t *record)
{
    return decodeClock({record[RECORD_YEAR], record[RECORD_MONTH], record[RECORD_DAY], record[RECORD_HOUR],
                        record[RECORD_MINUTE], record[RECORD_SECOND], 0});
}

} // namespace

std::vector<std::string> fatalTexts(std::uint16_t bits)
{
    return textsOf(FATAL, bits);
}

std::vector<std::string> nonFatalTexts(std::uint16_t bits)
{
    return textsOf(NON_FATAL, bits);
}

std::string errorCodeText(std::uint16_t code)
{
    std::string number = fmt::format("{:04X}", code);
    for (const CodeRange &range : CODES) {
        if (code >= range.first && code <= range.last)
            return number + " (" + range.text + (range.zero < 0 ? "" : " " + std::to_string(code - range.zero)) + ")";
    }
    return number;
}

std::optional<ErrorLog> decodeErrorLog(const std::vector<std::uint8_t> &data)
{
    if (data.size() < LOG_RECORDS)
        return std::nullopt;
    ErrorLog log = {get16(&data[LOG_ROOM]), get16(&data[LOG_STORED]), {}};
    const std::size_t count = get16(&data[LOG_COUNT]);
    if (data.size() != LOG_RECORDS + RECORD_SIZE * count)
        return std::nullopt;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t *record = &data[LOG_RECORDS + RECORD_SIZE * i];
        log.records.push_back({get16(record + RECORD_CODE), get16(record + RECORD_DETAIL), timeOf(record)});
    }
    return log;
}

std::string loggedText(const LoggedError &record)
{
    const std::string code = errorCodeText(record.code);
    return (record.time ? plcTimeText(*record.time) : "without a time     ") + "  " + code.substr(0, 4)
           + fmt::format(" {:04X}", record.detail) + code.substr(4);
}
