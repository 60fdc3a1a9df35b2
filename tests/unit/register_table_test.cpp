#include "address/register_table.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

template <typename Row>
std::string rowName(const ::testing::TestParamInfo<Row> &row)
{
    return row.param.name;
}

std::string toText(const QString &text)
{
    return text.toStdString();
}

// ---- The three tables, row by row ----------------------------------------------------------------------------------

struct RegisterRow {
    const char *name;
    int         index;
    qint32      areaCode;
    const char *range;
    bool        bits;
    const char *wordType;
    qint32      weight; // of address 0
};

std::ostream &operator<<(std::ostream &out, const RegisterRow &row)
{
    return out << row.name;
}

const RegisterRow REGISTER_ROWS[] = {
    {"CIO_bit", 0,  0x30, "ddddd.DD (DD:0~15),0.0,6143.15,0,1",  true,  "CIO", 65535},
    {"WR_bit",  1,  0x31, "dd.DD (DD:0~15),0.0,511.15,0,1",      true,  "WR",  131070},
    {"HR_bit",  2,  0x32, "dddd.DD (DD:0~15),0.0,1535.15,0,1",   true,  "HR",  196605},
    {"AR_bit",  3,  0x33, "ddd.DD (DD:0~15),448.0,959.15,0,1",   true,  "AR",  262140},
    {"DM_bit",  4,  0x02, "ddddd.DD (DD:0~15),0.0,32767.15,0,1", true,  "DM",  327675},
    {"CIO",     5,  0xB0, "dddd,0,6143,1,1",                     false, "CIO", 393210},
    {"WR",      6,  0xB1, "ddd,0,511,1,1",                       false, "WR",  458745},
    {"HR",      7,  0xB2, "dddd,0,1535,1,1",                     false, "HR",  524280},
    {"AR",      8,  0xB3, "ddd,0,959,1,1",                       false, "AR",  589815},
    {"T",       9,  0x89, "dddd,0,4095,1,1",                     false, "T",   655350},
    {"C",       10, 0x89, "dddd,0,4095,1,1",                     false, "C",   720885},
    {"DM",      11, 0x82, "ddddd,0,32767,1,1",                   false, "DM",  786420},
};

class RegisterTable : public ::testing::TestWithParam<RegisterRow> {};

TEST_P(RegisterTable, Name)
{
    EXPECT_EQ(toText(REG_LIST[GetParam().index]), GetParam().name);
}

TEST_P(RegisterTable, AreaCode)
{
    EXPECT_EQ(AREA_CODE_CS_CJ[GetParam().index], GetParam().areaCode);
}

TEST_P(RegisterTable, Range)
{
    EXPECT_EQ(toText(ADDRESS_RANGE_FINS[GetParam().index]), GetParam().range);
}

TEST_P(RegisterTable, IsFoundByName)
{
    EXPECT_EQ(findRegister(GetParam().name), GetParam().index);
}

TEST_P(RegisterTable, KindByName)
{
    EXPECT_EQ(isBitType(GetParam().name), GetParam().bits);
}

TEST_P(RegisterTable, WordType)
{
    EXPECT_EQ(toText(wordTypeOf(GetParam().name)), GetParam().wordType);
}

TEST_P(RegisterTable, WeightOfItsFirstAddress)
{
    EXPECT_EQ(getRegAddressWeight(GetParam().name, 0, 0), GetParam().weight);
}

TEST_P(RegisterTable, WeightGrowsWithTheAddress)
{
    EXPECT_EQ(getRegAddressWeight(GetParam().name, 10, 0), GetParam().weight + 10);
}

INSTANTIATE_TEST_SUITE_P(Rows, RegisterTable, ::testing::ValuesIn(REGISTER_ROWS), rowName<RegisterRow>);

TEST(RegisterTableTest, HasTwelveTypes)
{
    EXPECT_EQ(int{REG_COUNT}, 12);
}

TEST(RegisterTableTest, ThirteenthRangeHasNoNameAndIsKept)
{
    EXPECT_EQ(toText(ADDRESS_RANGE_FINS[12]), "ddddd,0,32767,1,1");
}

TEST(RegisterTableTest, ArBitsDeliberatelyStartAt448AndArWordsAt0)
{
    EXPECT_EQ(toText(ADDRESS_RANGE_FINS[3].section(',', 1, 1)), "448.0");
    EXPECT_EQ(toText(ADDRESS_RANGE_FINS[8].section(',', 1, 1)), "0");
}

TEST(FindRegister, ComparesExactly)
{
    EXPECT_EQ(findRegister("EM"), -1);
    EXPECT_EQ(findRegister("dm"), -1);
    EXPECT_EQ(findRegister("DM "), -1);
    EXPECT_EQ(findRegister("D"), -1);
    EXPECT_EQ(findRegister("DM_bi"), -1);
    EXPECT_EQ(findRegister(""), -1);
    EXPECT_EQ(findRegister(QString()), -1);
}

TEST(IsBitType, LooksAtTheLastFourCharactersOnly)
{
    EXPECT_TRUE(isBitType("EM_bit"));
    EXPECT_TRUE(isBitType("_bit"));
    EXPECT_FALSE(isBitType("DM_BIT"));
    EXPECT_FALSE(isBitType("DMbit"));
    EXPECT_FALSE(isBitType("bit"));
    EXPECT_FALSE(isBitType("DM_bits"));
    EXPECT_FALSE(isBitType("DM_bit_x"));
    EXPECT_FALSE(isBitType(""));
    EXPECT_FALSE(isBitType(QString()));
}

TEST(WordTypeOf, IsThePartBeforeTheFirstUnderscore)
{
    EXPECT_EQ(toText(wordTypeOf("E_M_bit")), "E");
    EXPECT_EQ(toText(wordTypeOf("_bit")), "");
    EXPECT_EQ(toText(wordTypeOf("EM")), "EM");
    EXPECT_EQ(toText(wordTypeOf(QString())), "");
}

TEST(BitTypeOf, AppendsTheSuffix)
{
    EXPECT_EQ(toText(bitTypeOf("CIO")), "CIO_bit");
    EXPECT_EQ(toText(bitTypeOf("WR")), "WR_bit");
    EXPECT_EQ(toText(bitTypeOf("HR")), "HR_bit");
    EXPECT_EQ(toText(bitTypeOf("AR")), "AR_bit");
    EXPECT_EQ(toText(bitTypeOf("DM")), "DM_bit");
}

TEST(BitTypeOf, AppendsTheSuffixToNamesThatTheTableLacks)
{
    EXPECT_EQ(toText(bitTypeOf("T")), "T_bit");
    EXPECT_EQ(toText(bitTypeOf("C")), "C_bit");
    EXPECT_EQ(toText(bitTypeOf("EM")), "EM_bit");
    EXPECT_EQ(toText(bitTypeOf("AX")), "AX_bit");
    EXPECT_EQ(toText(bitTypeOf("CI")), "CI_bit");
    EXPECT_EQ(toText(bitTypeOf("DMX")), "DMX_bit");
    EXPECT_EQ(toText(bitTypeOf("")), "_bit");
    EXPECT_EQ(toText(bitTypeOf(QString())), "_bit");
}

TEST(SharedName, LiesInTheTablesMemory)
{
    for (const QString &name : REG_LIST) {
        const QString own(name.constData(), name.size());
        ASSERT_NE(own.constData(), name.constData());
        EXPECT_EQ(sharedName(own).constData(), name.constData()) << toText(name);
    }
    EXPECT_EQ(toText(sharedName("EM")), "EM");
}

TEST(SharedName, OfTheWordTypeAndTheBitType)
{
    EXPECT_EQ(wordTypeOf("DM_bit").constData(), REG_LIST[11].constData());
    EXPECT_EQ(wordTypeOf("CIO_bit").constData(), REG_LIST[5].constData());
    EXPECT_EQ(bitTypeOf("DM").constData(), REG_LIST[4].constData());
    EXPECT_EQ(bitTypeOf("CIO").constData(), REG_LIST[0].constData());
}

TEST(SameName, ComparesLengthAndEveryLetter)
{
    const QString name = "CIO";
    const QString copy(name.constData(), name.size());
    EXPECT_TRUE(sameName(name, name));
    EXPECT_TRUE(sameName(name, copy));
    EXPECT_FALSE(sameName(name, "CIX"));
    EXPECT_FALSE(sameName(name, "XIO"));
    EXPECT_FALSE(sameName(name, "CI"));
    EXPECT_FALSE(sameName(name, "CIO_bit"));
    EXPECT_FALSE(sameName(name, "cio"));
    EXPECT_FALSE(sameName(name, ""));
    EXPECT_TRUE(sameName("", QString()));
}

// Two strings may begin at the same letter and differ in length.
TEST(SameName, OfTheSameMemoryAndAnotherLength)
{
    const QString name = "DM_bit";
    const QString shorter = QString::fromRawData(name.constData(), 2);
    ASSERT_EQ(shorter.constData(), name.constData());
    EXPECT_FALSE(sameName(name, shorter));
    EXPECT_TRUE(sameName("DM", shorter));
}

// ---- Bit address text ----------------------------------------------------------------------------------------------

struct BitText {
    const char *name;
    const char *text;
    qint32      bitAddress;
};

std::ostream &operator<<(std::ostream &out, const BitText &row)
{
    return out << '"' << row.text << '"';
}

class BitAddressText : public ::testing::TestWithParam<BitText> {};

TEST_P(BitAddressText, IsParsed)
{
    qint32 bitAddress = 4711;

    EXPECT_EQ(a2i_ddd_DD(GetParam().text, bitAddress), 1);
    EXPECT_EQ(bitAddress, GetParam().bitAddress);
}

const BitText GOOD_TEXTS[] = {
    {"word_100_bit_15",            "100.15",         1615},
    {"word_100_bit_9",             "100.9",          1609},
    {"first_bit",                  "0.0",            0},
    {"last_one_digit_bit",         "0.9",            9},
    {"first_two_digit_bit",        "0.10",           10},
    {"last_bit_of_a_word",         "0.15",           15},
    {"second_word",                "1.0",            16},
    {"word_12_bit_5",              "12.5",           197},
    {"word_12_bit_15",             "12.15",          207},
    {"negative_word",              "-1.5",           -11},
    {"negative_zero_word",         "-0.5",           5},
    {"word_with_zeros_in_front",   "007.3",          115},
    {"word_with_plus_sign",        "+12.5",          197},
    {"word_with_space_in_front",   " 12.5",          197},
    {"word_with_space_behind",     "12 .5",          197},
    {"CIO_bit_maximum",            "6143.15",        98303},
    {"WR_bit_maximum",             "511.15",         8191},
    {"HR_bit_maximum",             "1535.15",        24575},
    {"AR_bit_minimum",             "448.0",          7168},
    {"AR_bit_maximum",             "959.15",         15359},
    {"DM_bit_maximum",             "32767.15",       524287},
    {"largest_without_wrapping",   "134217727.15",   HIGHEST},
    {"smallest_that_wraps",        "134217728.0",    LOWEST},
    {"largest_word_wraps",         "2147483647.3",   -13},
    {"lowest_word_wraps",          "-2147483648.5",  5},
};

INSTANTIATE_TEST_SUITE_P(Texts, BitAddressText, ::testing::ValuesIn(GOOD_TEXTS), rowName<BitText>);

class MalformedBitAddressText : public ::testing::TestWithParam<BitText> {};

TEST_P(MalformedBitAddressText, IsRefusedAndLeavesTheAddress)
{
    qint32 bitAddress = GetParam().bitAddress;

    EXPECT_EQ(a2i_ddd_DD(GetParam().text, bitAddress), -1);
    EXPECT_EQ(bitAddress, GetParam().bitAddress);
}

const BitText BAD_TEXTS[] = {
    {"bit_below_10_with_two_digits",     "100.09",        4711},
    {"word_12_bit_05",                   "12.05",         4711},
    {"bit_0_with_two_digits",            "1.00",          4711},
    {"bit_16",                           "100.16",        4711},
    {"bit_99",                           "1.99",          4711},
    {"bit_with_three_digits",            "1.010",         4711},
    {"bit_100",                          "1.100",         4711},
    {"no_point",                         "100",           4711},
    {"two_points",                       "1.2.3",         4711},
    {"two_points_at_the_end",            "1.2.",          4711},
    {"two_points_in_front",              ".1.2",          4711},
    {"empty_word",                       ".5",            4711},
    {"empty_bit",                        "5.",            4711},
    {"point_alone",                      ".",             4711},
    {"two_points_alone",                 "..",            4711},
    {"empty",                            "",              4711},
    {"word_is_no_number",                "a.5",           4711},
    {"word_starts_as_a_number",          "1a.5",          4711},
    {"word_in_hexadecimal",              "0x1.5",         4711},
    {"bit_is_no_number",                 "1.a",           4711},
    {"bit_in_hexadecimal",               "1.F",           4711},
    {"bit_is_a_space",                   "1. ",           4711},
    {"bit_with_plus_sign",               "1.+5",          4711},
    {"bit_with_minus_sign",              "1.-5",          4711},
    {"one_digit_bit_with_space",         "1. 5",          4711},
    {"two_digit_bit_with_space",         "1.12 ",         4711},
    {"comma_for_the_point",              "12,5",          4711},
    {"word_above_32_bits",               "2147483648.0",  4711},
    {"word_below_32_bits",               "-2147483649.0", 4711},
    {"address_before_was_0",             "7.16",          0},
};

INSTANTIATE_TEST_SUITE_P(Texts, MalformedBitAddressText, ::testing::ValuesIn(BAD_TEXTS), rowName<BitText>);

TEST(BitAddressTextTest, NullTextIsRefused)
{
    qint32 bitAddress = 4711;

    EXPECT_EQ(a2i_ddd_DD(QString(), bitAddress), -1);
    EXPECT_EQ(bitAddress, 4711);
}

// ---- Sorting key ---------------------------------------------------------------------------------------------------

TEST(RegAddressWeight, CioBit10)
{
    EXPECT_EQ(getRegAddressWeight("CIO_bit", 10, 0), 65545);
}

TEST(RegAddressWeight, Dm0)
{
    EXPECT_EQ(getRegAddressWeight("DM", 0, 0), 786420);
}

TEST(RegAddressWeight, UnknownTypeWeighsItsBareAddress)
{
    EXPECT_EQ(getRegAddressWeight("EM", 7, 0), 7);
    EXPECT_EQ(getRegAddressWeight("EM", -7, 0), -7);
    EXPECT_EQ(getRegAddressWeight("cio_bit", 7, 0), 7);
}

TEST(RegAddressWeight, MultiplierIsDeliberately65535)
{
    EXPECT_EQ(getRegAddressWeight("CIO", 65535, 0), getRegAddressWeight("WR", 0, 0));
}

TEST(RegAddressWeight, ThirdArgumentHasNoEffect)
{
    EXPECT_EQ(getRegAddressWeight("DM", 5, 1), 786425);
    EXPECT_EQ(getRegAddressWeight("DM", 5, -1), 786425);
    EXPECT_EQ(getRegAddressWeight("EM", 5, 1), 5);
}

TEST(RegAddressWeight, Wraps)
{
    EXPECT_EQ(getRegAddressWeight("CIO_bit", HIGHEST, 0), -2147418114);
    EXPECT_EQ(getRegAddressWeight("DM", -786421, 0), -1);
    EXPECT_EQ(getRegAddressWeight("EM", LOWEST, 0), LOWEST);
}

// ---- Single bits ---------------------------------------------------------------------------------------------------

struct BitCase {
    const char *name;
    qint32      value;
    qint32      bit;
    qint32      on;
    qint32      result;
};

std::ostream &operator<<(std::ostream &out, const BitCase &row)
{
    return out << row.name;
}

class SetBitValue : public ::testing::TestWithParam<BitCase> {};

TEST_P(SetBitValue, Result)
{
    EXPECT_EQ(_setBitValue(GetParam().value, GetParam().bit, GetParam().on), GetParam().result);
}

const BitCase BIT_CASES[] = {
    {"set_bit_3",                 0,       3,       1,  8},
    {"clear_bit_0",               15,      0,       0,  14},
    {"set_bit_0",                 0,       0,       1,  1},
    {"set_bit_15",                0,       15,      1,  0x8000},
    {"set_bit_30",                0,       30,      1,  0x40000000},
    {"set_bit_31",                0,       31,      1,  LOWEST},
    {"clear_bit_31",              -1,      31,      0,  HIGHEST},
    {"set_keeps_the_others",      0x5A,    0,       1,  0x5B},
    {"clear_keeps_the_others",    0x5B,    3,       0,  0x53},
    {"set_again",                 0x48,    3,       1,  0x48},
    {"clear_again",               0x40,    3,       0,  0x40},
    {"on_is_2",                   0,       4,       2,  16},
    {"on_is_negative",            0,       4,       -1, 16},
    {"set_bit_32",                0,       32,      1,  0},
    {"clear_bit_32",              -1,      32,      0,  -1},
    {"set_bit_33",                0,       33,      1,  0},
    {"set_bit_255",               0,       255,     1,  0},
    {"clear_bit_255",             -1,      255,     0,  -1},
    {"set_bit_256",               0,       256,     1,  0},
    {"clear_bit_256",             -1,      256,     0,  -1},
    {"set_bit_minus_1",           0,       -1,      1,  0},
    {"clear_bit_minus_1",         -1,      -1,      0,  -1},
    {"set_highest_bit_number",    0,       HIGHEST, 1,  0},
    {"set_lowest_bit_number",     0,       LOWEST,  1,  0},
    {"clear_lowest_bit_number",   -1,      LOWEST,  0,  -1},
};

INSTANTIATE_TEST_SUITE_P(Cases, SetBitValue, ::testing::ValuesIn(BIT_CASES), rowName<BitCase>);

} // namespace
