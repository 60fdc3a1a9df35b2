#include "memory_fixture.h"

// The commands for memory areas, with every end code that they give.

namespace {

class MemoryCommandsTest : public MemoryTest {};

// `text` so many times.
std::string times(unsigned count, const std::string &text)
{
    std::string all;
    for (unsigned i = 0; i < count; ++i)
        all += text;
    return all;
}

} // namespace

TEST_F(MemoryCommandsTest, FillSetsAllWords)
{
    expect("0103 82 000A 00 0003 1234", "0103 0000");
    expect("0101 82 0009 00 0005", "0101 0000 0000 1234 1234 1234 0000");
    expect("0103 A5 7FFF 00 0001 ABCD", "0103 0000");
    expect("0101 A5 7FFE 00 0002", "0101 0000 0000 ABCD");
    expect("0103 82 0000 00 8000 0001", "0103 0000");
    expect("0101 82 7FFF 00 0001", "0101 0000 0001");
    expect("0103 89 8FFF 00 0001 0063", "0103 0000");
    expect("0101 89 8FFF 00 0001", "0101 0000 0063");
}

TEST_F(MemoryCommandsTest, FillRefuses)
{
    expect("0103", "0103 1002");
    expect("0103 82 0000 00 0001 00", "0103 1002");
    expect("0103 82 0000 00 0001 0000 00", "0103 1001");
    for (const char *code : {"02", "09", "30", "70", "F0", "DC", "06", "07", "00"})
        expect(std::string("0103") + code + "0000 00 0001 0000", "0103 1101");
    expect("0103 82 8000 00 0001 0001", "0103 1103");
    expect("0103 82 0000 01 0001 0001", "0103 1103");
    expect("0103 82 7FFF 00 0002 0001", "0103 1104");
    expect("0103 B3 01BF 00 0002 0001", "0103 2101");
    expect("0103 82 0000 00 0000 0001", "0103 0000");
    expect("0101 82 0000 00 0001", "0101 0000 0000");
    expect("0101 82 7FFF 00 0001", "0101 0000 0000");
}

TEST_F(MemoryCommandsTest, MultipleReadHasEveryItemBehindItsCode)
{
    expect("0102 82 0064 00 0001 1234", "0102 0000");
    expect("0102 30 0005 0F 0001 01", "0102 0000");
    expect("0102 DC 0100 00 0001 01020304", "0102 0000");
    expect("0104 82 0064 00 30 0005 0F DC 0100 00 B0 0005 00 09 8000 00 F0 0005 00",
           "0104 0000 82 1234 30 01 DC 01020304 B0 8000 09 00 F0 8000 0000");
    expect("0104", "0104 0000");
}

TEST_F(MemoryCommandsTest, MultipleReadRefuses)
{
    expect("0104 82 0064", "0104 1002");
    expect("0104 82 0064 00 82", "0104 1002");
    expect("0104 82 0064 00 FF 0000 00", "0104 1101");
    expect("0104 82 0064 00 82 8000 00", "0104 1103");
    expect("0104 82 0064 00 82 0000 01", "0104 1103");
    const std::string most = ask("0104" + times(167, "82 0000 00"));
    EXPECT_EQ(most, plainHex("0104 0000" + times(167, "82 0000")));
    expect("0104" + times(168, "82 0000 00"), "0104 1001");
}

// A response of 540 bytes: 14 before the data, and 105 items of five bytes.
TEST_F(MemoryCommandsTest, MultipleReadFitsTheMessage)
{
    controller.messageMax = 540;
    expect("0104" + times(105, "DC 0100 00"), "0104 0000" + times(105, "DC 00000000"));
    expect("0104" + times(106, "DC 0100 00"), "0104 110B");
    expect("0104" + times(132, "82 0000 00"), "0104 0000" + times(132, "82 0000"));
    expect("0104" + times(133, "82 0000 00"), "0104 1001");
}

TEST_F(MemoryCommandsTest, TransferCopiesAlsoWhereItOverlaps)
{
    expect("0102 82 0000 00 0004 0001 0002 0003 0004", "0102 0000");
    expect("0105 82 0000 00 82 0001 00 0004", "0105 0000");
    expect("0101 82 0000 00 0006", "0101 0000 0001 0001 0002 0003 0004 0000");
    expect("0105 82 0001 00 82 0000 00 0004", "0105 0000");
    expect("0101 82 0000 00 0006", "0101 0000 0001 0002 0003 0004 0004 0000");
    expect("0105 82 0000 00 68 7FFD 00 0003", "0105 0000");
    expect("0101 68 7FFC 00 0004", "0101 0000 0000 0001 0002 0003");
    expect("0102 DC 0100 00 0001 0A0B0C0D", "0102 0000");
    expect("0105 DC 0100 00 DC 010F 00 0001", "0105 0000");
    expect("0101 DC 010F 00 0001", "0101 0000 0A0B0C0D");
}

TEST_F(MemoryCommandsTest, TransferRefuses)
{
    expect("0105", "0105 1002");
    expect("0105 82 0000 00 82 0001 00 00", "0105 1002");
    expect("0105 82 0000 00 82 0001 00 0001 00", "0105 1001");
    for (const char *code : {"02", "30", "70", "F0", "09", "49", "06", "00"}) {
        expect(std::string("0105") + code + "0000 00 82 0000 00 0001", "0105 1101");
        expect(std::string("0105 82 0000 00") + code + "0000 00 0001", "0105 1101");
    }
    expect("0105 82 0000 00 DC 0100 00 0001", "0105 1105");
    expect("0105 DC 0100 00 82 0000 00 0001", "0105 1105");
    expect("0105 82 8000 00 82 0000 00 0001", "0105 1103");
    expect("0105 82 0000 00 82 8000 00 0001", "0105 1103");
    expect("0105 82 0000 00 82 0000 01 0001", "0105 1103");
    expect("0105 82 7FFF 00 82 0000 00 0002", "0105 1104");
    expect("0105 82 0000 00 B1 01FF 00 0002", "0105 1104");
    expect("0105 82 0000 00 B3 01BF 00 0001", "0105 2101");
    expect("0105 B3 01BF 00 82 0000 00 0001", "0105 0000");
    expect("0105 82 0000 00 82 0001 00 0000", "0105 0000");
}

TEST_F(MemoryCommandsTest, TheModeRefusesEveryCommandThatWrites)
{
    controller.refusalInRun = 0x2206;
    expect("0102 82 0000 00 0001 0001", "0102 2206");
    expect("0103 82 0000 00 0001 0001", "0103 2206");
    expect("0105 82 0000 00 82 0001 00 0001", "0105 2206");
    expect("0104 82 0000 00", "0104 0000 82 0000");
    expect("0103 B3 0000 00 0001 0001", "0103 2101");
    controller.mode = plc::Mode::MONITOR;
    expect("0103 82 0000 00 0001 0001", "0103 0000");
    controller.mode = plc::Mode::PROGRAM;
    controller.refusalInProgram = 0x2203;
    expect("0103 82 0000 00 0001 0002", "0103 2203");
    expect("0101 82 0000 00 0002", "0101 0000 0001 0000");
}

TEST_F(MemoryCommandsTest, AForcedBitStaysWhoeverWritesIt)
{
    controller.mode = plc::Mode::MONITOR;
    expect("2301 0002 0001 30 0064 05 0000 30 0064 06", "2301 0000");
    expect("0101 30 0064 05 0002", "0101 0000 01 00");
    expect("0101 70 0064 04 0004", "0101 0000 00 03 02 00");
    expect("0101 F0 0063 00 0002", "0101 0000 0000 0000 0020 0060");
    expect("0102 B0 0064 00 0001 FFDF", "0102 0000");
    expect("0101 B0 0064 00 0001", "0101 0000 FFBF");
    expect("0102 30 0064 05 0002 00 01", "0102 0000");
    expect("0103 B0 0064 00 0001 0000", "0103 0000");
    expect("0105 82 0000 00 B0 0064 00 0001", "0105 0000");
    controller.memory.setBit(plc::AREA_CIO, 100, 5, false);
    expect("0101 F0 0064 00 0001", "0101 0000 0020 0060");
    expect("2301 0001 0000 30 0064 05", "2301 0000");
    expect("0101 F0 0064 00 0001", "0101 0000 0000 0060");
}

TEST_F(MemoryCommandsTest, ReleasedBitsKeepOrTakeAValue)
{
    controller.mode = plc::Mode::PROGRAM;
    expect("2301 0003 0001 31 0000 00 0001 31 0000 01 0000 31 0000 02", "2301 0000");
    expect("2301 0003 FFFF 31 0000 00 8000 31 0000 01 8001 31 0000 02", "2301 0000");
    expect("0101 F1 0000 00 0001", "0101 0000 0005 0000");
    expect("0102 B1 0000 00 0001 0000", "0102 0000");
    expect("0101 B1 0000 00 0001", "0101 0000 0000");
    expect("2301 0001 8001 31 01FF 0F", "2301 0000");
    expect("0101 71 01FF 0F 0001", "0101 0000 01");
}

// The flag of a timer is forced, not its present value.
TEST_F(MemoryCommandsTest, CompletionFlagsAreForced)
{
    controller.mode = plc::Mode::MONITOR;
    expect("2301 0002 0001 09 0007 00 0001 09 8FFF 00", "2301 0000");
    expect("0102 09 0007 00 0001 00", "0102 0000");
    expect("0102 89 0007 00 0001 1234", "0102 0000");
    expect("0101 09 0006 00 0003", "0101 0000 00 01 00");
    expect("0101 49 0006 00 0003", "0101 0000 00 03 00");
    expect("0101 49 8FFF 00 0001", "0101 0000 03");
    expect("0101 89 0007 00 0001", "0101 0000 1234");
}

TEST_F(MemoryCommandsTest, CancellingReleasesAllBitsAsTheyStand)
{
    controller.mode = plc::Mode::MONITOR;
    expect("2301 0004 0001 30 17FF 0F 0001 32 0000 00 0001 09 0000 00 0000 31 0001 01", "2301 0000");
    expect("2302 00", "2302 1001");
    expect("0101 70 17FF 0F 0001", "0101 0000 03");
    expect("2302", "2302 0000");
    expect("0101 70 17FF 0F 0001", "0101 0000 01");
    expect("0101 72 0000 00 0001", "0101 0000 01");
    expect("0101 49 0000 00 0001", "0101 0000 01");
    expect("0101 71 0001 01 0001", "0101 0000 00");
}

TEST_F(MemoryCommandsTest, ForcingRefusesAllBitsForOneThatIsWrong)
{
    controller.mode = plc::Mode::MONITOR;
    const std::string good = "0001 30 0000 00";
    expect("2301", "2301 1002");
    expect("2301 00", "2301 1002");
    expect("2301 0000", "2301 0000");
    expect("2301 0002" + good, "2301 1003");
    expect("2301 0001" + good + "00", "2301 1003");
    expect("2301 0000" + good, "2301 1003");
    for (const char *code : {"B0", "70", "F0", "49", "33", "02", "20", "06", "46", "07", "89", "00"})
        expect("2301 0002" + good + "0001" + code + "0000 00", "2301 1101");
    expect("2301 0002" + good + "0001 30 1800 00", "2301 1103");
    expect("2301 0002" + good + "0001 30 0000 10", "2301 1103");
    expect("2301 0002" + good + "0001 09 0000 01", "2301 1103");
    for (const char *action : {"0002", "7FFF", "8002", "FFFE"})
        expect("2301 0002" + good + action + "30 0000 00", "2301 110C");
    controller.mode = plc::Mode::RUN;
    expect("2301 0001" + good, "2301 2206");
    expect("2301 0001 0001 FF 0000 00", "2301 1101");
    expect("2302", "2302 2206");
    expect("0101 70 0000 00 0001", "0101 0000 00");
}

TEST_F(MemoryCommandsTest, ReadsAndWritesOfForcedStates)
{
    expect("0102 F0 0000 00 0001 0000 0000", "0102 2101");
    expect("0102 F0 0000 00 0001 0000", "0102 1003");
    expect("0102 70 0000 00 0001 01", "0102 2101");
    expect("0101 F0 0000 00 01F3", "0101 0000" + times(499, "00000000"));
    expect("0101 F0 0000 00 01F4", "0101 110B");
}
