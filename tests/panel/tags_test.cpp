#include "tags.h"

#include "panel_fixture.h"

namespace {

using Bytes = std::vector<quint8>;
using Texts = std::vector<std::string>;

Tag tag(const std::string &name, const std::string &item, const std::string &type)
{
    const TagBook plain(builtDriver());
    Tag made = plain.resolve(item + (type.empty() ? "" : "/" + type), Access::READ);
    made.name = name;
    return made;
}

TagBook project()
{
    TagBook book(builtDriver());
    book.setSource("plant.toml");
    Tag level = tag("Level", "DM:0", "s16");
    level.format.scale = 0.1;
    level.format.unit  = "%";
    book.add(level);
    book.add(tag("Counts", "DM:10:4", ""));
    book.add(tag("Name", "DM:20:3", "string"));
    book.add(tag("Pump", "CIO_bit:0.5", ""));
    return book;
}

std::string nameOf(const std::string &text)
{
    return TagBook(builtDriver()).resolve(text, Access::READ).name;
}

std::string refusal(const TagBook &book, const std::string &text)
{
    return usageError([&] { book.resolve(text, Access::READ); });
}

} // namespace

TEST(Tags, NamesItemsAsTheyCanBeTypedAgain)
{
    for (const char *text : {"DM:100", "DM:100:3", "DM:100/f32", "DM:100:3/f32", "DM:0/u64-high", "CIO_bit:0.5:2",
                             "HR:4:5/string", "HR:4/string-low", "T:5/hex", "DM:1/u16"})
        EXPECT_EQ(nameOf(text), text);
    EXPECT_EQ(nameOf("DM:100:1/f32-low"), "DM:100/f32");
}

TEST(Tags, CountsValues)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(book.resolve("DM:100:3/f32", Access::READ).item.count, 6);
    EXPECT_EQ(book.resolve("DM:100:3/f32", Access::READ).valueCount(), 3);
    EXPECT_EQ(book.resolve("DM:100/f64", Access::READ).item.count, 4);
    EXPECT_EQ(book.resolve("DM:100:3/string", Access::READ).item.count, 3);
    EXPECT_EQ(book.resolve("DM_bit:1.0:3", Access::READ).item.count, 3);
}

TEST(Tags, TheDriverChecksTheWordsOfTheType)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(refusal(book, "DM:32766/f32"), "");
    EXPECT_EQ(refusal(book, "DM:32767/f32"), "'DM:32767' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal(book, "DM:32764/f64"), "");
    EXPECT_NE(refusal(book, "DM:32765/f64"), "");
    EXPECT_EQ(refusal(book, "DM:32764:2/f32"), "");
    EXPECT_NE(refusal(book, "DM:32765:2/f32"), "");
}

TEST(Tags, RefusesUnknownTypesAndTypesOfBits)
{
    const TagBook book(builtDriver());
    EXPECT_NE(refusal(book, "DM:0/f16").find("there is no data type 'f16'"), std::string::npos);
    EXPECT_NE(refusal(book, "DM:0/"), "");
    EXPECT_NE(refusal(book, "DM:0/f32/f32"), "");
    EXPECT_EQ(refusal(book, "DM_bit:0.0/u16"), "'DM_bit:0.0/u16': a bit has no data type; write DM_bit:0.0");
    EXPECT_EQ(refusal(book, "Level"),
              "'Level' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
}

TEST(Tags, DefaultsAreForWordItemsOfTheirOwn)
{
    TagBook book(builtDriver());
    ValueFormat format = parseFormat("s32", OrderDefaults());
    format.scale    = 0.5;
    format.offset   = 1;
    format.decimals = 2;
    format.unit     = "bar";
    OrderDefaults orders;
    orders.words = Order::HIGH;
    book.setDefaults(format, orders);
    const Tag plain = book.resolve("DM:0", Access::READ);
    EXPECT_EQ(plain.name, "DM:0/s32");
    EXPECT_EQ(plain.item.count, 2);
    const Tag typed = book.resolve("DM:0/f32", Access::READ);
    EXPECT_EQ(typed.name, "DM:0/f32-high");
    EXPECT_EQ(typed.format.scale, 0.5);
    EXPECT_EQ(typed.format.offset, 1);
    EXPECT_EQ(typed.format.decimals, 2);
    EXPECT_EQ(typed.format.unit, "bar");
    const Tag hex = book.resolve("DM:0/hex", Access::READ);
    EXPECT_EQ(hex.format.scale, 1);
    EXPECT_EQ(hex.format.unit, "");
    EXPECT_EQ(book.resolve("DM_bit:0.0", Access::READ).format.type, DataType::BIT);
    EXPECT_EQ(book.resolve("DM_bit:0.0", Access::READ).format.scale, 1);
}

TEST(Tags, FindsTagsByName)
{
    const TagBook book = project();
    EXPECT_EQ(itemText(book.resolve("Level", Access::READ).item), "DM:0");
    EXPECT_EQ(book.resolve("Level", Access::READ).name, "Level");
    EXPECT_EQ(book.resolve("Level", Access::READ).format.unit, "%");
    EXPECT_EQ(book.resolve("DM:5", Access::READ).name, "DM:5");
    EXPECT_EQ(book.find("level"), nullptr);
    EXPECT_EQ(refusal(book, "level"), "'level' is neither a tag of plant.toml nor an item; write a tag's name, or "
                                      "TYPE:ADDRESS such as DM:100:2");
    EXPECT_EQ(book.tags().size(), 4u);
    EXPECT_FALSE(project().add(tag("Level", "DM:7", "")));
}

TEST(Tags, ATagCanBeSeenInAnotherType)
{
    const TagBook book = project();
    const Tag hex = book.resolve("Level/hex", Access::READ);
    EXPECT_EQ(hex.name, "Level/hex");
    EXPECT_EQ(hex.format.scale, 1);
    EXPECT_EQ(hex.format.unit, "");
    EXPECT_EQ(book.resolve("Counts/f32", Access::READ).valueCount(), 2);
    EXPECT_EQ(refusal(book, "Level/f32"), "'Level/f32': Level has 1 words, and f32 needs 2 a value");
    EXPECT_EQ(refusal(book, "Name/u32"), "'Name/u32': Name has 3 words, and u32 needs 2 a value");
    EXPECT_EQ(refusal(book, "Pump/u16"), "'Pump/u16': a bit has no data type; write Pump");
}

TEST(Tags, TakesTheCountFromTheValues)
{
    const TagBook book(builtDriver());
    Bytes bytes;
    EXPECT_EQ(book.resolveWithValues("DM:0/u32", Access::WRITE, {"1", "2"}, bytes).name, "DM:0:2/u32");
    EXPECT_EQ(bytes, (Bytes{1, 0, 0, 0, 2, 0, 0, 0}));
    EXPECT_EQ(book.resolveWithValues("DM:0/string", Access::WRITE, {"ABC"}, bytes).name, "DM:0:2/string");
    EXPECT_EQ(bytes, (Bytes{'B', 'A', 0, 'C'}));
    EXPECT_EQ(book.resolveWithValues("DM:0:3/string", Access::WRITE, {"AB"}, bytes).name, "DM:0:3/string");
    EXPECT_EQ(bytes.size(), 6u);
    EXPECT_EQ(book.resolveWithValues("CIO_bit:0.1", Access::WRITE, {"1", "0"}, bytes).name, "CIO_bit:0.1:2");
    EXPECT_EQ(bytes, (Bytes{1, 0}));
    EXPECT_NE(usageError([&] { book.resolveWithValues("DM:32767", Access::WRITE, {"1", "2"}, bytes); }), "");
    EXPECT_NE(usageError([&] { book.resolveWithValues("Level", Access::WRITE, {"1"}, bytes); }), "");
}

TEST(Tags, EncodesInTheFormOfTheTag)
{
    const TagBook book = project();
    Bytes bytes;
    EXPECT_EQ(book.resolveWithValues("Level", Access::WRITE, {"12.3"}, bytes).name, "Level");
    EXPECT_EQ(bytes, (Bytes{123, 0}));
    book.resolveWithValues("Name", Access::WRITE, {"AB"}, bytes);
    EXPECT_EQ(bytes, (Bytes{'B', 'A', 0, 0, 0, 0}));
    EXPECT_EQ(usageError([&] { book.resolveWithValues("Name", Access::WRITE, {"ABCDEFG"}, bytes); }),
              "'ABCDEFG' has 7 characters; 6 fit");
}

TEST(Tags, KnowsWhatANameIs)
{
    for (const char *text : {"Level", "_x", "a", "Tank1.Level-2", "F\xC3\xBCllstand", "Z"})
        EXPECT_TRUE(isTagName(text)) << text;
    for (const char *text : {"", "1a", ".a", "-a", "a b", "a:b", "a/b", "a=b", "a,b", "a#", "a\"", "a[0]"})
        EXPECT_FALSE(isTagName(text)) << text;
}

TEST(Tags, PutsTheUnitBehindTheValue)
{
    ValueFormat format;
    EXPECT_EQ(withUnit("5", format), "5");
    format.unit = "bar";
    EXPECT_EQ(withUnit("5", format), "5 bar");
}
