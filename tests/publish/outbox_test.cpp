#include "publish/outbox.h"

#include "publish/back_off.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>

// The way of messages to the broker, whom the test plays: what it is handed, in which order, how marked.

class OutboxTest : public ::testing::Test {
protected:
    void SetUp() override { begin(); }

    // The program starts, again if it was there before.
    void begin()
    {
        outbox.reset();
        spool.reset();
        spool.emplace(folder.path("spool"), limits, [this](const std::string &line) { said += line + "\n"; });
        outbox.emplace(*spool, options,
                       [this](const std::string &topic, const std::string &payload, bool) {
                           if (isFull)
                               return -1;
                           handed += topic + " " + payload + "\n";
                           return ++number;
                       },
                       [this](const std::string &line) { said += line + "\n"; });
    }

    void add(const std::string &topic, int value)
    {
        outbox->add({topic, "{\"value\":" + std::to_string(value) + "}", millis(), true});
    }

    // Time passes, and what is due then is done.
    void work(int ms = 100)
    {
        now += Millis(ms);
        outbox->work(now, std::chrono::system_clock::time_point(Millis(millis())));
    }

    std::int64_t millis() const
    {
        return 1772352930000 + std::chrono::duration_cast<Millis>(now - TimePoint()).count();
    }

    // What the broker was handed since the last time.
    std::string taken()
    {
        std::string text;
        text.swap(handed);
        return text;
    }

    TemporaryFolder       folder;
    Spool::Limits         limits;
    OutboxOptions         options;
    std::optional<Spool>  spool;
    std::optional<Outbox> outbox;
    TimePoint             now{std::chrono::seconds(1000)};
    std::string           handed;
    std::string           said;
    bool                  isFull = false;
    int                   number = 0; // of the latest that was handed
};

TEST_F(OutboxTest, HandsOverWhatIsStoredInItsOrder)
{
    outbox->onConnected(now);
    add("a", 1);
    add("b", 2);
    add("a", 3);
    EXPECT_EQ(taken(), ""); // not before it is stored
    work();
    EXPECT_EQ(taken(), "a {\"value\":1}\nb {\"value\":2}\na {\"value\":3}\n");
    work();
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(spool->count(), 3); // not forgotten before it is acknowledged
}

TEST_F(OutboxTest, ForgetsWhatIsAcknowledgedAndNothingElse)
{
    outbox->onConnected(now);
    add("a", 1);
    add("a", 2);
    work();
    outbox->onAcknowledged(1);
    work(1000);
    EXPECT_EQ(spool->count(), 1);
    outbox->onAcknowledged(99);
    work(1000);
    EXPECT_EQ(spool->count(), 1);
    outbox->onAcknowledged(2);
    work(1000);
    EXPECT_EQ(spool->count(), 0);
    EXPECT_TRUE(outbox->isEmpty());
}

TEST_F(OutboxTest, NothingIsHandedOverWithoutAConnection)
{
    add("a", 1);
    work();
    EXPECT_EQ(taken(), "");
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "a {\"value\":1}\n");
}

TEST_F(OutboxTest, NoMoreAreInFlightThanTheOptionSays)
{
    options.inFlight = 2;
    begin();
    outbox->onConnected(now);
    for (int value = 1; value <= 4; ++value)
        add("a", value);
    work();
    EXPECT_EQ(taken(), "a {\"value\":1}\na {\"value\":2}\n");
    outbox->onAcknowledged(1);
    work();
    EXPECT_EQ(taken(), "a {\"value\":3}\n");
}

TEST_F(OutboxTest, WhatWasNotAcknowledgedComesAgainMarkedAndBeforeWhatIsNew)
{
    outbox->onConnected(now);
    add("a", 1);
    add("a", 2);
    add("a", 3);
    work();
    taken();
    outbox->onAcknowledged(2); // out of order
    outbox->onLost();
    add("a", 4);
    work();
    EXPECT_EQ(taken(), "");
    outbox->onConnected(now);
    work(1000);
    EXPECT_EQ(taken(), "a {\"value\":1,\"repeated\":true}\na {\"value\":3,\"repeated\":true}\na {\"value\":4}\n");
}

TEST_F(OutboxTest, WhatMayHaveBeenHandedOverBeforeTheProgramWasKilledIsMarked)
{
    outbox->onConnected(now);
    add("a", 1);
    work();
    outbox->onLost();
    add("a", 2);
    work();
    begin();
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "a {\"value\":1}\na {\"value\":1,\"repeated\":true}\na {\"value\":2}\n");
}

TEST_F(OutboxTest, AFullBrokerIsTriedAgain)
{
    outbox->onConnected(now);
    isFull = true;
    add("a", 1);
    work();
    isFull = false;
    work();
    EXPECT_EQ(taken(), "a {\"value\":1}\n");
}

TEST_F(OutboxTest, WhatHasWaitedIsThrottledAndWhatIsNewIsNot)
{
    options.replayRate = 10;
    options.inFlight   = 1000;
    begin();
    for (int value = 0; value < 50; ++value)
        add("a", value);
    work();
    outbox->onConnected(now);
    const auto count = [this] {
        const std::string text = taken();
        return std::count(text.begin(), text.end(), '\n');
    };
    work(60);
    EXPECT_EQ(count(), 1);
    work(100);
    EXPECT_EQ(count(), 1);
    work(50);
    EXPECT_EQ(count(), 0);
    work(50);
    EXPECT_EQ(count(), 1);
    add("a", 50);
    add("a", 51);
    work(100);
    EXPECT_EQ(count(), 3); // one of those that waited, and as many more as are new
}

TEST_F(OutboxTest, WhatIsAnnouncedIsSaidOnEachConnectionAndTheLatestOnly)
{
    outbox->announce("fins/state", "online");
    outbox->announce("fins/press/state", "{\"state\":\"waiting\"}");
    outbox->announce("fins/press/state", "{\"state\":\"online\"}");
    work();
    EXPECT_EQ(taken(), "");
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "fins/press/state {\"state\":\"online\"}\nfins/state online\n");
    outbox->onLost();
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "fins/press/state {\"state\":\"online\"}\nfins/state online\n");
}

// A broker that was started again may have forgotten what it kept.
TEST_F(OutboxTest, TheLatestValuesComeOnceMoreOnANewConnection)
{
    outbox->onConnected(now);
    add("a", 1);
    add("b", 2);
    add("a", 3);
    work();
    for (int acknowledged = 1; acknowledged <= 3; ++acknowledged)
        outbox->onAcknowledged(acknowledged);
    work(1000);
    taken();
    outbox->onLost();
    add("b", 4);
    work();
    outbox->onConnected(now);
    work(1000);
    work(1000);
    EXPECT_EQ(taken(), "b {\"value\":4}\na {\"value\":3,\"repeated\":true}\n");
}

TEST_F(OutboxTest, WhatIsTooMuchForMemoryIsCountedAndSaid)
{
    options.memory = 1000; // of 200 and some bytes each
    begin();
    for (int value = 0; value < 10; ++value)
        add("a", value);
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "a {\"value\":6}\na {\"value\":7}\na {\"value\":8}\na {\"value\":9}\n");
    EXPECT_EQ(said, "too much waits in memory: 6 messages dropped unsent, the oldest first\n");
}

TEST_F(OutboxTest, WhatTheSpoolDropsIsSaid)
{
    limits.age = std::chrono::seconds(10);
    begin();
    add("a", 1);
    add("a", 2);
    work();
    work(20000);
    add("a", 3);
    work();
    EXPECT_EQ(said, "the spool has reached its limit: 2 messages dropped unsent, the oldest first\n");
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "a {\"value\":3}\n");
}

TEST_F(OutboxTest, WhatIsLateHasItsAge)
{
    add("a", 1);
    work();
    work(61000);
    outbox->onConnected(now);
    work();
    EXPECT_EQ(taken(), "a {\"value\":1,\"age\":61}\n");
}

TEST(BackOff, GrowsToThirtySecondsAndIsShortenedByAHalfAtTheMost)
{
    BackOff backOff(1);
    for (const int most : {1000, 2000, 4000, 8000, 16000, 30000, 30000}) {
        const Millis pause = backOff.next();
        EXPECT_LE(pause.count(), most);
        EXPECT_GE(pause.count(), most / 2);
    }
    backOff.reset();
    EXPECT_LE(backOff.next().count(), 1000);
}

TEST(BackOff, IsAnotherForEachProgram)
{
    EXPECT_NE(BackOff(1).next(), BackOff(123456).next());
}
