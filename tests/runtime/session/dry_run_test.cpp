#include "session/dry_run.h"

#include "support/built_driver.h"

namespace {

using Lines = std::vector<std::string>;

Item dm(qint32 address, qint32 count)
{
    return {QString::fromLatin1("DM"), address, count, false};
}

LinkOptions withWordsPerFrame(qint32 words)
{
    LinkOptions options;
    options.wordsPerFrame = words;
    return options;
}

// Words have their low byte first, and their high byte first on the wire.
TEST(DryRun, ShowsOneLineForEachFrameOfAWrite)
{
    DryRun dryRun(builtDriver(), withWordsPerFrame(2));
    EXPECT_EQ(dryRun.write(dm(100, 3), {0x01, 0x02, 0x03, 0x04, 0x05, 0x06}),
              (Lines{"DM:100:2: area 82, wire address 0064 00, count 0002, bytes 02 01 04 03",
                     "DM:102: area 82, wire address 0066 00, count 0001, bytes 06 05"}));
    EXPECT_EQ(dryRun.write({QString::fromLatin1("CIO_bit"), 3 * 16 + 5, 2, true}, {1, 0}),
              (Lines{"CIO_bit:3.5:2: area 30, wire address 0003 05, count 0002, bytes 01 00"}));
}

// Above 114 words the length byte of the frame wraps.
TEST(DryRun, CutsAWriteAt114WordsWhateverIsRead)
{
    DryRun dryRun(builtDriver(), withWordsPerFrame(400));
    const Lines lines = dryRun.write(dm(0, 115), std::vector<quint8>(230, 0));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].substr(0, 58), "DM:0:114: area 82, wire address 0000 00, count 0072, bytes");
    EXPECT_EQ(lines[0].size(), 58u + 114 * 2 * 3);
    EXPECT_EQ(lines[1], "DM:114: area 82, wire address 0072 00, count 0001, bytes 00 00");
}

TEST(DryRun, ShowsTheFramesOfARecipe)
{
    DryRun dryRun(builtDriver(), withWordsPerFrame(2));
    EXPECT_EQ(dryRun.writeRecipe({{dm(200, 1), {0x0D, 0x0C}}, {dm(100, 3), {0x01, 0x02, 0x03, 0x04, 0x05, 0x06}}}),
              (Lines{"DM:100:2: area 82, wire address 0064 00, count 0002, bytes 02 01 04 03",
                     "DM:102: area 82, wire address 0066 00, count 0001, bytes 06 05",
                     "DM:200: area 82, wire address 00C8 00, count 0001, bytes 0C 0D"}));
}

TEST(DryRun, SaysThatNothingWasSent)
{
    LinkOptions options;
    EXPECT_EQ(dryRunText(options), "if the PLC refuses for its operating mode, it is not asked for another one; "
                                   "--allow-mode-change asks for MONITOR mode\ndry run: nothing was sent");
    options.allowModeChange = true;
    EXPECT_EQ(dryRunText(options), "if the PLC refuses for its operating mode, it is asked for MONITOR mode, in which its "
                                   "program runs (--allow-mode-change)\ndry run: nothing was sent");
}

} // namespace
