#include "log/log_values.h"

#include "support/held_port.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using fins::Quality;

namespace {

SystemTime at(long ms)
{
    return SystemTime(1795392000s) + std::chrono::milliseconds(ms);
}

fins::Sample sampleOf(std::size_t index, const std::string &text, long ms, Quality quality = Quality::GOOD,
                      std::uint64_t dropped = 0)
{
    fins::Sample sample;
    sample.index   = index;
    sample.text    = text;
    sample.utc     = at(ms);
    sample.quality = quality;
    sample.dropped = dropped;
    return sample;
}

class LogValuesTest : public ::testing::Test {
protected:
    LogValuesTest() : plant_(plcs_), values(plant_, plcs_, 0) {}

    // "5 good|- not connected": the two values at the time.
    std::string shown(const fins::Samples &samples)
    {
        std::string text;
        for (const fins::Sample &sample : samples)
            text += (text.empty() ? "" : "|") + (sample.text.empty() ? "-" : sample.text) + " " + fins::text(sample.quality);
        return text;
    }

private:
    static PlantPlc plc(const std::string &host)
    {
        fins::Config config;
        config.host    = host;
        config.library = DRIVER_LIBRARY;
        return {config, {"DM:0", "DM:1"}};
    }

    const HeldPort              nobody_;
    const std::vector<PlantPlc> plcs_ = {plc(nobody_.host())};
    Plant                       plant_;

protected:
    LogValues values;
};

TEST_F(LogValuesTest, HeldSamplesCountFromTheTimeOfTheirReply)
{
    values.hold(0, {sampleOf(0, "5", 90), sampleOf(1, "7", 150)});
    EXPECT_EQ(shown(values.at(at(89))), "- not connected|- not connected");
    EXPECT_EQ(shown(values.at(at(90))), "5 good|- not connected");
    EXPECT_EQ(shown(values.at(at(200))), "5 good|7 good");
    values.hold(0, {sampleOf(0, "6", 250)});
    EXPECT_EQ(shown(values.at(at(249))), "5 good|7 good");
    values.takeHeld();
    EXPECT_EQ(shown(values.latest()), "6 good|7 good");
}

TEST_F(LogValuesTest, WhatLaterSamplesHaveReplacedIsNotMadeUp)
{
    values.hold(0, {sampleOf(0, "5", 50), sampleOf(1, "7", 50)});
    values.takeHeld();
    values.hold(0, {sampleOf(0, "9", 350, Quality::GOOD, 2)});
    EXPECT_EQ(shown(values.at(at(100))), "5 last known|7 good");
    values.takeHeld();
    EXPECT_EQ(shown(values.latest()), "9 good|7 good");
    EXPECT_EQ(values.dropped(), 2u);
}

TEST_F(LogValuesTest, ALostValueIsSoFromWhenItWasTold)
{
    values.hold(0, {sampleOf(0, "5", 50)});
    values.takeHeld();
    values.hold(0, {sampleOf(0, "5", 50, Quality::LAST_KNOWN)});
    EXPECT_EQ(shown(values.at(at(100))), "5 good|- not connected");
    values.takeHeld();
    EXPECT_EQ(shown(values.latest()), "5 last known|- not connected");
}

} // namespace
