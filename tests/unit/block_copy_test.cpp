#include "omron_fins_ethernet.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

enum Result { UNKNOWN_TYPE = 0, ALL_WITHIN = 1, CLAMPED = 2 };

typedef std::vector<std::string> Texts;
typedef std::vector<qint32>      Addresses;

/// One series of copies, and its result.
struct MultiCopy {
    MultiCopy(const QString &regType, qint32 start, qint32 copies, qint32 step)
    {
        result = intf_multiCopy(regType, start, copies, step, textVector, addressVector);
    }

    Texts texts() const
    {
        Texts list;
        for (const QString &text : textVector)
            list.push_back(text.toStdString());
        return list;
    }

    Addresses addresses() const { return Addresses(addressVector.begin(), addressVector.end()); }

    QVector<QString> textVector;
    QVector<qint32>  addressVector;
    qint32           result;
};

void expectSeries(const MultiCopy &series, qint32 result, const Addresses &addresses, const Texts &texts)
{
    EXPECT_EQ(series.result, result);
    EXPECT_EQ(series.addresses(), addresses);
    EXPECT_EQ(series.texts(), texts);
}

// ---- Series --------------------------------------------------------------------------------------------------------

TEST(BlockCopy, DmSeriesOverTheMaximum)
{
    expectSeries(MultiCopy("DM", 32766, 3, 1), CLAMPED, {32766, 32767, 32767}, {"32766", "32767", "32767"});
}

TEST(BlockCopy, CioBitSeriesOverAWord)
{
    expectSeries(MultiCopy("CIO_bit", 14, 3, -1), ALL_WITHIN, {14, 15, 16}, {"0.14", "0.15", "1.0"});
}

TEST(BlockCopy, WrBitSeriesOverTheMaximum)
{
    expectSeries(MultiCopy("WR_bit", 8190, 3, 1), CLAMPED, {8190, 8191, 8191}, {"511.14", "511.15", "511.15"});
}

TEST(BlockCopy, HrStepMinus2Is2)
{
    expectSeries(MultiCopy("HR", 10, 3, -2), ALL_WITHIN, {10, 12, 14}, {"10", "12", "14"});
}

TEST(BlockCopy, HrBitStepMinus2Is1)
{
    expectSeries(MultiCopy("HR_bit", 10, 3, -2), ALL_WITHIN, {10, 11, 12}, {"0.10", "0.11", "0.12"});
}

TEST(BlockCopy, BitTextOnBothSidesOfTen)
{
    expectSeries(MultiCopy("DM_bit", 1607, 4, 1), ALL_WITHIN, {1607, 1608, 1609, 1610},
                 {"100.7", "100.8", "100.9", "100.10"});
}

TEST(BlockCopy, BitStepOfOneWord)
{
    expectSeries(MultiCopy("DM_bit", 1605, 3, 16), ALL_WITHIN, {1605, 1621, 1637}, {"100.5", "101.5", "102.5"});
}

TEST(BlockCopy, SeriesThatEndsAtTheMaximumIsWithin)
{
    expectSeries(MultiCopy("DM", 32765, 3, 1), ALL_WITHIN, {32765, 32766, 32767}, {"32765", "32766", "32767"});
}

TEST(BlockCopy, OneCopy)
{
    expectSeries(MultiCopy("T", 7, 1, 5), ALL_WITHIN, {7}, {"7"});
}

TEST(BlockCopy, StartPastTheMaximumIsClamped)
{
    expectSeries(MultiCopy("WR", 600, 2, 1), CLAMPED, {511, 511}, {"511", "511"});
}

// ---- Steps ---------------------------------------------------------------------------------------------------------

struct Step {
    const char *name;
    qint32      given;
    qint32      words; // what it is for a word type
    qint32      bits;  // and for a bit type
};

std::ostream &operator<<(std::ostream &out, const Step &step)
{
    return out << step.name;
}

class CopyStep : public ::testing::TestWithParam<Step> {};

TEST_P(CopyStep, OfAWordType)
{
    EXPECT_EQ(MultiCopy("DM", 100, 2, GetParam().given).addresses(), (Addresses{100, 100 + GetParam().words}));
}

TEST_P(CopyStep, OfABitType)
{
    EXPECT_EQ(MultiCopy("DM_bit", 100, 2, GetParam().given).addresses(), (Addresses{100, 100 + GetParam().bits}));
}

const Step STEPS[] = {
    {"lowest",  LOWEST, 1, 1}, {"minus_5", -5, 1, 1}, {"minus_3", -3, 1, 1}, {"minus_2", -2, 2, 1},
    {"minus_1", -1,     1, 1}, {"zero",    0,  1, 1}, {"one",     1,  1, 1}, {"two",     2,  2, 2},
    {"ten",     10, 10, 10},
};

INSTANTIATE_TEST_SUITE_P(Steps, CopyStep, ::testing::ValuesIn(STEPS),
                         [](const ::testing::TestParamInfo<Step> &row) { return row.param.name; });

// ---- Every type ----------------------------------------------------------------------------------------------------

struct CopyRow {
    const char *name;
    qint32      maximum;
    const char *maximumText;
    qint32      stepForMinus2;
};

std::ostream &operator<<(std::ostream &out, const CopyRow &row)
{
    return out << row.name;
}

class CopyOfType : public ::testing::TestWithParam<CopyRow> {};

TEST_P(CopyOfType, ReachesItsMaximum)
{
    const std::string text = GetParam().maximumText;
    expectSeries(MultiCopy(GetParam().name, GetParam().maximum, 1, 1), ALL_WITHIN, {GetParam().maximum}, {text});
}

TEST_P(CopyOfType, IsClampedToItsMaximum)
{
    const std::string text = GetParam().maximumText;
    const qint32 maximum = GetParam().maximum;
    expectSeries(MultiCopy(GetParam().name, maximum + 1, 2, 1), CLAMPED, {maximum, maximum}, {text, text});
}

TEST_P(CopyOfType, StepMinus2)
{
    EXPECT_EQ(MultiCopy(GetParam().name, 100, 2, -2).addresses(), (Addresses{100, 100 + GetParam().stepForMinus2}));
}

const CopyRow COPY_ROWS[] = {
    {"CIO_bit", 98303,  "6143.15",  1},
    {"WR_bit",  8191,   "511.15",   1},
    {"HR_bit",  24575,  "1535.15",  1},
    {"AR_bit",  15359,  "959.15",   1},
    {"DM_bit",  524287, "32767.15", 1},
    {"CIO",     6143,   "6143",     2},
    {"WR",      511,    "511",      2},
    {"HR",      1535,   "1535",     2},
    {"AR",      959,    "959",      2},
    {"T",       4095,   "4095",     2},
    {"C",       4095,   "4095",     2},
    {"DM",      32767,  "32767",    2},
};

INSTANTIATE_TEST_SUITE_P(Rows, CopyOfType, ::testing::ValuesIn(COPY_ROWS),
                         [](const ::testing::TestParamInfo<CopyRow> &row) { return row.param.name; });

// ---- Below the minimum ---------------------------------------------------------------------------------------------

TEST(BlockCopy, MinimumIsDeliberatelyNotConsulted)
{
    expectSeries(MultiCopy("AR_bit", 0, 2, 1), ALL_WITHIN, {0, 1}, {"0.0", "0.1"});
}

TEST(BlockCopy, NegativeWordAddressIsWrittenUnsigned)
{
    expectSeries(MultiCopy("DM", -2, 3, 1), ALL_WITHIN, {-2, -1, 0}, {"4294967294", "4294967295", "0"});
}

TEST(BlockCopy, NegativeBitAddressIsDividedTowardsZeroAndWrittenUnsigned)
{
    expectSeries(MultiCopy("DM_bit", -17, 3, 1), ALL_WITHIN, {-17, -16, -15},
                 {"4294967295.4294967295", "4294967295.0", "0.4294967281"});
}

// ---- Nothing to copy -----------------------------------------------------------------------------------------------

TEST(BlockCopy, NoCopiesAppendNothing)
{
    for (qint32 copies : {0, -1, LOWEST}) {
        SCOPED_TRACE(copies);
        expectSeries(MultiCopy("DM", 40000, copies, 1), ALL_WITHIN, {}, {});
    }
}

TEST(BlockCopy, UnknownTypeAppendsNothing)
{
    for (const char *regType : {"EM", "dm", "DM ", ""}) {
        SCOPED_TRACE(regType);
        expectSeries(MultiCopy(regType, 0, 3, 1), UNKNOWN_TYPE, {}, {});
        expectSeries(MultiCopy(regType, 0, 0, 1), UNKNOWN_TYPE, {}, {});
    }
}

TEST(BlockCopy, AppendsToTheVectorsAsTheyAre)
{
    QVector<QString> texts;
    QVector<qint32>  addresses;
    texts.append("kept");
    addresses.append(-99);

    EXPECT_EQ(intf_multiCopy("DM", 5, 1, 1, texts, addresses), ALL_WITHIN);
    ASSERT_EQ(texts.size(), 2);
    ASSERT_EQ(addresses.size(), 2);
    EXPECT_EQ(texts.at(0).toStdString(), "kept");
    EXPECT_EQ(texts.at(1).toStdString(), "5");
    EXPECT_EQ(addresses.at(0), -99);
    EXPECT_EQ(addresses.at(1), 5);
}

// ---- Wrapping ------------------------------------------------------------------------------------------------------

TEST(BlockCopy, AddressThatWrapsIsWithinAgain)
{
    expectSeries(MultiCopy("DM", HIGHEST, 2, 1), CLAMPED, {32767, LOWEST}, {"32767", "2147483648"});
    expectSeries(MultiCopy("DM_bit", HIGHEST, 2, 1), CLAMPED, {524287, LOWEST}, {"32767.15", "4160749568.0"});
}

TEST(BlockCopy, StepThatWraps)
{
    expectSeries(MultiCopy("DM", 0, 3, HIGHEST), CLAMPED, {0, 32767, -2}, {"0", "32767", "4294967294"});
}

} // namespace
