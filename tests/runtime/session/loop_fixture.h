#ifndef TESTS_RUNTIME_SESSION_LOOP_FIXTURE_H
#define TESTS_RUNTIME_SESSION_LOOP_FIXTURE_H

#include "session/runtime.h"
#include "session/step_until.h"

#include "support/served_plc.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

// The loop alone, against a PLC that the test holds in its hand.

using Treatment = ServedPlc::Treatment;
using Request   = ServedPlc::Request;

inline Item dm(qint32 address, qint32 count = 1)
{
    return {QString::fromLatin1("DM"), address, count, false};
}

class Loop : public ::testing::Test {
protected:
    Loop()
    {
        options.host       = "127.0.0.1";
        options.port       = std::to_string(served.port());
        options.timeout    = Millis(20000);
        options.statistics = &statistics;
    }

    static TimePoint soon() { return Clock::now() + Millis(20000); }

    // A runtime whose messages are kept; it watches DM0. One in each test: a driver remembers its link.
    std::unique_ptr<Runtime> made()
    {
        auto runtime = std::make_unique<Runtime>(*driver, options);
        runtime->messages().redirect([this](const Message &message) { lines.push_back(message.text); }, false);
        runtime->watch({dm(0)});
        return runtime;
    }

    // Steps until so many requests were sent; what was sent is not what was answered.
    void stepUntilRequests(Runtime &runtime, unsigned long count)
    {
        EXPECT_TRUE(stepUntil(runtime, soon(), [&] { return statistics.requests >= count; }));
    }

    const std::unique_ptr<DriverLibrary> driver = DriverLibrary::copyOf(DRIVER_LIBRARY);
    ServedPlc                served;
    LinkOptions              options;
    Statistics               statistics;
    std::vector<std::string> lines;
};

#endif
