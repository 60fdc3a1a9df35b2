#include "values/tags.h"

#include "support/built_driver.h"

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

// Tags with limits and rights.
TagBook limited()
{
    TagBook book(builtDriver());
    Tag setPoint = tag("SetPoint", "DM:3", "s16");
    setPoint.format.scale = 0.1;
    setPoint.format.unit  = "%";
    setPoint.format.decimals = 0; // what is shown is rounded, what is compared is not
    setPoint.minimum = -5;
    setPoint.maximum = 100;
    book.add(setPoint);
    Tag counts = tag("Counts", "DM:10:3", "");
    counts.maximum = 7;
    book.add(counts);
    Tag heat = tag("Heat", "DM:20", "f32");
    heat.minimum = -0.5;
    book.add(heat);
    Tag digits = tag("Digits", "DM:30", "bcd16");
    digits.maximum = 50;
    book.add(digits);
    Tag level = tag("Level", "DM:0", "");
    level.readOnly = true;
    book.add(level);
    Tag alarm = tag("Alarm", "CIO_bit:0.5", "");
    alarm.readOnly = true;
    book.add(alarm);
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

std::string refusal(const TagBook &book, const std::string &text, const Texts &values)
{
    Bytes bytes;
    return usageError([&] { book.resolveWithValues(text, Access::WRITE, values, bytes); });
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
    EXPECT_EQ(refusal(book, "DM:32765/f64"), "'DM:32765' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal(book, "DM:32764:2/f32"), "");
    EXPECT_EQ(refusal(book, "DM:32765:2/f32"), "'DM:32765:2' lies outside the range 0 to 32767, written ddddd");
}

TEST(Tags, RefusesUnknownTypesAndTypesOfBits)
{
    const TagBook book(builtDriver());
    for (const char *const type : {"f16", "", "f32/f32"})
        EXPECT_EQ(refusal(book, std::string("DM:0/") + type),
                  std::string("there is no data type '") + type + "'; the data types are u16, s16, u32, s32, u64, s64, f32, f64, "
                  "bcd16, bcd32, hex, hex32, bits, string, and of the manuals BOOL, INT, UINT, DINT, UDINT, LINT, ULINT, REAL, "
                  "LREAL, WORD, DWORD, UINT_BCD, UDINT_BCD, STRING");
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
                                      "TYPE:ADDRESS such as DM:100:2 (did you mean 'Level'?)");
    EXPECT_EQ(refusal(book, "Valve"), "'Valve' is neither a tag of plant.toml nor an item; write a tag's name, or "
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

TEST(Tags, SeveralValuesNeedACount)
{
    const TagBook book(builtDriver());
    EXPECT_EQ(refusal(book, "DM:950", {"50", "5"}),
              "'DM:950' is one value, and 2 are given; write DM:950:2 for as many, or a decimal number with a point");
    EXPECT_EQ(refusal(book, "DM:0/u32", {"1", "2", "3"}),
              "'DM:0/u32' is one value, and 3 are given; write DM:0:3/u32 for as many, or a decimal number with a "
              "point");
    EXPECT_EQ(refusal(book, "CIO_bit:0.1", {"1", "0"}),
              "'CIO_bit:0.1' is one value, and 2 are given; write CIO_bit:0.1:2 for as many, or a decimal number with a "
              "point");
    EXPECT_EQ(refusal(book, "DM:32767:2", {"1", "2"}),
              "'DM:32767:2' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal(book, "DM:950:1", {"50", "5"}),
              "'DM:950:1' holds 1 value, and 2 are given; write as many as it holds");
    Bytes bytes;
    EXPECT_EQ(book.resolveWithValues("DM:950:2", Access::WRITE, {"50", "5"}, bytes).name, "DM:950:2");
    EXPECT_EQ(bytes, (Bytes{50, 0, 5, 0}));
    EXPECT_EQ(book.resolveWithValues("DM:0:2/u32", Access::WRITE, {"1", "2"}, bytes).name, "DM:0:2/u32");
    EXPECT_EQ(bytes, (Bytes{1, 0, 0, 0, 2, 0, 0, 0}));
    EXPECT_EQ(book.resolveWithValues("CIO_bit:0.1:2", Access::WRITE, {"1", "0"}, bytes).name, "CIO_bit:0.1:2");
    EXPECT_EQ(bytes, (Bytes{1, 0}));
    EXPECT_EQ(refusal(book, "Level", {"1"}),
              "'Level' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
}

TEST(Tags, AStringWithoutCountHasTheWordsThatItNeeds)
{
    const TagBook book(builtDriver());
    Bytes bytes;
    EXPECT_EQ(book.resolveWithValues("DM:0/string", Access::WRITE, {"ABC"}, bytes).name, "DM:0:2/string");
    EXPECT_EQ(bytes, (Bytes{'B', 'A', 0, 'C'}));
    EXPECT_EQ(book.resolveWithValues("DM:0:3/string", Access::WRITE, {"AB"}, bytes).name, "DM:0:3/string");
    EXPECT_EQ(bytes.size(), 6u);
}

TEST(Tags, ReadsAWriteOfTheCommandLine)
{
    const TagBook book = project();
    EXPECT_EQ(book.resolveWrite("DM:950:2=50,5").data, (Bytes{50, 0, 5, 0}));
    EXPECT_EQ(book.resolveWrite("Level=12.3").tag.name, "Level");
    EXPECT_EQ(book.resolveWrite("Name=A,=B").data, (Bytes{',', 'A', 'B', '=', 0, 0}));
    EXPECT_EQ(usageError([&] { book.resolveWrite("Level=12,3"); }),
              "'Level' holds 1 value, and 2 are given; write as many as it holds");
    EXPECT_EQ(usageError([&] { book.resolveWrite("DM:0=1,"); }),
              "'DM:0' is one value, and 2 are given; write DM:0:2 for as many, or a decimal number with a point");
    EXPECT_EQ(usageError([&] { book.resolveWrite("DM:0"); }),
              "'DM:0' is not a write; use ITEM=VALUE[,VALUE...], such as DM:100=5");
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
              "'Name=ABCDEFG' has 7 characters; 6 fit");
}

TEST(Tags, KeepsTheLimitsOfATag)
{
    const TagBook book = limited();
    EXPECT_EQ(refusal(book, "SetPoint", {"100.1"}),
              "'SetPoint=100.1' is above the tag's max of 100 %; write a value from -5 to 100 %");
    EXPECT_EQ(refusal(book, "SetPoint", {"-5.1"}),
              "'SetPoint=-5.1' is below the tag's min of -5 %; write a value from -5 to 100 %");
    for (const char *value : {"100", "-5", "0", "99.9", "0.3"})
        EXPECT_EQ(refusal(book, "SetPoint", {value}), "") << value;
    EXPECT_EQ(refusal(book, "SetPoint", {"100.06"}),
              "'SetPoint=100.06' is above the tag's max of 100 %; write a value from -5 to 100 %") << "sent as 100.1";
    EXPECT_EQ(refusal(book, "Counts", {"1", "8", "3"}), "'Counts=8' is above the tag's max of 7; write 7 or less");
    EXPECT_EQ(refusal(book, "Heat", {"-1"}), "'Heat=-1' is below the tag's min of -0.5; write -0.5 or more");
    EXPECT_EQ(refusal(book, "Heat", {"-0.5"}), "");
    EXPECT_EQ(refusal(book, "Heat", {"inf"}),
              "'Heat=inf' does not fit f32; use a decimal number whose size fits f32");
}

TEST(Tags, KeepsTheLimitsInAnotherType)
{
    const TagBook book = limited();
    EXPECT_EQ(refusal(book, "SetPoint/hex", {"0x1388"}),
              "'SetPoint/hex' makes it 500 %, which is above the tag's max of 100 %; write a value from -5 to 100 %");
    EXPECT_EQ(refusal(book, "SetPoint/hex", {"0x03E8"}), "");
    EXPECT_EQ(refusal(book, "Counts/hex", {"0", "0", "8"}),
              "'Counts/hex' makes it 8, which is above the tag's max of 7; write 7 or less");
    // 0x7FC00000 is no number, 0x7F800000 infinite: neither is -0.5 or more.
    EXPECT_EQ(refusal(book, "Heat/u32", {"0x7FC00000"}),
              "'Heat/u32' makes it nan, which is no number; write -0.5 or more");
    EXPECT_EQ(refusal(book, "Heat/u32", {"0x7F800000"}),
              "'Heat/u32' makes it inf, which is no number; write -0.5 or more");
    EXPECT_EQ(refusal(book, "Digits/hex", {"0x000A"}),
              "'Digits/hex' makes it no-bcd:0x000A, which is no number; write 50 or less");
    EXPECT_EQ(refusal(book, "DM:3", {"5000"}), "") << "an address is no tag";
}

TEST(Tags, KeepsTheRightOfATag)
{
    const TagBook book = limited();
    EXPECT_EQ(refusal(book, "Level", {"5"}), "'Level' can only be read: the access of the tag is r");
    EXPECT_EQ(refusal(book, "Level/hex", {"5"}), "'Level/hex' can only be read: the access of the tag is r");
    EXPECT_EQ(refusal(book, "Alarm", {"1"}), "'Alarm' can only be read: the access of the tag is r");
    EXPECT_EQ(book.resolve("Level", Access::READ).name, "Level");
    EXPECT_EQ(refusal(book, "DM:0", {"5"}), "") << "an address is no tag";
}

TEST(Tags, NamesTheTagOfAValueThatDoesNotFit)
{
    const TagBook book = limited();
    EXPECT_EQ(refusal(book, "SetPoint", {"3276.8"}),
              "'SetPoint=3276.8' does not fit s16; use a number from -3277 to 3277");
    EXPECT_EQ(refusal(book, "DM:9", {"x"}), "'DM:9=x' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    EXPECT_EQ(refusal(book, "SetPoint", {"50", "5"}),
              "'SetPoint' holds 1 value, and 2 are given; write as many as it holds");
    EXPECT_EQ(refusal(book, "Counts", {"1"}), "'Counts' holds 3 values, and 1 is given; write as many as it holds");
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
