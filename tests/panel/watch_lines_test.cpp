#include "watch/watch_lines.h"

#include <gtest/gtest.h>

namespace {

// 2026-03-01 08:15:30.007 UTC
const SystemTime TIME = std::chrono::system_clock::from_time_t(1772352930) + std::chrono::milliseconds(7);

WatchedValue value(const std::string &text, DataType type = DataType::WORD, const std::string &unit = "")
{
    WatchedValue value = {"Level", {"DM", 100, 1, false}, ValueFormat(), text, Quality::GOOD, TimePoint(), 0};
    value.format.type = type;
    value.format.unit = unit;
    return value;
}

std::string json(const WatchedValue &shown, WatchEvent::Kind kind, const std::string &old)
{
    return eventLine(LineFormat::JSON, {kind, shown, old}, TIME);
}

TEST(WatchLines, Plain)
{
    const WatchedValue shown = value("42");
    EXPECT_EQ(eventLine(LineFormat::PLAIN, {WatchEvent::FIRST, shown, ""}, TIME),
              "2026-03-01T08:15:30.007Z Level - 42");
    EXPECT_EQ(eventLine(LineFormat::PLAIN, {WatchEvent::CHANGE, shown, "41"}, TIME),
              "2026-03-01T08:15:30.007Z Level 41 42");
    EXPECT_EQ(eventLine(LineFormat::PLAIN, {WatchEvent::QUALITY, shown, "42"}, TIME), "");
}

TEST(WatchLines, JsonFieldsInTheirOrder)
{
    EXPECT_EQ(json(value("42", DataType::WORD, "mm"), WatchEvent::CHANGE, "41"),
              "{\"time\":\"2026-03-01T08:15:30.007Z\",\"tag\":\"Level\",\"item\":\"DM:100\",\"event\":\"change\","
              "\"old\":41,\"value\":42,\"unit\":\"mm\",\"quality\":\"good\"}");
}

// From "old" to the unit.
std::string jsonValues(const WatchedValue &shown, const std::string &old)
{
    const std::string line = json(shown, WatchEvent::CHANGE, old);
    const std::size_t begin = line.find("\"old\"");
    return line.substr(begin, line.find(",\"unit\"") - begin);
}

TEST(WatchLines, JsonNumbersAreNumbers)
{
    EXPECT_EQ(jsonValues(value("-5", DataType::S16), "12.5"), "\"old\":12.5,\"value\":-5");
    EXPECT_EQ(jsonValues(value("18446744073709551615", DataType::U64), "-9223372036854775808"),
              "\"old\":-9223372036854775808,\"value\":18446744073709551615");
    EXPECT_EQ(jsonValues(value("1", DataType::BIT), "0"), "\"old\":0,\"value\":1");
}

TEST(WatchLines, JsonWhatIsNoNumberIsText)
{
    EXPECT_EQ(jsonValues(value("0x00FF", DataType::HEX), ""), "\"old\":null,\"value\":\"0x00FF\"");
    EXPECT_EQ(jsonValues(value("12", DataType::STRING), "ab"), "\"old\":\"ab\",\"value\":\"12\"");
    EXPECT_EQ(jsonValues(value("inf", DataType::F32), "nan"), "\"old\":\"nan\",\"value\":\"inf\"");
}

TEST(WatchLines, JsonSurvivesWhatIsNoUtf8)
{
    EXPECT_EQ(jsonValues(value("\xff", DataType::STRING), ""), "\"old\":null,\"value\":\"\xEF\xBF\xBD\"");
}

TEST(WatchLines, Csv)
{
    EXPECT_EQ(csvHead(), "time,tag,item,event,old,value,unit,quality");
    const WatchedValue shown = value("42", DataType::WORD, "mm");
    EXPECT_EQ(eventLine(LineFormat::CSV, {WatchEvent::CHANGE, shown, "41"}, TIME),
              "2026-03-01T08:15:30.007Z,Level,DM:100,change,41,42,mm,good");
    EXPECT_EQ(eventLine(LineFormat::CSV, {WatchEvent::FIRST, shown, ""}, TIME),
              "2026-03-01T08:15:30.007Z,Level,DM:100,first,,42,mm,good");
}

TEST(WatchLines, CsvQuotesWhatNeedsIt)
{
    const WatchedValue shown = value("\"a\"", DataType::STRING, "m,s");
    EXPECT_EQ(eventLine(LineFormat::CSV, {WatchEvent::CHANGE, shown, "a\nb"}, TIME),
              "2026-03-01T08:15:30.007Z,Level,DM:100,change,\"a\nb\",\"\"\"a\"\"\",\"m,s\",good");
}

TEST(WatchLines, CsvTextsAreNoFormulas)
{
    const WatchedValue shown = value("=1+1", DataType::STRING, "@m");
    EXPECT_EQ(eventLine(LineFormat::CSV, {WatchEvent::CHANGE, shown, "+1"}, TIME),
              "2026-03-01T08:15:30.007Z,Level,DM:100,change,'+1,'=1+1,'@m,good");
    EXPECT_EQ(eventLine(LineFormat::CSV, {WatchEvent::CHANGE, value("-5", DataType::S16), "-4"}, TIME),
              "2026-03-01T08:15:30.007Z,Level,DM:100,change,-4,-5,,good");
}

TEST(WatchLines, EveryQualityHasItsName)
{
    WatchedValue shown = value("42");
    const std::pair<Quality, const char *> QUALITIES[] = {
        {Quality::GOOD, "good"},
        {Quality::WRITE_PENDING, "write pending"},
        {Quality::LAST_KNOWN, "last known"},
        {Quality::NOT_CONNECTED, "not connected"},
        {Quality::REFUSED, "refused"},
    };
    for (const auto &[quality, name] : QUALITIES) {
        shown.quality = quality;
        EXPECT_EQ(eventLine(LineFormat::CSV, {WatchEvent::QUALITY, shown, "42"}, TIME),
                  std::string("2026-03-01T08:15:30.007Z,Level,DM:100,quality,42,42,,") + name);
    }
}

} // namespace
