#include "model/alarm_book.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using State = AlarmStatus::State;
using Kind  = AlarmEvent::Kind;
using fins::Quality;
using Condition = AlarmRule::Condition;

const auto UTC    = std::chrono::system_clock::from_time_t(1772352930);
const auto STEADY = std::chrono::steady_clock::time_point(std::chrono::hours(5));

AlarmTime at(long long ms)
{
    return {UTC + milliseconds(ms), STEADY + milliseconds(ms)};
}

AlarmRule rule(Condition condition, double limit, double hysteresis = 0, milliseconds delay = milliseconds(0))
{
    AlarmRule made;
    made.name       = "Alarm";
    made.value      = {"Level", 0};
    made.condition  = condition;
    made.limit      = limit;
    made.hysteresis = hysteresis;
    made.delay      = delay;
    return made;
}

AlarmRule ofTag(const std::string &tag, int priority)
{
    AlarmRule made = rule(Condition::HIGH, 10);
    made.value.tag = tag;
    made.priority  = priority;
    return made;
}

// What happened, a letter each: Came, Went, Acknowledged, Unknown, Known again.
std::string letters(const AlarmEvents &events)
{
    std::string text;
    for (const AlarmEvent &event : events)
        text += "CWAUK"[static_cast<int>(event.kind)];
    return text;
}

struct Book : AlarmBook {
    using AlarmBook::AlarmBook;
    std::string good(double value, long long ms) { return letters(take("Level", 0, Quality::GOOD, value, at(ms))); }
    std::string bad(long long ms) { return letters(take("Level", 0, Quality::LAST_KNOWN, 100.0, at(ms))); }
    State state() const { return status(0).state; }
};

TEST(AlarmBook, HighComesAtTheLimitAndGoesBelowIt)
{
    Book book({rule(Condition::HIGH, 90)});
    EXPECT_EQ(book.good(89.9, 0), "");
    EXPECT_EQ(book.good(90, 1), "C");
    EXPECT_EQ(book.good(90, 2), "");
    EXPECT_EQ(book.good(89.9, 3), "W");
}

TEST(AlarmBook, HighGoesBehindItsHysteresis)
{
    Book book({rule(Condition::HIGH, 90, 2)});
    EXPECT_EQ(book.good(90, 0), "C");
    EXPECT_EQ(book.good(89, 1), "");
    EXPECT_EQ(book.good(88, 2), "") << "at limit - hysteresis it lasts";
    EXPECT_EQ(book.good(87.9, 3), "W");
    EXPECT_EQ(book.good(89, 4), "") << "inside the hysteresis it does not come";
    EXPECT_EQ(book.good(90, 5), "C");
}

TEST(AlarmBook, LowIsHighMirrored)
{
    Book book({rule(Condition::LOW, 10, 2)});
    EXPECT_EQ(book.good(10.1, 0), "");
    EXPECT_EQ(book.good(10, 1), "C");
    EXPECT_EQ(book.good(12, 2), "");
    EXPECT_EQ(book.good(12.1, 3), "W");
    EXPECT_EQ(book.good(11, 4), "");
}

TEST(AlarmBook, ValueComesWhenEqual)
{
    Book book({rule(Condition::VALUE, 3)});
    EXPECT_EQ(book.good(2, 0), "");
    EXPECT_EQ(book.good(4, 1), "");
    EXPECT_EQ(book.good(3, 2), "C");
    EXPECT_EQ(book.good(4, 3), "W");
}

TEST(AlarmBook, TakesEveryKindOfNumber)
{
    for (const fins::Value &one : {fins::Value(true), fins::Value(std::int64_t(1)), fins::Value(std::uint64_t(1)),
                                   fins::Value(1.0)}) {
        Book book({rule(Condition::VALUE, 1)});
        EXPECT_EQ(letters(book.take("Level", 0, Quality::GOOD, one, at(0))), "C");
    }
}

TEST(AlarmBook, JudgesOnlyItsOwnValue)
{
    AlarmRule second = rule(Condition::HIGH, 90);
    second.value.index = 1;
    Book book({rule(Condition::HIGH, 90), second});
    EXPECT_EQ(letters(book.take("Level", 1, Quality::GOOD, 95.0, at(0))), "C");
    EXPECT_EQ(book.status(0).state, State::NORMAL);
    EXPECT_EQ(book.status(1).state, State::ACTIVE);
    EXPECT_EQ(letters(book.take("Other", 0, Quality::GOOD, 95.0, at(1))), "");
}

TEST(AlarmBook, SeveralAlarmsOfOneValue)
{
    Book book({rule(Condition::HIGH, 90), rule(Condition::HIGH, 95)});
    EXPECT_EQ(book.good(92, 0), "C");
    EXPECT_EQ(book.good(96, 1), "C");
    EXPECT_EQ(book.good(0, 2), "WW");
}

TEST(AlarmBook, ComesWhenItLastedForItsDelay)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1500))});
    EXPECT_EQ(book.good(95, 0), "");
    ASSERT_TRUE(book.nextTick());
    EXPECT_EQ(*book.nextTick(), STEADY + milliseconds(1500));
    EXPECT_EQ(letters(book.tick(at(1499))), "");
    EXPECT_EQ(book.state(), State::NORMAL);
    EXPECT_EQ(letters(book.tick(at(1500))), "C");
    EXPECT_FALSE(book.nextTick());
    EXPECT_EQ(letters(book.tick(at(3000))), "") << "it comes once";
}

TEST(AlarmBook, ShorterThanTheDelayIsNoAlarm)
{
    Book book({rule(Condition::HIGH, 90, 5, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    EXPECT_EQ(book.good(89, 900), "") << "below the limit, though inside the hysteresis";
    EXPECT_FALSE(book.nextTick());
    EXPECT_EQ(book.good(95, 950), "");
    EXPECT_EQ(letters(book.tick(at(1949))), "");
    EXPECT_EQ(letters(book.tick(at(1950))), "C") << "the delay began anew";
}

TEST(AlarmBook, AnotherValueBeyondTheLimitDoesNotBeginTheDelayAnew)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    EXPECT_EQ(book.good(96, 900), "");
    EXPECT_EQ(letters(book.tick(at(1000))), "C");
}

TEST(AlarmBook, ComesThoughNobodyCalledTickInTime)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    EXPECT_EQ(book.good(0, 1200), "CW");
    EXPECT_EQ(book.state(), State::GONE);
}

TEST(AlarmBook, DelayFollowsTheSteadyClockAlone)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    const AlarmTime dayLater = {UTC + std::chrono::hours(24), STEADY + milliseconds(999)};
    EXPECT_EQ(letters(book.tick(dayLater)), "");
    const AlarmTime dayBefore = {UTC - std::chrono::hours(24), STEADY + milliseconds(1000)};
    EXPECT_EQ(letters(book.tick(dayBefore)), "C");
    EXPECT_EQ(book.status(0).first, UTC - std::chrono::hours(24));
}

TEST(AlarmBook, IsUnknownUntilTheFirstGoodValue)
{
    Book book({rule(Condition::HIGH, 90)});
    EXPECT_FALSE(book.status(0).isKnown);
    EXPECT_EQ(book.unknown(), 1U);
    EXPECT_EQ(book.bad(0), "");
    EXPECT_EQ(book.good(0, 1), "") << "nothing is known again that never was";
    EXPECT_TRUE(book.status(0).isKnown);
    EXPECT_EQ(book.unknown(), 0U);
}

TEST(AlarmBook, ActiveAndUnknownIsNotGone)
{
    Book book({rule(Condition::HIGH, 90)});
    EXPECT_EQ(book.good(95, 0), "C");
    EXPECT_EQ(book.bad(1), "U");
    EXPECT_EQ(book.bad(2), "") << "told once";
    EXPECT_EQ(book.state(), State::ACTIVE);
    EXPECT_FALSE(book.status(0).isKnown);
    EXPECT_EQ(book.listed().size(), 1U);
    EXPECT_EQ(book.good(95, 3), "K");
    EXPECT_EQ(book.state(), State::ACTIVE);
    EXPECT_EQ(book.status(0).comings, 1U);
}

TEST(AlarmBook, GoesWhenItIsKnownAgainAndTheConditionDoesNotHold)
{
    Book book({rule(Condition::HIGH, 90)});
    EXPECT_EQ(book.good(95, 0), "C");
    EXPECT_EQ(book.bad(1), "U");
    EXPECT_EQ(book.good(50, 2), "KW");
    EXPECT_EQ(book.state(), State::GONE);
}

TEST(AlarmBook, OnlyGoodValuesAndThoseWithAWriteUnderWayCount)
{
    const std::pair<Quality, const char *> expected[] = {{Quality::GOOD, "C"}, {Quality::WRITE_PENDING, "C"},
        {Quality::LAST_KNOWN, ""}, {Quality::NOT_CONNECTED, ""}, {Quality::REFUSED, ""}};
    for (const auto &[quality, events] : expected) {
        Book book({rule(Condition::HIGH, 90)});
        EXPECT_EQ(letters(book.take("Level", 0, quality, 95.0, at(0))), events) << fins::text(quality);
    }
}

TEST(AlarmBook, WhatIsNoNumberIsUnknown)
{
    for (const fins::Value &none : {fins::Value(), fins::Value(std::nan("")), fins::Value(std::string("95"))}) {
        Book book({rule(Condition::HIGH, 90)});
        EXPECT_EQ(book.good(95, 0), "C");
        EXPECT_EQ(letters(book.take("Level", 0, Quality::GOOD, none, at(1))), "U");
        EXPECT_EQ(book.state(), State::ACTIVE);
    }
}

TEST(AlarmBook, DelayStandsStillWhileUnknown)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    EXPECT_EQ(book.bad(400), "U");
    EXPECT_FALSE(book.nextTick());
    EXPECT_EQ(letters(book.tick(at(60000))), "");
    EXPECT_EQ(book.good(95, 60000), "K");
    EXPECT_EQ(*book.nextTick(), STEADY + milliseconds(60600)) << "400 ms had passed";
    EXPECT_EQ(letters(book.tick(at(60599))), "");
    EXPECT_EQ(letters(book.tick(at(60600))), "C");
}

TEST(AlarmBook, DelayBeginsAnewIfTheConditionDoesNotHoldAfterUnknown)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    EXPECT_EQ(book.bad(900), "U");
    EXPECT_EQ(book.good(50, 5000), "K");
    EXPECT_EQ(book.good(95, 6000), "");
    EXPECT_EQ(letters(book.tick(at(6999))), "");
    EXPECT_EQ(letters(book.tick(at(7000))), "C");
}

TEST(AlarmBook, DelayThatIsOverWhenTheLinkIsLostBringsTheAlarm)
{
    Book book({rule(Condition::HIGH, 90, 0, milliseconds(1000))});
    EXPECT_EQ(book.good(95, 0), "");
    EXPECT_EQ(book.bad(1000), "CU");
}

TEST(AlarmBook, AcknowledgedAlarmThatGoesIsNormal)
{
    Book book({rule(Condition::HIGH, 90)});
    book.good(95, 0);
    EXPECT_EQ(letters(book.acknowledge(0, UTC)), "A");
    EXPECT_EQ(book.state(), State::ACTIVE);
    EXPECT_TRUE(book.status(0).isAcknowledged);
    EXPECT_EQ(letters(book.acknowledge(0, UTC)), "") << "once";
    EXPECT_EQ(book.good(50, 1), "W");
    EXPECT_EQ(book.state(), State::NORMAL);
    EXPECT_TRUE(book.listed().empty());
}

TEST(AlarmBook, GoneAlarmIsNormalOnceAcknowledged)
{
    Book book({rule(Condition::HIGH, 90)});
    book.good(95, 0);
    book.good(50, 1);
    EXPECT_EQ(book.state(), State::GONE);
    const AlarmEvents events = book.acknowledge(0, UTC + seconds(9));
    EXPECT_EQ(letters(events), "A");
    EXPECT_EQ(events[0].utc, UTC + seconds(9));
    EXPECT_EQ(events[0].state, State::NORMAL);
    EXPECT_EQ(book.state(), State::NORMAL);
    EXPECT_EQ(letters(book.acknowledge(0, UTC)), "") << "nothing is left to acknowledge";
}

TEST(AlarmBook, ComingAgainHasToBeAcknowledgedAgain)
{
    Book book({rule(Condition::HIGH, 90)});
    book.good(95, 0);
    book.acknowledge(0, UTC);
    book.good(50, 1);
    EXPECT_EQ(book.good(95, 2), "C");
    EXPECT_FALSE(book.status(0).isAcknowledged);
    EXPECT_EQ(book.unacknowledged(), 1U);
}

TEST(AlarmBook, CountsAndDatesItsComings)
{
    Book book({rule(Condition::HIGH, 90)});
    book.good(95, 1000);
    book.good(50, 2000);
    book.good(95, 3000);
    book.good(50, 4000);
    EXPECT_EQ(book.status(0).comings, 2U);
    EXPECT_EQ(book.status(0).first, UTC + milliseconds(1000));
    EXPECT_EQ(book.status(0).last, UTC + milliseconds(4000));
    EXPECT_EQ(book.status(0).gone, UTC + milliseconds(4000));
    book.good(95, 5000);
    EXPECT_EQ(book.status(0).last, UTC + milliseconds(5000));
    book.acknowledge(0, UTC);
    book.good(50, 6000);
    book.good(95, 7000);
    EXPECT_EQ(book.status(0).comings, 1U) << "counted anew since it was normal";
    EXPECT_EQ(book.status(0).first, UTC + milliseconds(7000));
}

TEST(AlarmBook, ListsUnseenThenUrgentThenLatestFirst)
{
    AlarmBook book({ofTag("a", 2), ofTag("b", 1), ofTag("c", 2), ofTag("d", 1), ofTag("e", 3)});
    // The time of day goes back meanwhile: what came later is later all the same.
    long long ms = 0;
    for (const char *tag : {"a", "b", "c", "d"})
        book.take(tag, 0, Quality::GOOD, 20.0, {UTC - seconds(ms), STEADY + seconds(ms++)});
    EXPECT_EQ(book.listed(), (std::vector<std::size_t>{3, 1, 2, 0}));
    book.acknowledge(3, UTC);
    EXPECT_EQ(book.listed(), (std::vector<std::size_t>{1, 2, 0, 3}));
    EXPECT_EQ(book.unacknowledged(), 3U);
    book.take("a", 0, Quality::GOOD, 0.0, at(9000));
    EXPECT_EQ(book.listed(), (std::vector<std::size_t>{1, 0, 2, 3})) << "the last change counts";
}

TEST(AlarmBook, AcknowledgesAllAtOnce)
{
    AlarmBook book({ofTag("a", 1), ofTag("b", 1), ofTag("c", 1)});
    book.take("a", 0, Quality::GOOD, 20.0, at(0));
    book.take("c", 0, Quality::GOOD, 20.0, at(1));
    book.take("c", 0, Quality::GOOD, 0.0, at(2));
    const AlarmEvents events = book.acknowledgeAll(UTC);
    ASSERT_EQ(letters(events), "AA");
    EXPECT_EQ(events[0].alarm, 0U);
    EXPECT_EQ(events[1].alarm, 2U);
    EXPECT_EQ(book.unacknowledged(), 0U);
    EXPECT_EQ(book.listed(), (std::vector<std::size_t>{0}));
}

} // namespace
