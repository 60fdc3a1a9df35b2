#include "plant/plant.h"

#include "support/served_plc.h"

#include <gtest/gtest.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <map>

using namespace std::chrono_literals;
using fins::Phase;
using fins::Quality;

namespace {

PlantPlc plantPlc(const std::string &name, const std::string &host, const std::vector<std::string> &items)
{
    fins::Config config;
    config.name     = name;
    config.host     = host;
    config.library  = DRIVER_LIBRARY;
    config.timeout  = 20000ms;
    config.interval = 1ms;
    return {config, items};
}

class PlantTest : public ::testing::Test {
protected:
    // What the plant tells goes to the members.
    void listen(Plant &plant)
    {
        plant.onSamples([this, &plant](std::size_t plc, const fins::Samples &samples) {
            for (const fins::Sample &sample : samples)
                latest[plant.name(plc) + "|" + sample.name] = sample.text + " " + fins::text(sample.quality);
        });
        plant.onState([this](std::size_t plc, const fins::State &state) { phases[plc] = state.phase; });
        plant.onMessage([this](const std::string &line) { lines.push_back(line); });
    }

    // False when the condition does not hold within 20 s.
    template <typename Condition>
    static bool until(Plant &plant, Condition holds)
    {
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        std::vector<pollfd> others;
        while (!holds() && std::chrono::steady_clock::now() < deadline)
            plant.step(deadline, others);
        return holds();
    }

    ServedPlc press;
    ServedPlc oven;
    std::map<std::string, std::string> latest;
    std::map<std::size_t, Phase>       phases;
    std::vector<std::string>           lines;
};

} // namespace

TEST_F(PlantTest, TellsOfEachPlcWhatIsItsOwn)
{
    press.set(0, {11});
    oven.set(0, {22});
    Plant plant({plantPlc("press", press.host(), {"press.DM:0"}), plantPlc("oven", oven.host(), {"oven.DM:0", "oven.DM:5"})});
    listen(plant);
    ASSERT_EQ(plant.size(), 2u);
    EXPECT_TRUE(until(plant, [&] { return latest["press|press.DM:0"] == "11 good" && latest["oven|oven.DM:0"] == "22 good"; }));
    EXPECT_TRUE(until(plant, [&] { return phases[0] == Phase::ONLINE && phases[1] == Phase::ONLINE; }));
    oven.stopListening();
    oven.hangUp();
    press.set(0, {12});
    EXPECT_TRUE(until(plant, [&] { return latest["oven|oven.DM:0"] == "22 last known" && latest["press|press.DM:0"] == "12 good"; }));
    const std::string lost = "oven: link to " + oven.host() + " lost: ";
    EXPECT_TRUE(until(plant, [&] {
        return std::any_of(lines.begin(), lines.end(), [&](const std::string &line) { return line.find(lost) == 0; });
    }));
}

TEST_F(PlantTest, OneAloneHasNoNameBeforeItsMessages)
{
    Plant plant({plantPlc("", press.host(), {"DM:0"})});
    listen(plant);
    EXPECT_TRUE(until(plant, [&] { return phases[0] == Phase::ONLINE; }));
    press.stopListening();
    press.hangUp();
    const std::string lost = "link to " + press.host() + " lost: ";
    EXPECT_TRUE(until(plant, [&] {
        return std::any_of(lines.begin(), lines.end(), [&](const std::string &line) { return line.find(lost) == 0; });
    }));
}

TEST_F(PlantTest, WhatElseIsReadyEndsTheWait)
{
    Plant plant({plantPlc("", press.host(), {"DM:0"})});
    const int ready = eventfd(1, EFD_CLOEXEC);
    std::vector<pollfd> others = {{ready, POLLIN, 0}};
    plant.step(std::chrono::steady_clock::time_point::max(), others);
    EXPECT_EQ(others[0].revents, POLLIN);
    close(ready);
}

TEST_F(PlantTest, RefusesWhatNoPlcHas)
{
    EXPECT_THROW(Plant({plantPlc("press", press.host(), {"press.Level"})}), fins::NameError);
    EXPECT_THROW(Plant({plantPlc("press", "", {"press.DM:0"})}), fins::ConfigError);
}
