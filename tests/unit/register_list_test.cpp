#include "address/register_table.h"
#include "changed_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Texts;

const Texts BIT_TYPES  = {"CIO_bit", "WR_bit", "HR_bit", "AR_bit", "DM_bit"};
const Texts WORD_TYPES = {"CIO", "WR", "HR", "AR", "T", "C", "DM"};

Texts toTexts(const QList<QString> &list)
{
    Texts texts;
    for (const QString &entry : list)
        texts.push_back(entry.toStdString());
    return texts;
}

// ---- Names by kind -------------------------------------------------------------------------------------------------

TEST(RegListByType, Type0ListsTheBitTypesInTableOrder)
{
    QList<QString> names;

    EXPECT_EQ(intf_getRegListByType(0, names), 1);
    EXPECT_EQ(toTexts(names), BIT_TYPES);
}

TEST(RegListByType, Type1ListsTheWordTypesInTableOrder)
{
    QList<QString> names;

    EXPECT_EQ(intf_getRegListByType(1, names), 1);
    EXPECT_EQ(toTexts(names), WORD_TYPES);
}

TEST(RegListByType, TwiceWithTheSameListLeavesTenEntries)
{
    QList<QString> names;
    intf_getRegListByType(0, names);
    intf_getRegListByType(0, names);

    Texts twice = BIT_TYPES;
    twice.insert(twice.end(), BIT_TYPES.begin(), BIT_TYPES.end());
    EXPECT_EQ(toTexts(names), twice);
}

TEST(RegListByType, AnyOtherTypeAppendsNothingAndGives0)
{
    const qint32 others[] = {-1, 2, 3, 256, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()};
    for (qint32 other : others) {
        SCOPED_TRACE(other);
        QList<QString> names;
        names.append("kept");

        EXPECT_EQ(intf_getRegListByType(other, names), 0);
        EXPECT_EQ(toTexts(names), Texts{"kept"});
    }
}

// ---- Description of one type ---------------------------------------------------------------------------------------

struct Description {
    const char *name;
    Texts       fields;
};

std::ostream &operator<<(std::ostream &out, const Description &row)
{
    return out << row.name;
}

class RegDescription : public ::testing::TestWithParam<Description> {};

TEST_P(RegDescription, HasTheFiveFieldsOfItsRange)
{
    QList<QString> fields;

    EXPECT_EQ(intf_getRegDiscription(GetParam().name, fields), 0);
    EXPECT_EQ(toTexts(fields), GetParam().fields);
}

const Description DESCRIPTIONS[] = {
    {"CIO_bit", {"ddddd.DD (DD:0~15)", "0.0",   "6143.15",  "0", "1"}},
    {"WR_bit",  {"dd.DD (DD:0~15)",    "0.0",   "511.15",   "0", "1"}},
    {"HR_bit",  {"dddd.DD (DD:0~15)",  "0.0",   "1535.15",  "0", "1"}},
    {"AR_bit",  {"ddd.DD (DD:0~15)",   "448.0", "959.15",   "0", "1"}},
    {"DM_bit",  {"ddddd.DD (DD:0~15)", "0.0",   "32767.15", "0", "1"}},
    {"CIO",     {"dddd",               "0",     "6143",     "1", "1"}},
    {"WR",      {"ddd",                "0",     "511",      "1", "1"}},
    {"HR",      {"dddd",               "0",     "1535",     "1", "1"}},
    {"AR",      {"ddd",                "0",     "959",      "1", "1"}},
    {"T",       {"dddd",               "0",     "4095",     "1", "1"}},
    {"C",       {"dddd",               "0",     "4095",     "1", "1"}},
    {"DM",      {"ddddd",              "0",     "32767",    "1", "1"}},
};

INSTANTIATE_TEST_SUITE_P(Rows, RegDescription, ::testing::ValuesIn(DESCRIPTIONS),
                         [](const ::testing::TestParamInfo<Description> &row) { return row.param.name; });

TEST(RegDescriptionTest, AppendsToTheListAsItIs)
{
    QList<QString> fields;
    fields.append("kept");

    intf_getRegDiscription("T", fields);
    EXPECT_EQ(toTexts(fields), (Texts{"kept", "dddd", "0", "4095", "1", "1"}));
}

TEST(RegDescriptionTest, UnknownTypeAppendsNothing)
{
    const QString unknown[] = {"X", "dm", "DM ", "", QString()};
    for (const QString &regType : unknown) {
        SCOPED_TRACE(regType.toStdString());
        QList<QString> fields;
        fields.append("kept");

        EXPECT_EQ(intf_getRegDiscription(regType, fields), 0);
        EXPECT_EQ(toTexts(fields), Texts{"kept"});
    }
}

// ---- Rows that the table does not have at present ------------------------------------------------------------------

enum { AR_BIT_ROW = 3, HR_ROW = 7, DM_ROW = 11 };

Texts namesByType(qint32 type)
{
    QList<QString> names;
    intf_getRegListByType(type, names);
    return toTexts(names);
}

TEST(RegListByKind, Kind2IsAWordTypeToo)
{
    const ChangedText row(ADDRESS_RANGE_FINS[HR_ROW], "dddd,0,1535,2,1");
    EXPECT_EQ(namesByType(1), WORD_TYPES);
    EXPECT_EQ(namesByType(0), BIT_TYPES);
}

TEST(RegListByKind, Type2ListsKind2AndStillGives0)
{
    const ChangedText row(ADDRESS_RANGE_FINS[HR_ROW], "dddd,0,1535,2,1");
    QList<QString> names;
    EXPECT_EQ(intf_getRegListByType(2, names), 0);
    EXPECT_EQ(toTexts(names), Texts{"HR"});
}

TEST(RegListByKind, Kind3IsListedByItsOwnTypeOnly)
{
    const ChangedText row(ADDRESS_RANGE_FINS[HR_ROW], "dddd,0,1535,3,1");
    EXPECT_EQ(namesByType(1), (Texts{"CIO", "WR", "AR", "T", "C", "DM"}));
    EXPECT_EQ(namesByType(2), Texts());
    EXPECT_EQ(namesByType(3), Texts{"HR"});
}

TEST(RegListByKind, KindThatIsNoNumberCountsAs0)
{
    const ChangedText row(ADDRESS_RANGE_FINS[DM_ROW], "ddddd,0,32767,word,1");
    EXPECT_EQ(namesByType(0), (Texts{"CIO_bit", "WR_bit", "HR_bit", "AR_bit", "DM_bit", "DM"}));
}

TEST(RegListByKind, RowWithoutFiveFieldsIsSkippedAndTheNextAreListed)
{
    const ChangedText four(ADDRESS_RANGE_FINS[AR_BIT_ROW], "ddd.DD (DD:0~15),448.0,959.15,0");
    const ChangedText six(ADDRESS_RANGE_FINS[HR_ROW], "dddd,0,1535,1,1,");
    EXPECT_EQ(namesByType(0), (Texts{"CIO_bit", "WR_bit", "HR_bit", "DM_bit"}));
    EXPECT_EQ(namesByType(1), (Texts{"CIO", "WR", "AR", "T", "C", "DM"}));
}

TEST(RegListByKind, EmptyRowIsSkipped)
{
    const ChangedText row(ADDRESS_RANGE_FINS[HR_ROW], "");
    EXPECT_EQ(namesByType(0), BIT_TYPES);
    EXPECT_EQ(namesByType(1), (Texts{"CIO", "WR", "AR", "T", "C", "DM"}));
}

TEST(RegDescriptionTest, RowWithoutFiveFieldsAppendsNothing)
{
    for (const char *text : {"", "dddd,0,1535,1", "dddd,0,1535,1,1,"}) {
        SCOPED_TRACE(text);
        const ChangedText row(ADDRESS_RANGE_FINS[HR_ROW], text);
        QList<QString> fields;
        EXPECT_EQ(intf_getRegDiscription("HR", fields), 0);
        EXPECT_EQ(toTexts(fields), Texts());
    }
}

TEST(RegDescriptionTest, EmptyFieldsAreKept)
{
    const ChangedText row(ADDRESS_RANGE_FINS[HR_ROW], ",,,,");
    QList<QString> fields;
    EXPECT_EQ(intf_getRegDiscription("HR", fields), 0);
    EXPECT_EQ(toTexts(fields), (Texts{"", "", "", "", ""}));
}

} // namespace
