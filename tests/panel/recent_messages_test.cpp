#include "watch/recent_messages.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

const Message REFUSED = {"DM:1 refused", "look at the address", false};
const Message LOST    = {"link lost", "", false};
const Message WRITE   = {"unconfirmed: DM:5", "", true};

RecentMessages of(const std::vector<Message> &messages)
{
    RecentMessages recent;
    for (const Message &message : messages)
        recent.add(message);
    return recent;
}

std::string saidBy(const RecentMessages &recent)
{
    ::testing::internal::CaptureStderr();
    {
        Messages messages;
        recent.sayTo(messages);
    }
    return ::testing::internal::GetCapturedStderr();
}

TEST(RecentMessages, TheNewestIsTheLastLine)
{
    EXPECT_EQ(of({}).lines(3), Lines());
    EXPECT_EQ(of({LOST, WRITE}).lines(3), (Lines{"link lost", "unconfirmed: DM:5"}));
    EXPECT_EQ(of({LOST, WRITE}).lines(1), (Lines{"unconfirmed: DM:5"}));
}

TEST(RecentMessages, AHintStandsBehindItsMessage)
{
    EXPECT_EQ(of({LOST, REFUSED}).lines(3), (Lines{"link lost", "DM:1 refused", "hint: look at the address"}));
    EXPECT_EQ(of({REFUSED, LOST}).lines(3), (Lines{"DM:1 refused", "hint: look at the address", "link lost"}));
}

TEST(RecentMessages, AHintNeverTakesThePlaceOfItsMessage)
{
    EXPECT_EQ(of({REFUSED}).lines(1), (Lines{"DM:1 refused"}));
    EXPECT_EQ(of({REFUSED, LOST}).lines(2), (Lines{"DM:1 refused", "link lost"}));
    EXPECT_EQ(of({REFUSED}).lines(0), Lines());
}

TEST(RecentMessages, OneThatComesAgainIsCountedAndTheLatest)
{
    EXPECT_EQ(of({LOST, WRITE, LOST, LOST}).lines(3), (Lines{"unconfirmed: DM:5", "link lost (3 times)"}));
}

TEST(RecentMessages, AllAreSaidInTheEndButForThoseThatAreAnyway)
{
    EXPECT_EQ(saidBy(of({REFUSED, LOST, WRITE, LOST})), "DM:1 refused\n"
                                                        "hint: look at the address\n"
                                                        "link lost (2 times)\n");
    EXPECT_EQ(saidBy(of({})), "");
}

RecentMessages numbered(int count)
{
    RecentMessages recent = of({WRITE});
    for (int i = 1; i <= count; ++i)
        recent.add({"message " + std::to_string(i), "", false});
    return recent;
}

TEST(RecentMessages, TheLatestTenAreLeft)
{
    EXPECT_EQ(numbered(15).lines(20).size(), 10u);
    EXPECT_EQ(saidBy(numbered(15)), "(5 earlier messages are not shown)\n"
                                    "message 6\nmessage 7\nmessage 8\nmessage 9\nmessage 10\n"
                                    "message 11\nmessage 12\nmessage 13\nmessage 14\nmessage 15\n");
    EXPECT_EQ(saidBy(numbered(11)).find("(1 earlier message is not shown)\nmessage 2\n"), 0u);
    EXPECT_EQ(saidBy(numbered(10)).find("message 1\n"), 0u); // the write alone is gone
}

} // namespace
