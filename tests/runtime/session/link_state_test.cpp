#include "session/link_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

const TimePoint START = TimePoint() + std::chrono::hours(1);

class LinkStateTest : public testing::Test {
protected:
    // Brings a fresh state into `phase`.
    void enter(LinkPhase phase)
    {
        const LinkEvent way[] = {LinkEvent::CONNECTED, LinkEvent::HANDSHAKE_ACCEPTED, LinkEvent::READ_ACCEPTED};
        for (int i = 0; i < static_cast<int>(phase); ++i)
            state.on(way[i], START);
        ASSERT_EQ(state.phase(), phase);
    }

    LinkState state{START};
};

struct Row {
    LinkPhase from;
    LinkEvent event;
    LinkPhase to;
};

class LinkStateTable : public testing::TestWithParam<Row> {};

const Row TABLE[] = {
    {LinkPhase::WAITING,     LinkEvent::CONNECTED,          LinkPhase::HANDSHAKING},
    {LinkPhase::WAITING,     LinkEvent::HANDSHAKE_ACCEPTED, LinkPhase::WAITING},
    {LinkPhase::WAITING,     LinkEvent::READ_ACCEPTED,      LinkPhase::WAITING},
    {LinkPhase::WAITING,     LinkEvent::NODES_FORGOTTEN,    LinkPhase::WAITING},
    {LinkPhase::WAITING,     LinkEvent::LOST,               LinkPhase::WAITING},
    {LinkPhase::HANDSHAKING, LinkEvent::CONNECTED,          LinkPhase::HANDSHAKING},
    {LinkPhase::HANDSHAKING, LinkEvent::HANDSHAKE_ACCEPTED, LinkPhase::PROVING},
    {LinkPhase::HANDSHAKING, LinkEvent::READ_ACCEPTED,      LinkPhase::HANDSHAKING},
    {LinkPhase::HANDSHAKING, LinkEvent::NODES_FORGOTTEN,    LinkPhase::HANDSHAKING},
    {LinkPhase::HANDSHAKING, LinkEvent::LOST,               LinkPhase::WAITING},
    {LinkPhase::PROVING,     LinkEvent::CONNECTED,          LinkPhase::PROVING},
    {LinkPhase::PROVING,     LinkEvent::HANDSHAKE_ACCEPTED, LinkPhase::PROVING},
    {LinkPhase::PROVING,     LinkEvent::READ_ACCEPTED,      LinkPhase::ONLINE},
    {LinkPhase::PROVING,     LinkEvent::NODES_FORGOTTEN,    LinkPhase::PROVING},
    {LinkPhase::PROVING,     LinkEvent::LOST,               LinkPhase::WAITING},
    {LinkPhase::ONLINE,      LinkEvent::CONNECTED,          LinkPhase::ONLINE},
    {LinkPhase::ONLINE,      LinkEvent::HANDSHAKE_ACCEPTED, LinkPhase::ONLINE},
    {LinkPhase::ONLINE,      LinkEvent::READ_ACCEPTED,      LinkPhase::ONLINE},
    {LinkPhase::ONLINE,      LinkEvent::NODES_FORGOTTEN,    LinkPhase::PROVING},
    {LinkPhase::ONLINE,      LinkEvent::LOST,               LinkPhase::WAITING},
};

} // namespace

TEST_P(LinkStateTable, LeadsTo)
{
    const LinkEvent way[] = {LinkEvent::CONNECTED, LinkEvent::HANDSHAKE_ACCEPTED, LinkEvent::READ_ACCEPTED};
    LinkState state(START);
    for (int i = 0; i < static_cast<int>(GetParam().from); ++i)
        state.on(way[i], START);
    ASSERT_EQ(state.phase(), GetParam().from);
    state.on(GetParam().event, START);
    EXPECT_EQ(state.phase(), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(All, LinkStateTable, testing::ValuesIn(TABLE));

TEST_F(LinkStateTest, TheFirstAttemptIsDueAtOnce)
{
    EXPECT_EQ(state.phase(), LinkPhase::WAITING);
    EXPECT_EQ(state.retryAt(), START);
}

TEST_F(LinkStateTest, ThePauseDoublesUpToFiveSeconds)
{
    const int pauses[] = {100, 200, 400, 800, 1600, 3200, 5000, 5000};
    TimePoint now = START;
    for (const int pause : pauses) {
        now += Millis(17);
        state.on(LinkEvent::LOST, now);
        EXPECT_EQ(state.delay(), Millis(pause));
        EXPECT_EQ(state.retryAt(), now + Millis(pause));
    }
}

TEST_F(LinkStateTest, OnlyAnAcceptedReadStartsThePausesAnew)
{
    state.on(LinkEvent::LOST, START);
    state.on(LinkEvent::CONNECTED, START);
    state.on(LinkEvent::HANDSHAKE_ACCEPTED, START);
    state.on(LinkEvent::LOST, START);
    EXPECT_EQ(state.delay(), Millis(200));
    enter(LinkPhase::ONLINE);
    state.on(LinkEvent::LOST, START);
    EXPECT_EQ(state.delay(), Millis(100));
    state.on(LinkEvent::LOST, START);
    EXPECT_EQ(state.delay(), Millis(200));
}

// Links that were lost together come back at different times: each pause is shortened at random, to half at most, and
// still doubles up to its limit.
TEST(LinkState, SpreadsThePausesWithinTheirBounds)
{
    std::set<Millis::rep> different;
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        LinkState state(START, seed);
        Millis longest(100);
        for (int loss = 0; loss < 10; ++loss) {
            const TimePoint now = START + Millis(1000 * loss);
            state.on(LinkEvent::LOST, now);
            EXPECT_GE(state.delay(), longest / 2);
            EXPECT_LE(state.delay(), longest);
            EXPECT_EQ(state.retryAt(), now + state.delay());
            longest = std::min(Millis(5000), 2 * longest);
        }
        different.insert(state.delay().count());
    }
    EXPECT_GT(different.size(), 150u);
}

TEST(LinkState, SpreadsInTheSameWayForTheSameSeed)
{
    LinkState one(START, 7), two(START, 7), none(START);
    for (LinkState *const state : {&one, &two, &none})
        state->on(LinkEvent::LOST, START);
    EXPECT_EQ(one.delay(), two.delay());
    EXPECT_EQ(none.delay(), Millis(100));
}
