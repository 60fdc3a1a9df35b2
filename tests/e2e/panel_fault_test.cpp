#include "panel_files.h"

// The simulator's faults as the panel meets them. During each one the PLC's value changes; afterwards the panel shows it
// as the change that follows the last value shown, so that no value is lost without notice.

class PanelFaultTest : public PanelTest {
protected:
    // A watch that has shown DM:0 as 1.
    void startWatch(const Words &options = {})
    {
        ASSERT_EQ(tell("write DM:0 1"), "ok");
        Words all = {"DM:0", "--interval", "5"};
        all.insert(all.end(), options.begin(), options.end());
        panel = watch(all);
        ASSERT_EQ(nextChange(*panel), "DM:0 - 1");
        ASSERT_EQ(nextMessage(*panel) + "\n", connectedLine());
    }

    void endWatch()
    {
        EXPECT_EQ(interrupt(*panel), 0);
        EXPECT_EQ(panel->output(), "");
    }

    std::unique_ptr<Process> panel;
};

// ---- Faults that the panel lives with ----------------------------------------------------------------------------

class PanelHarmlessFaultTest : public PanelFaultTest, public ::testing::WithParamInterface<const char *> {};

INSTANTIATE_TEST_SUITE_P(Faults, PanelHarmlessFaultTest,
                         ::testing::Values("delay=30", "jitter=30", "bytewise=1", "double"),
                         [](const auto &row) {
                             const std::string name = row.param;
                             return name.substr(0, name.find('='));
                         });

TEST_P(PanelHarmlessFaultTest, WatchGoesOn)
{
    start();
    startWatch();
    ASSERT_EQ(tell(std::string("fault ") + GetParam()), "ok");
    for (int value = 2; value <= 5; ++value) {
        ASSERT_EQ(tell("write DM:0 " + std::to_string(value)), "ok");
        EXPECT_EQ(nextChange(*panel), "DM:0 " + std::to_string(value - 1) + " " + std::to_string(value));
    }
    ASSERT_EQ(tell("faults off"), "ok");
    ASSERT_EQ(tell("write DM:0 6"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 5 6");
    endWatch();
    EXPECT_EQ(panel->errors(), "");
    EXPECT_EQ(tell("stats").find("ok connections=1 "), 0u);
}

TEST_P(PanelHarmlessFaultTest, FromTheFirstRequestOn)
{
    start({"--fault", GetParam()});
    const PanelRun write = run("write", {"DM:0:2=1,2", "DM_bit:2.5=1", "C:1=4"});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "DM:0:2 = 1 2\nDM_bit:2.5 = 1\nC:1 = 4\n");
    EXPECT_EQ(write.err, connectedLine());
    EXPECT_EQ(run("read", {"DM:0:3", "C:1"}).out, "DM:0:3 = 1 2 32\nC:1 = 4\n");
    const PanelFiles files;
    const std::string file = files.put("recipe.txt", "DM:10:5 = 1 2 3 4 5\n");
    EXPECT_EQ(run("recipe write", {file, "--words-per-frame", "2"}).out, "DM:10:5 = 1 2 3 4 5\n");
    EXPECT_EQ(run("recipe read", {file, "--words-per-frame", "2"}).out, "DM:10:5 = 1 2 3 4 5\n");
}

// ---- Faults that break the link ----------------------------------------------------------------------------------

struct BreakingFault {
    const char *name;
    const char *fault;
    const char *reason; // of the lost link
};

void PrintTo(const BreakingFault &row, std::ostream *out) { *out << row.name; }

const BreakingFault BREAKING_FAULTS[] = {
    {"delay", "delay=10000", "no reply in time, 3 times in a row"},
    {"drop", "drop", "no reply in time, 3 times in a row"},
    {"wrongSid", "wrong-sid", "the reply does not answer the request, 3 times in a row"},
    {"shortByOne", "short=1", "the driver rejects the reply, 3 times in a row"},
    {"shortToTheEndCode", "short=2", "the driver rejects the reply, 3 times in a row"},
    {"shortWithoutEndCode", "short=3", "the reply does not answer the request, 3 times in a row"},
    {"shortToNothing", "short=1000", "the reply does not answer the request, 3 times in a row"},
    {"longByOne", "long=1", "the driver rejects the reply, 3 times in a row"},
    {"longByAThousand", "long=1000", "the driver rejects the reply, 3 times in a row"},
    {"bytewise", "bytewise=1000", "no reply in time, 3 times in a row"},
    {"close", "close", "the PLC closed the connection"},
    {"silence", "silence", "no reply in time, 3 times in a row"},
};

class PanelBreakingFaultTest : public PanelFaultTest, public ::testing::WithParamInterface<BreakingFault> {
protected:
    // Only a reply that does not come is waited for.
    static std::string timeout()
    {
        return std::string(GetParam().reason).find("no reply") == 0 ? "200" : "5000";
    }
};

INSTANTIATE_TEST_SUITE_P(Faults, PanelBreakingFaultTest, ::testing::ValuesIn(BREAKING_FAULTS),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(PanelBreakingFaultTest, LinkIsLostAndComesBack)
{
    start({"--trace"});
    startWatch({"--timeout", timeout()});
    ASSERT_EQ(tell(std::string("fault ") + GetParam().fault), "ok");
    ASSERT_EQ(tell("write DM:0 2"), "ok");
    EXPECT_EQ(panel->waitForErrorLine("link to "), linkLost(GetParam().reason));
    ASSERT_EQ(tell("faults off"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 1 2");
    ASSERT_EQ(tell("write DM:0 3"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 2 3");
    panel->waitForErrorLine("connected to " + host());
    endWatch();
    expectReadsFirst(endAndCollect());
}

// A write that meets the fault ends in time, and what it says of the PLC is true.
TEST_P(PanelBreakingFaultTest, WriteWaitsForItsEnd)
{
    start({"--trace", "--fault", GetParam().fault});
    const auto write = startPanel(arguments("write", {"DM:0=7", "--timeout", timeout(), "--give-up", "30"}));
    write->waitForErrorLine("link to " + host() + " lost: ");
    ASSERT_EQ(tell("faults off"), "ok");
    EXPECT_EQ(write->wait(), 0);
    EXPECT_EQ(write->output(), "DM:0 = 7\n");
    EXPECT_EQ(tell("read DM:0"), "ok 7");
    expectReadsFirst(endAndCollect());
}

// Refused connections: the link that is there stays; once it is cut, none comes until the fault is off.
TEST_F(PanelFaultTest, Refuse)
{
    start();
    startWatch();
    ASSERT_EQ(tell("fault refuse"), "ok");
    ASSERT_EQ(tell("write DM:0 2"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 1 2");
    ASSERT_EQ(tell("disconnect"), "ok 1");
    EXPECT_EQ(nextMessage(*panel).find("link to " + host() + " lost: "), 0u);
    EXPECT_EQ(nextMessage(*panel), "no link to " + host() + ": Connection refused, retrying in 200 ms");
    ASSERT_EQ(tell("write DM:0 3"), "ok");
    ASSERT_EQ(tell("fault refuse off"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 2 3");
    endWatch();
}

// A connection that is closed as soon as it is made.
TEST_F(PanelFaultTest, RefuseBehindTheDoor)
{
    start();
    startWatch();
    ASSERT_EQ(tell("fault refuse@0.999999"), "ok");
    ASSERT_EQ(tell("disconnect"), "ok 1");
    EXPECT_EQ(nextMessage(*panel).find("link to " + host() + " lost: "), 0u);
    EXPECT_NE(nextMessage(*panel).find(", retrying in 200 ms"), std::string::npos);
    ASSERT_EQ(tell("write DM:0 2"), "ok");
    ASSERT_EQ(tell("faults off"), "ok");
    EXPECT_EQ(nextChange(*panel), "DM:0 1 2");
    endWatch();
}

// Replies that come after their time: each request is sent again, and no reply is taken for another request's.
TEST_F(PanelFaultTest, LateRepliesAreNotMixedUp)
{
    start();
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(tell("write DM:" + std::to_string(10 * i) + " " + std::to_string(100 + i)), "ok");
    ASSERT_EQ(tell("fault delay=180@0.5"), "ok");
    const PanelRun read = run("read", {"DM:0", "DM:10", "DM:20", "DM:30", "--timeout", "120", "--retries", "100",
                                       "--give-up", "30"});
    EXPECT_EQ(read.code, 0) << read.err;
    EXPECT_EQ(read.out, "DM:0 = 100\nDM:10 = 101\nDM:20 = 102\nDM:30 = 103\n");
}

// Less than the limit of bad replies in a row does not drop the link.
TEST_F(PanelFaultTest, RetriesAreCountedInARow)
{
    start({"--fault", "short@0.4", "--fault", "wrong-sid@0.4"});
    ASSERT_EQ(tell("write DM:0 1 2 3 4 5"), "ok");
    const PanelRun read = run("read", {"DM:0:5", "--words-per-frame", "1", "--retries", "100"});
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, "DM:0:5 = 1 2 3 4 5\n");
    EXPECT_EQ(read.err, connectedLine());
    const std::string stats = tell("stats");
    EXPECT_GT(std::stoi(stats.substr(stats.find("requests=") + 9)), 6) << stats;
}

TEST_F(PanelFaultTest, LimitOfRetriesIsTheUsers)
{
    start({"--fault", "wrong-sid"});
    const auto one = startPanel(arguments("read", {"DM:0", "--retries", "1"}));
    EXPECT_EQ(one->waitForErrorLine("link to "), linkLost("the reply does not answer the request"));
    EXPECT_EQ(tell("stats").find("ok connections=1 requests=2 "), 0u);
    ASSERT_EQ(tell("faults off"), "ok");
    EXPECT_EQ(one->readLine(), "DM:0 = 0");
    EXPECT_EQ(one->wait(), 0);
}

// Many kinds of trouble at once: whatever happens on the way, at the end the panel is right about the PLC, and on every
// connection a read went before the first write.
class PanelTroubleTest : public PanelFaultTest, public ::testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Seeds, PanelTroubleTest, ::testing::Values(1, 2, 3, 4),
                         [](const auto &row) { return "seed" + std::to_string(row.param); });

TEST_P(PanelTroubleTest, WhatIsSaidOfWritesIsTrue)
{
    Words options = {"--trace", "--seed", std::to_string(GetParam())};
    for (const char *fault : {"close@0.15", "drop@0.05", "short@0.1", "wrong-sid@0.1", "double@0.2", "refuse@0.2"})
        options.insert(options.end(), {"--fault", fault});
    start(options);
    Words writes = {"--timeout", "200", "--give-up", "60", "--words-per-frame", "2", "--keep-going"};
    for (int i = 0; i < 8; ++i)
        writes.push_back("DM:" + std::to_string(10 * i) + ":3=1,2," + std::to_string(i + 3));
    const PanelRun write = run("write", writes);
    std::size_t unknown = 0;
    for (int i = 0; i < 8; ++i) {
        const std::string name   = "DM:" + std::to_string(10 * i) + ":3";
        const std::string values = "1 2 " + std::to_string(i + 3);
        const bool isUnknown = write.err.find("\nunconfirmed: " + name + ": ") != std::string::npos;
        const std::string held = tell("read " + name);
        EXPECT_TRUE(isUnknown || held == "ok " + values) << name << " is said to be done: " << held;
        EXPECT_TRUE(isUnknown || write.out.find(name + " = " + values + "\n") != std::string::npos) << write.out;
        unknown += isUnknown ? 1 : 0;
    }
    EXPECT_EQ(write.code, unknown > 0 ? 3 : 0) << write.err;
    const std::map<int, Words> received = endAndCollect();
    EXPECT_GT(received.size(), 1u);
    expectReadsFirst(received);
}
