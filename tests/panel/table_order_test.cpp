#include "table/shown_number.h"
#include "table/table_order.h"
#include "table/text_match.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using fins::Quality;

ValueRow named(const std::string &name)
{
    ValueRow row;
    row.name = name;
    return row;
}

ValueRow valued(const std::string &value)
{
    ValueRow row;
    row.value = value;
    return row;
}

ValueRow grouped(const std::string &name, const std::string &plc, const std::string &group)
{
    ValueRow row = named(name);
    row.plc   = plc;
    row.group = group;
    return row;
}

std::vector<std::size_t> sorted(const std::vector<ValueRow> &rows, RowOrder order)
{
    std::vector<std::size_t> indexes(rows.size());
    std::iota(indexes.begin(), indexes.end(), 0);
    sortRows(indexes, rows, order);
    return indexes;
}

using Places = std::vector<std::size_t>;

TEST(RowOrder, ComesRound)
{
    EXPECT_EQ(nextOrder(RowOrder::GIVEN), RowOrder::NAME);
    EXPECT_EQ(nextOrder(RowOrder::NAME), RowOrder::VALUE);
    EXPECT_EQ(nextOrder(RowOrder::VALUE), RowOrder::CHANGE);
    EXPECT_EQ(nextOrder(RowOrder::CHANGE), RowOrder::QUALITY);
    EXPECT_EQ(nextOrder(RowOrder::QUALITY), RowOrder::GIVEN);
}

TEST(SortRows, NumbersInNamesAreNumbers)
{
    EXPECT_EQ(sorted({named("DM:10"), named("DM:9"), named("CIO:11"), named("DM:9")}, RowOrder::NAME),
              (Places{2, 1, 3, 0}));
}

TEST(SortRows, NumbersThenTextsThenWhatIsMissing)
{
    EXPECT_EQ(sorted({valued("\"b\""), valued(""), valued("10"), valued("9.5"), valued("-2"), valued("0x0B"),
                      valued("\"a\""), valued("nan")},
                     RowOrder::VALUE),
              (Places{4, 3, 2, 5, 6, 0, 7, 1}));
}

TEST(SortRows, TheLatestChangeFirst)
{
    std::vector<ValueRow> rows(4);
    rows[1].changedAt = TimePoint(Millis(1000));
    rows[2].changedAt = TimePoint(Millis(3000));
    rows[3].changedAt = TimePoint(Millis(-5));
    EXPECT_EQ(sorted(rows, RowOrder::CHANGE), (Places{2, 1, 3, 0}));
}

TEST(SortRows, TheWorstQualityFirst)
{
    std::vector<ValueRow> rows(5);
    rows[0].quality = Quality::GOOD;
    rows[1].quality = Quality::LAST_KNOWN;
    rows[2].quality = Quality::REFUSED;
    rows[3].quality = Quality::WRITE_PENDING;
    rows[4].quality = Quality::NOT_CONNECTED;
    EXPECT_EQ(sorted(rows, RowOrder::QUALITY), (Places{2, 4, 1, 3, 0}));
}

// In the order in which PLCs and groups come first; what has no group stands above the groups of its PLC.
TEST(SortRows, GroupsStandTogether)
{
    EXPECT_EQ(sorted({grouped("a", "", "Tank"), grouped("b", "", "Press"), grouped("c", "", "Tank"), grouped("d", "", "")},
                     RowOrder::GIVEN),
              (Places{3, 0, 2, 1}));
    EXPECT_EQ(sorted({grouped("a", "two", "Tank"), grouped("b", "one", "Tank"), grouped("c", "two", ""),
                      grouped("d", "two", "Tank")},
                     RowOrder::GIVEN),
              (Places{2, 0, 3, 1}));
}

TEST(ContainsLoosely, AnywhereAndInAnyCase)
{
    EXPECT_TRUE(containsLoosely("Press.Level", "LEV"));
    EXPECT_TRUE(containsLoosely("FÜLLSTAND", "füll"));
    EXPECT_TRUE(containsLoosely("anything", ""));
    EXPECT_FALSE(containsLoosely("Press.Level", "levels"));
    EXPECT_FALSE(containsLoosely("", "a"));
}

TEST(ContainsLoosely, Patterns)
{
    EXPECT_TRUE(containsLoosely("Press.Level", "pr*lev"));
    EXPECT_TRUE(containsLoosely("Füllstand", "f?l"));
    EXPECT_FALSE(containsLoosely("Pump", "p?p"));
    EXPECT_FALSE(containsLoosely("Press.Level", "lev*pr"));
}

TEST(ContainsLoosely, BracketsAreThemselves)
{
    EXPECT_TRUE(containsLoosely("Tank[2]", "k[2]"));
    EXPECT_FALSE(containsLoosely("Tank2", "[2]"));
    EXPECT_TRUE(containsLoosely("a\\b", "\\b"));
}

TEST(ShownNumber, WholeTextsOnly)
{
    EXPECT_EQ(shownNumber("-12.5"), -12.5);
    EXPECT_EQ(shownNumber("0x10"), 16);
    for (const char *text : {"", "12 a", "\"12\"", "nan", "inf", "no-bcd:0x12AB", "0001_0000_0000_0000"})
        EXPECT_EQ(shownNumber(text), std::nullopt) << text;
}

TEST(Extremes, OfNumbersAsTheyWereShown)
{
    Extremes extremes;
    EXPECT_EQ(extremes.minimum(), "");
    for (const char *text : {"9.0", "\"text\"", "10.0", "-3.5", "nan"})
        extremes.note(text);
    EXPECT_EQ(extremes.minimum(), "-3.5");
    EXPECT_EQ(extremes.maximum(), "10.0");
}

} // namespace
