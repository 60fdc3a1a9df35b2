#include "panel_files.h"

// Addresses and type names as the PLC's manuals write them, in every command.

class PanelNotationTest : public PanelTest {
protected:
    PanelFiles files;
};

TEST_F(PanelNotationTest, ReadsShowItemsAsTheyWereGiven)
{
    start();
    ASSERT_EQ(tell("write DM:100 0 16320"), "ok"); // 1.5 is 3FC00000
    ASSERT_EQ(tell("write WR_bit:3.5 1"), "ok");
    ASSERT_EQ(tell("write CIO:100 32"), "ok"); // bit 5
    ASSERT_EQ(tell("write DM:5 7"), "ok");
    const PanelRun read = run("read", {"D100/REAL", "W3.05", "W3.5", "100.05", "100", "DM:5", "D5:2", "D100/DWORD"});
    EXPECT_EQ(read.code, 0) << read.err;
    EXPECT_EQ(read.out, "D100/REAL = 1.5\nW3.05 = 1\nW3.05 = 1\n100.05 = 1\n100 = 32\nDM:5 = 7\nD5:2 = 7 0\n"
                        "D100/DWORD = 0x3FC00000\n");
    EXPECT_EQ(run("read", {"D100", "--as", "REAL"}).out, "D100/REAL = 1.5\n");
}

TEST_F(PanelNotationTest, WritesReachTheAddress)
{
    start();
    const PanelRun write = run("write", {"D100/REAL=1.5", "W3.05=ON", "100.10=true", "100.01:2=on,OFF", "H10=5",
                                         "D200:2/INT=-1,2", "T5=9"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "D100/REAL = 1.5\nW3.05 = 1\n100.10 = 1\n100.01:2 = 1 0\nH10 = 5\nD200:2/INT = -1 2\nT5 = 9\n");
    EXPECT_EQ(tell("read DM:100:2"), "ok 0 16320");
    EXPECT_EQ(tell("read WR:3"), "ok 32");
    EXPECT_EQ(tell("read CIO:100"), "ok 1026"); // bits 1 and 10
    EXPECT_EQ(tell("read HR:10"), "ok 5");
    EXPECT_EQ(tell("read DM:200:2"), "ok 65535 2");
    EXPECT_EQ(tell("read T:5"), "ok 9");
}

TEST_F(PanelNotationTest, ARefusedWriteIsNamedAsItWasGiven)
{
    start({"--refuse-writes-in-run=2101"});
    const PanelRun write = run("write", {"D3=5"});
    EXPECT_EQ(write.code, 1);
    EXPECT_NE(write.err.find("refused: D3: 2101"), std::string::npos) << write.err;
}

TEST_F(PanelNotationTest, WatchNamesValuesByTheirAddresses)
{
    start();
    ASSERT_EQ(tell("write DM:100 1 2"), "ok");
    const auto panel = watch({"D100:2", "W3.05", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "D100 - 1");
    EXPECT_EQ(nextChange(*panel), "D101 - 2");
    EXPECT_EQ(nextChange(*panel), "W3.05 - 0");
    ASSERT_EQ(tell("write DM:101 3"), "ok");
    EXPECT_EQ(nextChange(*panel), "D101 2 3");
    ASSERT_EQ(tell("write WR_bit:3.5 1"), "ok");
    EXPECT_EQ(nextChange(*panel), "W3.05 0 1");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelNotationTest, ChecksWithoutAPlc)
{
    const PanelRun valid = runPanel({"check", "D32767", "A448.00", "D0:3/LREAL", "DM:5/INT"});
    EXPECT_EQ(valid.out, "D32767 valid\nA448.00 valid\nD0:3/LREAL valid\nDM:5/INT valid\n");
    EXPECT_EQ(valid.code, 0);
    expectRefused({"check", "D32768"}, "fins_panel: 'D32768' lies outside the range D0 to D32767");
    expectRefused({"check", "d5"},
                  "fins_panel: 'd5' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
    EXPECT_EQ(runPanel({"copies", "W3.14", "3"}).out, "W3.14\nW3.15\nW4.00\n");
}

TEST_F(PanelNotationTest, ATagGoesBeforeAnAddress)
{
    start();
    ASSERT_EQ(tell("write DM:5 7"), "ok");
    ASSERT_EQ(tell("write DM:100 8"), "ok");
    const std::string file = files.put("plant.toml", "[connection]\nhost = \"" + host() + "\"\n"
                                                     "[tags]\nD100 = { address = \"D5\" }\n"
                                                     "Level = { address = \"D100\" }\n");
    EXPECT_EQ(runPanel({"read", "--project", file, "D100", "Level", "DM:100", "D5"}).out,
              "D100 = 7\nLevel = 8\nDM:100 = 8\nD5 = 7\n");
    expectRefused({"read", "--project", file, "D100:2"},
                  "fins_panel: 'D100:2': D100 is a tag of its own; write DM:100:2 for the address");
}
