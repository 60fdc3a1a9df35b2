#include "link/answerer.h"
#include "link/clients.h"
#include "link/meters.h"
#include "link/scenes.h"

#include "fins_runtime/plc.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

void require(bool good, const char *what)
{
    if (!good)
        throw std::runtime_error(what);
}

/// Until the thread of the library has found nothing more to do, and pauses. The core is not left to sleep: what its
/// waking costs belongs to the machine.
void letQuietCome()
{
    const Meter meter;
    while (meter.elapsed() < 300e-6)
        std::this_thread::yield();
}

double median(std::vector<double> &values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Median seconds of a single bare round trip, as quiet before it as before a write.
double pacedRoundTrip(Client &pingPong, int count)
{
    std::vector<double> times;
    for (; count > 0; --count) {
        letQuietCome();
        const Meter meter;
        pingPong.request(1);
        times.push_back(meter.elapsed());
    }
    return median(times);
}

/// A PLC of which one word is watched, and polled behind each write alone.
class Writer {
public:
    explicit Writer(int port)
        : plc_(fins::Plc::open(config(port))),
          watch_(plc_.watch({"Level"}, [this](const fins::Samples &samples) { last_ = samples.back(); }))
    {
        while (last_.quality != fins::Quality::GOOD)
            dispatch();
    }

    /// Median seconds of as many writes, each until its outcome was delivered.
    double write(int count, bool verify)
    {
        std::vector<double> times;
        for (; count > 0; --count)
            times.push_back(writeOnce(verify));
        return median(times);
    }

private:
    static fins::Config config(int port)
    {
        fins::Config config;
        config.host     = "127.0.0.1:" + std::to_string(port);
        config.interval = std::chrono::minutes(1);
        config.library  = OMRON_FINS_LIBRARY;
        config.tags     = {{"Level", "DM:0"}};
        return config;
    }

    double writeOnce(bool verify)
    {
        fins::OperationOptions options;
        options.verify = verify;
        const fins::Value value((std::get<std::int64_t>(last_.value) + 1) % 0x10000);
        fins::Outcomes outcomes;
        letQuietCome();
        const Meter meter;
        const fins::Operation operation = plc_.write(
            {{"Level", value}}, [&outcomes](const fins::Outcomes &told) { outcomes = told; }, options);
        while (outcomes.empty())
            dispatch();
        const double elapsed = meter.elapsed();
        require(outcomes[0].fate == (verify ? fins::Fate::VERIFIED : fins::Fate::ACCEPTED), "writes: not as asked");
        while (last_.quality != fins::Quality::GOOD || last_.value != value)
            dispatch();
        return elapsed;
    }

    void dispatch() { require(plc_.dispatch(std::chrono::seconds(10)), "writes: no link"); }

    fins::Sample last_;
    fins::Plc    plc_;
    fins::Watch  watch_;
};

} // namespace

int writes(int count, int writes)
{
    const AnswererProcess pingPongEnd(answerPingPong());
    const AnswererProcess plcEnd(answerMemory());
    const auto pingPong = pingPongClient(pingPongEnd.port());
    Writer writer(plcEnd.port());
    for (int round = 0; round < count; ++round) {
        for (const bool any : {false, true}) {
            if (any && !AnyCore::isThere())
                continue;
            const AnyCore cores(any);
            const Meter meter;
            pingPong->request(10L * writes);
            const double bare = meter.elapsed() / (10 * writes);
            const double paced = pacedRoundTrip(*pingPong, writes);
            const double accepted = writer.write(writes, false);
            const double verified = writer.write(writes, true);
            std::printf("%d %s %.9f %.9f %.9f %.9f\n", round, any ? "any" : "one", bare, paced, accepted, verified);
        }
    }
    return 0;
}
