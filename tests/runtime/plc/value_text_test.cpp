#include "plc/value_text.h"

#include <gtest/gtest.h>

using fins::Value;

static Value valueOf(DataType type, const std::vector<quint8> &bytes, double scale = 1)
{
    ValueFormat format;
    format.type  = type;
    format.scale = scale;
    format.order = type == DataType::STRING ? Order::HIGH : format.order; // as an item without -low or -high
    return fins::valueOf(format, bytes);
}

// The driver's words have their low byte first.
TEST(ValueText, MakesValuesOfWords)
{
    EXPECT_EQ(valueOf(DataType::U16, {0xFE, 0xFF}), Value(std::int64_t(65534)));
    EXPECT_EQ(valueOf(DataType::S16, {0xFE, 0xFF}), Value(std::int64_t(-2)));
    EXPECT_EQ(valueOf(DataType::HEX, {0x34, 0x12}), Value(std::int64_t(0x1234)));
    EXPECT_EQ(valueOf(DataType::BITS, {0x05, 0x80}), Value(std::int64_t(0x8005)));
    EXPECT_EQ(valueOf(DataType::BCD16, {0x34, 0x12}), Value(std::int64_t(1234)));
    EXPECT_EQ(valueOf(DataType::BIT, {1}), Value(true));
    EXPECT_EQ(valueOf(DataType::U16, {10, 0}, 0.5), Value(5.0));
    EXPECT_EQ(valueOf(DataType::STRING, {'B', 'A', 0, 'C'}), Value(std::string("ABC")));
    EXPECT_EQ(valueOf(DataType::U64, std::vector<quint8>(8, 0xFF)), Value(std::uint64_t(18446744073709551615U)));
}

TEST(ValueText, MakesNoValueOfWordsThatAreNoNumber)
{
    EXPECT_EQ(valueOf(DataType::BCD16, {0xFF, 0xFF}), Value());
}

TEST(ValueText, WritesValuesAsPeopleDo)
{
    EXPECT_EQ(fins::textOf(Value()), "");
    EXPECT_EQ(fins::textOf(Value(true)), "1");
    EXPECT_EQ(fins::textOf(Value(false)), "0");
    EXPECT_EQ(fins::textOf(Value(std::int64_t(-7))), "-7");
    EXPECT_EQ(fins::textOf(Value(std::uint64_t(18446744073709551615U))), "18446744073709551615");
    EXPECT_EQ(fins::textOf(Value(0.1)), "0.1");
    EXPECT_EQ(fins::textOf(Value(std::string("PUMP"))), "PUMP");
}
