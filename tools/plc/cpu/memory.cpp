#include "cpu/memory.h"

#include "cpu/clock_pulses.h"

#include <charconv>
#include <stdexcept>
#include <system_error>

namespace plc {

namespace {

const unsigned BITS_PER_WORD = 16;

const std::size_t CELLS_OF_WIDE = 2; // of an item of four bytes, the high word first

} // namespace

AreaSizes fullSizes()
{
    AreaSizes sizes = {{}, EM_BANKS_MAX};
    for (std::size_t i = 0; i < AREA_PROFILED; ++i)
        sizes.words[i] = AREAS[i].size;
    return sizes;
}

Memory::Memory(const AreaSizes &sizes) : banks(sizes.emBanks), cells(layOut(sizes)) {}

// Gives every area its place. Returns the number of cells.
std::size_t Memory::layOut(const AreaSizes &sizes)
{
    std::size_t end = 0;
    for (unsigned i = 0; i < AREA_COUNT; ++i) {
        Place &place = places[i];
        const bool isAbsentBank = i >= AREA_E0 + banks && i < AREA_E0 + EM_BANKS_MAX;
        if (i < AREA_PROFILED)
            place.size = sizes.words[i];
        else
            place.size = isAbsentBank ? 0 : AREAS[i].size;
        place.words = end;
        place.flags = place.words + place.size * (AREAS[i].itemSize / 2);
        place.forced = place.flags + (AREAS[i].hasFlags ? place.size : 0);
        end = place.forced + (AREAS[i].isForcible() ? place.size : 0);
    }
    return end;
}

unsigned Memory::itemsOf(const Span &span) const
{
    return span.access == Access::BIT ? size(span.area) * BITS_PER_WORD : size(span.area);
}

int Memory::presentArea(int area) const
{
    if (area != AREA_E)
        return size(area) != 0 ? area : -1;
    const unsigned bank = word(AREA_BANK, 0);
    return bank < banks ? AREA_E0 + static_cast<int>(bank) : -1;
}

EndCode Memory::locate(unsigned areaCode, unsigned address, unsigned bit, unsigned count, Span *span) const
{
    Span found;
    if (!findArea(areaCode, address, &found))
        return END_NO_AREA;
    const unsigned number = address - AREAS[found.area].base; // very large if the address is below
    found.area = presentArea(found.area);
    if (found.area < 0)
        return END_NO_AREA;
    found.count = count;
    const unsigned lastBit = found.access == Access::BIT ? BITS_PER_WORD - 1 : 0;
    if (number >= size(found.area) || bit > lastBit)
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
    return span.count > 0 && (span.withState || span.first < AREAS[span.area].readOnly * itemsPerWord);
}

inline const Memory::Place &Memory::placeOf(int area, unsigned number) const
{
    const Place &place = places.at(static_cast<std::size_t>(area));
    if (number >= place.size)
        throw std::out_of_range("item of a memory area");
    return place;
}

unsigned Memory::get(const Span &span, unsigned i) const
{
    const unsigned item = span.first + i;
    const AreaIndex area = static_cast<AreaIndex>(span.area);
    if (span.access == Access::WORD)
        return itemSize(span) == 2 ? word(area, item) : wideWord(span, item);
    const bool isFlag = span.access == Access::FLAG;
    const unsigned number = isFlag ? item : item / BITS_PER_WORD;
    const unsigned shift = isFlag ? 0 : item % BITS_PER_WORD;
    const unsigned cell = isFlag ? unsigned(cells[placeOf(area, number).flags + number]) : word(area, number);
    const unsigned state = span.withState ? forcedBits(area, number) >> shift & 1u : 0u;
    return (cell >> shift & 1u) | state << 1;
}

unsigned Memory::wideWord(const Span &span, unsigned item) const
{
    if (span.withState)
        return word(static_cast<AreaIndex>(span.area), item) << 16 | forcedBits(span.area, item);
    const std::size_t first = placeOf(span.area, item).words + item * CELLS_OF_WIDE;
    return unsigned(cells[first]) << 16 | cells[first + 1];
}

void Memory::set(const Span &span, unsigned i, unsigned value)
{
    const unsigned item = span.first + i;
    const AreaIndex area = static_cast<AreaIndex>(span.area);
    if (span.access == Access::FLAG) {
        setFlag(area, item, (value & 1u) != 0);
    } else if (span.access == Access::BIT) {
        setBit(area, item / BITS_PER_WORD, item % BITS_PER_WORD, (value & 1u) != 0);
    } else if (itemSize(span) == 2) {
        setWord(area, item, value);
    } else {
        const std::size_t first = placeOf(area, item).words + item * CELLS_OF_WIDE;
        cells[first] = static_cast<std::uint16_t>(value >> 16);
        cells[first + 1] = static_cast<std::uint16_t>(value & 0xFFFFu);
    }
}

unsigned Memory::forcedAgainst(const Span &span, unsigned i, unsigned value) const
{
    const bool isWord = span.access == Access::WORD;
    if (isWord && AREAS[span.area].hasFlags)
        return 0; // there the flag is forced
    const unsigned item = span.first + i;
    const unsigned forced = span.access == Access::BIT
                                ? forcedBits(span.area, item / BITS_PER_WORD) >> item % BITS_PER_WORD & 1u
                                : forcedBits(span.area, item);
    return (get(span, i) ^ value) & forced;
}

void Memory::force(const Span &span, unsigned i, bool on)
{
    setForced(span, i, false);
    set(span, i, on ? 1 : 0);
    setForced(span, i, true);
}

void Memory::release(const Span &span, unsigned i) { setForced(span, i, false); }

// Only what is forced is written, so that unused memory stays so.
void Memory::releaseAll()
{
    for (int area = 0; area < AREA_COUNT; ++area)
        for (unsigned number = 0; AREAS[area].isForcible() && number < size(area); ++number)
            if (forcedBits(area, number) != 0)
                cells[placeOf(area, number).forced + number] = 0;
}

void Memory::setForced(const Span &span, unsigned i, bool isForced)
{
    const unsigned item = span.first + i;
    const unsigned number = span.access == Access::FLAG ? item : item / BITS_PER_WORD;
    const unsigned mask = span.access == Access::FLAG ? 1u : 1u << item % BITS_PER_WORD;
    const unsigned others = forcedBits(span.area, number) & ~mask;
    cells[placeOf(span.area, number).forced + number] = static_cast<std::uint16_t>(isForced ? others | mask : others);
}

unsigned Memory::forcedBits(int area, unsigned number) const
{
    return AREAS[area].isForcible() ? unsigned(cells[placeOf(area, number).forced + number]) : 0u;
}

// No program runs that could set a condition flag.
unsigned Memory::word(AreaIndex area, unsigned number) const
{
    if (area == AREA_CF)
        return number == 0 ? 0 : clockPulses(now());
    return cells[placeOf(area, number).words + number];
}

void Memory::setWord(AreaIndex area, unsigned number, unsigned value)
{
    const unsigned forced = AREAS[area].hasFlags ? 0 : forcedBits(area, number); // there the flag is forced
    std::uint16_t &cell = cells[placeOf(area, number).words + number];
    cell = static_cast<std::uint16_t>((cell & forced) | (value & 0xFFFFu & ~forced));
}

bool Memory::bit(AreaIndex area, unsigned number, unsigned bitNumber) const
{
    return (word(area, number) >> bitNumber & 1u) != 0;
}

void Memory::setBit(AreaIndex area, unsigned number, unsigned bitNumber, bool on)
{
    const unsigned mask = 1u << bitNumber;
    const unsigned others = word(area, number) & ~mask;
    setWord(area, number, on ? others | mask : others);
}

void Memory::setFlag(AreaIndex area, unsigned number, bool on)
{
    if (forcedBits(area, number) == 0)
        cells[placeOf(area, number).flags + number] = on ? 1 : 0;
}

// ---- Places as people write them ---------------------------------------------------------------------------------

bool parseNumber(const std::string &text, unsigned maximum, unsigned *value)
{
    unsigned number = 0;
    const char *const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (text.size() > 10 || read.ec != std::errc() || read.ptr != end || number > maximum)
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
        const bool isBit = name == areaName + "_bit" && AREAS[i].bitCode != NO_CODE && !AREAS[i].hasFlags;
        if (!isBit && name != areaName)
            continue;
        span->area = i;
        span->access = isBit ? Access::BIT : AREAS[i].itemSize == 0 ? Access::FLAG : Access::WORD;
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
               "' is no TYPE:ADDRESS; types are CIO WR HR AR DM T C E0 to EF E10 to E18 E BANK DR IR TK CF, and CIO_bit "
               "WR_bit HR_bit AR_bit DM_bit E0_bit to E18_bit E_bit CF_bit";
    found.area = memory.presentArea(found.area);
    if (found.area < 0)
        return "'" + text + "' is in a bank of EM that this PLC does not have; it has " +
               std::to_string(memory.emBanks());
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
