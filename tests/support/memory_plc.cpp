#include "support/memory_plc.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

enum : unsigned { COUNTERS = 0x8089, END_NORMAL = 0, END_NO_AREA = 0x1101, END_RANGE = 0x1104, END_RUN_MODE = 0x2206 };

MemoryPlc::MemoryPlc()
{
    areas_[0xB0].resize(6144);
    areas_[0xB1].resize(512);
    areas_[0xB2].resize(1536);
    areas_[0xB3].resize(960);
    areas_[0x82].resize(32768);
    areas_[0x89].resize(4096);
    areas_[COUNTERS].resize(4096);
}

std::vector<int> &MemoryPlc::area(const std::string &type)
{
    static const std::map<std::string, unsigned> CODES = {{"CIO", 0xB0}, {"WR", 0xB1}, {"HR", 0xB2}, {"AR", 0xB3},
                                                          {"DM", 0x82},  {"T", 0x89},  {"C", COUNTERS}};
    return areas_.at(CODES.at(type));
}

std::vector<int> *MemoryPlc::areaOf(unsigned code, int address, int &index)
{
    const bool isCounter = code == 0x89 && address >= 0x8000;
    const auto found = areas_.find(isCounter ? unsigned(COUNTERS) : code);
    index = isCounter ? address - 0x8000 : address;
    return found == areas_.end() ? nullptr : &found->second;
}

int &MemoryPlc::word(unsigned areaCode, int address)
{
    int index = 0;
    std::vector<int> *const words = areaOf(areaCode, address, index);
    if (words == nullptr)
        throw std::runtime_error("no area " + std::to_string(areaCode));
    return words->at(static_cast<std::size_t>(index));
}

static int number16(const Bytes &bytes, std::size_t at) { return bytes.at(at) * 256 + bytes.at(at + 1); }

static void add16(Bytes &bytes, int value)
{
    bytes.push_back(static_cast<std::uint8_t>(value / 256));
    bytes.push_back(static_cast<std::uint8_t>(value % 256));
}

// The headers, the command code and the end code; no length yet.
static Bytes replyHead(const Bytes &request, unsigned endCode)
{
    Bytes reply = {'F', 'I', 'N', 'S', 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0xC0, 0, 2, 0, request.at(23), 0, 0,
                   request.at(20), 0, request.at(25), request.at(26), request.at(27)};
    add16(reply, static_cast<int>(endCode));
    return reply;
}

Bytes MemoryPlc::answer(const Bytes &request, unsigned endCode)
{
    Bytes reply;
    if (request.size() < 20 || !std::equal(request.begin(), request.begin() + 4, "FINS"))
        throw std::runtime_error("no FINS/TCP request of " + std::to_string(request.size()) + " bytes");
    if (request.size() == 20 && request[11] == 0) {
        hasNode_ = true;
        return {'F', 'I', 'N', 'S', 0, 0, 0, 16, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0x0A, 0, 0, 0, 0x32};
    }
    if (!hasNode_ || request.at(20) != 0x32 || request.at(23) != 0x0A)
        throw std::runtime_error("a command came before the node-address exchange of its connection");
    const auto command = static_cast<unsigned>(number16(request, 26));
    const auto told = told_.find(command);
    if (endCode != END_NORMAL)
        reply = replyHead(request, endCode);
    else if (command == 0x0101)
        reply = read(request);
    else if (command == 0x0102)
        reply = replyHead(request, write(request));
    else if (command == 0x0401)
        reply = replyHead(request, END_NORMAL);
    else if (told != told_.end())
        (reply = replyHead(request, END_NORMAL)).insert(reply.end(), told->second.begin(), told->second.end());
    else
        throw std::runtime_error("unknown command " + std::to_string(command));
    if (command == 0x0401)
        refusesWrites_ = false;
    const std::size_t length = reply.size() - 8;
    reply[6] = static_cast<std::uint8_t>(length / 256);
    reply[7] = static_cast<std::uint8_t>(length % 256);
    return reply;
}

Bytes MemoryPlc::read(const Bytes &request)
{
    int index = 0;
    const int count = number16(request, 32);
    const std::vector<int> *words = areaOf(request.at(28), number16(request, 29), index);
    if (words == nullptr)
        return replyHead(request, END_NO_AREA);
    if (index + count > static_cast<int>(words->size()))
        return replyHead(request, END_RANGE);
    Bytes reply = replyHead(request, END_NORMAL);
    for (int i = 0; i < count; ++i)
        add16(reply, (*words)[static_cast<std::size_t>(index + i)]);
    return reply;
}

unsigned MemoryPlc::write(const Bytes &request)
{
    if (refusesWrites_)
        return END_RUN_MODE;
    if (request.at(28) < 0x80)
        return writeBits(request);
    int index = 0;
    const int count = number16(request, 32);
    std::vector<int> *words = areaOf(request[28], number16(request, 29), index);
    if (words == nullptr)
        return END_NO_AREA;
    if (index + count > static_cast<int>(words->size()))
        return END_RANGE;
    for (int i = 0; i < count; ++i)
        (*words)[static_cast<std::size_t>(index + i)] = number16(request, 34 + 2 * static_cast<std::size_t>(i));
    return END_NORMAL;
}

unsigned MemoryPlc::writeBits(const Bytes &request)
{
    int index = 0;
    const int count = number16(request, 32);
    std::vector<int> *words = areaOf(request.at(28) | 0x80u, number16(request, 29), index);
    if (words == nullptr)
        return END_NO_AREA;
    if (index + (request.at(31) + count + 15) / 16 > static_cast<int>(words->size()))
        return END_RANGE;
    for (int i = 0; i < count; ++i) {
        const int bit = request[31] + i;
        int &word = (*words)[static_cast<std::size_t>(index + bit / 16)];
        const int mask = 1 << (bit % 16);
        word = request.at(34 + static_cast<std::size_t>(i)) != 0 ? word | mask : word & ~mask;
    }
    return END_NORMAL;
}
