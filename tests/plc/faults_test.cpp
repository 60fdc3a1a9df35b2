#include "faults/faults.h"

#include "support/tcp_client.h"

#include <gtest/gtest.h>

// Which requests the faults strike, without a connection.

namespace {

class FaultsTest : public ::testing::Test {
protected:
    // Whether the fault `drop` strikes the command; `node` and `ip` are the client's.
    bool drops(const std::string &command, unsigned node = 239, const std::string &ip = "127.0.0.1")
    {
        const plc::Bytes bytes = bytesOfHex(command);
        return faults.strike(plc::FAULT_DROP, {plc::Slice(bytes), node, ip, memory}).has_value();
    }

    bool dropsWith(const std::string &fault, const std::string &command)
    {
        faults.clearAll();
        EXPECT_EQ(faults.set(fault), "");
        return drops(command);
    }

    unsigned endCode(const std::string &command, unsigned *flags)
    {
        const plc::Bytes bytes = bytesOfHex(command);
        const std::string ip;
        *flags = 0;
        return faults.strikeEndCode({plc::Slice(bytes), 239, ip, memory}, plc::Moment::REQUEST, flags);
    }

    // An x for each read that is struck.
    std::string pattern(int reads)
    {
        std::string text;
        for (int i = 0; i < reads; ++i)
            text += drops("0101 82 0000 00 0001") ? 'x' : '.';
        return text;
    }

    plc::Memory memory;
    plc::Faults faults{7};
};

} // namespace

// Words 100 to 199 of DM: 64 to C7 in hexadecimal.
TEST_F(FaultsTest, StrikeRangesThatOverlapPartly)
{
    const struct {
        const char *command;
        bool        isHit;
    } rows[] = {
        {"0101 82 0063 00 0001", false}, {"0101 82 0063 00 0002", true},  {"0101 82 0064 00 0001", true},
        {"0101 82 00C7 00 0001", true},  {"0101 82 00C7 00 03E7", true},  {"0101 82 00C8 00 0001", false},
        {"0101 82 0000 00 03E7", true},  {"0101 82 0000 00 0064", false}, {"0101 82 0080 00 0000", false},
        {"0101 02 0063 0F 0001", false}, {"0101 02 0063 0F 0002", true},  {"0101 02 00C7 0F 0001", true},
        {"0101 02 00C8 00 0001", false}, {"0101 B1 0080 00 0001", false}, {"0101 82 0064 00 FFFF", true},
        {"0102 82 0080 00 0001 0007", true}, {"0103 82 0060 00 0005 0007", true},
        {"0103 82 0060 00 0004 0007", false}, {"0101 FF 0080 00 0001", false}, {"0101 82", false}, {"01", false},
    };
    for (const auto &row : rows)
        EXPECT_EQ(dropsWith("drop:area=DM,from=100,to=199", row.command), row.isHit) << row.command;
}

TEST_F(FaultsTest, StrikeCommandsWithSeveralPlaces)
{
    const struct {
        const char *command;
        bool        isHit;
    } rows[] = {
        {"0104 B0 0000 00 82 0064 00", true},   {"0104 82 0063 00 82 00C8 00", false},
        {"0104", false},                        {"0104 B0 0000 00 82 0064", false},
        {"0105 B0 0000 00 82 0060 00 0005", true}, {"0105 82 00C7 00 B0 0000 00 0001", true},
        {"0105 82 0000 00 B0 0064 00 0001", false}, {"2301 0001 0001 02 0064 05", true},
        {"2301 0002 0001 30 0064 05 0001 02 00C7 0F", true}, {"2301 0001 0001 30 0064 05", false},
        {"0601", false},
    };
    for (const auto &row : rows)
        EXPECT_EQ(dropsWith("drop:area=DM,from=100,to=199", row.command), row.isHit) << row.command;
}

// Counters have 8000 added to their numbers in commands.
TEST_F(FaultsTest, TellTimersFromCounters)
{
    EXPECT_TRUE(dropsWith("drop:area=C,from=3,to=3", "0101 89 8003 00 0001"));
    EXPECT_TRUE(dropsWith("drop:area=C,from=3,to=3", "0101 09 8003 00 0001"));
    EXPECT_FALSE(dropsWith("drop:area=C,from=3,to=3", "0101 89 0003 00 0001"));
    EXPECT_TRUE(dropsWith("drop:area=T,from=3,to=3", "0101 89 0003 00 0001"));
    EXPECT_FALSE(dropsWith("drop:area=T,from=3,to=3", "0101 89 8003 00 0001"));
}

TEST_F(FaultsTest, StrikeACommand)
{
    EXPECT_TRUE(dropsWith("drop:command=write", "0102 82 0000 00 0001 0007"));
    EXPECT_FALSE(dropsWith("drop:command=write", "0101 82 0000 00 0001"));
    EXPECT_FALSE(dropsWith("drop:command=write", ""));
    EXPECT_FALSE(dropsWith("drop:command=0000", ""));
    EXPECT_FALSE(dropsWith("drop:area=DM", ""));
}

TEST_F(FaultsTest, StrikeAClient)
{
    ASSERT_EQ(faults.set("drop:client=10"), "");
    EXPECT_TRUE(drops("0402", 10));
    EXPECT_FALSE(drops("0402", 11));
    faults.clearAll();
    ASSERT_EQ(faults.set("drop:client=192.168.250.1"), "");
    EXPECT_TRUE(drops("0402", 10, "192.168.250.1"));
    EXPECT_FALSE(drops("0402", 10, "192.168.250.10"));
}

TEST_F(FaultsTest, LetTheFirstHitsThrough)
{
    ASSERT_EQ(faults.set("drop:area=DM,after=2#3"), "");
    EXPECT_FALSE(drops("0601"));
    EXPECT_EQ(pattern(8), "..xxx...");
    EXPECT_EQ(faults.list(), "none");
}

// One number of the generator for each hit that is neither aimed elsewhere nor let through.
TEST_F(FaultsTest, FollowTheSeed)
{
    ASSERT_EQ(faults.set("drop:area=DM,after=3@0.25#5"), "");
    std::mt19937 chance(7);
    std::string expected = "...";
    int left = 5;
    while (expected.size() < 60) {
        const bool isStruck = left > 0 && chance() < 0x40000000u;
        left -= isStruck ? 1 : 0;
        expected += isStruck ? 'x' : '.';
    }
    ASSERT_EQ(left, 0) << "60 reads are not enough for this seed";
    std::string struck;
    for (int i = 0; i < 60; ++i) {
        EXPECT_FALSE(drops("0601"));
        struck += pattern(1);
    }
    EXPECT_EQ(struck, expected);
}

TEST_F(FaultsTest, OfOneNameStandSideBySide)
{
    ASSERT_EQ(faults.set("end-code=1103:command=write,area=DM,from=100"), "");
    ASSERT_EQ(faults.set("end-code=2203:command=write"), "");
    ASSERT_EQ(faults.set("end-code=0040"), "");
    ASSERT_EQ(faults.set("end-code=0080:command=read#1"), "");
    unsigned flags = 0;
    EXPECT_EQ(endCode("0102 82 0064 00 0001 0007", &flags), 0x1103u);
    EXPECT_EQ(flags, 0x40u);
    EXPECT_EQ(endCode("0102 82 0063 00 0001 0007", &flags), 0x2203u);
    EXPECT_EQ(endCode("0101 82 0000 00 0001", &flags), 0u);
    EXPECT_EQ(flags, 0xC0u);
    EXPECT_EQ(endCode("0101 82 0000 00 0001", &flags), 0u);
    EXPECT_EQ(flags, 0x40u);
    EXPECT_EQ(faults.listWithCounts(), "1 end-code=1103:command=0102,area=DM,from=100 struck 1, "
                                       "2 end-code=2203:command=0102 struck 1, 3 end-code=0040 struck 4");
}

TEST_F(FaultsTest, AimedAlikeAreOne)
{
    ASSERT_EQ(faults.set("end-code=1103:area=DM"), "");
    ASSERT_EQ(faults.set("end-code=1104:area=DM,to=5"), "");
    ASSERT_EQ(faults.set("end-code=2203:area=DM,from=0#4"), "");
    EXPECT_EQ(faults.list(), "end-code=2203:area=DM#4 end-code=1104:area=DM,to=5");
    ASSERT_EQ(faults.set("end-code=1104:area=DM,to=5@0"), "");
    EXPECT_EQ(faults.list(), "end-code=2203:area=DM#4");
}

TEST_F(FaultsTest, DelaysAddUp)
{
    for (const char *fault : {"delay=5", "delay=20:client=10", "delay=300:command=read", "delay=4000:on=request"})
        ASSERT_EQ(faults.set(fault), "");
    const plc::Bytes read = bytesOfHex("0101 82 0000 00 0001");
    const std::string ip;
    EXPECT_EQ(faults.delayMs({plc::Slice(read), 10, ip, memory}, plc::Moment::REPLY), 325u);
    EXPECT_EQ(faults.delayMs({plc::Slice(read), 11, ip, memory}, plc::Moment::REPLY), 305u);
    EXPECT_EQ(faults.delayMs({plc::Slice(read), 11, ip, memory}, plc::Moment::REQUEST), 4000u);
}

TEST_F(FaultsTest, EndByNameAimOrNumber)
{
    const std::string three = "delay=1:area=DM delay=2:area=WR drop";
    const struct {
        const char *text;
        const char *wrong;
        const char *left;
    } rows[] = {
        {"delay", "", "drop"},
        {"delay=2", "", "delay=1:area=DM drop"},
        {"delay:area=WR", "", "delay=1:area=DM drop"},
        {"delay=2:area=WR@0.5#7", "", "delay=1:area=DM drop"},
        {"1", "", "delay=2:area=WR drop"},
        {"3", "", "delay=1:area=DM delay=2:area=WR"},
        {"rst", "", three.c_str()},
        {"end-code", "", three.c_str()},
        {"delay:area=HR", "no fault is set that is aimed like 'delay:area=HR'; faults lists them", three.c_str()},
        {"0", "there is no fault 0; 3 are set", three.c_str()},
        {"4", "there is no fault 4; 3 are set", three.c_str()},
        {"99999999999999999999", "there is no fault 99999999999999999999; 3 are set", three.c_str()},
        {"delay:area=XX", "'XX' is no area; use one such as CIO WR HR AR DM T C", three.c_str()},
    };
    for (const auto &row : rows) {
        faults.clearAll();
        for (const char *fault : {"drop", "delay=1:area=DM", "delay=2:area=WR"})
            ASSERT_EQ(faults.set(fault), "");
        ASSERT_EQ(faults.list(), three);
        EXPECT_EQ(faults.clear(row.text), row.wrong) << row.text;
        EXPECT_EQ(faults.list(), row.left) << row.text;
    }
}

TEST_F(FaultsTest, AreAHundredAtMost)
{
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(faults.set("drop:area=DM,from=" + std::to_string(i)), "");
    EXPECT_EQ(faults.set("rst"), "there are 100 faults already; end one of them first");
    EXPECT_EQ(faults.set("drop:area=DM,from=99#5"), "");
    EXPECT_EQ(faults.clear("100"), "");
    EXPECT_EQ(faults.set("rst"), "");
}

// Only what refuses every connection without end closes the port.
TEST_F(FaultsTest, OnlyTheUnaimedIsCertain)
{
    for (const char *fault : {"refuse:client=127.0.0.1", "refuse:after=1", "refuse#3", "refuse@0.9"}) {
        faults.clearAll();
        ASSERT_EQ(faults.set(fault), "");
        EXPECT_FALSE(faults.isCertain(plc::FAULT_REFUSE)) << fault;
    }
    ASSERT_EQ(faults.set("refuse"), "");
    EXPECT_TRUE(faults.isCertain(plc::FAULT_REFUSE));
}
