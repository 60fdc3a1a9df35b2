#include "values/notation.h"

#include "session/watch_values.h"
#include "support/built_driver.h"

// Addresses and type names as the PLC's manuals write them.

namespace {

using Texts = std::vector<std::string>;

const char NONE[] = "none";

std::string inDriver(const std::string &text) { return driverItem(text).value_or(NONE); }

std::string name(const std::string &text) { return TagBook(builtDriver()).resolve(text, Access::WRITE).name; }

std::string refusal(const std::string &text)
{
    return usageError([&] { TagBook(builtDriver()).resolve(text, Access::WRITE); });
}

TagBook withTag(const std::string &called)
{
    TagBook book(builtDriver());
    book.setSource("plant.toml");
    Tag tag = book.resolveItem("DM:5", Access::WRITE);
    tag.name = called;
    book.add(tag);
    return book;
}

} // namespace

TEST(Notation, KnowsEveryArea)
{
    const std::pair<const char *, const char *> rows[] = {
        {"100", "CIO:100"}, {"100.05", "CIO_bit:100.5"}, {"W3", "WR:3"},     {"W3.05", "WR_bit:3.5"},
        {"H10", "HR:10"},   {"H10.01", "HR_bit:10.1"},   {"A448", "AR:448"}, {"A448.03", "AR_bit:448.3"},
        {"T5", "T:5"},      {"C7", "C:7"},               {"D100", "DM:100"}, {"D100.05", "DM_bit:100.5"}};
    for (const auto &row : rows) {
        EXPECT_EQ(inDriver(row.first), row.second);
        EXPECT_EQ(manualItem(row.second), row.first);
    }
}

TEST(Notation, CountsStandBehindTheAddress)
{
    EXPECT_EQ(inDriver("D100:2"), "DM:100:2");
    EXPECT_EQ(inDriver("100.05:20"), "CIO_bit:100.5:20");
    EXPECT_EQ(manualItem("DM:100:2"), "D100:2");
    EXPECT_EQ(manualItem("CIO_bit:100.5:20"), "100.05:20");
    EXPECT_EQ(manualItem("CIO_bit:100.15:2"), "100.15:2");
}

// .1 is bit 1, as .01 is; only .10 is bit 10.
TEST(Notation, ABitHasOneDigitOrTwo)
{
    EXPECT_EQ(inDriver("W3.5"), "WR_bit:3.5");
    EXPECT_EQ(inDriver("W3.1"), "WR_bit:3.1");
    EXPECT_EQ(inDriver("W3.01"), "WR_bit:3.1");
    EXPECT_EQ(inDriver("W3.10"), "WR_bit:3.10");
    EXPECT_EQ(inDriver("W3.00"), "WR_bit:3.0");
    EXPECT_EQ(inDriver("W3.0"), "WR_bit:3.0");
    EXPECT_EQ(inDriver("W3.005"), NONE);
}

TEST(Notation, LeadingZerosAreNoOctals)
{
    EXPECT_EQ(inDriver("D00100"), "DM:100");
    EXPECT_EQ(inDriver("T0000"), "T:0");
    EXPECT_EQ(inDriver("W007.08"), "WR_bit:7.8");
}

TEST(Notation, EverythingElseIsNoAddress)
{
    for (const char *text : {"", "D", "d100", "w3.05", "DM100", "E0", "X1", "D-1", "D+1", "D 1", "D1 ", "D1x", "D1.", "D.5", ".5", "D1.x",
                             "D1.-5", "D1.5.6", "DM:100", "D:100", "T:5", ":5", "Level", "127.0.0.1", "D100/REAL"})
        EXPECT_EQ(inDriver(text), NONE) << text;
}

TEST(Notation, WhatIsNoItemOfTheDriverStaysAsItIs)
{
    EXPECT_EQ(manualItem("EM:5"), "EM:5");
    EXPECT_EQ(manualItem("Level"), "Level");
}

struct AreaRow {
    std::string letter;
    long        first;
    long        last;
    long        firstOfBits; // -1: the area has none
};

class NotationRange : public ::testing::TestWithParam<AreaRow> {};

TEST_P(NotationRange, FirstAndLastAndBeyond)
{
    const AreaRow &area = GetParam();
    const std::string first = area.letter + std::to_string(area.first);
    const std::string last  = area.letter + std::to_string(area.last);
    const std::string after = area.letter + std::to_string(area.last + 1);
    EXPECT_EQ(name(first), first);
    EXPECT_EQ(name(last), last);
    EXPECT_EQ(refusal(after), "'" + after + "' lies outside the range " + first + " to " + last);
    EXPECT_EQ(refusal(last + ":2"), "'" + last + ":2' lies outside the range " + first + " to " + last);
    if (area.firstOfBits < 0) {
        EXPECT_EQ(refusal(first + ".05"), "'" + first + ".05': the area " + area.letter + " has no bits; write " + first);
        return;
    }
    const std::string bit   = area.letter + std::to_string(area.firstOfBits) + ".00";
    const std::string range = bit + " to " + last + ".15";
    EXPECT_EQ(name(bit), bit);
    EXPECT_EQ(name(last + ".15"), last + ".15");
    EXPECT_EQ(refusal(last + ".16"), "'" + last + ".16' lies outside the range " + range);
    EXPECT_EQ(refusal(after + ".00"), "'" + after + ".00' lies outside the range " + range);
}

INSTANTIATE_TEST_SUITE_P(Areas, NotationRange,
                         ::testing::Values(AreaRow{"", 0, 6143, 0}, AreaRow{"W", 0, 511, 0}, AreaRow{"H", 0, 1535, 0},
                                           AreaRow{"A", 0, 959, 448}, AreaRow{"T", 0, 4095, -1},
                                           AreaRow{"C", 0, 4095, -1}, AreaRow{"D", 0, 32767, 0}));

TEST(Notation, NumbersFarTooLongAreOutOfRange)
{
    EXPECT_EQ(refusal("D99999999999999999999"), "'D99999999999999999999' lies outside the range D0 to D32767");
    EXPECT_EQ(refusal("D4294967296"), "'D4294967296' lies outside the range D0 to D32767");
    EXPECT_EQ(refusal("A447.15"), "'A447.15' lies outside the range A448.00 to A959.15");
    EXPECT_EQ(refusal("D5:x"), "'D5:x': the count 'x' is not a number from 1 up");
}

TEST(Notation, AnItemIsNamedAsItWasGiven)
{
    EXPECT_EQ(name("D100"), "D100");
    EXPECT_EQ(name("DM:100"), "DM:100");
    EXPECT_EQ(name("D100:2/REAL"), "D100:2/REAL");
    EXPECT_EQ(name("DM:100/REAL"), "DM:100/REAL");
    EXPECT_EQ(name("D100/f32"), "D100/f32");
    EXPECT_EQ(name("D100/REAL-high"), "D100/REAL-high");
    EXPECT_EQ(name("D100/REAL-low"), "D100/REAL");
    EXPECT_EQ(name("W3.5:2"), "W3.05:2");
    EXPECT_EQ(name("W3.05/BOOL"), "W3.05/BOOL");
    EXPECT_EQ(TagBook(builtDriver()).resolve("D100:2/REAL", Access::READ).item.count, 4);
}

TEST(Notation, TypesOfTheManuals)
{
    const std::pair<const char *, DataType> rows[] = {
        {"INT", DataType::S16},       {"UINT", DataType::U16},       {"DINT", DataType::S32},   {"UDINT", DataType::U32},
        {"LINT", DataType::S64},      {"ULINT", DataType::U64},      {"REAL", DataType::F32},   {"LREAL", DataType::F64},
        {"WORD", DataType::HEX},      {"DWORD", DataType::HEX32},    {"UINT_BCD", DataType::BCD16},
        {"UDINT_BCD", DataType::BCD32}, {"STRING", DataType::STRING}};
    for (const auto &row : rows) {
        const ValueFormat format = parseFormat(row.first, OrderDefaults());
        EXPECT_EQ(format.type, row.second) << row.first;
        EXPECT_EQ(formatText(format), row.first);
    }
    for (const char *text : {"real", "Real", "BYTE"})
        EXPECT_FALSE(driverType(text)) << text;
}

TEST(Notation, BoolIsTheTypeOfABit)
{
    EXPECT_EQ(refusal("D100/BOOL"), "'D100/BOOL': words are no bit; name a bit, such as D100.05, or another data type");
    EXPECT_EQ(refusal("W3.05/INT"), "'W3.05/INT': a bit has no data type; write W3.05");
    EXPECT_EQ(usageError([] { parseFormat("BOOL", OrderDefaults()); }), "'BOOL' is the type of a bit; name one, such as D100.05");
    TagBook book = withTag("Level");
    EXPECT_EQ(usageError([&] { book.resolve("Level/BOOL", Access::READ); }),
              "'Level/BOOL': words are no bit; name a bit, such as D100.05, or another data type");
    EXPECT_EQ(book.resolve("Level/INT", Access::READ).name, "Level/INT");
}

TEST(Notation, WritesNeedACountForSeveralValues)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(book.resolveWrite("D100:2=1,2").tag.name, "D100:2");
    EXPECT_EQ(usageError([&] { book.resolveWrite("D100/INT=1,2"); }),
              "'D100/INT' is one value, and 2 are given; write D100:2/INT for as many, or a decimal number with a point");
    EXPECT_EQ(book.resolveWrite("D100/STRING=ABC").tag.name, "D100:2/STRING");
    EXPECT_EQ(usageError([&] { book.resolveWrite("D100/INT=32768"); }),
              "'D100/INT=32768' does not fit INT; use a whole number from -32768 to 32767, decimal or with 0x");
    EXPECT_EQ(usageError([&] { refuseOverlaps(itemsOf(book.resolveAll({"D100:2", "D101"}, Access::WRITE))); }),
              "D100:2 and D101 overlap; name every word and bit once");
}

TEST(Notation, ATagGoesBeforeAnAddress)
{
    const TagBook book = withTag("D100");
    EXPECT_EQ(itemText(book.resolve("D100", Access::READ).item), "DM:5");
    EXPECT_EQ(itemText(book.resolveItem("D100", Access::READ).item), "DM:100"); // D100 is DM:5 here
    EXPECT_EQ(itemText(book.resolve("D99", Access::READ).item), "D99");
    EXPECT_EQ(usageError([&] { book.resolve("D100:2", Access::READ); }),
              "'D100:2': D100 is a tag of its own; write DM:100:2 for the address");
    EXPECT_EQ(usageError([&] { book.resolve("d100", Access::READ); }),
              "'d100' is neither a tag of plant.toml nor an item; write a tag's name, or TYPE:ADDRESS such as DM:100:2 "
              "(did you mean 'D100'?)");
}

TEST(Notation, SingleValuesHaveTheirAddresses)
{
    const auto names = [](const TagBook &book, const std::string &text) {
        Texts all;
        for (const WatchedValue &value : singleValues({book.resolve(text, Access::READ)}))
            all.push_back(value.name);
        return all;
    };
    const TagBook plain(builtDriver());
    EXPECT_EQ(names(plain, "D100:3"), (Texts{"D100", "D101", "D102"}));
    EXPECT_EQ(names(plain, "0.15:2"), (Texts{"0.15", "1.00"}));
    EXPECT_EQ(names(plain, "D100:2/REAL"), (Texts{"D100/REAL", "D102/REAL"}));
    EXPECT_EQ(names(withTag("D101"), "D100:2"), (Texts{"DM:100", "DM:101"})); // D101 is another value
}
