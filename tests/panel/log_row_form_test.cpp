#include "log/row_form.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace std::chrono_literals;
using fins::Quality;
using fins::Sample;
using fins::Value;

namespace {

const SystemTime TIME = SystemTime(1795392000s) + 7ms; // 2026-11-23T00:00:00.007Z

Sample sampleOf(Value value, const std::string &text, Quality quality = Quality::GOOD)
{
    Sample sample;
    sample.value   = std::move(value);
    sample.text    = text;
    sample.quality = quality;
    return sample;
}

std::string rowOf(LogForm form, const LogColumn &column, const Sample &sample, const std::string &measurement = "fins")
{
    return RowForm(form, {column}, measurement).row(TIME, {sample}, {0});
}

std::string influxOf(const LogColumn &column, const Sample &sample)
{
    return rowOf(LogForm::INFLUX, column, sample);
}

const LogColumn LEVEL = {"press.Level", "press"};

} // namespace

TEST(RowFormCsv, HasAColumnForEachValueAndOneForItsQuality)
{
    const RowForm form(LogForm::CSV, {LEVEL, {"oven.DM:1/f32", "oven"}}, "");
    EXPECT_EQ(form.heading(), "time,press.Level,press.Level.quality,oven.DM:1/f32,oven.DM:1/f32.quality\n");
    EXPECT_EQ(form.row(TIME, {sampleOf(45.2, "45.2"), sampleOf(1.5, "1.5", Quality::LAST_KNOWN)}, {0, 1}),
              "2026-11-23T00:00:00.007Z,45.2,good,,last known\n");
}

// A change of one is a record of all, and what is not good is never repeated.
TEST(RowFormCsv, ARecordTellsAllValues)
{
    const RowForm form(LogForm::CSV, {LEVEL, {"Pump", ""}}, "");
    EXPECT_EQ(form.row(TIME, {sampleOf(std::int64_t(1), "1"), sampleOf(true, "1")}, {1}),
              "2026-11-23T00:00:00.007Z,1,good,1,good\n");
    for (const Quality quality : {Quality::WRITE_PENDING, Quality::LAST_KNOWN, Quality::NOT_CONNECTED, Quality::REFUSED})
        EXPECT_EQ(form.row(TIME, {sampleOf(std::int64_t(1), "1", quality), sampleOf(true, "1")}, {0}),
                  std::string("2026-11-23T00:00:00.007Z,,") + fins::text(quality) + ",1,good\n");
}

TEST(RowFormCsv, TextsAreAsTheyAreShown)
{
    EXPECT_EQ(rowOf(LogForm::CSV, LEVEL, sampleOf(std::string("LEMON, \nsweet"), R"("LEMON, \x0Asweet")")),
              "2026-11-23T00:00:00.007Z,\"\"\"LEMON, \\x0Asweet\"\"\",good\n");
    EXPECT_EQ(rowOf(LogForm::CSV, LEVEL, sampleOf(std::int64_t(-5), "-5")), "2026-11-23T00:00:00.007Z,-5,good\n");
}

TEST(RowFormJson, IsAnObjectWithTheValuesByTheirNames)
{
    const RowForm form(LogForm::JSON, {LEVEL, {"Pump", ""}, {"Name", ""}, {"Flags", ""}}, "");
    EXPECT_EQ(form.heading(), "");
    const fins::Samples samples = {sampleOf(45.2, "45.2"), sampleOf(true, "1", Quality::REFUSED),
                                   sampleOf(std::string("a\"b\n"), R"("a\"b\x0A")"), sampleOf(std::int64_t(255), "0x00FF")};
    EXPECT_EQ(form.row(TIME, samples, {0, 1, 2, 3}),
              R"({"time":"2026-11-23T00:00:00.007Z","values":{"press.Level":{"value":45.2,"quality":"good"},)"
              R"("Pump":{"value":null,"quality":"refused"},"Name":{"value":"a\"b\n","quality":"good"},)"
              R"("Flags":{"value":"0x00FF","quality":"good"}}})" "\n");
    EXPECT_EQ(form.row(TIME, samples, {3}),
              R"({"time":"2026-11-23T00:00:00.007Z","values":{"Flags":{"value":"0x00FF","quality":"good"}}})" "\n");
}

// JSON has neither infinite numbers nor such that are none.
TEST(RowFormJson, WhatIsNoNumberIsAText)
{
    EXPECT_NE(rowOf(LogForm::JSON, LEVEL, sampleOf(std::nan(""), "nan")).find(R"("value":"nan")"), std::string::npos);
    EXPECT_NE(rowOf(LogForm::JSON, LEVEL, sampleOf(Value(), "no-bcd:0x12AB")).find(R"("value":"no-bcd:0x12AB")"),
              std::string::npos);
}

TEST(RowFormInflux, EachTypeHasItsSuffix)
{
    const std::string begin = "fins,plc=press,tag=Level value=";
    const std::string end   = ",quality=\"good\" 1795392000007000000\n";
    LogColumn column = LEVEL;
    EXPECT_EQ(influxOf(column, sampleOf(std::int64_t(-5), "-5")), begin + "-5i" + end);
    EXPECT_EQ(influxOf(column, sampleOf(70.0, "70.0")), begin + "70" + end);
    EXPECT_EQ(influxOf(column, sampleOf(true, "1")), begin + "true" + end);
    EXPECT_EQ(influxOf(column, sampleOf(false, "0")), begin + "false" + end);
    EXPECT_EQ(influxOf(column, sampleOf(std::string("a\"b\\\n"), R"("a\"b\\\x0A")")), begin + R"("a\"b\\\x0A")" + end);
    column.isUnsigned = true; // also where the value is small: the type of a field must not change
    EXPECT_EQ(influxOf(column, sampleOf(std::int64_t(5), "5")), begin + "5u" + end);
    EXPECT_EQ(influxOf(column, sampleOf(std::uint64_t(18446744073709551615u), "")), begin + "18446744073709551615u" + end);
}

TEST(RowFormInflux, WhatIsNotGoodHasTheQualityOnly)
{
    const std::string end = " 1795392000007000000\n";
    EXPECT_EQ(influxOf(LEVEL, sampleOf(45.2, "45.2", Quality::LAST_KNOWN)),
              "fins,plc=press,tag=Level quality=\"last known\"" + end);
    EXPECT_EQ(influxOf(LEVEL, sampleOf(HUGE_VAL, "inf")), "fins,plc=press,tag=Level quality=\"good\"" + end);
}

TEST(RowFormInflux, NamesAreEscapedAndAnOnlyPlcHasNone)
{
    const RowForm form(LogForm::INFLUX, {{"a b,c=d", ""}}, "my plant,x=1");
    EXPECT_EQ(form.row(TIME, {sampleOf(true, "1")}, {0}),
              "my\\ plant\\,x=1,tag=a\\ b\\,c\\=d value=true,quality=\"good\" 1795392000007000000\n");
}

TEST(RowFormInflux, ARowHasALineForEachChosenValue)
{
    const RowForm form(LogForm::INFLUX, {LEVEL, {"Pump", ""}, {"oven.Heat", "oven"}}, "m");
    EXPECT_EQ(form.row(TIME, {sampleOf(1.5, "1.5"), sampleOf(true, "1"), sampleOf(2.5, "2.5")}, {0, 2}),
              "m,plc=press,tag=Level value=1.5,quality=\"good\" 1795392000007000000\n"
              "m,plc=oven,tag=Heat value=2.5,quality=\"good\" 1795392000007000000\n");
}
