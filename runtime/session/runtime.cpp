#include "session/runtime.h"

#include "common/usage_error.h"
#include "driver/change_feed.h"
#include "link/fins_codes.h"
#include "link/fins_layout.h"
#include "link/trace.h"
#include "session/watch_plan.h"

#include <algorithm>
#include <cstring>
#include <iostream>

// What intf_dealRcvFrame answers.
enum {
    DEAL_ACCEPTED = 1,
    DEAL_DROPPED  = 2,
    DEAL_REJECTED = 8
};

static const qint32 REQUEST_ID_WRITE = 2;
static const qint32 REQUEST_ID_POLL  = 4; // the driver's own mark

// The driver serves up to five writes before a poll takes its turn.
static const int WRITES_BEFORE_POLL = 5;

static const Millis IDLE_PAUSE(10);

// The mode change is the second request in a row without an accepted reply.
static const qint32 MODE_CHANGE_RETRIES = 2;

Runtime::Runtime(const DriverLibrary &library, const LinkOptions &options)
    : library_(library), options_(options), link_(options.timeout, options.stop), state_(Clock::now(), options.spread), plan_(options.refusedPause),
      request_(), hasSwitched_(false), needsNodes_(false), inFlight_(false), isPoll_(false), lastSid_(0),
      wasOnline_(false), writesSincePoll_(0), statistics_(options.statistics ? *options.statistics : ownStatistics_),
      answering_(false), clientNode_(0), serverNode_(0), roundTrip_(0)
{
    if (options_.allowModeChange && options_.retries < MODE_CHANGE_RETRIES)
        throw UsageError("--allow-mode-change needs --retries 2 or more: with 1 the driver drops the link instead");
    if (options_.quiet)
        messages_.hush();
    installChangeFeed(library_, false);
    configure();
    reply_.reserve(static_cast<int>(ReplyAssembler::REPLY_LIMIT));
    if (options_.trace == TraceMode::LINE || options_.trace == TraceMode::FULL) {
        link_.onLate([this](const std::uint8_t *frame, std::size_t size) {
            traceNoReply(options_.trace, "a late reply, dropped:");
            traceFrame(options_.trace, '<', frame, size);
        });
    }
}

void initDriver(const DriverLibrary &library, const LowMemory &memory, const LinkOptions &options)
{
    const std::string property = std::to_string(options.station) + "#0#0#" + std::to_string(options.retries) + "#"
                                 + std::to_string(options.wordsPerFrame);
    qint32 status = 0;
    library.initProperty(LowMemory::address(memory.sharedBlock()), 0, LowMemory::address(memory.recipeBuffer()),
                         &status, property.c_str(), LowMemory::address(memory.mutex()));
}

void Runtime::configure()
{
    initDriver(library_, memory_, options_);
}

void Runtime::setWordsPerFrame(qint32 wordsPerFrame)
{
    options_.wordsPerFrame = wordsPerFrame;
    inFlight_ = false;
    configure();
}

void Runtime::watch(const std::vector<Item> &items)
{
    watched_ = items;
    setPlan();
}

void Runtime::keep(const std::vector<Item> &items)
{
    kept_ = items;
    setPlan();
}

void Runtime::setPlan()
{
    std::vector<Item> items = watched_;
    items.insert(items.end(), kept_.begin(), kept_.end());
    plan_.set(items, options_.wordsPerFrame);
    handOverPlan();
}

void Runtime::beginTurn()
{
    if (plan_.hasNextTurn(plan_.leavesAnyOut() ? Clock::now() : TimePoint()))
        handOverPlan();
}

// The job that meets the node addresses is a read, and comes again with the next cycle.
void Runtime::handOverPlan()
{
    QList<KEY_ADDRESS> turn = plan_.nextTurn();
    library_.addrMerge(turn);
    plan_.begin(turn);
    handOverNodes();
}

void Runtime::handOverNodes()
{
    if (!needsNodes_ || library_.getSendFrame(&request_) == 0)
        return;
    QByteArray nodes = nodes_;
    library_.dealRcvFrame(nodes, info_);
    needsNodes_ = false;
}

// The PLC's refusal is its answer. The driver is not shown it, but told of missing replies until it closes the read,
// and its link with it: no job is running then.
void Runtime::refuseRead(const Judgement &judgement)
{
    const auto endCode = static_cast<std::uint16_t>(judgement.code);
    const bool isRepeated = isPassing(endCode);
    qint32 result = DEAL_REJECTED;
    reply_.resize(0);
    do {
        result = library_.dealRcvFrame(reply_, info_);
    } while (result == DEAL_REJECTED && !isRepeated);
    const bool isClosed = result == DEAL_DROPPED;
    const bool leftOut = isClosed && (!isPoll_ || plan_.refuse(polledBlock(), endCode, !isRepeated, Clock::now()));
    Exchange exchange = {request_, RequestKind::READ, judgement, false};
    exchange.leftOut = leftOut;
    exchangeCalls_.tell(exchange);
    if (!isClosed)
        return;
    inFlight_ = false;
    state_.on(LinkEvent::NODES_FORGOTTEN, sentAt_);
    needsNodes_ = true;
    handOverPlan();
    sayRefusedReads();
}

static std::string readRefusalText(const Item &block)
{
    return "the PLC refuses to read " + itemText(block) + ": ";
}

void Runtime::noteRead()
{
    for (const Item &block : plan_.noteRead(polledBlock())) {
        saidRefusals_.forget(readRefusalText(block));
        messages_.say(itemText(block) + " can be read again");
    }
    sayRefusedReads();
}

// Of what is refused again and again it is said once, and the hint follows the last one that it is for.
void Runtime::sayRefusedReads()
{
    std::vector<PollPlan::Refusal> fresh;
    for (const PollPlan::Refusal &refusal : plan_.takeRefusals()) {
        if (saidRefusals_.isNew(readRefusalText(refusal.block) + endCodeText(refusal.endCode)))
            fresh.push_back(refusal);
    }
    for (std::size_t i = 0; i < fresh.size(); ++i) {
        const std::uint16_t endCode = fresh[i].endCode;
        const bool isLast = i + 1 == fresh.size() || fresh[i + 1].endCode != endCode;
        messages_.say(readRefusalText(fresh[i].block) + endCodeText(endCode), isLast ? endCodeHint(endCode) : "");
    }
}

// The driver has nothing to send: everything is refused.
void Runtime::idle()
{
    if (!link_.pauseUntil(Clock::now() + IDLE_PAUSE))
        loseInPause();
}

void Runtime::step(TimePoint wakeAt)
{
    link_.setLimit(wakeAt);
    if (state_.phase() != LinkPhase::WAITING) {
        exchange();
        const bool pauses = options_.interval > Millis(0) && state_.phase() != LinkPhase::WAITING;
        if (pauses && !link_.pauseUntil(std::min(wakeAt, Clock::now() + options_.interval)))
            loseInPause();
        return;
    }
    link_.pauseUntil(std::min(wakeAt, state_.retryAt()));
    if (!isStopped() && Clock::now() >= state_.retryAt())
        connect();
}

void Runtime::connect()
{
    attemptCalls_.tell();
    if (link_.connect(options_.host, options_.port)) {
        ++statistics_.connections;
        state_.on(LinkEvent::CONNECTED, Clock::now());
        return;
    }
    // An attempt that the end of the command cuts short tells less than the one before.
    const bool isCutShort = isStopped() || link_.isOver();
    if (!isCutShort || trouble_.failure == LinkFailure::NONE)
        trouble_ = {link_.failure(), 0, LinkPhase::WAITING, link_.problem()};
    if (isCutShort)
        return;
    state_.on(LinkEvent::LOST, Clock::now());
    ++statistics_.losses;
    statistics_.noteError("no link to " + peer() + ": " + link_.problem());
    if (!isUnreachable())
        messages_.sayCourse("no link to " + peer() + ": " + link_.problem() + ", retrying in "
                            + std::to_string(state_.delay().count()) + " ms");
}

bool Runtime::isUnreachable() const
{
    const LinkFailure failure = trouble_.failure;
    const bool isDefinite = failure == LinkFailure::REFUSED || failure == LinkFailure::NOT_RESOLVED
                            || failure == LinkFailure::UNREACHABLE;
    return options_.endsUnreachable && isDefinite && trouble_.phase == LinkPhase::WAITING && !wasOnline_;
}

// Sends the request and awaits its reply.
ExchangeStatus Runtime::transfer(RequestKind kind, std::size_t size)
{
    // Recipe frames carry the number of an earlier request.
    isPoll_ = request_.requestId == REQUEST_ID_POLL && kind == RequestKind::READ && !recipeRunning();
    if (isPoll_)
        writesSincePoll_ = 0;
    ++statistics_.requests;
    if (kind == RequestKind::WRITE || kind == RequestKind::MODE_CHANGE)
        orderCalls_.tell(request_, kind);
    return send(request_.frame, size);
}

ExchangeStatus Runtime::send(const std::uint8_t *frame, std::size_t size)
{
    const bool traced = options_.trace != TraceMode::NONE;
    if (traced)
        traceFrame(options_.trace, '>', frame, size);
    sentAt_ = Clock::now();
    const ExchangeStatus status = link_.exchange(frame, size, sentAt_);
    if (options_.roundTrips)
        roundTrip_ = std::chrono::duration_cast<Micros>(Clock::now() - sentAt_);
    if (traced && status == ExchangeStatus::REPLY)
        traceFrame(options_.trace, '<', link_.reply(), link_.replySize());
    else if (traced)
        traceNoReply(options_.trace, link_.problem().c_str());
    return status;
}

void Runtime::count(ExchangeStatus status, const Judgement &judgement)
{
    if (status == ExchangeStatus::REPLY) {
        ++statistics_.replies;
        if (options_.roundTrips)
            statistics_.roundTrips.add(roundTrip_);
    }
    answering_ = judgement.verdict == Verdict::GOOD || judgement.verdict == Verdict::REFUSED;
    if (judgement.verdict == Verdict::REFUSED)
        ++statistics_.refused;
    else if (status == ExchangeStatus::LOST || link_.failure() == LinkFailure::SILENCE
             || link_.failure() == LinkFailure::CUT_REPLY)
        ++statistics_.missing;
    else if (judgement.verdict == Verdict::NO_ANSWER)
        ++statistics_.wrong;
}

void Runtime::exchange()
{
    if (!inFlight_ && plan_.turnIsOver())
        beginTurn();
    if (library_.getSendFrame(&request_) == 0) {
        idle();
        return;
    }
    // A request that the driver holds on to keeps its service ID; every other one has the next.
    if (inFlight_ && request_.frame[FINS_SID] == lastSid_)
        ++statistics_.retries;
    lastSid_ = request_.frame[FINS_SID];
    inFlight_ = true;
    const std::size_t size = static_cast<std::size_t>(std::clamp<qint32>(request_.sendLen, 0, VALUE_BUFFER_SIZE));
    const RequestKind kind = requestKind(request_.frame, size);
    if (kind == RequestKind::MODE_CHANGE && !options_.allowModeChange) {
        closeJob();
        return;
    }
    const ExchangeStatus status = transfer(kind, size);
    if (status == ExchangeStatus::INTERRUPTED)
        return;
    const std::size_t replySize = status == ExchangeStatus::REPLY ? link_.replySize() : 0;
    const Judgement judgement = judgeReply(request_.frame, size, link_.reply(), replySize);
    count(status, judgement);
    if (status == ExchangeStatus::LOST) {
        lose(link_.problem(), link_.failure());
        return;
    }
    if (judgement.verdict != Verdict::GOOD)
        problem_ = replySize == 0 ? link_.problem() : flawText(judgement.flaw, request_.frame, link_.reply());
    handOver(kind, judgement);
}

// Gives the driver the reply, or an empty one where there is none that it should see: it would take a refused read of
// the right length for data, and any 24 bytes for node addresses.
void Runtime::handOver(RequestKind kind, const Judgement &judgement)
{
    const LinkFailure failure = link_.failure() == LinkFailure::NONE ? LinkFailure::WRONG_PROTOCOL : link_.failure();
    if (judgement.verdict == Verdict::TCP_ERROR) {
        lose("FINS/TCP error " + tcpErrorText(judgement.code), LinkFailure::TCP_ERROR, judgement.code,
             tcpErrorHint(judgement.code));
        return;
    }
    if (kind == RequestKind::HANDSHAKE && judgement.verdict != Verdict::GOOD) {
        lose("no node addresses: " + problem_, judgement.flaw == Flaw::NODES ? LinkFailure::BAD_NODES : failure);
        return;
    }
    if (judgement.verdict == Verdict::REFUSED) {
        refuse(kind, judgement);
        return;
    }
    if (kind == RequestKind::MODE_CHANGE && judgement.verdict == Verdict::GOOD) {
        endModeChange(judgement);
        return;
    }
    const std::size_t size = judgement.verdict == Verdict::GOOD ? link_.replySize() : 0;
    reply_.resize(static_cast<int>(size));
    std::memcpy(reply_.data(), link_.reply(), size);
    const qint32 result = library_.dealRcvFrame(reply_, info_);
    if (result == DEAL_ACCEPTED)
        accepted(kind);
    else if (judgement.verdict == Verdict::GOOD)
        problem_ = "the driver rejects the reply";
    if (result != DEAL_ACCEPTED)
        noteRejection(judgement);
    exchangeCalls_.tell({request_, kind, judgement, result == DEAL_ACCEPTED});
    if (result != DEAL_DROPPED)
        return;
    inFlight_ = false; // the driver has closed the job itself
    lose(problem_ + (options_.retries > 1 ? ", " + std::to_string(options_.retries) + " times in a row" : ""), failure);
}

// The PLC answers with an end code. What is refused in the end is said elsewhere: of reads by sayRefusedReads(), of
// writes and mode changes by who ordered them.
void Runtime::refuse(RequestKind kind, const Judgement &judgement)
{
    const std::string code = endCodeText(static_cast<std::uint16_t>(judgement.code));
    problem_ = "the PLC refuses " + code;
    statistics_.noteError(refusalText(kind) + code);
    if (kind == RequestKind::MODE_CHANGE)
        endModeChange(judgement);
    else if (kind == RequestKind::WRITE)
        refuseWrite(judgement);
    else
        refuseRead(judgement);
}

void Runtime::refuseWrite(const Judgement &judgement)
{
    const bool switches = startModeChange(judgement);
    exchangeCalls_.tell({request_, RequestKind::WRITE, judgement, false, switches});
    if (!switches)
        closeJob();
}

// Lets the driver put its RUN command before the write that was refused. It looks for the end code alone, so it gets
// the reply without the flags of the CPU unit. Returns false if the PLC's mode is not to be changed, or was changed for
// nothing, or if the driver gives up, after other replies that were missing.
bool Runtime::startModeChange(const Judgement &judgement)
{
    const auto endCode = static_cast<std::uint16_t>(judgement.code);
    if (!options_.allowModeChange || hasSwitched_ || !isModeEndCode(endCode))
        return false;
    reply_.resize(static_cast<int>(link_.replySize()));
    std::memcpy(reply_.data(), link_.reply(), link_.replySize());
    reply_[FINS_END]     = static_cast<char>(plainEndCode(endCode) >> 8);
    reply_[FINS_END + 1] = static_cast<char>(plainEndCode(endCode) & 0xFF);
    return library_.dealRcvFrame(reply_, info_) == DEAL_REJECTED;
}

// The PLC has answered; the driver's job, the refused write, is over in any case.
void Runtime::endModeChange(const Judgement &judgement)
{
    const FRAME_PRO request = request_;
    hasSwitched_ = judgement.verdict == Verdict::GOOD;
    closeJob();
    exchangeCalls_.tell({request, RequestKind::MODE_CHANGE, judgement, judgement.verdict == Verdict::GOOD});
}

void Runtime::noteNodes()
{
    state_.on(LinkEvent::HANDSHAKE_ACCEPTED, Clock::now());
    nodes_ = QByteArray(reply_.constData(), reply_.size()); // leaves the reply its reserved room
    clientNode_ = link_.reply()[CLIENT_NODE + 3];
    serverNode_ = link_.reply()[SERVER_NODE + 3];
    messages_.sayCourse("connected to " + peer() + ": this node " + std::to_string(clientNode_) + ", PLC node "
                        + std::to_string(serverNode_));
}

void Runtime::accepted(RequestKind kind)
{
    inFlight_ = false;
    if (kind == RequestKind::HANDSHAKE) {
        noteNodes();
    } else if (kind == RequestKind::READ) {
        state_.on(LinkEvent::READ_ACCEPTED, sentAt_);
        wasOnline_ = true;
        statistics_.wordsRead += static_cast<unsigned long>(request_.count);
        if (isPoll_)
            plan_.countPoll();
        if (plan_.awaitsAny())
            noteRead();
    } else if (kind == RequestKind::WRITE) {
        statistics_.wordsWritten += static_cast<unsigned long>(request_.count);
        hasSwitched_ = false;
    }
}

std::string Runtime::refusalText(RequestKind kind) const
{
    if (kind == RequestKind::MODE_CHANGE)
        return "the PLC refuses the change to MONITOR mode: ";
    return std::string("the PLC refuses to ") + (kind == RequestKind::READ ? "read " : "write ")
           + itemText(request_.regType, request_.address, request_.count) + ": ";
}

// Counts what was rejected for another reason than an end code.
void Runtime::noteRejection(const Judgement &judgement)
{
    if (judgement.verdict == Verdict::GOOD) {
        ++statistics_.wrong;
        answering_ = false;
    }
    statistics_.noteError(problem_);
}

// Closes the job in progress as failed and makes the driver start with the handshake: only the driver itself can drop
// its link, after as many missing replies as it is configured for. Any job that it picks meanwhile is a read.
void Runtime::makeUnconnected()
{
    for (qint32 i = 0; i <= options_.retries; ++i) {
        library_.getSendFrame(&request_);
        reply_.resize(0);
        if (library_.dealRcvFrame(reply_, info_) == DEAL_DROPPED)
            return;
    }
}

// Closes the job in progress as failed, while the connection stands: the driver then takes itself for unconnected, and
// gets the node addresses of the connection once more. A recipe transfer ends with its job.
void Runtime::closeJob()
{
    makeUnconnected();
    inFlight_ = false;
    memory_.setFlag(RECIPE_WRITE_FLAG, false);
    memory_.setFlag(RECIPE_READ_FLAG, false);
    state_.on(LinkEvent::NODES_FORGOTTEN, sentAt_);
    needsNodes_ = true;
    handOverNodes();
}

// The driver has no request in flight and takes itself for connected.
void Runtime::loseInPause()
{
    inFlight_ = true;
    lose(link_.problem(), link_.failure());
}

void Runtime::lose(const std::string &reason, LinkFailure failure, std::uint32_t tcpError, const std::string &hint)
{
    link_.close();
    trouble_ = {failure, tcpError, state_.phase(), reason};
    // While it awaits the node addresses the driver is unconnected anyway, and asks for them again.
    if (inFlight_ && state_.phase() != LinkPhase::HANDSHAKING)
        makeUnconnected();
    inFlight_ = false;
    needsNodes_ = false;
    if (plan_.putBack())
        handOverPlan();
    answering_ = false;
    memory_.setFlag(RECIPE_WRITE_FLAG, false);
    memory_.setFlag(RECIPE_READ_FLAG, false);
    state_.on(LinkEvent::LOST, Clock::now());
    ++statistics_.losses;
    statistics_.noteError("link to " + peer() + " lost: " + reason);
    messages_.sayCourse("link to " + peer() + " lost: " + reason + ", retrying in "
                        + std::to_string(state_.delay().count()) + " ms", hint);
    lostCalls_.tell();
}

bool Runtime::canWrite() const
{
    return state_.phase() == LinkPhase::ONLINE && !inFlight_ && writesSincePoll_ < WRITES_BEFORE_POLL
           && !recipeRunning();
}

void Runtime::write(const Item &item, const std::vector<quint8> &data)
{
    ++writesSincePoll_;
    library_.setData(VARIABLE_TAG, item.regType, item.address, item.count, data.data(), REQUEST_ID_WRITE);
}

void Runtime::startRecipe(std::size_t flag)
{
    memory_.setFlag(flag, true);
}

bool Runtime::recipeRunning() const
{
    return memory_.flag(RECIPE_WRITE_FLAG) || memory_.flag(RECIPE_READ_FLAG);
}

std::vector<quint8> Runtime::values(const Item &item) const
{
    std::vector<quint8> bytes(item.byteSize());
    library_.getData(VARIABLE_TAG, item.regType, item.address, item.count, bytes.data());
    return bytes;
}
