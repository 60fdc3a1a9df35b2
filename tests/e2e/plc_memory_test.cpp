#include "plc_fixture.h"

// Memory areas of the simulator: codes, sizes, and both sides of every boundary.

struct AreaCase {
    const char *name;
    const char *code;      // memory-area code
    const char *first;     // first address
    const char *last;      // last address
    const char *beyond;    // first address past the end
    const char *firstText; // the first and last as the console has them
    const char *lastText;
    const char *before;    // last address but one
};

static void PrintTo(const AreaCase &area, std::ostream *out) { *out << area.name; }

static std::string caseName(const ::testing::TestParamInfo<AreaCase> &info) { return info.param.name; }

class PlcWordAreaTest : public PlcTest, public ::testing::WithParamInterface<AreaCase> {};

TEST_P(PlcWordAreaTest, EveryBoundary)
{
    start();
    const std::string code = GetParam().code;
    const std::string first = GetParam().first;
    const std::string last = GetParam().last;
    const std::string beyond = GetParam().beyond;
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102" + code + first + "00 0001 1234"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102" + code + last + "00 0001 FEDC"), plainHex("0102 0000"));
    EXPECT_EQ(tell(std::string("read ") + GetParam().firstText), "ok 4660");
    EXPECT_EQ(tell(std::string("read ") + GetParam().lastText), "ok 65244");
    EXPECT_EQ(client.ask("0101" + code + first + "00 0001"), plainHex("0101 0000 1234"));
    EXPECT_EQ(client.ask("0101" + code + GetParam().before + "00 0002"), plainHex("0101 0000 0000 FEDC"));
    EXPECT_EQ(client.ask("0101" + code + last + "00 0002"), plainHex("0101 1104"));
    EXPECT_EQ(client.ask("0102" + code + last + "00 0002 0001 0002"), plainHex("0102 1104"));
    EXPECT_EQ(client.ask("0101" + code + last + "00 FFFF"), plainHex("0101 1104"));
    EXPECT_EQ(client.ask("0101" + code + beyond + "00 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0102" + code + beyond + "00 0001 0001"), plainHex("0102 1103"));
    EXPECT_EQ(client.ask("0101" + code + first + "01 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0102" + code + first + "01 0001 0001"), plainHex("0102 1103"));
    EXPECT_EQ(tell(std::string("read ") + GetParam().lastText), "ok 65244");
}

INSTANTIATE_TEST_SUITE_P(Words, PlcWordAreaTest,
                         ::testing::Values(
                             AreaCase{"CIO", "B0", "0000", "17FF", "1800", "CIO:0", "CIO:6143", "17FE"},
                             AreaCase{"WR",  "B1", "0000", "01FF", "0200", "WR:0",  "WR:511",   "01FE"},
                             AreaCase{"HR",  "B2", "0000", "05FF", "0600", "HR:0",  "HR:1535",  "05FE"},
                             AreaCase{"AR",  "B3", "01C0", "03BF", "03C0", "AR:448", "AR:959",  "03BE"},
                             AreaCase{"DM",  "82", "0000", "7FFF", "8000", "DM:0",  "DM:32767", "7FFE"},
                             AreaCase{"T",   "89", "0000", "0FFF", "1000", "T:0",   "T:4095",   "0FFE"},
                             AreaCase{"C",   "89", "8000", "8FFF", "9000", "C:0",   "C:4095",   "8FFE"}),
                         caseName);

class PlcBitAreaTest : public PlcTest, public ::testing::WithParamInterface<AreaCase> {};

TEST_P(PlcBitAreaTest, EveryBoundary)
{
    start();
    const std::string code = GetParam().code;
    const std::string first = GetParam().first;
    const std::string last = GetParam().last;
    const std::string beyond = GetParam().beyond;
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102" + code + first + "00 0001 01"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102" + code + last + "0E 0002 00 01"), plainHex("0102 0000"));
    EXPECT_EQ(tell(std::string("read ") + GetParam().firstText), "ok 1");
    EXPECT_EQ(tell(std::string("read ") + GetParam().lastText), "ok 1");
    EXPECT_EQ(client.ask("0101" + code + first + "00 0002"), plainHex("0101 0000 01 00"));
    EXPECT_EQ(client.ask("0101" + code + GetParam().before + "0F 0011"),
              plainHex("0101 0000 00 0000000000000000 0000000000000001"));
    EXPECT_EQ(client.ask("0101" + code + last + "0F 0001"), plainHex("0101 0000 01"));
    EXPECT_EQ(client.ask("0101" + code + last + "0F 0002"), plainHex("0101 1104"));
    EXPECT_EQ(client.ask("0102" + code + last + "0F 0002 00 00"), plainHex("0102 1104"));
    EXPECT_EQ(client.ask("0101" + code + first + "10 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0101" + code + beyond + "00 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0102" + code + beyond + "00 0001 01"), plainHex("0102 1103"));
    EXPECT_EQ(tell(std::string("read ") + GetParam().lastText), "ok 1");
}

INSTANTIATE_TEST_SUITE_P(
    Bits, PlcBitAreaTest,
    ::testing::Values(AreaCase{"CIO", "30", "0000", "17FF", "1800", "CIO_bit:0.0", "CIO_bit:6143.15", "17FE"},
                      AreaCase{"WR",  "31", "0000", "01FF", "0200", "WR_bit:0.0",  "WR_bit:511.15",   "01FE"},
                      AreaCase{"HR",  "32", "0000", "05FF", "0600", "HR_bit:0.0",  "HR_bit:1535.15",  "05FE"},
                      AreaCase{"AR",  "33", "01C0", "03BF", "03C0", "AR_bit:448.0", "AR_bit:959.15", "03BE"},
                      AreaCase{"DM",  "02", "0000", "7FFF", "8000", "DM_bit:0.0",  "DM_bit:32767.15", "7FFE"}),
    caseName);

class PlcMemoryTest : public PlcTest {};

TEST_F(PlcMemoryTest, AreasAreApart)
{
    start();
    PlcClient client(port);
    const char *const codes[] = {"B0 01C5", "B1 01C5", "B2 01C5", "B3 01C5", "82 01C5", "89 01C5", "89 81C5"};
    std::size_t value = 0x1101;
    for (const char *code : codes)
        EXPECT_EQ(client.ask(std::string("0102") + code + "00 0001" + hexNumber(value++, 4)), plainHex("0102 0000"));
    value = 0x1101;
    for (const char *code : codes)
        EXPECT_EQ(client.ask(std::string("0101") + code + "00 0001"), plainHex("0101 0000" + hexNumber(value++, 4)));
}

// Words A0 to A447 belong to the CPU unit. People may set them, so that there is something to read.
TEST_F(PlcMemoryTest, TheFirstAuxiliaryWordsAreReadOnly)
{
    start();
    ASSERT_EQ(tell("write AR:447 4660"), "ok");
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 B3 0000 00 0001 0001"), plainHex("0102 2101"));
    EXPECT_EQ(client.ask("0102 B3 01BF 00 0001 0001"), plainHex("0102 2101"));
    EXPECT_EQ(client.ask("0102 B3 01BF 00 0002 0001 0001"), plainHex("0102 2101"));
    EXPECT_EQ(client.ask("0102 33 01BF 0F 0001 01"), plainHex("0102 2101"));
    EXPECT_EQ(client.ask("0102 33 01BF 0F 0002 01 01"), plainHex("0102 2101"));
    EXPECT_EQ(client.ask("0102 B3 03C0 00 0001 0001"), plainHex("0102 1103"));
    EXPECT_EQ(tell("read AR:447:2"), "ok 4660 0");
    EXPECT_EQ(client.ask("0102 B3 01C0 00 0001 0001"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 33 01C0 01 0001 01"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 B3 01BF 00 0002"), plainHex("0101 0000 1234 0003"));
}

TEST_F(PlcMemoryTest, BitsAreThoseOfTheWords)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 B0 0064 00 0001 8001"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 30 0064 00 0010"),
              plainHex("0101 0000 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01"));
    EXPECT_EQ(client.ask("0102 30 0064 05 0001 01"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 30 0064 0F 0001 00"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 B0 0064 00 0001"), plainHex("0101 0000 0021"));
}

TEST_F(PlcMemoryTest, BitWriteRunsOverIntoTheNextWord)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 02 000A 0E 0004 01 01 01 01"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 82 000A 00 0002"), plainHex("0101 0000 C000 0003"));
}

TEST_F(PlcMemoryTest, OnlyTheLowestBitOfAWrittenBitCounts)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 31 0000 00 0004 02 03 FE FF"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 31 0000 00 0004"), plainHex("0101 0000 00 01 00 01"));
}

TEST_F(PlcMemoryTest, CompletionFlagsAreApartFromPresentValues)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0102 09 0000 00 0001 01"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0102 09 8001 00 0002 01 03"), plainHex("0102 0000"));
    EXPECT_EQ(client.ask("0101 09 0000 00 0003"), plainHex("0101 0000 01 00 00"));
    EXPECT_EQ(client.ask("0101 09 8000 00 0004"), plainHex("0101 0000 00 01 01 00"));
    EXPECT_EQ(client.ask("0101 89 0000 00 0001"), plainHex("0101 0000 0000"));
    EXPECT_EQ(client.ask("0101 09 0FFF 00 0001"), plainHex("0101 0000 00"));
    EXPECT_EQ(client.ask("0101 09 0FFF 00 0002"), plainHex("0101 1104"));
    EXPECT_EQ(client.ask("0101 09 1000 00 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0101 09 8FFF 00 0001"), plainHex("0101 0000 00"));
    EXPECT_EQ(client.ask("0101 09 9000 00 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0101 09 0000 01 0001"), plainHex("0101 1103"));
}

TEST_F(PlcMemoryTest, AddressesBetweenTimersAndCountersAreOutOfRange)
{
    start();
    PlcClient client(port);
    EXPECT_EQ(client.ask("0101 89 7FFF 00 0001"), plainHex("0101 1103"));
    EXPECT_EQ(client.ask("0101 89 FFFF 00 0001"), plainHex("0101 1103"));
}

TEST_F(PlcMemoryTest, UnknownAreaCodes)
{
    start();
    PlcClient client(port);
    for (const char *code : {"00", "01", "03", "08", "0B", "34", "69", "81", "83", "88", "8A", "B4", "E9", "FF"}) {
        EXPECT_EQ(client.ask(std::string("0101") + code + "0000 00 0001"), plainHex("0101 1101")) << code;
        EXPECT_EQ(client.ask(std::string("0102") + code + "0000 00 0001 0000"), plainHex("0102 1101")) << code;
    }
}
