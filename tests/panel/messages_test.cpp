#include "messages.h"

#include <gtest/gtest.h>

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

TEST(Messages, different_ones_are_all_said)
{
    EXPECT_EQ(saidBy({"a", "b", "a"}), "a\nb\na\n");
}

TEST(Messages, equal_ones_in_a_row_are_counted)
{
    EXPECT_EQ(saidBy({"a", "a", "b"}), "a\n(the last message came 1 more time)\nb\n");
    EXPECT_EQ(saidBy({"a", "a", "a", "b", "b"}), "a\n(the last message came 2 more times)\nb\n"
                                                 "(the last message came 1 more time)\n");
}

TEST(Messages, an_empty_run_says_nothing)
{
    EXPECT_EQ(saidBy({}), "");
}

TEST(Messages, a_sink_gets_every_one)
{
    std::vector<std::string> lines;
    ::testing::internal::CaptureStderr();
    Messages messages;
    messages.say("before");
    messages.redirect([&](const std::string &line) { lines.push_back(line); });
    messages.say("a");
    messages.say("a");
    messages.redirect(nullptr);
    messages.say("a");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "before\na\n");
    EXPECT_EQ(lines, (std::vector<std::string>{"a", "a"}));
}

} // namespace
