#include "panel_run.h"

// End codes whose flags tell of an error of the CPU unit, with what has been done all the same.

class PanelEndCodeFlagsTest : public PanelTest {};

TEST_F(PanelEndCodeFlagsTest, ValuesOfAReadAreTaken)
{
    start();
    ASSERT_EQ(tell("write DM:4 7 8"), "ok");
    for (const char *flags : {"0040", "0080", "00C0"}) {
        ASSERT_EQ(tell(std::string("fault end-code=") + flags), "ok");
        const PanelRun read = run("read", {"DM:4:2"});
        EXPECT_EQ(read.code, 0) << read.err;
        EXPECT_EQ(read.out, "DM:4:2 = 7 8\n") << flags;
    }
}

TEST_F(PanelEndCodeFlagsTest, AWriteIsDone)
{
    start({"--fault", "end-code=0040"});
    const PanelRun write = run("write", {"DM:4=7"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "DM:4 = 7\n");
    EXPECT_EQ(tell("read DM:4"), "ok 7");
}

TEST_F(PanelEndCodeFlagsTest, TheyDoNotHideARefusal)
{
    start({"--profile", "small", "--fault", "end-code=0040"});
    const PanelRun read = run("read", {"DM:2048"});
    EXPECT_EQ(read.code, 1);
    EXPECT_EQ(read.out, "");
    EXPECT_NE(read.err.find("the PLC refuses to read DM:2048: 1103 (the first address is out of range)\n"),
              std::string::npos) << read.err;
}

// Bit 15 is a failure: nobody has carried the command out.
TEST_F(PanelEndCodeFlagsTest, ARelayErrorIsARefusal)
{
    start({"--fault", "end-code=8000"});
    const PanelRun read = run("read", {"DM:4"});
    EXPECT_EQ(read.code, 1);
    EXPECT_EQ(read.out, "");
    EXPECT_NE(read.err.find("the PLC refuses to read DM:4: 8000 (relay error on the way to the destination)\n"),
              std::string::npos) << read.err;
}
