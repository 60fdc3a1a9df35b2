#include "plc_fixture.h"

// Subscriptions: what they bring first, over losses of the link, and to an application that is slow.

class Watching : public PlcFixture {};
class Snapshot : public PlcFixture {};

namespace {

struct Expected {
    std::string text;
    Quality     quality;

    bool operator==(const Expected &other) const { return text == other.text && quality == other.quality; }
};

std::ostream &operator<<(std::ostream &out, const Expected &one)
{
    return out << one.text << " " << fins::text(one.quality);
}

std::vector<Expected> coursesOf(const Samples &samples)
{
    std::vector<Expected> course;
    for (const Sample &sample : samples)
        course.push_back({sample.text, sample.quality});
    return course;
}

} // namespace

TEST_F(Watching, BeginsWithAllValuesEvenWithoutALink)
{
    served.stopListening();
    Config with = config();
    with.tags = {{"level", "DM:10/s16", 0.1, 0, 1, "mm"}};
    Plc plc = Plc::open(with);
    Seen seen;
    const Watch watch = plc.watch({"level", "DM:0:2", "CIO_bit:1.5"}, seen.call());
    plc.dispatch();
    ASSERT_EQ(seen.calls, 1);
    ASSERT_EQ(seen.samples.size(), 4u);
    const char *const names[] = {"level", "DM:0", "DM:1", "CIO_bit:1.5"};
    for (std::size_t i = 0; i < 4; ++i) {
        const Sample &sample = seen.samples[i];
        EXPECT_EQ(sample.index, i);
        EXPECT_EQ(sample.name, names[i]);
        EXPECT_EQ(sample.quality, Quality::NOT_CONNECTED);
        EXPECT_EQ(sample.value.index(), 0u);
        EXPECT_EQ(sample.text, "");
        EXPECT_EQ(sample.utc, std::chrono::system_clock::time_point());
        EXPECT_EQ(sample.dropped, 0u);
    }
    EXPECT_EQ(seen.samples[0].unit, "mm");
}

TEST_F(Watching, BeginsWithWhatIsKnownAlready)
{
    served.set(0, {12});
    Plc plc = Plc::open(config());
    Seen seen, later;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("12"); }));
    becomeQuiet(plc);
    const Watch second = plc.watch({"DM:1", "DM:0"}, later.call());
    plc.dispatch();
    ASSERT_EQ(later.samples.size(), 2u);
    EXPECT_EQ(later.samples[0].quality, Quality::NOT_CONNECTED);
    EXPECT_EQ(later.samples[1].text, "12");
    EXPECT_EQ(later.samples[1].quality, Quality::GOOD);
    EXPECT_EQ(later.samples[1].index, 1u);
    EXPECT_EQ(later.samples[1].utc, seen.samples.back().utc);
}

TEST_F(Watching, BringsTheChangesOfOneReplyInOneCall)
{
    Plc plc = Plc::open(config());
    std::vector<Samples> calls;
    const Watch watch = plc.watch({"DM:0:8"}, [&](const Samples &samples) { calls.push_back(samples); });
    ASSERT_TRUE(until(plc, [&] { return !calls.empty() && calls.back().back().quality == Quality::GOOD; }));
    EXPECT_EQ(calls.back().size(), 8u); // of the first reply
    calls.clear();
    served.set(0, {1, 2, 3, 0, 5, 6, 0, 8});
    ASSERT_TRUE(until(plc, [&] { return !calls.empty(); }));
    ASSERT_EQ(calls.size(), 1u);
    const std::vector<Expected> changed = {{"1", Quality::GOOD}, {"2", Quality::GOOD}, {"3", Quality::GOOD},
                                           {"5", Quality::GOOD}, {"6", Quality::GOOD}, {"8", Quality::GOOD}};
    EXPECT_EQ(coursesOf(calls[0]), changed);
    EXPECT_EQ(calls[0][3].index, 4u);
}

// While a link is new and nothing was read, the PLC holds another value than before: what is shown must not be good.
TEST_F(Watching, SurvivesTenLossesOfTheLinkAndClaimsNothingMeanwhile)
{
    served.set(0, {1});
    served.holdAll();
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    plc.dispatch();
    served.release();
    std::vector<Expected> expected = {{"", Quality::NOT_CONNECTED}, {"1", Quality::GOOD}};
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("1"); }));
    for (int loss = 1; loss <= 10; ++loss) {
        served.rule([](const Request &request) {
            return Treatment{request.isRead() ? Treatment::HOLD : Treatment::ANSWER};
        });
        served.hangUp();
        served.set(0, {1 + loss});
        served.awaitConnections(1 + loss);
        served.awaitHeld();
        ASSERT_TRUE(until(plc, [&] { return plc.state().phase == Phase::PROVING; })) << loss;
        plc.dispatch();
        expected.push_back({std::to_string(loss), Quality::LAST_KNOWN});
        ASSERT_EQ(coursesOf(seen.samples), expected) << loss;
        served.release();
        expected.push_back({std::to_string(1 + loss), Quality::GOOD});
        ASSERT_TRUE(until(plc, [&] { return seen.endsWith(std::to_string(1 + loss)); })) << loss;
    }
    EXPECT_EQ(coursesOf(seen.samples), expected);
    EXPECT_EQ(plc.state().losses, 10u);
    EXPECT_EQ(plc.state().connections, 11u);
    for (const Sample &sample : seen.samples)
        EXPECT_EQ(sample.dropped, 0u);
}

TEST_F(Watching, CallsAnUnchangedValueGoodAgainAfterALoss)
{
    served.set(0, {7});
    served.holdAll();
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    plc.dispatch();
    served.release();
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("7"); }));
    served.hangUp();
    ASSERT_TRUE(until(plc, [&] { return seen.samples.size() == 4; }));
    const std::vector<Expected> course = {{"", Quality::NOT_CONNECTED}, {"7", Quality::GOOD}, {"7", Quality::LAST_KNOWN}, {"7", Quality::GOOD}};
    EXPECT_EQ(coursesOf(seen.samples), course);
    EXPECT_EQ(seen.samples[2].utc, seen.samples[1].utc);
    EXPECT_GE(seen.samples[3].steady, seen.samples[1].steady);
}

TEST_F(Watching, GivesASlowApplicationTheLastValueAndTheCountOfTheOthers)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0", "DM:1", "DM:2"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    seen.samples.clear();
    for (int change = 1; change <= 25; ++change) {
        served.set(0, {change, change % 5 == 0 ? change : served.dm(1)});
        served.awaitRound();
    }
    plc.dispatch();
    ASSERT_EQ(seen.samples.size(), 2u); // DM:2 has not changed
    EXPECT_EQ(seen.samples[0].text, "25");
    EXPECT_EQ(seen.samples[0].dropped, 24u);
    EXPECT_EQ(seen.samples[1].text, "25");
    EXPECT_EQ(seen.samples[1].dropped, 4u);
    served.set(0, {30});
    ASSERT_TRUE(until(plc, [&] { return seen.samples.size() == 3; }));
    EXPECT_EQ(seen.samples[2].text, "30");
    EXPECT_EQ(seen.samples[2].dropped, 0u);
}

// However the calls fall, the samples and the counts of those left out add up to the changes.
TEST_F(Watching, LosesNoChangeFromTheCount)
{
    Plc plc = Plc::open(config());
    std::uint64_t told = 0;
    Value last;
    const Watch watch = plc.watch({"DM:0"}, [&](const Samples &samples) {
        for (const Sample &sample : samples) {
            told += 1 + sample.dropped;
            last = sample.value;
        }
    });
    ASSERT_TRUE(until(plc, [&] { return last == number(0); }));
    told = 0;
    for (int change = 1; change <= 60; ++change) {
        served.set(0, {change});
        served.awaitRound();
        if (change % 7 == 0)
            plc.dispatch();
    }
    plc.dispatch();
    EXPECT_EQ(last, number(60));
    EXPECT_EQ(told, 60u);
}

TEST_F(Watching, CountsForEachWatchAlone)
{
    Plc plc = Plc::open(config());
    Seen seen, other;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    served.set(0, {1});
    served.awaitRound();
    const Watch second = plc.watch({"DM:0"}, other.call());
    served.set(0, {2});
    served.awaitRound();
    plc.dispatch();
    EXPECT_EQ(seen.samples.back().dropped, 1u);
    ASSERT_EQ(other.samples.size(), 1u);
    EXPECT_EQ(other.samples[0].text, "2");
    EXPECT_EQ(other.samples[0].dropped, 1u); // the first sample, of the value 1
}

TEST_F(Watching, TellsWhatThePlcRefusesToRead)
{
    served.rule([](const Request &request) {
        return Treatment{Treatment::ANSWER, request.isRead() && request.address <= 500 && request.address + request.count > 500 ? 0x1101U : 0U};
    });
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:500", "DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return plc.snapshot({"DM:500"})[0].quality == Quality::REFUSED && plc.snapshot({"DM:0"})[0].quality == Quality::GOOD; }));
    EXPECT_EQ(plc.snapshot({"DM:500"})[0].text, "");
}

TEST_F(Watching, ShowsAPendingWriteUntilItWasReadBack)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    holdWrites();
    const Operation write = plc.write({{"DM:0", number(9)}}, [](const Outcomes &) {});
    served.awaitHeld();
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0", Quality::WRITE_PENDING); }));
    served.release();
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("9"); }));
}

TEST_F(Watching, BringsValuesWithTheTypesOfTheirItems)
{
    served.set(0, {0xFFFE, 0x0000, 0x3FC0, 0x4142, 0x1234, 0x8000});
    served.holdAll();
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0/s16", "DM:1/f32", "DM:3:1/string", "DM:4/bcd16", "DM:5/hex", "DM_bit:5.15"}, seen.call());
    plc.dispatch();
    served.release();
    ASSERT_TRUE(until(plc, [&] { return seen.samples.size() == 12; }));
    const std::vector<Value> expected = {number(-2), Value(1.5), Value(std::string("AB")), number(1234), number(0x8000), Value(true)};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(seen.samples[6 + i].value, expected[i]) << i;
}

TEST_F(Watching, NamesWhatDoesNotExist)
{
    Plc plc = Plc::open(config());
    for (const char *const item : {"DM:99999", "nowhere", "DM:0/f99", ""}) {
        EXPECT_THROW(static_cast<void>(plc.watch({"DM:0", item}, [](const Samples &) {})), fins::NameError) << item;
        EXPECT_THROW(static_cast<void>(plc.snapshot({item})), fins::NameError) << item;
    }
}

TEST_F(Snapshot, KnowsWatchedValuesOnly)
{
    served.set(0, {3, 4});
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("3"); }));
    const Samples samples = plc.snapshot({"DM:1", "DM:0"});
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[0].name, "DM:1");
    EXPECT_EQ(samples[0].quality, Quality::NOT_CONNECTED);
    EXPECT_EQ(samples[1].text, "3");
    EXPECT_EQ(samples[1].value, number(3));
    EXPECT_EQ(samples[1].index, 1u);
    EXPECT_EQ(samples[1].quality, Quality::GOOD);
}

TEST_F(Snapshot, IsNewerThanWhatWasDelivered)
{
    Plc plc = Plc::open(config());
    Seen seen;
    const Watch watch = plc.watch({"DM:0"}, seen.call());
    ASSERT_TRUE(until(plc, [&] { return seen.endsWith("0"); }));
    served.set(0, {5});
    served.awaitRound();
    EXPECT_EQ(plc.snapshot({"DM:0"})[0].text, "5");
    EXPECT_TRUE(seen.endsWith("0"));
}
