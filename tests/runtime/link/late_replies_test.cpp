#include "link/late_replies.h"

#include <gtest/gtest.h>

TEST(LateReplies, KnowsNoneAtFirst)
{
    LateReplies late;
    for (int again = 0; again < 2; ++again) {
        EXPECT_FALSE(late.settle(0));
        EXPECT_FALSE(late.settle(255));
    }
}

TEST(LateReplies, SettlesEachUnansweredRequestOnce)
{
    LateReplies late;
    late.unanswered(7);
    late.unanswered(7);
    late.unanswered(255);
    EXPECT_FALSE(late.settle(8));
    EXPECT_TRUE(late.settle(7));
    EXPECT_TRUE(late.settle(7));
    EXPECT_FALSE(late.settle(7));
    EXPECT_TRUE(late.settle(255));
}

TEST(LateReplies, ForgetsOnANewConnection)
{
    LateReplies late;
    late.unanswered(7);
    late.forget();
    EXPECT_FALSE(late.settle(7));
}

TEST(LateReplies, CountsNoFurtherThan255)
{
    LateReplies late;
    for (int i = 0; i < 256; ++i)
        late.unanswered(1);
    for (int i = 0; i < 255; ++i)
        ASSERT_TRUE(late.settle(1)) << i;
    EXPECT_FALSE(late.settle(1));
}
