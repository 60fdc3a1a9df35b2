#include <gtest/gtest.h>

#include "fins_runtime/plc.h"

#include <cstdint>

using fins::Assignment;
using fins::Value;

TEST(Assignment, KeepsTheFractionOfANumber)
{
    EXPECT_EQ(Value(2.5), Assignment("DM:0/f32", 2.5).values.at(0));
    EXPECT_EQ(Value(-0.25), Assignment("DM:0/f32", -0.25F).values.at(0));
}

TEST(Assignment, KeepsEveryBitOfAnInteger)
{
    EXPECT_EQ(Value(std::int64_t(0)), Assignment("DM:0", 0).values.at(0));
    EXPECT_EQ(Value(std::int64_t(-1)), Assignment("DM:0", -1).values.at(0));
    EXPECT_EQ(Value(std::int64_t(65535)), Assignment("DM:0", std::uint16_t(65535)).values.at(0));
    EXPECT_EQ(Value(std::int64_t(1) << 40), Assignment("DM:0/s64", std::int64_t(1) << 40).values.at(0));
    EXPECT_EQ(Value(INT64_MIN), Assignment("DM:0/s64", INT64_MIN).values.at(0));
    EXPECT_EQ(Value(INT64_MAX), Assignment("DM:0/u64", std::uint64_t(INT64_MAX)).values.at(0));
    EXPECT_EQ(Value(UINT64_MAX), Assignment("DM:0/u64", UINT64_MAX).values.at(0));
}

TEST(Assignment, TellsTruthFromNumbersAndTexts)
{
    EXPECT_EQ(Value(true), Assignment("CIO_bit:0.0", true).values.at(0));
    EXPECT_EQ(Value(std::string("12")), Assignment("DM:0", "12").values.at(0));
    EXPECT_EQ(Value(std::string("12")), Assignment("DM:0", std::string("12")).values.at(0));
}

TEST(Assignment, TakesSeveralValues)
{
    const std::vector<Value> expected = {std::int64_t(1), 2.5, std::string("3")};
    EXPECT_EQ(expected, Assignment("DM:0:3/f32", {std::int64_t(1), 2.5, std::string("3")}).values);
}
