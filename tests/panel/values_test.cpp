#include "values.h"

#include "panel_fixture.h"

namespace {

using Bytes = std::vector<quint8>;

Bytes word(const std::string &text)
{
    Bytes bytes;
    appendValue(text, false, bytes);
    return bytes;
}

std::string refusal(const std::string &text, bool isBit)
{
    return usageError([&] {
        Bytes bytes;
        appendValue(text, isBit, bytes);
    });
}

} // namespace

TEST(Values, WordsAreLowByteFirst)
{
    EXPECT_EQ(word("0"), (Bytes{0x00, 0x00}));
    EXPECT_EQ(word("65535"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(word("258"), (Bytes{0x02, 0x01}));
    EXPECT_EQ(word("0x1234"), (Bytes{0x34, 0x12}));
    EXPECT_EQ(word("0XfFfF"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(word("-1"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(word("-32768"), (Bytes{0x00, 0x80}));
}

TEST(Values, RefusesWhatIsNoWord)
{
    for (const char *text : {"65536", "-32769", "", "-", "0x", "0x10000", "1a", "1.5", " 1", "1 ", "+1", "--1", "0x-1",
                             "99999999999999999999", "x"})
        EXPECT_EQ(refusal(text, false),
                  "'" + std::string(text) + "' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
}

TEST(Values, ABitIsOneByte)
{
    Bytes bytes;
    appendValue("1", true, bytes);
    appendValue("0", true, bytes);
    EXPECT_EQ(bytes, (Bytes{1, 0}));
}

TEST(Values, RefusesWhatIsNoBit)
{
    for (const char *text : {"2", "-1", "on", ""})
        EXPECT_EQ(refusal(text, true), "'" + std::string(text) + "' is not a bit value; use 0 or 1");
}

TEST(Values, PrintsValuesInDecimal)
{
    EXPECT_EQ(valuesText({0x34, 0x12, 0xFF, 0xFF, 0x00, 0x00}, false), "4660 65535 0");
    EXPECT_EQ(valuesText({1, 0, 1}, true), "1 0 1");
    EXPECT_EQ(valueText({0x34, 0x12, 0x02, 0x01}, 1, false), "258");
    EXPECT_EQ(valueText({0, 1}, 1, true), "1");
    EXPECT_EQ(valuesText({}, false), "");
}

TEST(Values, ParsesNumbersWithinTheirRange)
{
    long value = 77;
    EXPECT_TRUE(parseNumber("5", 5, 9, value));
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(parseNumber("9", 5, 9, value));
    EXPECT_EQ(value, 9);
    EXPECT_FALSE(parseNumber("4", 5, 9, value));
    EXPECT_FALSE(parseNumber("10", 5, 9, value));
    EXPECT_EQ(value, 9);
    EXPECT_TRUE(parseNumber("-0x10", -16, 0, value));
    EXPECT_EQ(value, -16);
}
