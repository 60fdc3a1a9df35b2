#include "values/codec.h"

#include "support/built_driver.h"

#include <limits>
#include <map>

namespace {

using Bytes = std::vector<quint8>;
using Texts = std::vector<std::string>;

ValueFormat format(const std::string &text)
{
    return parseFormat(text, OrderDefaults());
}

ValueFormat scaled(const std::string &type, double scale, double offset = 0, int decimals = -1)
{
    ValueFormat form = format(type);
    form.scale    = scale;
    form.offset   = offset;
    form.decimals = decimals;
    return form;
}

Bytes encode(const ValueFormat &form, const std::string &text)
{
    return encodeValues(form, {text});
}

std::string refusal(const ValueFormat &form, const std::string &text)
{
    return usageError([&] { encodeValues(form, {text}); });
}

std::string refusal(const std::string &type, const std::string &text)
{
    return refusal(format(type), text);
}

// One value in words and as text: low byte of the first word first.
struct RoundTrip {
    const char *type;
    const char *text;
    Bytes       bytes;
};

void PrintTo(const RoundTrip &row, std::ostream *out)
{
    *out << row.type << " " << row.text;
}

class CodecRoundTrip : public ::testing::TestWithParam<RoundTrip> {};

// What the message offers instead of a text that does not fit the type.
const std::map<std::string, std::string> FITTING = {
    {"u16", "a whole number from 0 to 65535, decimal or with 0x"},
    {"s16", "a whole number from -32768 to 32767, decimal or with 0x"},
    {"u32", "a whole number from 0 to 4294967295, decimal or with 0x"},
    {"s32", "a whole number from -2147483648 to 2147483647, decimal or with 0x"},
    {"u64", "a whole number from 0 to 18446744073709551615, decimal or with 0x"},
    {"s64", "a whole number from -9223372036854775808 to 9223372036854775807, decimal or with 0x"},
    {"bcd16", "a whole number from 0 to 9999, decimal or with 0x"},
    {"bcd32", "a whole number from 0 to 99999999, decimal or with 0x"},
    {"hex", "0x0 to 0xFFFF"},
    {"bits", "1 to 16 digits of 0 and 1, bit 15 first"},
    {"f32", "a decimal number whose size fits f32"},
    {"f64", "a decimal number whose size fits f64"},
};

void expectMisfits(const std::string &type, const Texts &texts)
{
    for (const std::string &text : texts)
        EXPECT_EQ(refusal(type, text), "'" + text + "' does not fit " + type + "; use " + FITTING.at(type));
}

} // namespace

TEST_P(CodecRoundTrip, EncodesAndDecodes)
{
    const RoundTrip &row = GetParam();
    const ValueFormat form = format(row.type);
    EXPECT_EQ(decodeValue(form, row.bytes, 0), row.text);
    EXPECT_EQ(encode(form, row.text), row.bytes);
}

INSTANTIATE_TEST_SUITE_P(Words, CodecRoundTrip, ::testing::Values(
    RoundTrip{"u16", "0", {0x00, 0x00}},
    RoundTrip{"u16", "4660", {0x34, 0x12}},
    RoundTrip{"u16", "32768", {0x00, 0x80}},
    RoundTrip{"u16", "65535", {0xFF, 0xFF}},
    RoundTrip{"s16", "-32768", {0x00, 0x80}},
    RoundTrip{"s16", "-2", {0xFE, 0xFF}},
    RoundTrip{"s16", "-1", {0xFF, 0xFF}},
    RoundTrip{"s16", "0", {0x00, 0x00}},
    RoundTrip{"s16", "32767", {0xFF, 0x7F}},
    RoundTrip{"bcd16", "0", {0x00, 0x00}},
    RoundTrip{"bcd16", "1234", {0x34, 0x12}},
    RoundTrip{"bcd16", "9999", {0x99, 0x99}},
    RoundTrip{"hex", "0x0000", {0x00, 0x00}},
    RoundTrip{"hex", "0x00AF", {0xAF, 0x00}},
    RoundTrip{"hex", "0xFFFF", {0xFF, 0xFF}},
    RoundTrip{"bits", "0000_0000_0000_0001", {0x01, 0x00}},
    RoundTrip{"bits", "1000_0000_0000_0000", {0x00, 0x80}},
    RoundTrip{"bits", "0001_0010_1010_1011", {0xAB, 0x12}},
    RoundTrip{"bits", "1111_1111_1111_1111", {0xFF, 0xFF}}));

INSTANTIATE_TEST_SUITE_P(DoubleWords, CodecRoundTrip, ::testing::Values(
    RoundTrip{"u32", "0", {0x00, 0x00, 0x00, 0x00}},
    RoundTrip{"u32", "305419896", {0x78, 0x56, 0x34, 0x12}},
    RoundTrip{"u32-low", "305419896", {0x78, 0x56, 0x34, 0x12}},
    RoundTrip{"u32-high", "305419896", {0x34, 0x12, 0x78, 0x56}},
    RoundTrip{"u32", "2147483648", {0x00, 0x00, 0x00, 0x80}},
    RoundTrip{"u32", "4294967295", {0xFF, 0xFF, 0xFF, 0xFF}},
    RoundTrip{"s32", "-2147483648", {0x00, 0x00, 0x00, 0x80}},
    RoundTrip{"s32", "-2", {0xFE, 0xFF, 0xFF, 0xFF}},
    RoundTrip{"s32-high", "-2", {0xFF, 0xFF, 0xFE, 0xFF}},
    RoundTrip{"s32", "2147483647", {0xFF, 0xFF, 0xFF, 0x7F}},
    RoundTrip{"bcd32", "0", {0x00, 0x00, 0x00, 0x00}},
    RoundTrip{"bcd32", "12345678", {0x78, 0x56, 0x34, 0x12}},
    RoundTrip{"bcd32-high", "12345678", {0x34, 0x12, 0x78, 0x56}},
    RoundTrip{"bcd32", "99999999", {0x99, 0x99, 0x99, 0x99}},
    RoundTrip{"f32", "0", {0x00, 0x00, 0x00, 0x00}},
    RoundTrip{"f32", "1.5", {0x00, 0x00, 0xC0, 0x3F}},
    RoundTrip{"f32-high", "1.5", {0xC0, 0x3F, 0x00, 0x00}},
    RoundTrip{"f32", "-2.25", {0x00, 0x00, 0x10, 0xC0}},
    RoundTrip{"f32", "0.1", {0xCD, 0xCC, 0xCC, 0x3D}},
    RoundTrip{"f32", "-0", {0x00, 0x00, 0x00, 0x80}},
    RoundTrip{"f32", "3.4028235e+38", {0xFF, 0xFF, 0x7F, 0x7F}},
    RoundTrip{"f32", "-3.4028235e+38", {0xFF, 0xFF, 0x7F, 0xFF}},
    RoundTrip{"f32", "1e-45", {0x01, 0x00, 0x00, 0x00}}));

INSTANTIATE_TEST_SUITE_P(FourWords, CodecRoundTrip, ::testing::Values(
    RoundTrip{"u64", "0", {0, 0, 0, 0, 0, 0, 0, 0}},
    RoundTrip{"u64", "81985529216486895", {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}},
    RoundTrip{"u64-high", "81985529216486895", {0x23, 0x01, 0x67, 0x45, 0xAB, 0x89, 0xEF, 0xCD}},
    RoundTrip{"u64", "9223372036854775808", {0, 0, 0, 0, 0, 0, 0, 0x80}},
    RoundTrip{"u64", "18446744073709551615", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
    RoundTrip{"s64", "-9223372036854775808", {0, 0, 0, 0, 0, 0, 0, 0x80}},
    RoundTrip{"s64", "-1", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
    RoundTrip{"s64-high", "-2", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF}},
    RoundTrip{"s64", "9223372036854775807", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}},
    RoundTrip{"f64", "1.5", {0, 0, 0, 0, 0, 0, 0xF8, 0x3F}},
    RoundTrip{"f64-high", "1.5", {0xF8, 0x3F, 0, 0, 0, 0, 0, 0}},
    RoundTrip{"f64", "0.1", {0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xB9, 0x3F}},
    RoundTrip{"f64", "1.7976931348623157e+308", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xEF, 0x7F}},
    RoundTrip{"f64", "5e-324", {1, 0, 0, 0, 0, 0, 0, 0}}));

TEST(Codec, TakesNumbersInHex)
{
    EXPECT_EQ(encode(format("u16"), "0xFFFF"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(encode(format("u32"), "0X12345678"), (Bytes{0x78, 0x56, 0x34, 0x12}));
    EXPECT_EQ(encode(format("s16"), "-0x8000"), (Bytes{0x00, 0x80}));
    EXPECT_EQ(encode(format("hex"), "af"), (Bytes{0xAF, 0x00}));
    EXPECT_EQ(encode(format("hex"), "0Xaf"), (Bytes{0xAF, 0x00}));
    EXPECT_EQ(encode(format("bits"), "101"), (Bytes{0x05, 0x00}));
}

TEST(Codec, RefusesWhatIsJustOutOfRange)
{
    expectMisfits("u16", {"65536", "-1"});
    expectMisfits("s16", {"32768", "-32769"});
    expectMisfits("u32", {"4294967296", "-1"});
    expectMisfits("s32", {"2147483648", "-2147483649"});
    expectMisfits("u64", {"18446744073709551616", "-1"});
    expectMisfits("s64", {"9223372036854775808", "-9223372036854775809"});
    expectMisfits("bcd16", {"10000", "-1"});
    expectMisfits("bcd32", {"100000000", "-1"});
    expectMisfits("hex", {"0x10000"});
    expectMisfits("bits", {"00000000000000001"});
    expectMisfits("f32", {"3.4028236e+38", "-3.5e38", "1e-50"});
    expectMisfits("f64", {"1e309"});
}

TEST(Codec, RefusesWhatIsNoNumber)
{
    for (const char *type : {"u16", "s16", "u32", "s32", "u64", "s64", "bcd16", "bcd32"})
        expectMisfits(type, {"", "-", "x", "1.5", "1x", "0x", "1e2", " 1", "1 ", "+1", "--1"});
    expectMisfits("hex", {"", "0x", "g", "-1", "1 "});
    expectMisfits("bits", {"", "_", "2", "0b1", "1 0"});
    for (const char *type : {"f32", "f64"})
        expectMisfits(type, {"nan", "inf", "-inf", "", "1,5", "1.5x", "0x10", " 1", "+1"});
}

TEST(Codec, AWordWithoutATypeTakesBothSigns)
{
    const ValueFormat word;
    EXPECT_EQ(encode(word, "65535"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(encode(word, "-1"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(encode(word, "-32768"), (Bytes{0x00, 0x80}));
    EXPECT_EQ(decodeValue(word, {0xFF, 0xFF}, 0), "65535");
    for (const char *text : {"65536", "-32769", "1.5", "x"})
        EXPECT_EQ(refusal(word, text),
                  "'" + std::string(text) + "' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
}

TEST(Codec, ABitIsZeroOrOne)
{
    ValueFormat bit;
    bit.type = DataType::BIT;
    EXPECT_EQ(encodeValues(bit, {"1", "0", "0x1"}), (Bytes{1, 0, 1}));
    EXPECT_EQ(encodeValues(bit, {"ON", "OFF", "on", "off", "On", "true", "false", "TRUE", "False"}),
              (Bytes{1, 0, 1, 0, 1, 1, 0, 1, 0}));
    EXPECT_EQ(decodeValues(bit, {1, 0, 1}), "1 0 1");
    for (const char *text : {"2", "-1", "onn", "O", "", "1.0", "yes"})
        EXPECT_EQ(refusal(bit, text), "'" + std::string(text) + "' is not a bit value; use 0 or 1, OFF or ON");
}

TEST(Codec, ShowsSeveralValues)
{
    EXPECT_EQ(encodeValues(format("u32"), {"1", "65536"}), (Bytes{1, 0, 0, 0, 0, 0, 1, 0}));
    EXPECT_EQ(decodeValues(format("u32"), {1, 0, 0, 0, 0, 0, 1, 0}), "1 65536");
    EXPECT_EQ(decodeValue(format("u32"), {1, 0, 0, 0, 0, 0, 1, 0}, 1), "65536");
    EXPECT_EQ(decodeValues(format("hex"), {0x34, 0x12, 0xCD, 0xAB}), "0x1234 0xABCD");
    EXPECT_EQ(decodeValues(format("f32"), {}), "");
}

TEST(Codec, SaysWhatIsNoBcd)
{
    EXPECT_EQ(decodeValue(format("bcd16"), {0x3A, 0x12}, 0), "no-bcd:0x123A");
    EXPECT_EQ(decodeValue(format("bcd16"), {0x99, 0xA9}, 0), "no-bcd:0xA999");
    EXPECT_EQ(decodeValue(format("bcd32"), {0x00, 0x00, 0x00, 0xF0}, 0), "no-bcd:0xF0000000");
    EXPECT_EQ(decodeValue(scaled("bcd16", 0.5), {0x0B, 0x00}, 0), "no-bcd:0x000B");
}

TEST(Codec, ShowsFloatsThatAreNoNumbers)
{
    EXPECT_EQ(decodeValue(format("f32"), {0x00, 0x00, 0x80, 0x7F}, 0), "inf");
    EXPECT_EQ(decodeValue(format("f32"), {0x00, 0x00, 0x80, 0xFF}, 0), "-inf");
    EXPECT_EQ(decodeValue(format("f32"), {0x00, 0x00, 0xC0, 0x7F}, 0), "nan");
    EXPECT_EQ(decodeValue(scaled("f32", 2), {0x00, 0x00, 0x80, 0xFF}, 0), "-inf");
}

TEST(Codec, ScalesForReading)
{
    EXPECT_EQ(decodeValue(scaled("u16", 0.1), {0x03, 0x00}, 0), "0.3");
    EXPECT_EQ(decodeValue(scaled("u16", 0.1, 0, 1), {0xE8, 0x03}, 0), "100.0");
    EXPECT_EQ(decodeValue(scaled("s16", 0.5, -40), {0xFF, 0xFF}, 0), "-40.5");
    EXPECT_EQ(decodeValue(scaled("s16", -1), {0x05, 0x00}, 0), "-5");
    EXPECT_EQ(decodeValue(scaled("bcd16", 0.01, 0, 2), {0x34, 0x12}, 0), "12.34");
    EXPECT_EQ(decodeValue(scaled("f32", 100), {0xCD, 0xCC, 0xCC, 0x3D}, 0), "10");
    EXPECT_EQ(decodeValue(scaled("f64", 1, 1), {0, 0, 0, 0, 0, 0, 0xF8, 0x3F}, 0), "2.5");
    EXPECT_EQ(decodeValue(scaled("f32", 1, 0, 3), {0x00, 0x00, 0xC0, 0x3F}, 0), "1.500");
    EXPECT_EQ(decodeValue(scaled("u16", 1, 0, 0), {0x05, 0x00}, 0), "5");
    EXPECT_EQ(decodeValue(scaled("s16", 0.01, 0, 1), {0xFC, 0xFF}, 0), "0.0") << "never -0.0";
    EXPECT_EQ(decodeValue(scaled("s16", 0.01, 0, 1), {0xF6, 0xFF}, 0), "-0.1");
}

TEST(Codec, ScalesForWriting)
{
    EXPECT_EQ(encode(scaled("u16", 0.1), "12.3"), (Bytes{123, 0}));
    EXPECT_EQ(encode(scaled("s16", 0.5, -40), "-40.5"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(encode(scaled("bcd16", 0.01), "12.34"), (Bytes{0x34, 0x12}));
    EXPECT_EQ(encode(scaled("f32", 2, 1), "4"), (Bytes{0x00, 0x00, 0xC0, 0x3F}));
    EXPECT_EQ(encode(scaled("f64", 2, 1), "4"), (Bytes{0, 0, 0, 0, 0, 0, 0xF8, 0x3F}));
    EXPECT_EQ(encode(scaled("u32-high", 10), "1000000"), (Bytes{0x01, 0x00, 0xA0, 0x86}));
}

TEST(Codec, TakesTheNearestStep)
{
    EXPECT_EQ(encode(scaled("u16", 0.1), "12.34"), (Bytes{123, 0}));
    EXPECT_EQ(encode(scaled("u16", 0.1), "12.36"), (Bytes{124, 0}));
    EXPECT_EQ(encode(scaled("s16", 0.1), "-12.36"), (Bytes{0x84, 0xFF}));
}

TEST(Codec, RefusesScaledValuesJustOutOfRange)
{
    EXPECT_EQ(encode(scaled("u16", 0.1), "6553.5"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(refusal(scaled("u16", 0.1), "6553.6"), "'6553.6' does not fit u16; use a number from 0 to 6553.5");
    EXPECT_EQ(refusal(scaled("u16", 0.1), "-0.1"), "'-0.1' does not fit u16; use a number from 0 to 6553.5");
    EXPECT_EQ(encode(scaled("s16", 0.1, 0, 1), "-3276.8"), (Bytes{0x00, 0x80}));
    EXPECT_EQ(refusal(scaled("s16", 0.1, 0, 1), "-3276.9"),
              "'-3276.9' does not fit s16; use a number from -3276.8 to 3276.7");
    EXPECT_EQ(encode(scaled("s16", 0.1, 0, 1), "3276.7"), (Bytes{0xFF, 0x7F}));
    EXPECT_EQ(refusal(scaled("s16", 0.1, 0, 1), "3276.8"),
              "'3276.8' does not fit s16; use a number from -3276.8 to 3276.7");
    EXPECT_EQ(refusal(scaled("s16", -1), "32769"), "'32769' does not fit s16; use a number from -32767 to 32768");
    EXPECT_EQ(refusal(scaled("bcd16", 0.01), "100"), "'100' does not fit bcd16; use a number from 0 to 99.99");
    EXPECT_EQ(refusal(scaled("u64", 2), "36893488147419103232"),
              "'36893488147419103232' does not fit u64; use a number from 0 to 3.68934881474191e+19") << "2 * 2^64";
    EXPECT_EQ(encode(scaled("u64", 2), "36893488147419099136"),
              (Bytes{0x00, 0xF8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})) << "2 * (2^64 - 2048), which 53 bits can tell";
    EXPECT_EQ(refusal(scaled("u64", 1e-300), "1e300"),
              "'1e300' does not fit u64; use a number from 0 to 1.84467440737096e-281");
    EXPECT_EQ(refusal(scaled("f32", 0.5), "3e38"), "'3e38' does not fit f32; use a decimal number whose size fits f32");
    EXPECT_EQ(refusal(scaled("f64", 0.5), "1e308"),
              "'1e308' does not fit f64; use a decimal number whose size fits f64");
    EXPECT_EQ(refusal(scaled("f64", 0.5), "8e307"), "");
    for (const char *text : {"", "x", "nan", "inf", "1,5", "0x10"}) {
        EXPECT_EQ(refusal(scaled("u16", 0.1), text),
                  std::string("'") + text + "' does not fit u16; use a number from 0 to 6553.5");
        EXPECT_EQ(refusal(scaled("f32", 0.1), text),
                  std::string("'") + text + "' does not fit f32; use a decimal number whose size fits f32");
    }
}

TEST(Codec, PutsTwoCharactersIntoAWord)
{
    EXPECT_EQ(encode(format("string"), "AB"), (Bytes{'B', 'A'}));
    EXPECT_EQ(encode(format("string-low"), "AB"), (Bytes{'A', 'B'}));
    EXPECT_EQ(encode(format("string"), "ABC"), (Bytes{'B', 'A', 0, 'C'}));
    EXPECT_EQ(encode(format("string-low"), "ABC"), (Bytes{'A', 'B', 'C', 0}));
    EXPECT_EQ(encode(format("string"), ""), (Bytes{0, 0}));
    EXPECT_EQ(decodeValues(format("string"), {'B', 'A', 0, 'C'}), "\"ABC\"");
    EXPECT_EQ(decodeValues(format("string-low"), {'A', 'B', 'C', 0}), "\"ABC\"");
    EXPECT_EQ(decodeValues(format("string"), {0, 0, 0, 0}), "\"\"");
    EXPECT_EQ(decodeValues(format("string"), {0, 'A', 'C', ' '}), "\"A\\x00 C\"");
}

TEST(Codec, FillsAStringUpAndRefusesALongerOne)
{
    EXPECT_EQ(encodeValues(format("string"), {"AB"}, 2), (Bytes{'B', 'A', 0, 0}));
    EXPECT_EQ(encodeValues(format("string"), {"ABCD"}, 2), (Bytes{'B', 'A', 'D', 'C'}));
    EXPECT_EQ(usageError([] { encodeValues(format("string"), {"ABCDE"}, 2); }), "'ABCDE' has 5 characters; 4 fit");
    EXPECT_EQ(usageError([] { encodeValues(format("string"), {"A", "B"}, 2); }), "2 texts for one string; write one");
}

TEST(Codec, EscapesWhatIsNoPlainText)
{
    EXPECT_EQ(encode(format("string"), "\\\"\\\\"), (Bytes{'\\', '"'}));
    EXPECT_EQ(decodeValues(format("string"), {'\\', '"'}), "\"\\\"\\\\\"");
    EXPECT_EQ(encode(format("string"), "\\x1F\\xe4"), (Bytes{0xE4, 0x1F}));
    EXPECT_EQ(decodeValues(format("string"), {0xE4, 0x1F}), "\"\\x1F\\xE4\"");
    EXPECT_EQ(decodeValues(format("string"), {'~', ' '}), "\" ~\"");
    EXPECT_EQ(decodeValues(format("string"), {'A', 0x7F}), "\"\\x7FA\"");
    for (const char *text : {"\\", "\\n", "\\x", "\\x1", "\\xG1", "\\x1G"})
        EXPECT_EQ(refusal("string", text),
                  "'" + std::string(text) + "' has an unknown escape; use \\\\, \\\" or \\xNN");
}

TEST(Codec, KnowsTheWordsOfEveryType)
{
    for (const char *type : {"u16", "s16", "bcd16", "hex", "bits", "string"})
        EXPECT_EQ(wordsPerValue(format(type).type), 1) << type;
    for (const char *type : {"u32", "s32", "f32", "bcd32"})
        EXPECT_EQ(wordsPerValue(format(type).type), 2) << type;
    for (const char *type : {"u64", "s64", "f64"})
        EXPECT_EQ(wordsPerValue(format(type).type), 4) << type;
    EXPECT_EQ(wordsPerValue(DataType::BIT), 1);
    EXPECT_EQ(wordsPerValue(DataType::WORD), 1);
    EXPECT_FALSE(isNumeric(DataType::BIT));
    EXPECT_FALSE(isNumeric(DataType::HEX));
    EXPECT_FALSE(isNumeric(DataType::BITS));
    EXPECT_FALSE(isNumeric(DataType::STRING));
    EXPECT_TRUE(isNumeric(DataType::WORD));
    EXPECT_TRUE(isNumeric(DataType::S16));
    EXPECT_TRUE(isNumeric(DataType::BCD32));
    EXPECT_TRUE(isNumeric(DataType::F64));
}

TEST(Codec, NamesFormatsAsTheyAreRead)
{
    for (const char *text : {"u16", "s16", "u32", "u32-high", "f64-high", "bcd32-high", "hex", "bits", "string",
                             "string-low"})
        EXPECT_EQ(formatText(format(text)), text);
    EXPECT_EQ(formatText(format("f32-low")), "f32");
    EXPECT_EQ(formatText(format("string-high")), "string");
    EXPECT_EQ(formatText(ValueFormat()), "");
}

TEST(Codec, TakesTheOrdersThatAreSet)
{
    OrderDefaults orders;
    orders.words      = Order::HIGH;
    orders.characters = Order::LOW;
    EXPECT_EQ(formatText(parseFormat("f32", orders)), "f32-high");
    EXPECT_EQ(formatText(parseFormat("f32-low", orders)), "f32");
    EXPECT_EQ(formatText(parseFormat("string", orders)), "string-low");
    EXPECT_EQ(formatText(parseFormat("string-high", orders)), "string");
    Order order = Order::HIGH;
    EXPECT_FALSE(parseOrder("big", order));
    EXPECT_EQ(order, Order::HIGH);
    EXPECT_TRUE(parseOrder("low", order));
    EXPECT_EQ(order, Order::LOW);
    EXPECT_TRUE(parseOrder("high", order));
    EXPECT_EQ(order, Order::HIGH);
}

TEST(Codec, HexadecimalOfSeveralWords)
{
    EXPECT_EQ(encode(format("hex32"), "0x12345678"), (Bytes{0x78, 0x56, 0x34, 0x12}));
    EXPECT_EQ(encode(format("hex32-high"), "12345678"), (Bytes{0x34, 0x12, 0x78, 0x56}));
    EXPECT_EQ(encode(format("hex32"), "FFFFFFFF"), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(decodeValues(format("hex32"), {0x01, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}), "0x00000001 0xFFFFFFFF");
    EXPECT_EQ(refusal(format("hex32"), "100000000"), "'100000000' does not fit hex32; use 0x0 to 0xFFFFFFFF");
    EXPECT_EQ(refusal(format("DWORD"), "-1"), "'-1' does not fit DWORD; use 0x0 to 0xFFFFFFFF");
}

TEST(Codec, RefusesUnknownFormats)
{
    const auto problem = [](const std::string &text) { return usageError([&] { format(text); }); };
    for (const std::string &text : Texts{"f16", "", "F32", "bit"})
        EXPECT_EQ(problem(text), "there is no data type '" + text + "'; the data types are u16, s16, u32, s32, u64, "
                                 "s64, f32, f64, bcd16, bcd32, hex, hex32, bits, string, "
                                 "and of the manuals BOOL, INT, UINT, DINT, UDINT, LINT, ULINT, REAL, "
                                 "LREAL, WORD, DWORD, UINT_BCD, UDINT_BCD, STRING");
    EXPECT_EQ(problem("f32-big"), "'f32-big' is not a data type; write f32, f32-low or f32-high");
    EXPECT_EQ(problem("u16-high"), "'u16-high': u16 is one word and has no order; write u16");
}
