#include "values/awaited_words.h"

#include <gtest/gtest.h>

namespace {

const QString DM = QString::fromLatin1("DM");
const QString HR = QString::fromLatin1("HR");

} // namespace

TEST(AwaitedWords, IsCompleteWithoutItems)
{
    EXPECT_TRUE(AwaitedWords().complete());
}

TEST(AwaitedWords, AwaitsEveryWord)
{
    AwaitedWords coverage;
    coverage.expect({{DM, 100, 3, false}, {HR, 100, 1, false}});
    EXPECT_EQ(coverage.settle(DM, 100, 2), 2u);
    EXPECT_FALSE(coverage.complete());
    EXPECT_EQ(coverage.settle(DM, 102, 1), 1u);
    EXPECT_FALSE(coverage.complete());
    EXPECT_EQ(coverage.settle(HR, 100, 1), 1u);
    EXPECT_TRUE(coverage.complete());
}

TEST(AwaitedWords, CountsOnlyExpectedWords)
{
    AwaitedWords coverage;
    coverage.expect({{DM, 100, 2, false}, {DM, 101, 1, false}});
    EXPECT_EQ(coverage.settle(DM, 90, 10), 0u);
    EXPECT_EQ(coverage.settle(DM, 102, 5), 0u);
    EXPECT_EQ(coverage.settle(HR, 100, 5), 0u);
    EXPECT_EQ(coverage.settle(DM, 90, 30), 2u);
    EXPECT_EQ(coverage.settle(DM, 90, 30), 0u);
}

TEST(AwaitedWords, ABitAwaitsItsWord)
{
    AwaitedWords coverage;
    const Item bits = {QString::fromLatin1("DM_bit"), 175, 2, true}; // 10.15 and 11.0
    coverage.expect({bits});
    EXPECT_TRUE(coverage.awaits(bits));
    EXPECT_EQ(coverage.settle(DM, 10, 1), 1u);
    EXPECT_TRUE(coverage.awaits(bits));
    EXPECT_FALSE(coverage.awaits({DM, 10, 1, false}));
    EXPECT_FALSE(coverage.awaits({HR, 11, 1, false}));
    EXPECT_TRUE(coverage.awaits({DM, 11, 1, false}));
    EXPECT_EQ(coverage.settle(DM, 11, 1), 1u);
    EXPECT_FALSE(coverage.awaits(bits));
}
