#include "commands/commands.h"

#include "commands/ending.h"
#include "commands/plc_facts.h"
#include "link/fins_codes.h"
#include "session/ask.h"
#include "session/diagnosis.h"
#include "terminal/stop_flag.h"
#include "values/awaited_words.h"
#include "values/tags.h"

#include <cstdio>
#include <iostream>

namespace {

const std::size_t BAR_WIDTH = 40;

void printStep(const char *name, const std::string &text)
{
    std::printf("%-12s %s\n", name, text.c_str());
    std::fflush(stdout);
}

std::string inMillis(Clock::duration duration)
{
    return millisText(std::chrono::duration_cast<Micros>(duration)) + " ms";
}

// The first word of every word area, as the driver names and describes them.
std::vector<Item> firstWords(const DriverLibrary &library)
{
    QList<QString> names;
    library.getRegListByType(1, names);
    std::vector<Item> items;
    for (int i = 0; i < static_cast<int>(names.size()); ++i) {
        QList<QString> fields;
        library.getRegDiscription(names.at(i), fields);
        items.push_back({names.at(i), fields.size() > 1 ? fields.at(1).toInt() : 0, 1, false});
    }
    return items;
}

// One run of the command, step after step. A step returns false if the next one makes no sense.
class LinkCheck {
public:
    LinkCheck(const DriverLibrary &library, const LinkOptions &link) : runtime_(library, link)
    {
        runtime_.messages().redirect([](const Message &) {});
        calls_.push_back(runtime_.onLost([this] { isLost_ = true; }));
        calls_.push_back(runtime_.onExchange([this](const Exchange &exchange) { note(exchange); }));
        areas_ = firstWords(library);
        runtime_.watch(areas_);
    }

    int run(long count)
    {
        if (!connect() || !shakeHands() || !readAreas() || !describe() || !measure(count))
            return programStop().isStopped() ? EXIT_NO_LINK : explain();
        if (refused_ > 0) {
            printStep("result", "the PLC answers, but refuses " + std::to_string(refused_) + " of "
                                    + std::to_string(areas_.size()) + " areas");
            return EXIT_REFUSED;
        }
        printStep("result", "a panel can work with this PLC");
        return EXIT_DONE;
    }

private:
    bool connect();
    bool shakeHands();
    bool readAreas();
    bool describe();
    template <typename Content>
    void describe(const char *name, Answer<Content> read(Runtime &, TimePoint, Turn), Facts facts(const Content &));
    bool measure(long count);
    void printArea(bool refused);
    void note(const Exchange &exchange);
    bool step();
    int explain() const;

    Runtime           runtime_;
    std::vector<Item> areas_;
    std::vector<Item> answered_; // of these, the ones that the PLC lets read
    Judgement         judgement_{Verdict::NO_ANSWER, 0}; // of the latest read
    FRAME_PRO         read_{};                           // the latest read
    bool              isLeftOut_ = false;                // since the PLC refuses it
    std::size_t       refused_ = 0;
    bool              isLost_  = false;
    bool              isMute_  = false; // leaves a question about the PLC itself without an answer
    std::vector<CallHandle> calls_;
};

void LinkCheck::note(const Exchange &exchange)
{
    if (exchange.kind != RequestKind::READ)
        return;
    judgement_ = exchange.judgement;
    read_      = exchange.request;
    isLeftOut_ = exchange.leftOut;
}

// Returns false if the link is lost.
bool LinkCheck::step()
{
    judgement_ = {Verdict::NO_ANSWER, 0};
    isLeftOut_ = false;
    isLost_    = false;
    runtime_.step(TimePoint::max());
    return !programStop().isStopped() && !isLost_;
}

bool LinkCheck::connect()
{
    const LinkOptions &options = runtime_.options();
    runtime_.step(TimePoint::max());
    const TcpLink &link = runtime_.link();
    const bool isUp = runtime_.phase() == LinkPhase::HANDSHAKING;
    if (link.address().empty()) {
        printStep("resolve", options.host + " failed");
        return false;
    }
    printStep("resolve", options.host + " is " + link.address() + ", " + inMillis(link.resolveTime()));
    printStep("connect", "TCP port " + options.port + (isUp ? ", " : " failed after ") + inMillis(link.connectTime()));
    return isUp;
}

bool LinkCheck::shakeHands()
{
    if (!step() || runtime_.phase() != LinkPhase::PROVING) {
        printStep("handshake", "failed");
        return false;
    }
    printStep("handshake", "this computer is node " + std::to_string(runtime_.clientNode()) + ", the PLC is node "
                               + std::to_string(runtime_.serverNode()) + ", " + inMillis(runtime_.roundTrip()));
    return true;
}

Facts statusFacts(const PlcStatus &status)
{
    Facts facts = modeFacts(status);
    for (const Fact &fact : errorFacts(status))
        facts.push_back(fact);
    return facts;
}

Facts clockNow(const PlcTime &time)
{
    return clockFacts(time, std::chrono::system_clock::now());
}

Facts cycleFacts(const CycleTime &cycle)
{
    return {{"cycle time", "average " + cycleText(cycle.average) + ", min " + cycleText(cycle.shortest) + ", max "
                               + cycleText(cycle.longest), "", nullptr}};
}

// What the PLC says of itself. Returns false if the link is lost.
bool LinkCheck::describe()
{
    isLost_ = false;
    describe("model", readController, nameFacts);
    describe("mode", readStatus, statusFacts);
    describe("clock", readClock, clockNow);
    describe("cycle time", readCycleTime, cycleFacts);
    return !programStop().isStopped() && !isLost_;
}

// A PLC that does not know a question, or leaves it without an answer, can be worked with all the same.
template <typename Content>
void LinkCheck::describe(const char *name, Answer<Content> read(Runtime &, TimePoint, Turn),
                         Facts facts(const Content &))
{
    if (isLost_ || isMute_)
        return;
    const Answer<Content> answer = read(runtime_, Clock::now() + 2 * runtime_.options().timeout, Turn::AWAITED);
    isMute_ = answer.reply.end == ServiceEnd::NO_ANSWER && answer.reply.data.empty();
    if (answer)
        std::cout << factLines(facts(*answer)) << std::flush;
    else if (answer.reply.end == ServiceEnd::REFUSED)
        printStep(name, "not known: " + answer.reply.problem);
    else
        printStep(name, "not known: " + answer.reply.problem + (isMute_ ? ", so nothing more is asked" : ""));
}

// Steps until every area has been answered; the order is the driver's.
bool LinkCheck::readAreas()
{
    AwaitedWords awaited;
    awaited.expect(areas_);
    while (!awaited.complete()) {
        if (!step())
            return false;
        if (judgement_.verdict != Verdict::GOOD && !isLeftOut_)
            continue;
        if (awaited.settle(read_.regType, read_.address, read_.count) > 0)
            printArea(isLeftOut_);
    }
    return true;
}

void LinkCheck::printArea(bool refused)
{
    const Item item = {read_.regType, read_.address, read_.count, false};
    if (!refused) {
        answered_.push_back(item);
        printStep("read", itemText(item) + " = " + decodeValues(ValueFormat(), runtime_.values(item)) + ", "
                              + inMillis(runtime_.roundTrip()));
        return;
    }
    const auto code = static_cast<std::uint16_t>(judgement_.code);
    ++refused_;
    printStep("read", itemText(item) + " refused: " + endCodeText(code));
    printStep("", "hint: " + endCodeHint(code));
}

bool LinkCheck::measure(long count)
{
    if (answered_.empty())
        return true;
    runtime_.watch(answered_);
    Durations trips;
    while (trips.count() < static_cast<std::size_t>(count)) {
        if (!step())
            return false;
        if (judgement_.verdict == Verdict::GOOD)
            trips.add(runtime_.roundTrip());
    }
    printStep("round trip", std::to_string(trips.count()) + " reads of one word: " + spreadText(trips) + " ms");
    for (const std::string &line : trips.histogram(BAR_WIDTH))
        printStep("", line);
    const unsigned long missing = runtime_.statistics().rejected();
    if (missing > 0)
        printStep("loss", std::to_string(missing) + (missing == 1 ? " reply" : " replies") + " missing or wrong");
    return true;
}

int LinkCheck::explain() const
{
    const LinkOptions &options = runtime_.options();
    const Peer peer = {options.host, options.port, runtime_.link().address(), options.timeout};
    const Diagnosis diagnosis = diagnose(runtime_.trouble(), peer, runtime_.link().strayBytes());
    printStep("result", "no link");
    std::fflush(stdout);
    std::cerr << "fins_panel: " << diagnosis.problem << std::endl;
    for (const std::string &remedy : diagnosis.remedies)
        std::cerr << "  try: " << remedy << std::endl;
    return EXIT_NO_LINK;
}

} // namespace

int runLink(const DriverLibrary &library, const LinkOptions &link, long count)
{
    LinkOptions measured = link;
    measured.roundTrips = true;
    return LinkCheck(library, measured).run(count);
}
