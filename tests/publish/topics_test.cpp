#include "publish/topics.h"

#include "common/usage_error.h"
#include "publish/home_assistant.h"

#include <cmath>
#include <gtest/gtest.h>

// What the broker is told, and where.

namespace {

SystemTime timeAt(std::int64_t ms)
{
    return SystemTime(std::chrono::milliseconds(ms));
}

fins::Sample sampleOf(fins::Value value, const std::string &text)
{
    fins::Sample sample;
    sample.name    = "Level";
    sample.value   = std::move(value);
    sample.text    = text;
    sample.quality = fins::Quality::GOOD;
    sample.utc     = timeAt(1772352930007); // 2026-03-01T08:15:30.007Z
    return sample;
}

} // namespace

TEST(Topics, ArePrefixPlcAndTag)
{
    const Topics topics("plant/hall1");
    EXPECT_EQ(topics.state(), "plant/hall1/state");
    EXPECT_EQ(topics.stateOf("press"), "plant/hall1/press/state");
    EXPECT_EQ(topics.valueOf("press", "press.Level"), "plant/hall1/press/Level");
    EXPECT_EQ(topics.valueOf("127.0.0.1", "Level"), "plant/hall1/127.0.0.1/Level");
    EXPECT_EQ(topics.valueOf("press", "press.Speeds[2]"), "plant/hall1/press/Speeds[2]");
}

TEST(Topics, NoNameBreaksATopic)
{
    const Topics topics("fins");
    EXPECT_EQ(topics.valueOf("h", "DM:100/f32"), "fins/h/DM:100%2Ff32");
    EXPECT_EQ(topics.valueOf("a/b", "a+b#c"), "fins/a%2Fb/a%2Bb%23c");
    EXPECT_EQ(topics.valueOf("h", "100%"), "fins/h/100%25");
    EXPECT_EQ(topics.valueOf("h", std::string("a\0b", 3)), "fins/h/a%00b");
    EXPECT_EQ(topics.valueOf("h", "F\xC3\xBCllstand"), "fins/h/F\xC3\xBCllstand");
    EXPECT_EQ(topics.valueOf("h", "F\xFCllstand"), "fins/h/F%FCllstand");
}

// A tag may have the name that is the PLC's own topic.
TEST(Topics, ATagCalledStateIsNotThePlcsState)
{
    EXPECT_EQ(Topics("fins").valueOf("press", "press.state"), "fins/press/%73tate");
    EXPECT_EQ(Topics("fins").valueOf("press", "press.states"), "fins/press/states");
}

TEST(Topics, RefuseAPrefixThatCannotBe)
{
    for (const char *prefix : {"", "a+b", "#", "$SYS", "a\xFF"})
        EXPECT_THROW(Topics{prefix}, UsageError) << prefix;
}

TEST(SamplePayload, TellsValueUnitQualityAndTime)
{
    fins::Sample sample = sampleOf(70.5, "70.5");
    sample.unit = "%";
    EXPECT_EQ(samplePayload(sample), R"({"value":70.5,"unit":"%","quality":"good","time":"2026-03-01T08:15:30.007Z"})");
}

TEST(SamplePayload, HasTheTextWhereItIsAnother)
{
    EXPECT_EQ(samplePayload(sampleOf(70.5, "70.50")),
              R"({"value":70.5,"text":"70.50","quality":"good","time":"2026-03-01T08:15:30.007Z"})");
    EXPECT_EQ(samplePayload(sampleOf(true, "1")),
              R"({"value":true,"text":"1","quality":"good","time":"2026-03-01T08:15:30.007Z"})");
    EXPECT_EQ(samplePayload(sampleOf(std::int64_t(-5), "-5")),
              R"({"value":-5,"quality":"good","time":"2026-03-01T08:15:30.007Z"})");
    EXPECT_EQ(samplePayload(sampleOf(std::string("LEMON \"A\""), "LEMON \"A\"")),
              R"({"value":"LEMON \"A\"","quality":"good","time":"2026-03-01T08:15:30.007Z"})");
}

TEST(SamplePayload, NothingWasReceivedYet)
{
    EXPECT_EQ(samplePayload(fins::Sample()), R"({"value":null,"quality":"not connected","time":null})");
}

TEST(SamplePayload, ANumberThatJsonCannotHaveIsText)
{
    EXPECT_EQ(samplePayload(sampleOf(std::nan(""), "nan")),
              R"({"value":"nan","quality":"good","time":"2026-03-01T08:15:30.007Z"})");
}

TEST(SamplePayload, WordsThatAreNoNumberAreText)
{
    EXPECT_EQ(samplePayload(sampleOf(std::monostate(), "no-bcd:0x12AB")),
              R"({"value":null,"text":"no-bcd:0x12AB","quality":"good","time":"2026-03-01T08:15:30.007Z"})");
}

TEST(StatePayload, HasTheReasonWhereThereIsOne)
{
    fins::State state;
    state.phase = fins::Phase::ONLINE;
    state.since = timeAt(1772352930007);
    EXPECT_EQ(statePayload(state), R"({"state":"online","time":"2026-03-01T08:15:30.007Z"})");
    state.phase  = fins::Phase::WAITING;
    state.reason = "Connection refused";
    EXPECT_EQ(statePayload(state),
              R"({"state":"waiting","time":"2026-03-01T08:15:30.007Z","reason":"Connection refused"})");
}

TEST(PayloadOf, WhatIsLateHasItsAge)
{
    const BrokerMessage message = {"t", R"({"value":1})", 1000};
    EXPECT_EQ(payloadOf(message, timeAt(5999)), R"({"value":1})");
    EXPECT_EQ(payloadOf(message, timeAt(6000)), R"({"value":1,"age":5})");
    EXPECT_EQ(payloadOf(message, timeAt(3601999)), R"({"value":1,"age":3600})");
}

TEST(PayloadOf, WhatMayHaveComeBeforeIsMarked)
{
    BrokerMessage message = {"t", R"({"value":1})", 1000};
    message.repeated = true;
    EXPECT_EQ(payloadOf(message, timeAt(1000)), R"({"value":1,"repeated":true})");
    EXPECT_EQ(payloadOf(message, timeAt(61000)), R"({"value":1,"age":60,"repeated":true})");
}

TEST(PayloadOf, WhatIsNoObjectStaysAsItIs)
{
    BrokerMessage message = {"t", "online", 0};
    message.repeated = true;
    EXPECT_EQ(payloadOf(message, timeAt(100000)), "online");
}

// ---- Home Assistant ----------------------------------------------------------------------------------------------

namespace {

Discovery discovered(fins::TagConfig tag, bool writable)
{
    return discoveryOf("homeassistant", Topics("fins"), "press", tag.name, tag, writable);
}

const char AVAILABILITY[] =
    R"("availability_mode":"all","availability":[{"topic":"fins/state"},)"
    R"({"topic":"fins/press/state","value_template":"{{ value_json.state }}"},)";

const char DEVICE[] = R"("device":{"identifiers":["fins_2Fpress"],"name":"press"}})";

std::string qualityOf(const std::string &topic)
{
    return R"({"topic":")" + topic + R"(","value_template":"{{ 'online' if value_json.quality in )"
           R"(['good', 'write pending'] else 'offline' }}"}],)";
}

} // namespace

TEST(HomeAssistant, ANumberIsASensor)
{
    fins::TagConfig tag;
    tag.name = "press.Level";
    tag.item = "DM:0/s16";
    tag.unit = "%";
    const Discovery found = discovered(tag, false);
    EXPECT_EQ(found.topic, "homeassistant/sensor/fins_2Fpress/fins_2Fpress_2FLevel/config");
    EXPECT_EQ(found.payload, std::string(R"({"name":"press.Level","unique_id":"fins_2Fpress_2FLevel",)")
                                 + R"("state_topic":"fins/press/Level","value_template":"{{ value_json.value }}",)"
                                 + R"("unit_of_measurement":"%",)" + AVAILABILITY + qualityOf("fins/press/Level")
                                 + DEVICE);
}

TEST(HomeAssistant, ABitIsABinarySensorAndWritableASwitch)
{
    fins::TagConfig tag;
    tag.name = "press.Run";
    tag.item = "CIO_bit:0.0";
    const std::string begin =
        R"({"name":"press.Run","unique_id":"fins_2Fpress_2FRun","state_topic":"fins/press/Run",)"
        R"("value_template":"{{ 'ON' if value_json.value else 'OFF' }}",)";
    const Discovery read = discovered(tag, false);
    EXPECT_EQ(read.topic, "homeassistant/binary_sensor/fins_2Fpress/fins_2Fpress_2FRun/config");
    EXPECT_EQ(read.payload, begin + AVAILABILITY + qualityOf("fins/press/Run") + DEVICE);
    const Discovery written = discovered(tag, true);
    EXPECT_EQ(written.topic, "homeassistant/switch/fins_2Fpress/fins_2Fpress_2FRun/config");
    EXPECT_EQ(written.payload, begin
                                   + R"("command_topic":"fins/press/Run/set","payload_on":"1","payload_off":"0",)"
                                   + R"("state_on":"ON","state_off":"OFF",)" + AVAILABILITY
                                   + qualityOf("fins/press/Run") + DEVICE);
}

// Without limits Home Assistant would take 1 to 100.
TEST(HomeAssistant, AWritableNumberNeedsLimits)
{
    fins::TagConfig tag;
    tag.name     = "press.SetPoint";
    tag.item     = "DM:3/s16";
    tag.scale    = 0.1;
    tag.decimals = 1;
    EXPECT_EQ(discovered(tag, true).topic, "homeassistant/sensor/fins_2Fpress/fins_2Fpress_2FSetPoint/config");
    tag.minimum = 10;
    tag.maximum = 90;
    const Discovery found = discovered(tag, true);
    EXPECT_EQ(found.topic, "homeassistant/number/fins_2Fpress/fins_2Fpress_2FSetPoint/config");
    const std::string writing =
        R"("command_topic":"fins/press/SetPoint/set","min":10.0,"max":90.0,"step":0.1,"mode":"box")";
    EXPECT_NE(found.payload.find(writing), std::string::npos) << found.payload;
    EXPECT_EQ(discovered(tag, false).topic, "homeassistant/sensor/fins_2Fpress/fins_2Fpress_2FSetPoint/config");
}
