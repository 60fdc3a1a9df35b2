#include "base/calls.h"

#include <gtest/gtest.h>

#include <string>

TEST(Calls, TellsInOrderAndOnlyWhileTheHandleLasts)
{
    Calls<int, std::string> calls;
    std::string heard;
    const CallHandle first = calls.add([&](int number, const std::string &text) {
        heard += "first " + std::to_string(number) + text + ". ";
    });
    CallHandle second = calls.add([&](int number, const std::string &) { heard += "second " + std::to_string(number); });
    calls.tell(1, "a");
    EXPECT_EQ(heard, "first 1a. second 1");
    second.reset();
    heard.clear();
    calls.tell(2, "b");
    EXPECT_EQ(heard, "first 2b. ");
}
