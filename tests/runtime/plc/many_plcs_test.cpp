#include "plc_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <set>

// A hundred PLCs in one process: independent of each other, and no storm when all of them come back at once.

namespace {

const int COUNT = 100;

struct Station {
    ServedPlc          served;
    std::optional<Plc> plc;
    std::vector<int>   pauses; // before the attempts to connect, in ms, as the library says them
    Watch              watch;
    Handle             lines;
    Seen               seen;

    void open(int value)
    {
        served.set(0, {value});
        Config config = configOf(served.host());
        config.interval = 200ms;
        plc = Plc::open(config);
        watch = plc->watch({"DM:0"}, seen.call());
        lines = plc->onMessage([this](const std::string &line) {
            const std::string word = ", retrying in ";
            const std::size_t at = line.rfind(word);
            if (at != std::string::npos)
                pauses.push_back(std::atoi(line.c_str() + at + word.size()));
        });
    }
};

} // namespace

class ManyPlcs : public ::testing::Test {
protected:
    // Delivers the events of all until the condition holds for each; false when it does not in time.
    template <typename Condition>
    bool untilAll(Condition holds, std::chrono::seconds time = 60s)
    {
        const auto deadline = std::chrono::steady_clock::now() + time;
        for (;;) {
            int missing = 0;
            for (int i = 0; i < COUNT; ++i) {
                stations[i].plc->dispatch();
                missing += holds(stations[i], i) ? 0 : 1;
            }
            if (missing == 0)
                return true;
            if (std::chrono::steady_clock::now() >= deadline)
                return false;
            stations[0].plc->dispatch(10ms);
        }
    }

    void openAll()
    {
        for (int i = 0; i < COUNT; ++i)
            stations[i].open(1000 + i);
        ASSERT_TRUE(untilAll([](const Station &station, int i) { return station.seen.endsWith(std::to_string(1000 + i)); }));
    }

    Station stations[COUNT];
};

TEST_F(ManyPlcs, HoldTheirOwnValuesAndOneThatFailsDisturbsNoOther)
{
    openAll();
    stations[7].served.stopListening();
    stations[7].served.hangUp();
    for (int i = 0; i < COUNT; ++i)
        stations[i].served.set(0, {2000 + i});
    ASSERT_TRUE(untilAll([](const Station &station, int i) {
        return i == 7 ? station.seen.endsWith("1007", Quality::LAST_KNOWN) : station.seen.endsWith(std::to_string(2000 + i));
    }));
    for (int i = 0; i < COUNT; ++i) {
        EXPECT_EQ(stations[i].plc->state().losses == 0, i != 7) << i;
        EXPECT_EQ(stations[i].served.connections(), 1) << i;
    }
}

// The pause before the Nth attempt in a row is 100 ms doubled N - 1 times, shortened at random to half at most: those of
// a hundred PLCs spread over their interval.
TEST_F(ManyPlcs, ComeBackTogetherWithoutAStorm)
{
    openAll();
    for (Station &station : stations) {
        station.served.stopListening();
        station.served.hangUp();
    }
    ASSERT_TRUE(untilAll([](const Station &station, int) { return station.pauses.size() >= 5; }));
    for (std::size_t attempt = 0; attempt < 5; ++attempt) {
        const int longest = 100 << attempt;
        std::set<int> different;
        for (const Station &station : stations) {
            EXPECT_GE(station.pauses[attempt], longest / 2);
            EXPECT_LE(station.pauses[attempt], longest);
            different.insert(station.pauses[attempt]);
        }
        EXPECT_GE(different.size(), 20u) << attempt; // of 51 and more that there can be
    }
    std::set<std::chrono::system_clock::time_point> attempts;
    for (const Station &station : stations)
        attempts.insert(station.plc->state().nextAttempt);
    EXPECT_EQ(attempts.size(), static_cast<std::size_t>(COUNT));
    for (Station &station : stations)
        station.served.startListening();
    // Promised: all are back within 10 s.
    EXPECT_TRUE(untilAll([](const Station &station, int) { return station.plc->state().phase == Phase::ONLINE; }, 10s));
    for (const Station &station : stations)
        EXPECT_EQ(station.served.connections(), 2);
}
