#include "panel_run.h"

// Data types on the command line: reading, writing, refusals, and runs that send nothing.

class PanelValuesTest : public PanelTest {};

TEST_F(PanelValuesTest, EveryTypeIsWrittenAndReadBack)
{
    start();
    const PanelRun write = run("write", {"DM:0/u16=65535", "DM:1/s16=-2", "DM:2/u32=305419896", "DM:4/s32=-2",
                                         "DM:6/u64=81985529216486895", "DM:10/s64=-2", "DM:14/f32=1.5", "DM:16/f64=1.5",
                                         "DM:20/bcd16=1234", "DM:21/bcd32=12345678", "DM:23/hex=1aF",
                                         "DM:24/bits=101", "DM:25/string=AB, C", "DM:28/string-low=AB"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "DM:0/u16 = 65535\nDM:1/s16 = -2\nDM:2/u32 = 305419896\nDM:4/s32 = -2\n"
                         "DM:6/u64 = 81985529216486895\nDM:10/s64 = -2\nDM:14/f32 = 1.5\nDM:16/f64 = 1.5\n"
                         "DM:20/bcd16 = 1234\nDM:21/bcd32 = 12345678\nDM:23/hex = 0x01AF\n"
                         "DM:24/bits = 0000_0000_0000_0101\nDM:25:3/string = \"AB, C\"\nDM:28/string-low = \"AB\"\n");
    EXPECT_EQ(tell("read DM:0:6"), "ok 65535 65534 22136 4660 65534 65535");
    EXPECT_EQ(tell("read DM:6:8"), "ok 52719 35243 17767 291 65534 65535 65535 65535");
    EXPECT_EQ(tell("read DM:14:6"), "ok 0 16320 0 0 0 16376");
    EXPECT_EQ(tell("read DM:20:5"), "ok 4660 22136 4660 431 5");
    EXPECT_EQ(tell("read DM:25:4"), "ok 16706 11296 17152 16961");
}

TEST_F(PanelValuesTest, TheOtherWordOrder)
{
    start();
    EXPECT_EQ(run("write", {"DM:0/u32-high=305419896", "DM:2/f32=1.5", "--word-order", "high"}).out,
              "DM:0/u32-high = 305419896\nDM:2/f32-high = 1.5\n");
    EXPECT_EQ(tell("read DM:0:4"), "ok 4660 22136 16320 0");
    EXPECT_EQ(run("read", {"DM:0", "DM:0/u32-low", "--as", "u32", "--word-order", "high"}).out,
              "DM:0/u32-high = 305419896\nDM:0/u32 = 1450709556\n");
    EXPECT_EQ(run("read", {"DM:0", "--as", "string", "--char-order", "low"}).out, "DM:0/string-low = \"4\\x12\"\n");
}

TEST_F(PanelValuesTest, ATypeForAllItems)
{
    start();
    ASSERT_EQ(tell("write DM:0 65535"), "ok");
    ASSERT_EQ(tell("write CIO:0 8"), "ok");
    const PanelRun read = run("read", {"DM:0:2", "DM:0/u16", "CIO_bit:0.3", "--as", "s16"});
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, "DM:0:2/s16 = -1 0\nDM:0/u16 = 65535\nCIO_bit:0.3 = 1\n");
}

TEST_F(PanelValuesTest, ScaleUnitAndDecimals)
{
    start();
    ASSERT_EQ(tell("write DM:0 1005"), "ok");
    EXPECT_EQ(run("read", {"DM:0", "--scale", "0.1", "--unit", "bar"}).out, "DM:0 = 100.5 bar\n");
    EXPECT_EQ(run("read", {"DM:0", "--scale", "0.1", "--offset", "-40", "--decimals", "2"}).out, "DM:0 = 60.50\n");
    EXPECT_EQ(run("write", {"DM:1=12.3", "--as", "s16", "--scale", "0.1"}).out, "DM:1/s16 = 12.3\n");
    EXPECT_EQ(tell("read DM:1"), "ok 123");
}

TEST_F(PanelValuesTest, WhatDoesNotFitIsRefusedBeforeAnythingIsSent)
{
    start();
    expectRefused(arguments("write", {"DM:0/u16=65536"}),
                  "fins_panel: 'DM:0/u16=65536' does not fit u16; use a whole number from 0 to 65535, decimal or with 0x");
    expectRefused(arguments("write", {"DM:0=5", "DM:9/s16=32768"}),
                  "fins_panel: 'DM:9/s16=32768' does not fit s16; use a whole number from -32768 to 32767, decimal or with 0x");
    expectRefused(arguments("write", {"DM:0/f32=nan"}),
                  "fins_panel: 'DM:0/f32=nan' does not fit f32; use a decimal number whose size fits f32");
    expectRefused(arguments("write", {"DM:0=6553.6", "--scale", "0.1"}),
                  "fins_panel: 'DM:0=6553.6' does not fit word; use a number from 0 to 6553.5");
    expectRefused(arguments("write", {"CIO_bit:0.0=2"}), "fins_panel: 'CIO_bit:0.0=2' is not a bit value; use 0 or 1, OFF or ON");
    expectRefused(arguments("write", {"DM:0:2/string=ABCDE"}), "fins_panel: 'DM:0:2/string=ABCDE' has 5 characters; 4 fit");
    expectRefused(arguments("write", {"DM:0:2/f32=1"}), "fins_panel: 'DM:0:2/f32' holds 2 values, and 1 is given; write as many as it holds");
    expectRefused(arguments("write", {"DM:0/u32=1", "DM:1=2"}),
                  "fins_panel: DM:0:2 and DM:1 overlap; name every word and bit once");
    expectRefused(arguments("read", {"DM:32767/f32"}),
                  "fins_panel: 'DM:32767' lies outside the range 0 to 32767, written ddddd");
    expectRefused(arguments("read", {"CIO_bit:0.0/u16"}),
                  "fins_panel: 'CIO_bit:0.0/u16': a bit has no data type; write CIO_bit:0.0");
    expectRefused(arguments("read", {"DM:0/f32-big"}),
                  "fins_panel: 'f32-big' is not a data type; write f32, f32-low or f32-high");
    expectRefused(arguments("read", {"DM:0", "--scale", "0"}),
                  "fins_panel: --scale: '0' is not a number from -1e+15 to 1e+15, not 0; see fins_panel --help");
    expectRefused(arguments("read", {"DM:0", "--as", "hex", "--decimals", "1"}),
                  "fins_panel: --decimals is for numbers; leave it out, or change --as hex");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelValuesTest, DryRunShowsTheFramesAndSendsNothing)
{
    start();
    const PanelRun dry = run("write", {"DM:100/f32=1.5", "CIO_bit:5.3:2=1,0", "C:5=258", "DM:300:3=1,2,3", "--dry-run",
                                       "--words-per-frame", "2"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_EQ(dry.out, "DM:100/f32 = 1.5\n"
                       "  DM:100:2: area 82, wire address 0064 00, count 0002, bytes 00 00 3F C0\n"
                       "CIO_bit:5.3:2 = 1 0\n"
                       "  CIO_bit:5.3:2: area 30, wire address 0005 03, count 0002, bytes 01 00\n"
                       "C:5 = 258\n"
                       "  C:5: area 89, wire address 8005 00, count 0001, bytes 01 02\n"
                       "DM:300:3 = 1 2 3\n"
                       "  DM:300:2: area 82, wire address 012C 00, count 0002, bytes 00 01 00 02\n"
                       "  DM:302: area 82, wire address 012E 00, count 0001, bytes 00 03\n");
    EXPECT_EQ(dry.err, "if the PLC refuses for its operating mode, it is not asked for another one; --allow-mode-change asks "
                       "for MONITOR mode\ndry run: nothing was sent\n");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

// The driver serves five writes before a poll.
TEST_F(PanelValuesTest, DryRunOfManyWrites)
{
    Words writes = {"write", "192.0.2.1", "--dry-run"};
    for (int i = 0; i < 12; ++i)
        writes.push_back("HR:" + std::to_string(2 * i) + "=" + std::to_string(i));
    const PanelRun dry = runPanel(writes);
    EXPECT_EQ(dry.code, 0);
    const Words lines = linesOf(dry.out);
    ASSERT_EQ(lines.size(), 24u);
    EXPECT_EQ(lines[22], "HR:22 = 11");
    EXPECT_EQ(lines[23], "  HR:22: area B2, wire address 0016 00, count 0001, bytes 00 0B");
}

TEST(PanelCheckTest, ChecksDataTypes)
{
    const PanelRun check = runPanel({"check", "DM:0:3/f32", "DM:5", "--as", "u32"});
    EXPECT_EQ(check.code, 0);
    EXPECT_EQ(check.out, "DM:0:3/f32 valid\nDM:5/u32 valid\n");
    const PanelRun bad = runPanel({"check", "DM:32767/u32", "DM:1/f32"});
    EXPECT_EQ(bad.code, 2);
    EXPECT_EQ(bad.out, "DM:1/f32 valid\n");
    EXPECT_EQ(bad.err, "fins_panel: 'DM:32767' lies outside the range 0 to 32767, written ddddd\n");
}
