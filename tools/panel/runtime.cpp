#include "runtime.h"

#include "change_feed.h"
#include "fins_codes.h"
#include "stop_flag.h"
#include "trace.h"
#include "watch_plan.h"

#include <algorithm>
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

Runtime::Runtime(const DriverLibrary &library, const LinkOptions &options)
    : library_(library), options_(options), link_(options.timeout), state_(Clock::now()), request_(), inFlight_(false),
      wasOnline_(false), writesSincePoll_(0)
{
    installChangeFeed(library_);
    const std::string property = std::to_string(options_.station) + "#0#0#" + std::to_string(options_.retries) + "#"
                                 + std::to_string(options_.wordsPerFrame);
    qint32 status = 0;
    library_.initProperty(LowMemory::address(memory_.sharedBlock()), 0, LowMemory::address(memory_.recipeBuffer()),
                         &status, property.c_str(), LowMemory::address(memory_.mutex()));
    reply_.reserve(static_cast<int>(ReplyAssembler::REPLY_LIMIT));
}

void Runtime::watch(const std::vector<Item> &items)
{
    QList<KEY_ADDRESS> plan = planWatch(items, options_.wordsPerFrame);
    library_.addrMerge(plan);
}

void Runtime::step(TimePoint wakeAt)
{
    if (state_.phase() != LinkPhase::WAITING) {
        exchange();
        if (options_.interval > Millis(0))
            sleepUntil(std::min(wakeAt, Clock::now() + options_.interval));
        return;
    }
    sleepUntil(std::min(wakeAt, state_.retryAt()));
    if (!stopRequested() && Clock::now() >= state_.retryAt())
        connect();
}

void Runtime::connect()
{
    if (link_.connect(options_.host, options_.port)) {
        state_.on(LinkEvent::CONNECTED, Clock::now());
        return;
    }
    if (stopRequested())
        return;
    state_.on(LinkEvent::LOST, Clock::now());
    std::cerr << "no link to " << peer() << ": " << link_.problem() << ", retrying in " << state_.delay().count()
              << " ms" << std::endl;
}

void Runtime::exchange()
{
    if (library_.getSendFrame(&request_) == 0) {
        sleepUntil(Clock::now() + IDLE_PAUSE);
        return;
    }
    inFlight_ = true;
    const std::size_t size = static_cast<std::size_t>(std::clamp<qint32>(request_.sendLen, 0, VALUE_BUFFER_SIZE));
    const RequestKind kind = requestKind(request_.frame, size);
    // Recipe frames carry the number of an earlier request.
    if (request_.requestId == REQUEST_ID_POLL && kind == RequestKind::READ && !recipeRunning())
        writesSincePoll_ = 0;
    if (options_.trace)
        traceFrame('>', request_.frame, size);
    const ExchangeStatus status = link_.exchange(request_.frame, size);
    if (options_.trace && status == ExchangeStatus::REPLY)
        traceFrame('<', link_.reply(), link_.replySize());
    else if (options_.trace)
        traceNoReply(link_.problem().c_str());
    if (status == ExchangeStatus::INTERRUPTED)
        return;
    if (status == ExchangeStatus::LOST) {
        lose(link_.problem());
        return;
    }
    const std::size_t replySize = status == ExchangeStatus::REPLY ? link_.replySize() : 0;
    const Judgement judgement = judgeReply(request_.frame, size, link_.reply(), replySize);
    problem_ = replySize == 0 ? link_.problem() : "the reply does not answer the request";
    handOver(kind, judgement);
}

// Gives the driver the reply, or an empty one where there is none that it should see: it would take a refused read of
// the right length for data, and any 24 bytes for node addresses.
void Runtime::handOver(RequestKind kind, const Judgement &judgement)
{
    if (judgement.verdict == Verdict::TCP_ERROR) {
        lose("FINS/TCP error " + tcpErrorText(judgement.code));
        return;
    }
    if (kind == RequestKind::HANDSHAKE && judgement.verdict != Verdict::GOOD) {
        lose(problem_ + " to the node-address request");
        return;
    }
    if (judgement.verdict == Verdict::REFUSED)
        sayRefusal(kind, judgement);
    const bool shown = judgement.verdict == Verdict::GOOD
                       || (judgement.verdict == Verdict::REFUSED && kind != RequestKind::READ);
    const std::size_t size = shown ? link_.replySize() : 0;
    reply_.resize(static_cast<int>(size));
    std::copy(link_.reply(), link_.reply() + size, reply_.data());
    const qint32 result = library_.dealRcvFrame(reply_, info_);
    if (result == DEAL_ACCEPTED)
        accepted(kind);
    else if (judgement.verdict == Verdict::GOOD)
        problem_ = "the driver rejects the reply";
    for (const auto &call : exchangeCalls_)
        call({request_, kind, judgement, result == DEAL_ACCEPTED});
    if (result != DEAL_DROPPED)
        return;
    inFlight_ = false; // the driver has closed the job itself
    lose(problem_ + ", " + std::to_string(options_.retries) + " times in a row");
}

void Runtime::accepted(RequestKind kind)
{
    // The request that a mode change was put before is still in the driver.
    inFlight_ = kind == RequestKind::MODE_CHANGE;
    if (kind == RequestKind::HANDSHAKE) {
        state_.on(LinkEvent::HANDSHAKE_ACCEPTED, Clock::now());
        std::cerr << "connected to " << peer() << ": this node " << int(link_.reply()[REPLY_CLIENT_NODE])
                  << ", PLC node " << int(link_.reply()[REPLY_SERVER_NODE]) << std::endl;
    } else if (kind == RequestKind::READ) {
        state_.on(LinkEvent::READ_ACCEPTED, Clock::now());
        wasOnline_ = true;
    } else if (kind == RequestKind::MODE_CHANGE) {
        std::cerr << "the PLC was asked for MONITOR mode" << std::endl;
    }
}

// A refusal that comes again and again is said once.
void Runtime::sayRefusal(RequestKind kind, const Judgement &judgement)
{
    const std::string code = endCodeText(static_cast<std::uint16_t>(judgement.code));
    problem_ = "the PLC refuses " + code;
    std::string text = "the PLC refuses the change to MONITOR mode: ";
    if (kind != RequestKind::MODE_CHANGE)
        text = std::string("the PLC refuses to ") + (kind == RequestKind::READ ? "read " : "write ")
               + itemText(request_.regType, request_.address, request_.count) + ": ";
    if (saidRefusals_.insert(text + code).second)
        std::cerr << text << code << std::endl;
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

void Runtime::lose(const std::string &reason)
{
    link_.close();
    // While it awaits the node addresses the driver is unconnected anyway, and asks for them again.
    if (inFlight_ && state_.phase() != LinkPhase::HANDSHAKING)
        makeUnconnected();
    inFlight_ = false;
    memory_.setFlag(RECIPE_WRITE_FLAG, false);
    memory_.setFlag(RECIPE_READ_FLAG, false);
    state_.on(LinkEvent::LOST, Clock::now());
    std::cerr << "link to " << peer() << " lost: " << reason << ", retrying in " << state_.delay().count() << " ms"
              << std::endl;
    for (const auto &call : lostCalls_)
        call();
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
