#include "values/items.h"

#include "support/built_driver.h"

namespace {

Item parse(const std::string &text)
{
    return parseItem(builtDriver(), text, Access::READ);
}

std::string refusal(const std::string &text, Access access = Access::READ)
{
    return usageError([&] { parseItem(builtDriver(), text, access); });
}

Item item(const char *type, qint32 address, qint32 count)
{
    return {QString::fromLatin1(type), address, count, isBitType(QString::fromLatin1(type))};
}

std::string overlap(const std::vector<Item> &items)
{
    return usageError([&] { refuseOverlaps(items); });
}

} // namespace

TEST(Items, ParsesAWordItem)
{
    const Item parsed = parse("DM:100:10");
    EXPECT_EQ(parsed.regType.toStdString(), "DM");
    EXPECT_EQ(parsed.address, 100);
    EXPECT_EQ(parsed.count, 10);
    EXPECT_FALSE(parsed.isBit);
    EXPECT_EQ(parse("T:4095").count, 1);
}

TEST(Items, ParsesABitItem)
{
    const Item parsed = parse("DM_bit:10.15:2");
    EXPECT_EQ(parsed.address, 175);
    EXPECT_EQ(parsed.count, 2);
    EXPECT_TRUE(parsed.isBit);
    EXPECT_EQ(parsed.wordType().toStdString(), "DM");
    EXPECT_EQ(parsed.firstWord(), 10);
    EXPECT_EQ(parsed.endWord(), 12);
}

// The driver adds and multiplies with 32 bits: DM 2147483647 + 1 and DM_bit 268435456 * 16 wrap to accepted numbers.
TEST(Items, RefusesNumbersThatWrapAt32Bits)
{
    for (const std::string text : {"DM:2147483647", "DM:2147483640:100", "DM_bit:268435456.0", "DM_bit:-268435456.5",
                                   "DM_bit:134217727.15", "DM_bit:134217727.0:20"})
        EXPECT_NE(refusal(text).find("'" + text + "' lies outside the range"), std::string::npos) << text;
}

TEST(Items, KnowsTheWordsOfAnItem)
{
    EXPECT_EQ(item("DM", 100, 10).firstWord(), 100);
    EXPECT_EQ(item("DM", 100, 10).endWord(), 110);
    EXPECT_EQ(item("DM_bit", 160, 16).firstWord(), 10);
    EXPECT_EQ(item("DM_bit", 160, 16).endWord(), 11);
    EXPECT_EQ(item("DM_bit", 160, 17).endWord(), 12);
    EXPECT_EQ(item("DM", 100, 10).byteSize(), 20u);
    EXPECT_EQ(item("DM_bit", 100, 10).byteSize(), 10u);
}

TEST(Items, RefusesAddressesWithTheDriversRangeAndNotation)
{
    EXPECT_EQ(refusal("DM:32767"), "");
    EXPECT_EQ(refusal("DM:32768"), "'DM:32768' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal("DM:32767:2"), "'DM:32767:2' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal("DM:-1"), "'DM:-1' lies outside the range 0 to 32767, written ddddd");
    EXPECT_EQ(refusal("AR_bit:447.15"),
              "'AR_bit:447.15' lies outside the range 448.0 to 959.15, written ddd.DD (DD:0~15)");
    EXPECT_EQ(refusal("DM_bit:10.16"),
              "'DM_bit:10.16': the address is malformed; the range is 0.0 to 32767.15, written ddddd.DD (DD:0~15)");
    EXPECT_EQ(refusal("DM:abc"), "'DM:abc': the address is malformed; the range is 0 to 32767, written ddddd");
    EXPECT_EQ(refusal("DM:"), "'DM:': the address is malformed; the range is 0 to 32767, written ddddd");
}

TEST(Items, SaysThatBits0To9HaveOneDigit)
{
    EXPECT_EQ(refusal("CIO_bit:10.05"), "'CIO_bit:10.05': bits 0 to 9 have one digit; write 10.5");
    EXPECT_EQ(refusal("DM_bit:0.00:2"), "'DM_bit:0.00:2': bits 0 to 9 have one digit; write 0.0");
    for (const char *text : {"CIO_bit:10.005", "CIO_bit:10.1x", "CIO_bit:10", "CIO:10.05"})
        EXPECT_NE(refusal(text).find("the address is malformed"), std::string::npos) << text;
    EXPECT_EQ(refusal("CIO_bit:10.10"), "");
}

TEST(Items, RefusesUnknownTypesThatTheDriverLetsPass)
{
    const std::string types = "; the types are CIO, WR, HR, AR, T, C, DM, CIO_bit, WR_bit, HR_bit, AR_bit, DM_bit";
    EXPECT_EQ(refusal("EM:0"), "'EM:0': there is no register type 'EM'" + types);
    EXPECT_EQ(refusal("dm:0"), "'dm:0': there is no register type 'dm'" + types);
    EXPECT_EQ(refusal("EM_bit:0.0"), "'EM_bit:0.0': there is no register type 'EM_bit'" + types);
    EXPECT_EQ(refusal(":0"), "':0': there is no register type ''" + types);
}

TEST(Items, RefusesWhatIsNoItem)
{
    EXPECT_EQ(refusal("DM"), "'DM' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
    EXPECT_EQ(refusal(""), "'' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
    for (const char *count : {"0", "-1", "two", "", "2:3", "1000001"}) {
        const std::string text = std::string("DM:1:") + count;
        EXPECT_EQ(refusal(text), "'" + text + "': the count '" + count + "' is not a number from 1 up");
    }
}

TEST(Items, AllTypesCanBeWritten)
{
    EXPECT_EQ(refusal("DM:1", Access::WRITE), "");
    EXPECT_EQ(refusal("CIO_bit:1.1", Access::WRITE), "");
}

TEST(Items, WritesItemsAsTheyAreRead)
{
    for (const char *text : {"DM:100:10", "DM:0", "CIO_bit:10.5", "CIO_bit:10.15:3", "C:5"})
        EXPECT_EQ(itemText(parse(text)), text);
    EXPECT_EQ(itemText(parse("DM:5:1")), "DM:5");
    EXPECT_EQ(addressText(QString::fromLatin1("WR_bit"), 8191), "WR_bit:511.15");
}

TEST(Items, CutsIntoPieces)
{
    const std::vector<Item> pieces = cutItem(item("DM", 1000, 150), 64);
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(itemText(pieces[0]), "DM:1000:64");
    EXPECT_EQ(itemText(pieces[1]), "DM:1064:64");
    EXPECT_EQ(itemText(pieces[2]), "DM:1128:22");
    EXPECT_EQ(cutItem(item("DM", 0, 128), 64).size(), 2u);
    EXPECT_EQ(cutItem(item("DM", 0, 64), 64).size(), 1u);
    EXPECT_TRUE(cutItem(item("DM_bit", 5, 20), 8).at(2).isBit);
}

TEST(Items, SeesOverlaps)
{
    EXPECT_EQ(overlap({item("DM", 100, 2), item("DM", 102, 1)}), "");
    EXPECT_EQ(overlap({item("DM", 100, 3), item("DM", 102, 1)}),
              "DM:100:3 and DM:102 overlap; name every word and bit once");
    EXPECT_EQ(overlap({item("DM", 102, 1), item("CIO", 0, 1), item("DM", 100, 3)}),
              "DM:100:3 and DM:102 overlap; name every word and bit once");
    EXPECT_EQ(overlap({item("DM", 100, 1), item("HR", 100, 1)}), "");
}

TEST(Items, SeesOverlapsOfWordsAndBits)
{
    EXPECT_EQ(overlap({item("DM_bit", 1605, 1), item("DM_bit", 1606, 1)}), "");
    EXPECT_EQ(overlap({item("DM_bit", 1605, 2), item("DM_bit", 1606, 1)}),
              "DM_bit:100.5:2 and DM_bit:100.6 overlap; name every word and bit once");
    EXPECT_EQ(overlap({item("DM", 99, 1), item("DM_bit", 1600, 1)}), "");
    EXPECT_EQ(overlap({item("DM", 100, 1), item("DM_bit", 1615, 1)}),
              "DM:100 and DM_bit:100.15 overlap; name every word and bit once");
    EXPECT_EQ(overlap({item("DM", 100, 1), item("DM_bit", 1616, 1)}), "");
}
