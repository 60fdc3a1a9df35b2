#include "base/messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

std::string saidBy(const std::vector<std::string> &lines)
{
    ::testing::internal::CaptureStderr();
    {
        Messages messages;
        for (const std::string &line : lines)
            messages.say(line);
    }
    return ::testing::internal::GetCapturedStderr();
}

TEST(Messages, DifferentOnesAreAllSaid)
{
    EXPECT_EQ(saidBy({"a", "b", "a"}), "a\nb\na\n");
}

TEST(Messages, EqualOnesInARowAreCounted)
{
    EXPECT_EQ(saidBy({"a", "a", "b"}), "a\n(the last message came 1 more time)\nb\n");
    EXPECT_EQ(saidBy({"a", "a", "a", "b", "b"}), "a\n(the last message came 2 more times)\nb\n"
                                                 "(the last message came 1 more time)\n");
}

TEST(Messages, HushedOnesAreThoseOfTheCourseAlone)
{
    ::testing::internal::CaptureStderr();
    Messages messages;
    messages.sayCourse("connected", "a hint");
    messages.hush();
    messages.sayCourse("lost", "another");
    messages.say("refused", "look at the address");
    messages.sayAlways("unconfirmed");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "connected\nhint: a hint\nrefused\nhint: look at the address\nunconfirmed\n");
}

TEST(Messages, AnEmptyRunSaysNothing)
{
    EXPECT_EQ(saidBy({}), "");
}

TEST(Messages, ASinkGetsEveryOne)
{
    std::vector<std::string> lines;
    ::testing::internal::CaptureStderr();
    Messages messages;
    messages.say("before");
    messages.redirect([&](const Message &message) {
        lines.push_back(message.text + "|" + message.hint + (message.isAlways ? "|always" : "|"));
    });
    messages.sayAlways("w");
    messages.say("a", "do b");
    messages.say("a", "do b");
    messages.redirect(nullptr);
    messages.say("a");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "before\nw\na\n");
    EXPECT_EQ(lines, (std::vector<std::string>{"w||always", "a|do b|", "a|do b|"}));
}

TEST(Messages, AHintFollowsItsMessage)
{
    ::testing::internal::CaptureStderr();
    Messages messages;
    messages.say("refused", "look at the address");
    messages.say("refused", "look at the address");
    messages.finish();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "refused\n"
                                                        "hint: look at the address\n"
                                                        "(the last message came 1 more time)\n");
}

// 100 at once, then ten a second.
class MessageRate : public ::testing::Test {
protected:
    void SetUp() override { ::testing::internal::CaptureStderr(); }

    void note(int count)
    {
        for (int i = 0; i < count; ++i)
            messages.say("number " + std::to_string(next++));
    }

    // Lines so far, and the last two.
    std::size_t lines()
    {
        text = ::testing::internal::GetCapturedStderr();
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    bool endsWith(const std::string &end) const
    {
        return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
    }

    TimePoint   now  = TimePoint(std::chrono::hours(1));
    int         next = 0;
    Messages    messages{[this] { return now; }};
    std::string text;
};

TEST_F(MessageRate, ThoseBeyondABurstAreCounted)
{
    note(102);
    messages.finish();
    EXPECT_EQ(lines(), 101u);
    EXPECT_TRUE(endsWith("number 99\n(2 messages were left out: too many in a short time)\n")) << text;
}

TEST_F(MessageRate, TheirNumberIsSaidBeforeTheNext)
{
    note(101);
    now += std::chrono::milliseconds(99);
    note(1);
    now += std::chrono::milliseconds(1);
    note(1);
    EXPECT_EQ(lines(), 102u);
    EXPECT_TRUE(endsWith("number 99\n(2 messages were left out: too many in a short time)\nnumber 102\n")) << text;
}

TEST_F(MessageRate, OneThatWasLeftOut)
{
    note(101);
    messages.finish();
    messages.finish();
    EXPECT_EQ(lines(), 101u);
    EXPECT_TRUE(endsWith("number 99\n(1 message was left out: too many in a short time)\n")) << text;
}

TEST_F(MessageRate, APauseGivesBackOneBurstAtMost)
{
    note(100);
    now += std::chrono::hours(1);
    note(101);
    messages.finish();
    EXPECT_EQ(lines(), 201u);
}

TEST_F(MessageRate, WhatWasAskedForIsNeverLeftOut)
{
    note(100);
    for (int i = 0; i < 200; ++i)
        messages.sayAlways("write " + std::to_string(i));
    EXPECT_EQ(lines(), 300u);
    EXPECT_TRUE(endsWith("write 199\n"));
}

} // namespace
