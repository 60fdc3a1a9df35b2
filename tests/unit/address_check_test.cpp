#include "address/register_table.h"
#include "changed_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

namespace {

const qint32 HIGHEST   = std::numeric_limits<qint32>::max();
const qint32 UNTOUCHED = 4711; // what the address holds before each check

enum Code { VALID = 0, WRONG_KIND = 1, OUT_OF_RANGE = 2, MALFORMED = 4, NOT_WRITABLE = 6 };
enum Row { DM_BIT_ROW = 4, DM_ROW = 11 };
enum Variable { BIT_VARIABLE, WORD_VARIABLE };

/// One of the two exported checks, with the same arguments.
struct Check {
    const char *name;
    qint32 (*call)(const QString &regType, const QString &text, qint32 *address, qint32 count, Variable variable);
};

std::ostream &operator<<(std::ostream &out, const Check &check)
{
    return out << check.name;
}

qint32 checkAddrValidity(const QString &regType, const QString &text, qint32 *address, qint32 count, Variable variable)
{
    return intf_checkAddrValidity(regType, text, address, count, variable == WORD_VARIABLE ? 1 : 0);
}

qint32 checkAddr(const QString &regType, const QString &text, qint32 *address, qint32 count, Variable variable)
{
    return intf_checkAddr(regType, text, address, variable == WORD_VARIABLE ? 0 : -1, count, 0);
}

const Check CHECKS[] = {{"checkAddrValidity", checkAddrValidity}, {"checkAddr", checkAddr}};

/// What both checks have in common.
class AddressCheck : public ::testing::TestWithParam<Check> {
protected:
    qint32 check(const QString &regType, const QString &text, qint32 count, Variable variable)
    {
        address = UNTOUCHED;
        return GetParam().call(regType, text, &address, count, variable);
    }

    qint32 checkBits(const QString &regType, const QString &text, qint32 count)
    {
        return check(regType, text, count, BIT_VARIABLE);
    }

    qint32 checkWords(const QString &regType, const QString &text, qint32 count)
    {
        return check(regType, text, count, WORD_VARIABLE);
    }

    qint32 address = UNTOUCHED;
};

INSTANTIATE_TEST_SUITE_P(Both, AddressCheck, ::testing::ValuesIn(CHECKS),
                         [](const ::testing::TestParamInfo<Check> &row) { return row.param.name; });

// ---- Word types ----------------------------------------------------------------------------------------------------

TEST_P(AddressCheck, LastDmWord)
{
    EXPECT_EQ(checkWords("DM", "32767", 1), VALID);
    EXPECT_EQ(address, 32767);
}

TEST_P(AddressCheck, RunOverTheLastDmWord)
{
    EXPECT_EQ(checkWords("DM", "32767", 2), OUT_OF_RANGE);
    EXPECT_EQ(address, 32767);
}

TEST_P(AddressCheck, DmWordPastTheLast)
{
    EXPECT_EQ(checkWords("DM", "32768", 1), OUT_OF_RANGE);
    EXPECT_EQ(address, 32768);
}

TEST_P(AddressCheck, WordTextThatIsNoNumberStores0)
{
    EXPECT_EQ(checkWords("DM", "abc", 1), MALFORMED);
    EXPECT_EQ(address, 0);
}

TEST_P(AddressCheck, MalformedWordTextComesBeforeTheRange)
{
    EXPECT_EQ(checkWords("DM", "abc", 40000), MALFORMED);
}

TEST_P(AddressCheck, OtherMalformedWordTexts)
{
    for (const char *text :
         {"", " ", "10.5", "0x10", "1e3", "12a", "1 2", "--1", "1,000", "2147483648", "-2147483649"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(checkWords("DM", text, 1), MALFORMED);
        EXPECT_EQ(address, 0);
    }
}

TEST_P(AddressCheck, NullWordTextIsMalformed)
{
    EXPECT_EQ(checkWords("DM", QString(), 1), MALFORMED);
    EXPECT_EQ(address, 0);
}

TEST_P(AddressCheck, WordTextMayHaveSpacesAndASign)
{
    EXPECT_EQ(checkWords("DM", " 10 ", 1), VALID);
    EXPECT_EQ(address, 10);
    EXPECT_EQ(checkWords("DM", "+11", 1), VALID);
    EXPECT_EQ(address, 11);
    EXPECT_EQ(checkWords("DM", "012", 1), VALID);
    EXPECT_EQ(address, 12);
}

TEST_P(AddressCheck, WordBelowTheMinimumIsStoredAndRefused)
{
    EXPECT_EQ(checkWords("DM", "-5", 1), OUT_OF_RANGE);
    EXPECT_EQ(address, -5);
}

// ---- Bit types -----------------------------------------------------------------------------------------------------

TEST_P(AddressCheck, DmBit)
{
    EXPECT_EQ(checkBits("DM_bit", "10.15", 1), VALID);
    EXPECT_EQ(address, 175);
}

TEST_P(AddressCheck, MalformedBitTextLeavesTheAddress)
{
    EXPECT_EQ(checkBits("DM_bit", "10.05", 1), MALFORMED);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST_P(AddressCheck, MalformedBitTextComesBeforeTheRange)
{
    EXPECT_EQ(checkBits("DM_bit", "10.05", 600000), MALFORMED);
    EXPECT_EQ(checkBits("AR_bit", "500", 1), MALFORMED);
}

TEST_P(AddressCheck, OtherMalformedBitTexts)
{
    for (const char *text : {"", "10", "1.2.3", ".5", "5.", "10.16", "a.1", "1.a"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(checkBits("DM_bit", text, 1), MALFORMED);
        EXPECT_EQ(address, UNTOUCHED);
    }
}

TEST_P(AddressCheck, WordOfABitTextMayHaveWhiteSpaceAndASignAndItsBitMayNot)
{
    EXPECT_EQ(checkBits("DM_bit", " 100.5", 1), VALID);
    EXPECT_EQ(address, 1605);
    EXPECT_EQ(checkBits("DM_bit", "+100 .15", 1), VALID);
    EXPECT_EQ(address, 1615);
    EXPECT_EQ(checkBits("DM_bit", "-0.5", 1), VALID);
    EXPECT_EQ(address, 5);
    for (const char *text : {"100. 5", "100.+5", "100.5 ", "100.15 ", "100.+15"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(checkBits("DM_bit", text, 1), MALFORMED);
    }
}

TEST_P(AddressCheck, NullBitTextIsMalformed)
{
    EXPECT_EQ(checkBits("DM_bit", QString(), 1), MALFORMED);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST_P(AddressCheck, RunOverTheLastDmBit)
{
    EXPECT_EQ(checkBits("DM_bit", "32767.15", 2), OUT_OF_RANGE);
    EXPECT_EQ(address, 524287);
}

TEST_P(AddressCheck, BitBelowTheMinimumIsStoredAndRefused)
{
    EXPECT_EQ(checkBits("DM_bit", "-1.5", 1), OUT_OF_RANGE);
    EXPECT_EQ(address, -11);
}

TEST_P(AddressCheck, ArBitsDeliberatelyStartAt448AndArWordsAt0)
{
    EXPECT_EQ(checkBits("AR_bit", "447.15", 1), OUT_OF_RANGE);
    EXPECT_EQ(checkWords("AR", "0", 1), VALID);
    EXPECT_EQ(address, 0);
}

// ---- Kinds and unknown types ---------------------------------------------------------------------------------------

TEST_P(AddressCheck, BitVariableWithAWordType)
{
    EXPECT_EQ(checkBits("CIO", "10", 1), WRONG_KIND);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST_P(AddressCheck, WordVariableWithABitType)
{
    EXPECT_EQ(checkWords("CIO_bit", "10.5", 1), WRONG_KIND);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST_P(AddressCheck, WrongKindComesBeforeTheText)
{
    EXPECT_EQ(checkBits("CIO", "abc", 1), WRONG_KIND);
    EXPECT_EQ(address, UNTOUCHED);
    EXPECT_EQ(checkWords("CIO_bit", "abc", 1), WRONG_KIND);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST_P(AddressCheck, UnknownTypeDeliberatelyPasses)
{
    for (const char *regType : {"EM", "dm", "DM ", "EM_bit", "cio_bit", ""}) {
        SCOPED_TRACE(regType);
        for (const char *text : {"10", "10.5", "abc", "-1", "99999999", ""}) {
            SCOPED_TRACE(text);
            EXPECT_EQ(checkWords(regType, text, 1), VALID);
            EXPECT_EQ(address, UNTOUCHED);
            EXPECT_EQ(checkBits(regType, text, 1), VALID);
            EXPECT_EQ(address, UNTOUCHED);
        }
    }
}

// ---- Counts --------------------------------------------------------------------------------------------------------

TEST_P(AddressCheck, Count0DeliberatelyPassesOnePastTheMaximum)
{
    EXPECT_EQ(checkWords("DM", "32768", 0), VALID);
    EXPECT_EQ(address, 32768);
    EXPECT_EQ(checkWords("DM", "32769", 0), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("DM_bit", "32768.0", 0), VALID);
    EXPECT_EQ(address, 524288);
    EXPECT_EQ(checkBits("DM_bit", "32768.1", 0), OUT_OF_RANGE);
}

TEST_P(AddressCheck, NegativeCountDeliberatelyLetsHigherAddressesThrough)
{
    EXPECT_EQ(checkWords("DM", "32778", -10), VALID);
    EXPECT_EQ(checkWords("DM", "32779", -10), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("DM_bit", "32768.10", -10), VALID);
    EXPECT_EQ(checkBits("DM_bit", "32768.11", -10), OUT_OF_RANGE);
}

TEST_P(AddressCheck, MinimumIsCheckedWhateverTheCount)
{
    EXPECT_EQ(checkWords("DM", "-1", 0), OUT_OF_RANGE);
    EXPECT_EQ(checkWords("DM", "-1", 2), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("AR_bit", "447.15", 0), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("AR_bit", "447.15", -3), OUT_OF_RANGE);
}

TEST_P(AddressCheck, WholeAreaAtOnce)
{
    EXPECT_EQ(checkWords("DM", "0", 32768), VALID);
    EXPECT_EQ(checkWords("DM", "0", 32769), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("AR_bit", "448.0", 8192), VALID);
    EXPECT_EQ(checkBits("AR_bit", "448.0", 8193), OUT_OF_RANGE);
}

TEST_P(AddressCheck, EndOfTheRunWraps)
{
    EXPECT_EQ(checkWords("DM", "0", HIGHEST), OUT_OF_RANGE);
    EXPECT_EQ(checkWords("DM", "1", HIGHEST), VALID);
    EXPECT_EQ(checkBits("DM_bit", "0.0", HIGHEST), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("DM_bit", "0.1", HIGHEST), VALID);
}

// ---- Ranges, row by row --------------------------------------------------------------------------------------------

struct Range {
    const char *name;
    Variable    variable;
    const char *below;       // one below the minimum
    const char *minimumText;
    qint32      minimum;
    const char *maximumText;
    qint32      maximum;
    const char *above;       // one above the maximum
};

std::ostream &operator<<(std::ostream &out, const Range &row)
{
    return out << row.name;
}

class AddressRange : public ::testing::TestWithParam<Range> {
protected:
    /// Runs both checks, which must agree, and returns their result.
    qint32 check(const char *text, qint32 count)
    {
        qint32 other = UNTOUCHED;
        const Range &row = GetParam();
        address = UNTOUCHED;
        const qint32 result = checkAddrValidity(row.name, text, &address, count, row.variable);
        EXPECT_EQ(checkAddr(row.name, text, &other, count, row.variable), result);
        EXPECT_EQ(other, address);
        return result;
    }

    qint32 address = UNTOUCHED;
};

const Range RANGES[] = {
    {"CIO_bit", BIT_VARIABLE,  "-1.15",  "0.0",   0,    "6143.15",  98303,  "6144.0"},
    {"WR_bit",  BIT_VARIABLE,  "-1.15",  "0.0",   0,    "511.15",   8191,   "512.0"},
    {"HR_bit",  BIT_VARIABLE,  "-1.15",  "0.0",   0,    "1535.15",  24575,  "1536.0"},
    {"AR_bit",  BIT_VARIABLE,  "447.15", "448.0", 7168, "959.15",   15359,  "960.0"},
    {"DM_bit",  BIT_VARIABLE,  "-1.15",  "0.0",   0,    "32767.15", 524287, "32768.0"},
    {"CIO",     WORD_VARIABLE, "-1",     "0",     0,    "6143",     6143,   "6144"},
    {"WR",      WORD_VARIABLE, "-1",     "0",     0,    "511",      511,    "512"},
    {"HR",      WORD_VARIABLE, "-1",     "0",     0,    "1535",     1535,   "1536"},
    {"AR",      WORD_VARIABLE, "-1",     "0",     0,    "959",      959,    "960"},
    {"T",       WORD_VARIABLE, "-1",     "0",     0,    "4095",     4095,   "4096"},
    {"C",       WORD_VARIABLE, "-1",     "0",     0,    "4095",     4095,   "4096"},
    {"DM",      WORD_VARIABLE, "-1",     "0",     0,    "32767",    32767,  "32768"},
};

INSTANTIATE_TEST_SUITE_P(Rows, AddressRange, ::testing::ValuesIn(RANGES),
                         [](const ::testing::TestParamInfo<Range> &row) { return row.param.name; });

TEST_P(AddressRange, BelowTheMinimum)
{
    EXPECT_EQ(check(GetParam().below, 1), OUT_OF_RANGE);
    EXPECT_EQ(address, GetParam().minimum - 1);
}

TEST_P(AddressRange, Minimum)
{
    EXPECT_EQ(check(GetParam().minimumText, 1), VALID);
    EXPECT_EQ(address, GetParam().minimum);
}

TEST_P(AddressRange, Maximum)
{
    EXPECT_EQ(check(GetParam().maximumText, 1), VALID);
    EXPECT_EQ(address, GetParam().maximum);
}

TEST_P(AddressRange, RunOverTheMaximum)
{
    EXPECT_EQ(check(GetParam().maximumText, 2), OUT_OF_RANGE);
    EXPECT_EQ(address, GetParam().maximum);
}

TEST_P(AddressRange, AboveTheMaximum)
{
    EXPECT_EQ(check(GetParam().above, 1), OUT_OF_RANGE);
    EXPECT_EQ(address, GetParam().maximum + 1);
}

TEST_P(AddressRange, NoCountIsNeededOnePastTheMaximum)
{
    EXPECT_EQ(check(GetParam().above, 0), VALID);
}

TEST_P(AddressRange, NoAccessModeIsRefused)
{
    for (qint32 mode : {-1, 0, 1, 2, 3}) {
        SCOPED_TRACE(mode);
        const qint32 dataKind = GetParam().variable == WORD_VARIABLE ? 0 : -1;
        EXPECT_EQ(intf_checkAddr(GetParam().name, GetParam().maximumText, &address, dataKind, 1, mode), VALID);
    }
}

// ---- How the two checks tell the kind ------------------------------------------------------------------------------

TEST(AddressCheckKind, AnyNonzeroWordAccessMeansAWordVariable)
{
    qint32 address = UNTOUCHED;
    for (qint32 wordAccess : {1, 2, -1}) {
        SCOPED_TRACE(wordAccess);
        EXPECT_EQ(intf_checkAddrValidity("CIO", "10", &address, 1, wordAccess), VALID);
        EXPECT_EQ(intf_checkAddrValidity("CIO_bit", "10.5", &address, 1, wordAccess), WRONG_KIND);
    }
    EXPECT_EQ(intf_checkAddrValidity("CIO", "10", &address, 1, 0), WRONG_KIND);
    EXPECT_EQ(intf_checkAddrValidity("CIO_bit", "10.5", &address, 1, 0), VALID);
}

TEST(AddressCheckKind, OnlyDataKindMinus1MeansABitVariable)
{
    qint32 address = UNTOUCHED;
    for (qint32 dataKind : {0, 1, 2, -2}) {
        SCOPED_TRACE(dataKind);
        EXPECT_EQ(intf_checkAddr("CIO", "10", &address, dataKind, 1, 0), VALID);
        EXPECT_EQ(intf_checkAddr("CIO_bit", "10.5", &address, dataKind, 1, 0), WRONG_KIND);
    }
    EXPECT_EQ(intf_checkAddr("CIO", "10", &address, -1, 1, 0), WRONG_KIND);
    EXPECT_EQ(intf_checkAddr("CIO_bit", "10.5", &address, -1, 1, 0), VALID);
}

TEST(AddressCheckKind, UnknownTypePassesInEveryMode)
{
    for (qint32 mode : {0, 1, 2}) {
        SCOPED_TRACE(mode);
        qint32 address = UNTOUCHED;
        EXPECT_EQ(intf_checkAddr("EM", "10", &address, 0, 1, mode), VALID);
        EXPECT_EQ(address, UNTOUCHED);
    }
}

// ---- Rows that the table does not have at present ------------------------------------------------------------------

TEST(AddressCheckNotWritable, RefusesModes1And2)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,0,32767,1,0");
    qint32 address = UNTOUCHED;
    EXPECT_EQ(intf_checkAddr("DM", "10", &address, 0, 1, 1), NOT_WRITABLE);
    EXPECT_EQ(intf_checkAddr("DM", "10", &address, 0, 1, 2), NOT_WRITABLE);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST(AddressCheckNotWritable, AllowsEveryOtherMode)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,0,32767,1,0");
    for (qint32 mode : {-2, -1, 0, 3, 4, 257, 258}) {
        SCOPED_TRACE(mode);
        qint32 address = UNTOUCHED;
        EXPECT_EQ(intf_checkAddr("DM", "10", &address, 0, 1, mode), VALID);
        EXPECT_EQ(address, 10);
    }
}

TEST(AddressCheckNotWritable, ComesBeforeEveryOtherCheck)
{
    const ChangedText words(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,0,32767,1,0");
    const ChangedText bits(ADDRESS_RANGE_FINS[DM_BIT_ROW], "ddddd.DD (DD:0~15),0.0,32767.15,0,0");
    qint32 address = UNTOUCHED;
    EXPECT_EQ(intf_checkAddr("DM", "abc", &address, -1, 1, 1), NOT_WRITABLE);
    EXPECT_EQ(intf_checkAddr("DM", "99999", &address, 0, 1, 2), NOT_WRITABLE);
    EXPECT_EQ(intf_checkAddr("DM_bit", "1.05", &address, -1, 1, 1), NOT_WRITABLE);
    EXPECT_EQ(intf_checkAddr("DM_bit", "1.5", &address, 0, 1, 2), NOT_WRITABLE);
    EXPECT_EQ(address, UNTOUCHED);
    EXPECT_EQ(intf_checkAddr("DM", "abc", &address, -1, 1, 0), WRONG_KIND);
}

TEST(AddressCheckNotWritable, ConcernsItsOwnTypeAndTheOneCheckOnly)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,0,32767,1,0");
    qint32 address = UNTOUCHED;
    EXPECT_EQ(intf_checkAddr("HR", "10", &address, 0, 1, 1), VALID);
    EXPECT_EQ(intf_checkAddr("DM_bit", "10.5", &address, -1, 1, 1), VALID);
    EXPECT_EQ(intf_checkAddrValidity("DM", "10", &address, 1, 1), VALID);
}

TEST_P(AddressCheck, MalformedBitRangeCountsAs0)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_BIT_ROW], "ddddd.DD,least,most,0,1");
    EXPECT_EQ(checkBits("DM_bit", "-1.15", 1), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("DM_bit", "0.0", 1), VALID);
    EXPECT_EQ(checkBits("DM_bit", "0.0", 2), OUT_OF_RANGE);
    EXPECT_EQ(checkBits("DM_bit", "0.1", 0), VALID);
    EXPECT_EQ(checkBits("DM_bit", "0.1", 1), OUT_OF_RANGE);
}

TEST_P(AddressCheck, MalformedWordRangeCountsAs0)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,least,most,1,1");
    EXPECT_EQ(checkWords("DM", "-1", 1), OUT_OF_RANGE);
    EXPECT_EQ(checkWords("DM", "0", 1), VALID);
    EXPECT_EQ(checkWords("DM", "0", 2), OUT_OF_RANGE);
    EXPECT_EQ(checkWords("DM", "1", 1), OUT_OF_RANGE);
}

TEST_P(AddressCheck, WordRangeMayBeginAbove0)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,100,200,1,1");
    EXPECT_EQ(checkWords("DM", "99", 1), OUT_OF_RANGE);
    EXPECT_EQ(checkWords("DM", "100", 1), VALID);
    EXPECT_EQ(checkWords("DM", "100", 101), VALID);
    EXPECT_EQ(checkWords("DM", "100", 102), OUT_OF_RANGE);
}

// Only the kind 0 is a bit type.
TEST_P(AddressCheck, Kind2IsAWordType)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,0,32767,2,1");
    EXPECT_EQ(checkWords("DM", "32767", 1), VALID);
    EXPECT_EQ(checkBits("DM", "10.5", 1), WRONG_KIND);
}

} // namespace
