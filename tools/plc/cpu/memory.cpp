#include "cpu/memory.h"

#include <charconv>
#include <system_error>

namespace plc {

namespace {

const unsigned BITS_PER_WORD = 16;

struct AreaRow {
    const char *name;
    unsigned    size;     // words
    unsigned    wordCode; // memory-area code of words or present values
    unsigned    bitCode;  // memory-area code of bits or completion flags
    unsigned    base;     // address of the first item in commands
    bool        hasFlags; // bitCode addresses completion flags
    unsigned    readOnly; // words from the first one on that commands may not write: the CPU unit's own
};

// Timers and counters share their codes; a counter's address has 8000 hex added.
const AreaRow AREAS[AREA_COUNT] = {
    {"CIO",  6144, 0xB0, 0x30, 0x0000, false, 0},
    {"WR",    512, 0xB1, 0x31, 0x0000, false, 0},
    {"HR",   1536, 0xB2, 0x32, 0x0000, false, 0},
    {"AR",    960, 0xB3, 0x33, 0x0000, false, 448},
    {"DM",  32768, 0x82, 0x02, 0x0000, false, 0},
    {"T",    4096, 0x89, 0x09, 0x0000, true, 0},
    {"C",    4096, 0x89, 0x09, 0x8000, true, 0},
};

// Of the rows with this code, the last one that begins at or below the address. -1 for an unknown code.
int findArea(unsigned areaCode, unsigned address)
{
    int found = -1;
    for (int i = 0; i < AREA_COUNT; ++i) {
        const bool hasCode = AREAS[i].wordCode == areaCode || AREAS[i].bitCode == areaCode;
        if (hasCode && AREAS[i].base <= address)
            found = i;
    }
    return found;
}

Access accessOf(const AreaRow &area, unsigned areaCode)
{
    if (area.wordCode == areaCode)
        return Access::WORD;
    return area.hasFlags ? Access::FLAG : Access::BIT;
}

} // namespace

bool findAccess(unsigned areaCode, Access *access)
{
    const int area = findArea(areaCode, 0);
    if (area < 0)
        return false;
    *access = accessOf(AREAS[area], areaCode);
    return true;
}

AreaSizes fullSizes()
{
    AreaSizes sizes = {};
    for (std::size_t i = 0; i < AREA_COUNT; ++i)
        sizes[i] = AREAS[i].size;
    return sizes;
}

Memory::Memory(const AreaSizes &sizes)
{
    for (std::size_t i = 0; i < AREA_COUNT; ++i) {
        words[i].assign(sizes[i], 0);
        flags[i].assign(AREAS[i].hasFlags ? sizes[i] : 0, 0);
    }
}

unsigned Memory::itemsOf(const Span &span) const
{
    return span.access == Access::BIT ? size(span.area) * BITS_PER_WORD : size(span.area);
}

EndCode Memory::locate(unsigned areaCode, unsigned address, unsigned bit, unsigned count, Span *span) const
{
    const int area = findArea(areaCode, address);
    if (area < 0)
        return END_NO_AREA;
    Span found;
    found.area = area;
    found.access = accessOf(AREAS[area], areaCode);
    found.count = count;
    const unsigned number = address - AREAS[area].base;
    const unsigned lastBit = found.access == Access::BIT ? BITS_PER_WORD - 1 : 0;
    if (number >= size(area) || bit > lastBit)
        return END_START_OUT_OF_RANGE;
    found.first = found.access == Access::BIT ? number * BITS_PER_WORD + bit : number;
    if (count > itemsOf(found) - found.first)
        return END_RANGE_EXCEEDED;
    *span = found;
    return END_NORMAL;
}

bool Memory::isReadOnly(const Span &span)
{
    const unsigned itemsPerWord = span.access == Access::BIT ? BITS_PER_WORD : 1;
    return span.count > 0 && span.first < AREAS[span.area].readOnly * itemsPerWord;
}

unsigned Memory::get(const Span &span, unsigned i) const
{
    const unsigned item = span.first + i;
    if (span.access == Access::FLAG)
        return flags[span.area].at(item);
    if (span.access == Access::WORD)
        return words[span.area].at(item);
    return words[span.area].at(item / BITS_PER_WORD) >> item % BITS_PER_WORD & 1u;
}

void Memory::set(const Span &span, unsigned i, unsigned value)
{
    const unsigned item = span.first + i;
    const AreaIndex area = static_cast<AreaIndex>(span.area);
    if (span.access == Access::FLAG)
        setFlag(area, item, (value & 1u) != 0);
    else if (span.access == Access::WORD)
        setWord(area, item, value);
    else
        setBit(area, item / BITS_PER_WORD, item % BITS_PER_WORD, (value & 1u) != 0);
}

void Memory::setWord(AreaIndex area, unsigned number, unsigned value)
{
    words[area].at(number) = static_cast<std::uint16_t>(value & 0xFFFFu);
}

bool Memory::bit(AreaIndex area, unsigned number, unsigned bitNumber) const
{
    return (words[area].at(number) >> bitNumber & 1u) != 0;
}

void Memory::setBit(AreaIndex area, unsigned number, unsigned bitNumber, bool on)
{
    const unsigned mask = 1u << bitNumber;
    const unsigned others = words[area].at(number) & ~mask;
    setWord(area, number, on ? others | mask : others);
}

// ---- Places as people write them ---------------------------------------------------------------------------------

bool parseNumber(const std::string &text, unsigned maximum, unsigned *value)
{
    unsigned number = 0;
    const char *const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (text.size() > 9 || read.ec != std::errc() || read.ptr != end || number > maximum)
        return false;
    *value = number;
    return true;
}

namespace {

// Bit numbers have no leading zero, as on the panel: 12.5, not 12.05.
bool parseBitAddress(const std::string &text, unsigned lastWord, unsigned *item)
{
    const std::string::size_type point = text.find('.');
    unsigned word = 0;
    unsigned bit = 0;
    if (point == std::string::npos || !parseNumber(text.substr(0, point), lastWord, &word))
        return false;
    const std::string bitText = text.substr(point + 1);
    if ((bitText.size() > 1 && bitText[0] == '0') || !parseNumber(bitText, BITS_PER_WORD - 1, &bit))
        return false;
    *item = word * BITS_PER_WORD + bit;
    return true;
}

bool findType(const std::string &name, Span *span)
{
    for (int i = 0; i < AREA_COUNT; ++i) {
        const std::string areaName = AREAS[i].name;
        const bool isBit = name == areaName + "_bit" && !AREAS[i].hasFlags;
        if (!isBit && name != areaName)
            continue;
        span->area = i;
        span->access = isBit ? Access::BIT : Access::WORD;
        return true;
    }
    return false;
}

} // namespace

std::string parsePlace(const std::string &text, const Memory &memory, Span *span)
{
    const std::string::size_type first = text.find(':');
    const std::string::size_type second = first == std::string::npos ? first : text.find(':', first + 1);
    Span found;
    if (first == std::string::npos || !findType(text.substr(0, first), &found))
        return "'" + text +
               "' is no TYPE:ADDRESS; types are CIO WR HR AR DM T C and CIO_bit WR_bit HR_bit AR_bit DM_bit";
    const std::string address = text.substr(first + 1, second == std::string::npos ? second : second - first - 1);
    const unsigned lastWord = memory.size(found.area) - 1;
    if (found.access == Access::BIT ? !parseBitAddress(address, lastWord, &found.first)
                                    : !parseNumber(address, lastWord, &found.first))
        return "'" + address + "' is no address of the area; use 0" + (found.access == Access::BIT ? ".0" : "") +
               " to " + std::to_string(lastWord) + (found.access == Access::BIT ? ".15" : "");
    found.count = 1;
    const unsigned room = memory.itemsOf(found) - found.first;
    if (second != std::string::npos &&
        (!parseNumber(text.substr(second + 1), room, &found.count) || found.count == 0))
        return "'" + text.substr(second + 1) + "' is no count from 1 to " + std::to_string(room);
    *span = found;
    return std::string();
}

std::string placeText(const Span &span)
{
    const std::string name = AREAS[span.area].name;
    if (span.access != Access::BIT)
        return name + ":" + std::to_string(span.first);
    return name + "_bit:" + std::to_string(span.first / BITS_PER_WORD) + "." +
           std::to_string(span.first % BITS_PER_WORD);
}

} // namespace plc
