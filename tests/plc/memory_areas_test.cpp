#include "memory_fixture.h"

#include <fstream>
#include <unistd.h>
#include <vector>

// The table of memory areas: every code, both sides of every edge, and what may be written.

namespace {

struct AreaCase {
    const char *code;
    const char *first;  // first address
    const char *last;   // last address
    const char *beyond; // first address past the end
    const char *zero;   // an item as commands have it
    bool        isBit;  // bits 00 to 0F; otherwise the bit number is 00
    bool        isReadOnly;
};

const std::vector<AreaCase> AREAS = {
    // CIO
    {"B0", "0000", "17FF", "1800", "0000", false, false},
    {"30", "0000", "17FF", "1800", "00", true, false},
    {"F0", "0000", "17FF", "1800", "00000000", false, true},
    {"70", "0000", "17FF", "1800", "00", true, true},
    // WR
    {"B1", "0000", "01FF", "0200", "0000", false, false},
    {"31", "0000", "01FF", "0200", "00", true, false},
    {"F1", "0000", "01FF", "0200", "00000000", false, true},
    {"71", "0000", "01FF", "0200", "00", true, true},
    // HR
    {"B2", "0000", "05FF", "0600", "0000", false, false},
    {"32", "0000", "05FF", "0600", "00", true, false},
    {"F2", "0000", "05FF", "0600", "00000000", false, true},
    {"72", "0000", "05FF", "0600", "00", true, true},
    // AR, of which 0 to 447 can only be read
    {"B3", "0000", "03BF", "03C0", "0000", false, true},
    {"B3", "01C0", "03BF", "03C0", "0000", false, false},
    {"33", "0000", "03BF", "03C0", "00", true, true},
    {"33", "01C0", "03BF", "03C0", "00", true, false},
    // DM
    {"82", "0000", "7FFF", "8000", "0000", false, false},
    {"02", "0000", "7FFF", "8000", "00", true, false},
    // Timers and counters
    {"89", "0000", "0FFF", "1000", "0000", false, false},
    {"09", "0000", "0FFF", "1000", "00", false, false},
    {"49", "0000", "0FFF", "1000", "00", false, true},
    {"89", "8000", "8FFF", "9000", "0000", false, false},
    {"09", "8000", "8FFF", "9000", "00", false, false},
    {"49", "8000", "8FFF", "9000", "00", false, true},
    // The current bank of EM and its number
    {"98", "0000", "7FFF", "8000", "0000", false, false},
    {"0A", "0000", "7FFF", "8000", "00", true, false},
    {"BC", "0F00", "0F00", "0F01", "0000", false, false},
    // Registers
    {"BC", "0200", "020F", "0210", "0000", false, false},
    {"DC", "0100", "010F", "0110", "00000000", false, false},
    // Tasks, conditions and pulses
    {"06", "0000", "001F", "0020", "00", false, true},
    {"46", "0000", "001F", "0020", "00", false, true},
    {"07", "0000", "0001", "0002", "00", true, true},
};

// The banks of EM, words and bits, 0 to 18 (hexadecimal).
const char *const EM_WORDS[] = {"A0", "A1", "A2", "A3", "A4", "A5", "A6", "A7", "A8", "A9", "AA", "AB", "AC",
                                "AD", "AE", "AF", "60", "61", "62", "63", "64", "65", "66", "67", "68"};
const char *const EM_BITS[] = {"20", "21", "22", "23", "24", "25", "26", "27", "28", "29", "2A", "2B", "2C",
                               "2D", "2E", "2F", "E0", "E1", "E2", "E3", "E4", "E5", "E6", "E7", "E8"};

// A moment at which all clock pulses are off.
plc::Memory::Time allPulsesOff() { return plc::Memory::Time(std::chrono::milliseconds(59999)); }

class MemoryAreasTest : public MemoryTest {
protected:
    MemoryAreasTest() { controller.memory.follow(allPulsesOff); }

    void expectEdges(const AreaCase &area)
    {
        const std::string code = area.code;
        const std::string zero = area.zero;
        const std::string end = area.last + std::string(area.isBit ? "0F" : "00");
        const std::string firstBadBit = area.isBit ? "10" : "01";
        const std::string written = area.isReadOnly ? "2101" : "0000";
        expect("0101" + code + area.first + "00 0001", "0101 0000" + zero);
        expect("0101" + code + end + "0001", "0101 0000" + zero);
        expect("0101" + code + end + "0002", "0101 1104");
        expect("0101" + code + end + "FFFF", "0101 1104");
        expect("0101" + code + area.beyond + "00 0001", "0101 1103");
        expect("0101" + code + area.beyond + "00 0000", "0101 1103");
        expect("0101" + code + area.first + firstBadBit + "0001", "0101 1103");
        expect("0102" + code + area.first + "00 0001" + zero, "0102" + written);
        expect("0102" + code + end + "0002" + zero + zero, "0102 1104");
        expect("0102" + code + area.beyond + "00 0001" + zero, "0102 1103");
        expect("0102" + code + area.first + firstBadBit + "0001" + zero, "0102 1103");
        expect("0104" + code + end, "0104 0000" + code + zero);
        expect("0104" + code + area.beyond + "00", "0104 1103");
        expect("0104" + code + area.first + firstBadBit, "0104 1103");
    }
};

} // namespace

TEST_F(MemoryAreasTest, EveryEdge)
{
    for (const AreaCase &area : AREAS)
        expectEdges(area);
    for (const char *code : EM_WORDS)
        expectEdges({code, "0000", "7FFF", "8000", "0000", false, false});
    for (const char *code : EM_BITS)
        expectEdges({code, "0000", "7FFF", "8000", "00", true, false});
}

TEST_F(MemoryAreasTest, AddressesBelowTheFirstAreOutOfRange)
{
    expect("0101 BC 01FF 00 0001", "0101 1103");
    expect("0101 BC 0EFF 00 0001", "0101 1103");
    expect("0101 BC 0000 00 0001", "0101 1103");
    expect("0101 DC 00FF 00 0001", "0101 1103");
    expect("0101 89 7FFF 00 0001", "0101 1103");
}

TEST_F(MemoryAreasTest, AllOtherCodesAreUnknown)
{
    std::string known;
    for (const AreaCase &area : AREAS)
        known += std::string(area.code) + " ";
    for (std::size_t i = 0; i < 25; ++i)
        known += EM_WORDS[i] + std::string(" ") + EM_BITS[i] + " ";
    unsigned unknown = 0;
    for (unsigned value = 0; value < 256; ++value) {
        const std::string code = hexNumber(value, 2);
        if (known.find(code) != std::string::npos)
            continue;
        ++unknown;
        expect("0101" + code + "0000 00 0001", "0101 1101");
        expect("0102" + code + "0000 00 0000", "0102 1101");
        expect("0104" + code + "0000 00", "0104 1101");
    }
    EXPECT_EQ(unknown, 180u); // of 256; CIO WR HR AR have 14, DM 2, T and C 3, EM 52, and BC DC 06 46 07
}

TEST_F(MemoryAreasTest, EveryAreaIsApart)
{
    std::vector<std::string> ends = {"B0 0000", "B0 17FF", "B1 0000", "B1 01FF", "B2 0000", "B2 05FF", "B3 01C0",
                                     "B3 03BF", "82 0000", "82 7FFF", "89 0000", "89 0FFF", "89 8000", "89 8FFF",
                                     "BC 0200", "BC 020F", "BC 0F00", "DC 0100", "DC 010F"};
    for (const char *code : EM_WORDS)
        ends.insert(ends.end(), {code + std::string("0000"), code + std::string("7FFF")});
    const auto valueOf = [&ends](std::size_t i) { return hexNumber(0xFFFF - i, ends[i].substr(0, 2) == "DC" ? 8 : 4); };
    for (std::size_t i = 0; i < ends.size(); ++i)
        expect("0102" + ends[i] + "00 0001" + valueOf(i), "0102 0000");
    for (std::size_t i = 0; i < ends.size(); ++i)
        expect("0101" + ends[i] + "00 0001", "0101 0000" + valueOf(i));
    for (const char *flags : {"09 0000", "09 0FFF", "09 8000", "09 8FFF"})
        expect("0101" + std::string(flags) + "00 0001", "0101 0000 00");
    expect("0101 06 0000 00 0020", "0101 0000" + std::string(2 * 32, '0'));
}

// Code 98 is the bank whose number stands at BC 0F00; a bank that is not there is no area.
TEST_F(MemoryAreasTest, TheCurrentBankIsTheOneOfItsNumber)
{
    expect("0102 A0 0005 00 0001 1111", "0102 0000");
    expect("0102 68 0005 00 0001 8888", "0102 0000");
    expect("0101 98 0005 00 0001", "0101 0000 1111");
    expect("0102 BC 0F00 00 0001 0018", "0102 0000");
    expect("0101 98 0005 00 0001", "0101 0000 8888");
    expect("0102 0A 0005 0F 0001 00", "0102 0000");
    expect("0101 68 0005 00 0001", "0101 0000 0888");
    expect("0102 BC 0F00 00 0001 0019", "0102 0000");
    expect("0101 98 0005 00 0001", "0101 1101");
    expect("0101 0A 0005 00 0001", "0101 1101");
}

TEST_F(MemoryAreasTest, AProfileHasAsManyBanksAsItSays)
{
    controller.fit({{290, 100, 50, 754, 2048, 256, 256}, 2});
    expect("0101 A1 7FFF 00 0001", "0101 0000 0000");
    expect("0101 A2 0000 00 0001", "0101 1101");
    expect("0101 21 7FFF 0F 0001", "0101 0000 00");
    expect("0101 22 0000 00 0001", "0101 1101");
    expect("0101 F0 0121 00 0001", "0101 0000 00000000");
    expect("0101 F0 0122 00 0001", "0101 1103");
    expect("0101 49 00FF 00 0001", "0101 0000 00");
    expect("0101 49 0100 00 0001", "0101 1103");
    expect("0101 49 80FF 00 0001", "0101 0000 00");
}

TEST_F(MemoryAreasTest, IndexRegistersHave32Bits)
{
    expect("0102 DC 0101 00 0002 12345678 FEDCBA98", "0102 0000");
    expect("0101 DC 0100 00 0004", "0101 0000 00000000 12345678 FEDCBA98 00000000");
    expect("0102 DC 0101 00 0002 1234 5678", "0102 1003");
    expect("0104 DC 0101 00 BC 0200 00", "0104 0000 DC 12345678 BC 0000");
}

TEST_F(MemoryAreasTest, TaskFlagsAreRead)
{
    plc::Span place;
    ASSERT_EQ(plc::parsePlace("TK:31", controller.memory, &place), "");
    controller.memory.set(place, 0, 1);
    expect("0101 06 001E 00 0002", "0101 0000 00 01");
    expect("0101 46 001E 00 0002", "0101 0000 00 01");
}

// Conditions 0.0 to 0.15, then the pulses 1.0 to 1.4 (0.1 s, 0.2 s, 1 s, 0.02 s, 1 min), always on 1.13, always off 1.14.
TEST_F(MemoryAreasTest, PulsesFollowTheClock)
{
    struct Moment {
        long        ms;
        const char *pulses;
    };
    const Moment MOMENTS[] = {
        {0, "01 01 01 01 01"},     {9, "01 01 01 01 01"},     {10, "01 01 01 00 01"},    {20, "01 01 01 01 01"},
        {49, "01 01 01 01 01"},    {50, "00 01 01 00 01"},    {99, "00 01 01 00 01"},    {100, "01 00 01 01 01"},
        {200, "01 01 01 01 01"},   {499, "00 01 01 00 01"},   {500, "01 00 00 01 01"},   {999, "00 00 00 00 01"},
        {1000, "01 01 01 01 01"},  {29999, "00 00 00 00 01"}, {30000, "01 01 01 01 00"}, {59999, "00 00 00 00 00"},
        {60000, "01 01 01 01 01"}, {-1, "00 00 00 00 00"},
    };
    for (const Moment &moment : MOMENTS) {
        SCOPED_TRACE(moment.ms);
        const plc::Memory::Time time{std::chrono::milliseconds(moment.ms)};
        controller.memory.follow([time] { return time; });
        expect("0101 07 0001 00 0010", std::string("0101 0000") + moment.pulses + "00 00 00 00 00 00 00 00 01 00 00");
        expect("0101 07 0000 00 0010", "0101 0000" + std::string(32, '0'));
    }
}

TEST_F(MemoryAreasTest, PulsesGoByTheStepsOfAClockThatStandsStill)
{
    controller.fit(plc::fullSizes());
    controller.clock.standStill();
    expect("0101 07 0001 00 0005", "0101 0000 01 01 01 01 01");
    controller.clock.advance(std::chrono::milliseconds(510));
    expect("0101 07 0001 00 0005", "0101 0000 01 00 00 00 01");
    expect("0101 07 0001 00 0005", "0101 0000 01 00 00 00 01");
}

TEST_F(MemoryAreasTest, PulsesPulseByTheMachinesClockUntilAnotherIsGiven)
{
    plc::Memory memory;
    const unsigned first = memory.word(plc::AREA_CF, 1);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (memory.word(plc::AREA_CF, 1) == first && std::chrono::steady_clock::now() < deadline)
        usleep(1000);
    EXPECT_NE(memory.word(plc::AREA_CF, 1), first);
}

TEST_F(MemoryAreasTest, PlacesHaveTheNamesOfTheAreas)
{
    for (const char *text : {"E0:32767", "EF:1", "E10:0", "E18:32767", "E0_bit:1.15", "E18_bit:32767.0", "DR:15",
                             "IR:15", "BANK:0", "TK:31", "CF:1", "CF_bit:1.4"}) {
        plc::Span place;
        EXPECT_EQ(plc::parsePlace(text, controller.memory, &place), "");
        EXPECT_EQ(plc::placeText(place), text);
    }
    plc::Span current;
    EXPECT_EQ(plc::parsePlace("E:5", controller.memory, &current), "");
    EXPECT_EQ(plc::placeText(current), "E0:5");
    for (const char *text : {"E0:32768", "E19:0", "IR:16", "TK:32", "TK_bit:0.0", "IR_bit:0.0", "T_bit:0.0", "e0:0"})
        EXPECT_NE(plc::parsePlace(text, controller.memory, &current), "") << text;
    const plc::Memory small({{290, 100, 50, 754, 2048, 256, 256}, 2});
    EXPECT_EQ(plc::parsePlace("E2:0", small, &current), "'E2:0' is in a bank of EM that this PLC does not have; it has 2");
}

// Pages of memory of this process.
static long residentPages()
{
    std::ifstream status("/proc/self/statm");
    long size = 0;
    long resident = 0;
    status >> size >> resident;
    return resident;
}

TEST(MemoryCostTest, UnusedMemoryCostsNothing)
{
    const long before = residentPages();
    std::vector<plc::Memory> memories(100);
    unsigned sum = 0;
    for (plc::Memory &memory : memories) {
        for (unsigned number = 0; number < memory.size(plc::AREA_DM); number += 100)
            sum += memory.word(plc::AREA_DM, number);
        memory.releaseAll();
        memory.setWord(plc::AREA_DM, 0, 1);
    }
    EXPECT_EQ(sum, 0u);
    EXPECT_LT((residentPages() - before) * sysconf(_SC_PAGESIZE), 4 * 1024 * 1024);
}
