#include "loop_fixture.h"
#include "session/write_queue.h"
#include "session/write_report.h"

#include <atomic>
#include <optional>

// What is said of writes, and what follows from it for all of them.

namespace {

using Lines = std::vector<std::string>;

class Reporting : public Loop {
protected:
    Reporting() { options.wordsPerFrame = 2; }

    void begin(bool readsBack = true, bool keepGoing = false)
    {
        runtime = made();
        report.emplace(*runtime, readsBack);
        queue.emplace(*runtime, keepGoing);
    }

    void order(qint32 address, const std::vector<quint8> &words)
    {
        const Item item = dm(address, static_cast<qint32>(words.size()));
        std::vector<quint8> data;
        for (const quint8 word : words)
            data.insert(data.end(), {word, 0});
        report->add(itemText(item), item, ValueFormat(), data);
        queue->add(item, data);
        items.push_back(item);
        runtime->watch(items);
    }

    // Until all is known, or `isEnough`.
    template <typename Condition>
    void carryOut(Condition isEnough)
    {
        EXPECT_TRUE(stepUntil(*runtime, soon(), [&] {
            queue->pump();
            return (queue->settled() && report->settled()) || isEnough();
        }));
    }
    void carryOut() { carryOut([] { return false; }); }

    // The lines about writes, after the end.
    Lines told()
    {
        report->finish();
        Lines found;
        for (const std::string &line : lines) {
            if (line.find("connected to ") != 0 && line.find("link to ") != 0)
                found.push_back(line);
        }
        return found;
    }

    // A rule that has `deed` and `endCode` for requests with a command code, and for those of one address if it is given.
    void treat(unsigned command, Treatment::Deed deed, unsigned endCode = 0, int address = -1)
    {
        served.rule([=](const Request &request) {
            const bool isMeant = request.command == command && (address < 0 || request.address == address);
            return isMeant ? Treatment{deed, endCode} : Treatment();
        });
    }

    static constexpr unsigned READ = 0x0101, WRITE = 0x0102, RUN = 0x0401;

    std::unique_ptr<Runtime>   runtime;
    std::optional<WriteReport> report;
    std::optional<WriteQueue>  queue;
    std::vector<Item>          items;
};

} // namespace

TEST_F(Reporting, SaysThatThePlcHoldsTheValue)
{
    begin();
    order(10, {7, 8, 9});
    EXPECT_EQ(report->openItems().size(), 1u);
    carryOut();
    EXPECT_EQ(told(), Lines{"done: DM:10:3 = 7 8 9"});
    EXPECT_TRUE(report->verdict() == WriteVerdict::DONE);
    EXPECT_TRUE(report->openItems().empty());
}

// The command shows what was read back in its own way.
TEST_F(Reporting, GivesTheResultsInsteadWhereTheyAreAskedFor)
{
    treat(WRITE, Treatment::FORGET, 0, 20);
    begin();
    Lines results;
    report->onResult([&](const WriteReport::Order &written) {
        results.push_back(written.name + " = " + shownValue(written.format, *written.held));
    });
    report->leaveDifferencesOut();
    order(10, {7});
    order(20, {8});
    carryOut();
    EXPECT_EQ(told(), Lines());
    EXPECT_EQ(results, (Lines{"DM:10 = 7", "DM:20 = 0"}));
}

TEST_F(Reporting, SaysThatThePlcHoldsAnotherValue)
{
    treat(WRITE, Treatment::FORGET);
    begin();
    order(10, {7});
    carryOut();
    EXPECT_EQ(told(), Lines{"differs: DM:10 was to be 7, the PLC holds 0"});
    EXPECT_TRUE(report->verdict() == WriteVerdict::NOT_AS_ASKED);
}

// At once; a hint comes once for its end code. What is behind a refused frame of a write does not go out.
TEST_F(Reporting, SaysWhatThePlcRefuses)
{
    treat(WRITE, Treatment::ANSWER, 0x2101, 12);
    begin(true, true);
    order(10, {7, 8, 9});
    order(12 + 100, {1});
    order(12, {1});
    carryOut([this] { return served.writes().size() >= 2 && report->orders()[0].fate; });
    EXPECT_TRUE(report->orders()[0].fate == Fate::REFUSED);
    EXPECT_EQ(report->orders()[0].endCode, 0x2101);
    carryOut();
    EXPECT_EQ(told(), (Lines{"refused: DM:10:3: 2101 (read-only: the area cannot be written); the first 2 of 3 were written",
                             "hint: lift the write protection: CPU unit's DIP switch, UM protection or the unit's FINS settings",
                             "refused: DM:12: 2101 (read-only: the area cannot be written)",
                             "done: DM:112 = 1"}));
    EXPECT_TRUE(report->verdict() == WriteVerdict::NOT_AS_ASKED);
}

TEST_F(Reporting, SaysWhatWasAcceptedWhereItIsNotReadBack)
{
    begin(false);
    order(10, {7, 8, 9});
    carryOut([this] { return statistics.wordsWritten == 2; });
    EXPECT_FALSE(report->orders()[0].fate);
    carryOut([this] { return statistics.wordsWritten == 3; });
    EXPECT_EQ(told(), Lines{"accepted: DM:10:3 = 7 8 9"});
    EXPECT_TRUE(report->verdict() == WriteVerdict::DONE);
}

TEST_F(Reporting, SaysThatAnAnswerIsMissing)
{
    treat(WRITE, Treatment::HANG_UP);
    begin();
    order(10, {7});
    order(20, {8});
    carryOut();
    EXPECT_EQ(told(), (Lines{"no reply to the write of DM:10; it will be read back",
                             "unconfirmed: DM:10: the PLC holds 0 so far; the write may still arrive",
                             "not sent: DM:20: the command ended first"}));
    EXPECT_TRUE(report->verdict() == WriteVerdict::UNKNOWN);
}

TEST_F(Reporting, SaysThatAnAnswerIsMissingWhereNothingIsReadBack)
{
    treat(WRITE, Treatment::HANG_UP);
    begin(false);
    order(10, {7});
    carryOut();
    EXPECT_EQ(told(), Lines{"unconfirmed: DM:10: no reply to the write, and it is not to be read back"});
}

TEST_F(Reporting, SaysThatThePlcRefusesToReadItBack)
{
    treat(READ, Treatment::ANSWER, 0x1103, 10);
    begin();
    order(10, {7});
    order(20, {8}); // what the link is proved with
    carryOut();
    EXPECT_EQ(told(), (Lines{"the PLC refuses to read DM:10: 1103 (the first address is out of range)",
                             "unconfirmed: DM:10: the PLC acknowledged the write, and refuses to read it back",
                             "done: DM:20 = 8"}));
}

// An order that never went out, one of which a part did, and one that was not read back.
TEST_F(Reporting, SaysAtTheEndWhatIsNotKnown)
{
    begin();
    order(10, {7, 8, 9});
    order(20, {8});
    carryOut([this] { return served.writes().size() == 1; });
    EXPECT_EQ(told(), (Lines{"unconfirmed: DM:10:3: 2 of 3 were sent", "not sent: DM:20: the command ended first"}));
    EXPECT_TRUE(report->verdict() == WriteVerdict::UNKNOWN);
}

TEST_F(Reporting, SaysAtTheEndWhatWasNotReadBack)
{
    begin();
    order(10, {7});
    carryOut([this] { return statistics.wordsWritten == 1; });
    EXPECT_EQ(told(), Lines{"unconfirmed: DM:10: the PLC acknowledged the write, and it was not read back"});
}

// ---- The operating mode ------------------------------------------------------------------------------------------

TEST_F(Reporting, NamesTheModeThatConsentWouldAskFor)
{
    served.enterRunMode();
    begin();
    order(10, {7});
    carryOut();
    EXPECT_EQ(told(), Lines{"refused: DM:10: 2206 (wrong operating mode: the PLC is in RUN mode); the PLC would have to be "
                            "in MONITOR mode, for which --allow-mode-change asks it"});
}

TEST_F(Reporting, SaysThatTheModeWasChanged)
{
    served.enterRunMode();
    options.allowModeChange = true;
    begin();
    order(10, {7});
    carryOut();
    EXPECT_EQ(told(), (Lines{"asking the PLC for MONITOR mode", "the PLC is in MONITOR mode now", "done: DM:10 = 7"}));
    EXPECT_EQ(served.dm(10), 7);
    EXPECT_TRUE(report->verdict() == WriteVerdict::DONE);
}

TEST_F(Reporting, SaysThatTheModeIsNotChanged)
{
    served.enterRunMode();
    treat(RUN, Treatment::ANSWER, 0x2604);
    options.allowModeChange = true;
    begin();
    order(10, {7});
    carryOut();
    EXPECT_EQ(told(), (Lines{"asking the PLC for MONITOR mode",
                             "the PLC refuses the change to MONITOR mode: 2604 (the access is protected by a password)",
                             "refused: DM:10: 2206 (wrong operating mode: the PLC is in RUN mode)"}));
    EXPECT_TRUE(report->verdict() == WriteVerdict::NOT_AS_ASKED);
    EXPECT_TRUE(queue->settled());
    EXPECT_EQ(served.writes().size(), 1u);
    EXPECT_EQ(served.modeChanges(), 1);
}

TEST_F(Reporting, SaysThatTheModeMayHaveBeenChanged)
{
    served.enterRunMode();
    treat(RUN, Treatment::HANG_UP);
    options.allowModeChange = true;
    begin();
    order(10, {7});
    carryOut();
    EXPECT_EQ(told(), (Lines{"asking the PLC for MONITOR mode", "unconfirmed: the PLC may have been switched to MONITOR mode",
                             "refused: DM:10: 2206 (wrong operating mode: the PLC is in RUN mode)"}));
    EXPECT_TRUE(report->verdict() == WriteVerdict::UNKNOWN);
}
