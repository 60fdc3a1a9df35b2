#ifndef TESTS_RUNTIME_PLC_PLC_FIXTURE_H
#define TESTS_RUNTIME_PLC_PLC_FIXTURE_H

#include "fins_runtime/plc.h"
#include "support/served_plc.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <thread>
#include <vector>

// The library's object of one PLC, against a PLC that the test holds in its hand.

using namespace std::chrono_literals;
using fins::Assignment;
using fins::Config;
using fins::Fate;
using fins::Handle;
using fins::Operation;
using fins::OperationOptions;
using fins::Outcome;
using fins::Outcomes;
using fins::Phase;
using fins::Plc;
using fins::Quality;
using fins::Sample;
using fins::Samples;
using fins::State;
using fins::Value;
using fins::Watch;
using Treatment = ServedPlc::Treatment;
using Request   = ServedPlc::Request;

// A PLC that does not answer at once is not silent: a busy machine must not change what a test sees.
inline Config configOf(const std::string &host)
{
    Config config;
    config.host     = host;
    config.library  = DRIVER_LIBRARY;
    config.timeout  = 20000ms;
    config.interval = 1ms;
    return config;
}

// Delivers events until the condition holds; false when it does not within 20 s.
template <typename Condition>
bool until(Plc &plc, Condition holds)
{
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        plc.dispatch(20ms);
    }
    return true;
}

inline bool isReadable(int descriptor, int waitMs = 0)
{
    pollfd polled = {descriptor, POLLIN, 0};
    return poll(&polled, 1, waitMs) == 1;
}

inline Value number(std::int64_t value) { return Value(value); }

/// What became of a write, and how often it was told.
struct Told {
    int      times = 0;
    Outcomes outcomes;

    Plc::OutcomesCall call()
    {
        return [this](const Outcomes &told) {
            ++times;
            outcomes = told;
        };
    }

    Fate fate(std::size_t index = 0) const { return outcomes.at(index).fate; }

    std::string text(std::size_t index = 0) const { return outcomes.at(index).text; }
};

/// All samples of a watch, in the order in which they came.
struct Seen {
    std::vector<Sample> samples;
    int                 calls = 0;

    Plc::SamplesCall call()
    {
        return [this](const Samples &more) {
            ++calls;
            samples.insert(samples.end(), more.begin(), more.end());
        };
    }

    bool endsWith(const std::string &text, Quality quality = Quality::GOOD) const
    {
        return !samples.empty() && samples.back().text == text && samples.back().quality == quality;
    }
};

class PlcFixture : public ::testing::Test {
protected:
    Config config() const { return configOf(served.host()); }

    static bool untilOnline(Plc &plc)
    {
        return until(plc, [&] { return plc.state().phase == Phase::ONLINE; });
    }

    // Writes are held back, everything else is answered.
    void holdWrites()
    {
        served.rule([](const Request &request) {
            return Treatment{request.isWrite() ? Treatment::HOLD : Treatment::ANSWER};
        });
    }

    // Nothing comes any more: every request is held back, and all events are delivered.
    void becomeQuiet(Plc &plc)
    {
        served.holdAll();
        served.awaitHeld();
        while (isReadable(plc.readyFd()))
            plc.dispatch();
    }

    ServedPlc served;
};

#endif
