#include "session/link_state.h"

#include <gtest/gtest.h>

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
