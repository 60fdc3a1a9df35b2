#include "commands/bench_table.h"

#include <gtest/gtest.h>

namespace {

BenchRow row(int size, int micros)
{
    BenchRow one = {};
    one.wordsPerFrame = size;
    one.elapsed  = std::chrono::seconds(2);
    one.requests = 300;
    one.words    = 5000;
    one.cycles.add(Micros(micros));
    return one;
}

TEST(BenchTable, Head)
{
    EXPECT_EQ(benchHead(500, 2), "polling 500 words in 2 items; refresh time in ms\n"
                                 "WORDS/FRAME    MEDIAN     95 %      MAX  REQUESTS/S     WORDS/S\n");
    EXPECT_EQ(benchHead(1, 1).substr(0, 50), "polling 1 word in 1 item; refresh time in ms\nWORDS");
}

TEST(BenchTable, Lines)
{
    EXPECT_EQ(benchLine(row(64, 12500)), "         64      12.5     12.5     12.5         150        2500");
    BenchRow refused = row(400, 1);
    refused.refusal = "110B (the response is too long)";
    EXPECT_EQ(benchLine(refused), "        400  refused: 110B (the response is too long)");
}

TEST(BenchTable, AdvisesTheSmallestBlockThatIsNearlyAsFast)
{
    const std::string tail = " words per frame: larger blocks gain less than a tenth\n";
    EXPECT_EQ(benchAdvice({row(8, 2000), row(16, 1100), row(32, 1000)}), "choose 16" + tail);
    EXPECT_EQ(benchAdvice({row(8, 2000), row(16, 1101), row(32, 1000)}), "choose 32" + tail);
    EXPECT_EQ(benchAdvice({row(32, 1000), row(16, 1000)}), "choose 16" + tail);
}

TEST(BenchTable, AdvisesNoBlockThatIsRefused)
{
    BenchRow refused = row(64, 1);
    refused.refusal = "110B";
    EXPECT_EQ(benchAdvice({row(32, 1000), refused}).substr(0, 10), "choose 32 ");
    EXPECT_EQ(benchAdvice({refused}), "the PLC refuses every block size\n");
}

TEST(BenchTable, WarnsWhereAWriteCannotFollow)
{
    const std::string warning = "a panel that writes has to stay at 114 words per frame\n";
    EXPECT_EQ(benchAdvice({row(114, 1000)}).find(warning), std::string::npos);
    EXPECT_NE(benchAdvice({row(115, 1000)}).find(warning), std::string::npos);
}

} // namespace
