#include "publish/outbox.h"

#include "common/numbers.h"
#include "publish/topics.h"

#include <algorithm>
#include <vector>

namespace {

constexpr Millis       STORE_PAUSE{50};   // what comes meanwhile is stored at once
constexpr Millis       FORGET_PAUSE{500}; // what was acknowledged is forgotten with what is stored, or so much later
constexpr Millis       FAILURE_PAUSE{1000};
constexpr auto         SAID_PAUSE = std::chrono::minutes(1);
constexpr std::size_t  FETCHED = 256; // after the program was killed, so many messages may be marked needlessly
constexpr std::size_t  BYTES_BESIDE = 200;  // that a message takes besides its texts, about
constexpr double       BURST_SECONDS = 0.05;

std::size_t bytesOf(const BrokerMessage &message)
{
    return message.topic.size() + message.payload.size() + BYTES_BESIDE;
}

std::int64_t millisOf(Outbox::SystemTime utc)
{
    return std::chrono::duration_cast<Millis>(utc.time_since_epoch()).count();
}

} // namespace

Outbox::Outbox(Spool &spool, const OutboxOptions &options, Hand hand, Say say)
    : spool_(spool), options_(options), hand_(std::move(hand)), say_(std::move(say)), repeatedUpTo_(spool.mark())
{
}

void Outbox::add(BrokerMessage message)
{
    pendingBytes_ += bytesOf(message);
    if (message.retain)
        latest_[message.topic] = message;
    pending_.push_back(std::move(message));
    boundMemory();
}

void Outbox::boundMemory()
{
    while (pendingBytes_ > options_.memory && pending_.size() > 1) {
        pendingBytes_ -= bytesOf(pending_.front());
        pending_.pop_front();
        ++lost_;
    }
}

void Outbox::announce(const std::string &topic, const std::string &payload)
{
    announced_[topic] = payload;
    toAnnounce_.insert(topic);
}

// ---- The connection ----------------------------------------------------------------------------------------------

void Outbox::onConnected(TimePoint now)
{
    isConnected_ = true;
    tokens_      = 1;
    refilledAt_  = now;
    for (const auto &[topic, payload] : announced_)
        toAnnounce_.insert(topic);
    if (handed_ == 0)
        return;
    for (const auto &[topic, message] : latest_)
        toRefresh_.insert(topic);
}

void Outbox::onLost()
{
    isConnected_  = false;
    repeatedUpTo_ = std::max(repeatedUpTo_, sent_);
    std::vector<Flight> unstored;
    for (auto &[number, flight] : inFlight_) {
        if (flight.message.id > 0)
            sent_ = std::min(sent_, flight.message.id - 1);
        else if (flight.isSample)
            unstored.push_back(std::move(flight));
    }
    const auto isLater = [](const Flight &one, const Flight &other) { return one.number > other.number; };
    std::sort(unstored.begin(), unstored.end(), isLater);
    for (Flight &flight : unstored) {
        flight.message.repeated = true;
        pendingBytes_ += bytesOf(flight.message);
        pending_.push_front(std::move(flight.message));
    }
    inFlight_.clear();
    unstored_ = 0;
    window_.clear();
}

void Outbox::onAcknowledged(int number)
{
    const auto found = inFlight_.find(number);
    if (found == inFlight_.end())
        return;
    const Flight &flight = found->second;
    if (flight.message.id > 0)
        done_.insert(flight.message.id);
    else if (flight.isSample)
        --unstored_;
    acknowledged_ += flight.isSample ? 1 : 0;
    inFlight_.erase(found);
}

// ---- The spool ---------------------------------------------------------------------------------------------------

bool Outbox::isStoreDue(TimePoint now) const
{
    return (!pending_.empty() && now >= nextStore_) || (!done_.empty() && now >= nextStore_ + FORGET_PAUSE);
}

// What found no room in the spool is in flight before what comes later, and may have to be stored before it yet.
// Returns why it cannot be written, or "".
std::string Outbox::store(SystemTime utc)
{
    static const std::deque<BrokerMessage> NONE;
    const std::int64_t keep = !isConnected_ ? 0 : window_.empty() ? sent_ : window_.back().id;
    if (unstored_ > 0 && done_.empty())
        return problem_; // nothing that could be tried
    const auto &added = unstored_ > 0 ? NONE : pending_;
    if (spool_.commit(added, done_, keep, millisOf(utc))) {
        done_.clear();
        if (isConnected_)
            tokens_ += static_cast<double>(added.size());
        if (unstored_ == 0) {
            pending_.clear();
            pendingBytes_ = 0;
        }
        return "";
    }
    const std::string problem = spool_.problem();
    if (!added.empty() && spool_.commit(NONE, done_, keep, millisOf(utc)))
        done_.clear(); // which makes room
    return problem;
}

void Outbox::noteStored(const std::string &problem, TimePoint now)
{
    nextStore_ = now + (problem.empty() ? STORE_PAUSE : FAILURE_PAUSE);
    if (problem.empty() && isStalled())
        say_("the spool can be written again");
    else if (!problem.empty() && !isStalled())
        say_("the spool cannot be written: " + problem + "; what comes waits in memory meanwhile, make room");
    problem_ = problem;
}

void Outbox::sayLosses(TimePoint now)
{
    const std::int64_t dropped = spool_.dropped() - saidDropped_;
    if ((dropped == 0 && lost_ == 0) || now < nextSaid_)
        return;
    nextSaid_ = now + SAID_PAUSE;
    if (dropped > 0)
        say_("the spool has reached its limit: " + counted(static_cast<std::size_t>(dropped), "message")
             + " dropped unsent, the oldest first");
    if (lost_ > 0)
        say_("too much waits in memory: " + counted(static_cast<std::size_t>(lost_), "message")
             + " dropped unsent, the oldest first");
    saidDropped_ += dropped;
    lost_ = 0;
}

void Outbox::work(TimePoint now, SystemTime utc)
{
    refill(now);
    if (isStoreDue(now))
        noteStored(store(utc), now);
    sayLosses(now);
    handOver(utc);
}

void Outbox::finish(TimePoint now, SystemTime utc)
{
    onLost();
    noteStored(store(utc), now);
    if (isStalled())
        lost_ += static_cast<std::int64_t>(pending_.size());
    nextSaid_ = TimePoint::min();
    sayLosses(now);
}

TimePoint Outbox::due(TimePoint now) const
{
    const bool isWaiting = isConnected_ && inFlight_.size() < options_.inFlight && tokens_ < 1
                           && (!window_.empty() || sent_ < spool_.last() || !toRefresh_.empty());
    TimePoint next = isWaiting ? now + std::chrono::duration_cast<Millis>(std::chrono::duration<double>(
                                           (1 - tokens_) / options_.replayRate)) + Millis(1)
                               : TimePoint::max();
    if (!pending_.empty())
        next = std::min(next, nextStore_);
    if (!done_.empty())
        next = std::min(next, nextStore_ + FORGET_PAUSE);
    return next;
}

// ---- Handing over ------------------------------------------------------------------------------------------------

void Outbox::refill(TimePoint now)
{
    const double seconds = std::chrono::duration<double>(now - refilledAt_).count();
    const double most    = std::max(1.0, options_.replayRate * BURST_SECONDS);
    refilledAt_ = now;
    if (tokens_ < most) // what is new has brought more
        tokens_ = std::min(most, tokens_ + seconds * options_.replayRate);
}

void Outbox::handOver(SystemTime utc)
{
    while (isConnected_ && inFlight_.size() < options_.inFlight
           && (handAnnounced(utc) || (isHanding_ && tokens_ >= 1 && (handSample(utc) || handLatest(utc))))) {
    }
}

bool Outbox::handAnnounced(SystemTime utc)
{
    if (toAnnounce_.empty())
        return false;
    BrokerMessage message;
    message.topic   = *toAnnounce_.begin();
    message.payload = announced_[message.topic];
    message.at      = millisOf(utc);
    if (!hand(message, false, utc))
        return false;
    toAnnounce_.erase(toAnnounce_.begin());
    return true;
}

// Of the spool, what is handed over next. All of it is marked before.
void Outbox::fetch()
{
    if (!window_.empty() || sent_ >= spool_.last())
        return;
    std::vector<BrokerMessage> stored;
    if (!spool_.next(sent_, FETCHED, stored))
        return;
    const std::int64_t passed = stored.empty() ? spool_.last() : stored.back().id;
    if (passed > spool_.mark() && !spool_.setMark(passed))
        return;
    for (BrokerMessage &message : stored) {
        if (done_.count(message.id) == 0)
            window_.push_back(std::move(message));
    }
    if (window_.empty()) // all of them are gone
        sent_ = passed;
}

bool Outbox::handSample(SystemTime utc)
{
    fetch();
    if (unstored_ == 0 && !window_.empty()) {
        BrokerMessage &message = window_.front();
        message.repeated = message.repeated || message.id <= repeatedUpTo_;
        if (!hand(message, true, utc))
            return false;
        sent_ = message.id;
        window_.pop_front();
        return true;
    }
    const bool passesSpool = isStalled() && window_.empty() && sent_ >= spool_.last() && !pending_.empty();
    if (!passesSpool || !hand(pending_.front(), true, utc))
        return false;
    pendingBytes_ -= bytesOf(pending_.front());
    pending_.pop_front();
    ++unstored_;
    return true;
}

// Once all that waited was handed over, so that nothing newer is overtaken.
bool Outbox::handLatest(SystemTime utc)
{
    if (toRefresh_.empty() || !window_.empty() || sent_ < spool_.last() || !pending_.empty())
        return false;
    BrokerMessage message  = latest_.at(*toRefresh_.begin());
    message.repeated = true;
    return hand(message, false, utc); // which takes it off the list
}

bool Outbox::hand(const BrokerMessage &message, bool isSample, SystemTime utc)
{
    const int number = hand_(message.topic, payloadOf(message, utc), message.retain);
    if (number < 0)
        return false;
    if (isSample || toRefresh_.count(message.topic) > 0) {
        tokens_ -= 1;
        toRefresh_.erase(message.topic);
    }
    repeated_ += message.repeated ? 1 : 0;
    inFlight_[number] = {message, isSample, ++handed_};
    return true;
}

std::string Outbox::summary() const
{
    return counted(acknowledged_, "message") + " published, " + std::to_string(repeated_) + " marked as repeated; "
           + std::to_string(spool_.count()) + " wait in the spool";
}
