#include "plc/engine.h"

#include "plc/value_text.h"
#include "session/diagnosis.h"

#include <algorithm>
#include <future>
#include <map>
#include <random>
#include <string_view>

namespace fins {

namespace {

// With nothing to watch a word is read now and then: only reads prove that the link works.
const Millis IDLE_INTERVAL(500);

Item probe()
{
    return {QLatin1String("DM"), 0, 1, false};
}

Phase phaseOf(LinkPhase phase)
{
    switch (phase) {
    case LinkPhase::WAITING:     return Phase::WAITING;
    case LinkPhase::HANDSHAKING: return Phase::HANDSHAKE;
    case LinkPhase::PROVING:     return Phase::PROVING;
    case LinkPhase::ONLINE:      return Phase::ONLINE;
    }
    return Phase::WAITING;
}

std::vector<Item> itemsOf(const std::vector<RecipeEntry> &entries)
{
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const RecipeEntry &entry : entries)
        items.push_back(entry.item);
    return items;
}

Outcomes outcomesOf(const WriteReport &report)
{
    Outcomes outcomes;
    for (const WriteReport::Order &order : report.orders()) {
        Outcome outcome;
        outcome.name    = order.name;
        outcome.fate    = order.fate.value_or(Fate::NOT_SENT);
        outcome.wanted  = shownValue(order.format, order.data);
        outcome.held    = order.held ? shownValue(order.format, *order.held) : "";
        outcome.endCode = outcome.fate == Fate::REFUSED ? order.endCode : std::uint16_t(0);
        outcome.text    = order.text;
        outcomes.push_back(std::move(outcome));
    }
    return outcomes;
}

// A sample of each value of the entry, without a value.
std::vector<Sample> samplesOf(const RecipeEntry &entry, std::vector<Item> &items)
{
    Tag tag;
    tag.name   = entryName(entry);
    tag.item   = entry.item;
    tag.format = entry.format;
    for (const WatchedValue &value : singleValues({tag}))
        items.push_back(value.item);
    return firstSamples({tag});
}

} // namespace

Engine::Engine(const Setup &setup, EventQueue &queue) : setup_(setup), queue_(queue)
{
    state_.since = setup.utc();
    std::promise<void> made;
    std::future<void> isMade = made.get_future();
    thread_ = std::thread([this, promise = std::move(made)]() mutable {
        try {
            LinkOptions options = setup_.link;
            options.stop   = &stop_;
            options.spread = std::random_device()() | 1U;
            runtime_ = std::make_unique<Runtime>(*setup_.library, options);
        } catch (...) {
            promise.set_exception(std::current_exception());
            return;
        }
        promise.set_value();
        run();
    });
    try {
        isMade.get();
    } catch (...) {
        thread_.join();
        throw;
    }
}

void Engine::close()
{
    const std::lock_guard<std::mutex> closing(closeMutex_);
    if (isClosed_)
        return;
    stop_.stop();
    {
        const std::lock_guard<std::mutex> lock(runtimeMutex_);
        if (runtime_)
            runtime_->abort();
    }
    thread_.join();
    isClosed_ = true;
}

// ---- From any thread ---------------------------------------------------------------------------------------------

void Engine::wake()
{
    hasOrders_ = true;
    stop_.wake();
}

void Engine::fill(Samples &samples) const
{
    queue_.inspect([&] {
        for (Sample &sample : samples) {
            for (const std::shared_ptr<Subscription> &subscription : known_) {
                for (const Sample &latest : subscription->latest()) {
                    if (latest.name != sample.name || sample.quality != Quality::NOT_CONNECTED)
                        continue;
                    const std::size_t index = sample.index;
                    sample = latest;
                    sample.index   = index;
                    sample.dropped = 0;
                }
            }
        }
    });
}

void Engine::add(const std::shared_ptr<Subscription> &subscription)
{
    fill(subscription->latest());
    queue_.post([&](const auto &enqueue) {
        known_.push_back(subscription);
        for (std::size_t i = 0; i < subscription->latest().size(); ++i)
            subscription->changed(i);
        enqueue(subscription);
    });
    {
        const std::lock_guard<std::mutex> lock(ordersMutex_);
        subscriptions_.push_back(subscription);
        isReplanned_ = true;
    }
    wake();
}

void Engine::add(const std::shared_ptr<Undertaking> &undertaking)
{
    undertaking->deadline = setup_.steady() + undertaking->options.giveUp;
    {
        const std::lock_guard<std::mutex> lock(ordersMutex_);
        if (!isClosing_) {
            orders_.push_back(undertaking);
            wake();
            return;
        }
    }
    endUnsent(undertaking, "the link is closed");
}

void Engine::add(const std::shared_ptr<Listener<State>> &listener)
{
    queue_.post([&](const auto &enqueue) {
        stateListeners_.push_back(listener);
        listener->add(state_);
        enqueue(listener);
    });
}

void Engine::add(const std::shared_ptr<Listener<std::string>> &listener)
{
    queue_.post([&](const auto &) { messageListeners_.push_back(listener); });
}

template <typename List>
static void dropEnded(List &list)
{
    list.erase(std::remove_if(list.begin(), list.end(), [](const auto &target) { return target->hasEnded(); }), list.end());
}

void Engine::forgetEnded()
{
    queue_.inspect([this] {
        dropEnded(known_);
        dropEnded(stateListeners_);
        dropEnded(messageListeners_);
    });
    {
        const std::lock_guard<std::mutex> lock(ordersMutex_);
        const std::size_t before = subscriptions_.size();
        dropEnded(subscriptions_);
        isReplanned_ = isReplanned_ || subscriptions_.size() < before;
    }
    wake();
}

State Engine::state() const
{
    State state;
    queue_.inspect([&] { state = state_; });
    return state;
}

// ---- The thread --------------------------------------------------------------------------------------------------

void Engine::run()
{
    runtime_->messages().redirect([this](const Message &message) {
        post(message.text);
        if (!message.hint.empty())
            post("hint: " + message.hint);
    }, false);
    values_ = std::make_unique<WatchValues>(*runtime_, [this] { return openItems(); });
    values_->onEvent([this](const WatchEvent &event) { noteEvent(event); });
    calls_.push_back(runtime_->onExchange([this](const Exchange &) { postChanges(); }));
    calls_.push_back(runtime_->onLost([this] { postChanges(); }));
    calls_.push_back(runtime_->onAttempt([this] { noteState(true); }));
    plan();
    while (!stop_.isStopped()) {
        takeOrders();
        carryOn();
        const bool waits = runtime_->phase() == LinkPhase::WAITING && nextDeadline_ != TimePoint::max();
        runtime_->step(waits ? Clock::now() + (nextDeadline_ - setup_.steady()) : TimePoint::max());
        noteState(false);
    }
    endAll();
}

void Engine::takeOrders()
{
    if (!hasOrders_.exchange(false))
        return;
    stop_.clear();
    bool isReplanned = false;
    {
        const std::lock_guard<std::mutex> lock(ordersMutex_);
        for (std::shared_ptr<Undertaking> &order : orders_) {
            if (order->kind == Undertaking::Kind::ASK)
                inquiries_.emplace_back(std::move(order));
            else
                waiting_.push_back(std::move(order));
        }
        orders_.clear();
        isReplanned = std::exchange(isReplanned_, false);
    }
    if (isReplanned)
        plan();
    dropUnsent();
}

// Ends what waits and was cancelled, or has waited too long.
void Engine::dropUnsent()
{
    const TimePoint now = setup_.steady();
    std::deque<std::shared_ptr<Undertaking>> kept;
    for (const std::shared_ptr<Undertaking> &waiting : waiting_) {
        const bool isLate = now >= waiting->deadline;
        if (isLate || waiting->stage == Undertaking::Stage::CANCELLED) {
            waiting->cancelUnsent();
            endUnsent(waiting, isLate ? "it could not be sent in time" : "it was cancelled");
            continue;
        }
        kept.push_back(waiting);
    }
    waiting_ = std::move(kept);
    dropInquiries(now);
    noteDeadlines();
}

void Engine::dropInquiries(TimePoint now)
{
    const auto isDropped = [&](Inquiry &inquiry) {
        const bool isCancelled = inquiry.order().isToCancel;
        const bool isLate = now >= inquiry.order().deadline;
        if (isCancelled || isLate)
            endInquiry(inquiry, isCancelled ? "it was cancelled" : "no answer in time");
        return isCancelled || isLate;
    };
    inquiries_.erase(std::remove_if(inquiries_.begin(), inquiries_.end(), isDropped), inquiries_.end());
}

void Engine::noteDeadlines()
{
    nextDeadline_ = active_ ? active_->deadline : TimePoint::max();
    for (const std::shared_ptr<Undertaking> &waiting : waiting_)
        nextDeadline_ = std::min(nextDeadline_, waiting->deadline);
    for (const Inquiry &inquiry : inquiries_)
        nextDeadline_ = std::min(nextDeadline_, inquiry.order().deadline);
}

void Engine::carryOn()
{
    if (!active_ && waiting_.empty() && inquiries_.empty())
        return;
    if (setup_.steady() >= nextDeadline_)
        dropUnsent();
    inquire();
    if (active_)
        advanceWrite();
    while (!active_ && !waiting_.empty() && !stop_.isStopped()) {
        const std::shared_ptr<Undertaking> next = waiting_.front();
        waiting_.pop_front();
        if (next->kind == Undertaking::Kind::WRITE) {
            beginWrite(next);
            advanceWrite();
        } else {
            transfer(next);
        }
    }
}

// ---- Values ------------------------------------------------------------------------------------------------------

// The words that are polled are those of all watches. What is known of a value stays known.
void Engine::plan()
{
    std::map<std::string, Watched> times;
    for (std::size_t i = 0; i < watched_.size(); ++i)
        times[values_->values()[i].name] = watched_[i];
    std::vector<std::shared_ptr<Subscription>> subscriptions;
    {
        const std::lock_guard<std::mutex> lock(ordersMutex_);
        subscriptions = subscriptions_;
    }
    std::vector<Tag> tags;
    for (const std::shared_ptr<Subscription> &subscription : subscriptions)
        tags.insert(tags.end(), subscription->tags().begin(), subscription->tags().end());
    const std::vector<Item> others = tags.empty() ? std::vector<Item>{probe()} : std::vector<Item>();
    values_->watch(tags, others);
    const std::vector<WatchedValue> &values = values_->values();
    watched_.assign(values.size(), Watched());
    isChanged_.assign(values.size(), false);
    changed_.clear();
    changed_.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto known = times.find(values[i].name);
        if (known != times.end())
            watched_[i] = known->second;
        watched_[i].places.clear();
    }
    place(subscriptions);
    if (active_)
        pollWritten();
    isIdle_ = tags.empty();
    setInterval();
}

// Finds for each value who is told of it, and tells what is known already.
void Engine::place(const std::vector<std::shared_ptr<Subscription>> &subscriptions)
{
    const std::vector<WatchedValue> &values = values_->values();
    std::map<std::string_view, std::size_t> indexOf;
    for (std::size_t i = 0; i < values.size(); ++i)
        indexOf[values[i].name] = i;
    queue_.post([&](const auto &enqueue) {
        for (const std::shared_ptr<Subscription> &subscription : subscriptions) {
            std::vector<Sample> &latest = subscription->latest();
            for (std::size_t i = 0; i < latest.size(); ++i) {
                const std::size_t value = indexOf.at(latest[i].name);
                watched_[value].places.push_back({subscription, i});
                if (latest[i].text == values[value].text && latest[i].quality == values[value].quality)
                    continue;
                update(latest[i], value);
                if (subscription->changed(i))
                    enqueue(subscription);
            }
        }
    });
}

void Engine::setInterval()
{
    const Millis idle = isIdle_ ? std::max(setup_.link.interval, IDLE_INTERVAL) : setup_.link.interval;
    runtime_->setInterval(report_ || isTransferring_ ? Millis(0) : idle);
}

void Engine::noteEvent(const WatchEvent &event)
{
    const auto index = static_cast<std::size_t>(&event.value - values_->values().data());
    if (changed_.empty()) {
        exchangeUtc_    = setup_.utc();
        exchangeSteady_ = setup_.steady();
    }
    if (event.kind != WatchEvent::QUALITY || event.value.quality == Quality::GOOD) {
        watched_[index].utc    = exchangeUtc_;
        watched_[index].steady = exchangeSteady_;
    }
    if (isChanged_[index])
        return;
    isChanged_[index] = true;
    changed_.push_back(index);
}

void Engine::update(Sample &sample, std::size_t value) const
{
    const WatchedValue &watched = values_->values()[value];
    sample.text    = watched.text;
    sample.value   = watched.text.empty() ? Value() : valueOf(watched.format, watched.bytes);
    sample.quality = watched.quality;
    sample.utc     = watched_[value].utc;
    sample.steady  = watched_[value].steady;
}

// The changes of one exchange go out together.
void Engine::postChanges()
{
    if (changed_.empty())
        return;
    queue_.post([this](const auto &enqueue) {
        for (const std::size_t value : changed_) {
            isChanged_[value] = false;
            for (const Place &place : watched_[value].places) {
                update(place.subscription->latest()[place.index], value);
                if (place.subscription->changed(place.index))
                    enqueue(place.subscription);
            }
        }
    });
    changed_.clear();
}

std::vector<Item> Engine::openItems() const
{
    return report_ ? report_->openItems() : std::vector<Item>();
}

// ---- State -------------------------------------------------------------------------------------------------------

void Engine::noteState(bool isAttempt)
{
    Phase phase = isAttempt ? Phase::CONNECTING : phaseOf(runtime_->phase());
    // A refused request makes the driver forget the node addresses, which it is given again at once.
    const bool wasOnline = state_.phase == Phase::ONLINE || state_.phase == Phase::SILENT;
    if (phase == Phase::ONLINE || (phase == Phase::PROVING && wasOnline))
        phase = runtime_->answering() ? Phase::ONLINE : Phase::SILENT;
    const Statistics &statistics = runtime_->statistics();
    if (phase == state_.phase && statistics.losses == state_.losses && statistics.connections == state_.connections)
        return;
    State state = state_;
    const auto now = setup_.utc();
    if (phase != state.phase)
        state.since = now;
    state.phase       = phase;
    state.connections = statistics.connections;
    state.losses      = statistics.losses;
    state.ownNode     = runtime_->clientNode();
    state.plcNode     = runtime_->serverNode();
    if (phase == Phase::WAITING)
        state.nextAttempt = now + std::chrono::duration_cast<std::chrono::system_clock::duration>(runtime_->retryAt() - Clock::now());
    describeTrouble(state);
    postState(state);
}

void Engine::describeTrouble(State &state) const
{
    state.reason.clear();
    state.remedies.clear();
    const bool hasLink = state.phase == Phase::PROVING || state.phase == Phase::ONLINE || state.phase == Phase::SILENT;
    if (hasLink || runtime_->trouble().failure == LinkFailure::NONE)
        return;
    const LinkOptions &options = runtime_->options();
    const Diagnosis diagnosis = diagnose(runtime_->trouble(), {options.host, options.port, runtime_->link().address(), options.timeout},
                                         runtime_->link().strayBytes());
    state.reason   = diagnosis.problem;
    state.remedies = diagnosis.remedies;
}

void Engine::postState(const State &state)
{
    queue_.post([&](const auto &enqueue) {
        state_ = state;
        for (const auto &listener : stateListeners_) {
            listener->add(state_);
            enqueue(listener);
        }
    });
}

void Engine::post(const std::string &line)
{
    queue_.post([&](const auto &enqueue) {
        for (const auto &listener : messageListeners_) {
            listener->add(line);
            enqueue(listener);
        }
    });
}

// ---- Writes ------------------------------------------------------------------------------------------------------

void Engine::beginReport(const Undertaking &undertaking)
{
    report_ = std::make_unique<WriteReport>(*runtime_, undertaking.options.verify);
    for (const RecipeEntry &entry : undertaking.entries)
        report_->add(entryName(entry), entry.item, entry.format, entry.values);
    values_->notePending();
    postChanges();
    setInterval();
}

Outcomes Engine::endReport(const std::string &reason)
{
    report_->finish(reason);
    Outcomes outcomes = outcomesOf(*report_);
    report_.reset();
    values_->notePending();
    postChanges();
    setInterval();
    return outcomes;
}

void Engine::beginWrite(const std::shared_ptr<Undertaking> &write)
{
    active_ = write;
    nextDeadline_ = std::min(nextDeadline_, write->deadline);
    beginReport(*write);
    writes_ = std::make_unique<WriteQueue>(*runtime_, write->options.keepGoing);
    for (const RecipeEntry &entry : write->entries)
        writes_->add(entry.item, entry.values);
    pollWritten();
}

// What is to be read back is polled for the write alone, unless it is watched.
void Engine::pollWritten()
{
    const std::vector<Item> items = itemsOf(active_->entries);
    if (isReadBack_ || !active_->options.verify || values_->covers(items))
        return;
    isReadBack_ = true;
    runtime_->watch(items);
}

void Engine::advanceWrite()
{
    const bool isNew    = active_->stage != Undertaking::Stage::BEGUN;
    const bool mayBegin = !isNew || runtime_->canWrite();
    const bool isCancelled = active_->isToCancel && active_->stage == Undertaking::Stage::CANCELLED;
    if (isCancelled || (mayBegin && !active_->begin()))
        endWrite("it was cancelled");
    else if (setup_.steady() >= active_->deadline)
        endWrite(mayBegin ? "no answer in time" : "it could not be sent in time");
    else if (mayBegin)
        pumpWrite(isNew);
}

// Who cancels was told that something was sent as soon as the write has begun: then the first of it is.
void Engine::pumpWrite(bool isNew)
{
    if (active_->isToCancel && !isNew)
        writes_->drop();
    writes_->pump();
    if (writes_->settled() && report_->settled())
        endWrite(active_->isToCancel ? "it was cancelled" : "a write before it was not done");
}

void Engine::endWrite(const std::string &reason)
{
    const std::shared_ptr<Undertaking> write = std::exchange(active_, nullptr);
    noteDeadlines();
    writes_.reset();
    Outcomes outcomes = endReport(reason);
    if (std::exchange(isReadBack_, false))
        runtime_->watch({});
    queue_.post([&](const auto &enqueue) {
        write->end(std::move(outcomes));
        enqueue(write);
    });
    std::this_thread::yield(); // on the only core who waits for the outcome goes before the next request
}

void Engine::endUnsent(const std::shared_ptr<Undertaking> &undertaking, const std::string &reason)
{
    if (undertaking->kind == Undertaking::Kind::ASK) {
        Inquiry inquiry(undertaking);
        endInquiry(inquiry, reason);
        return;
    }
    Outcomes outcomes;
    RecipeValues values;
    for (const RecipeEntry &entry : undertaking->entries) {
        Outcome outcome;
        outcome.name   = entryName(entry);
        outcome.wanted = shownValue(entry.format, entry.values);
        outcome.text   = "not sent: " + outcome.name + ": " + reason;
        outcomes.push_back(std::move(outcome));
        std::vector<Item> items;
        for (Sample &sample : samplesOf(entry, items))
            values.values.push_back(std::move(sample));
    }
    queue_.post([&](const auto &enqueue) {
        if (undertaking->kind == Undertaking::Kind::READ_RECIPE)
            undertaking->end(std::move(values));
        else
            undertaking->end(std::move(outcomes));
        enqueue(undertaking);
    });
}

// ---- Inquiries ---------------------------------------------------------------------------------------------------

void Engine::inquire()
{
    while (!inquiries_.empty()) {
        Inquiry &first = inquiries_.front();
        first.advance(*runtime_, Clock::now() + (first.order().deadline - setup_.steady()));
        if (!first.isOver())
            return;
        endInquiry(first, "");
        inquiries_.pop_front();
        noteDeadlines();
    }
}

void Engine::endInquiry(Inquiry &inquiry, const std::string &reason)
{
    queue_.post([&](const auto &enqueue) {
        inquiry.order().end(inquiry.end(reason));
        enqueue(inquiry.target());
    });
}

// ---- Recipes -----------------------------------------------------------------------------------------------------

// A transfer steps the loop itself; what else is ordered meanwhile is taken, and waits.
void Engine::transfer(const std::shared_ptr<Undertaking> &recipe)
{
    const bool isWrite = recipe->kind == Undertaking::Kind::WRITE_RECIPE;
    noteDeadlines(); // its own is the transfer's
    isTransferring_ = true;
    setInterval();
    if (isWrite)
        beginReport(*recipe);
    Outcomes outcomes;
    RecipeValues values;
    {
        RecipeTransfer transfer(*runtime_, recipe->entries);
        transfer.onStep([this, recipe](bool hasBegun) { return goesOn(hasBegun, *recipe); });
        transfer.onProgress([&](std::size_t done, std::size_t all) {
            queue_.post([&](const auto &enqueue) {
                if (recipe->progress(done, all))
                    enqueue(recipe);
            });
        });
        const TimePoint end = Clock::now() + (recipe->deadline - setup_.steady());
        if (isWrite)
            outcomes = endReport(writeRecipe(transfer, *recipe, end));
        else
            values = readRecipe(transfer, *recipe, end);
    }
    runtime_->watch({});
    isTransferring_ = false;
    setInterval();
    queue_.post([&](const auto &enqueue) {
        if (isWrite)
            recipe->end(std::move(outcomes));
        else
            recipe->end(std::move(values));
        enqueue(recipe);
    });
}

bool Engine::goesOn(bool hasBegun, Undertaking &recipe)
{
    takeOrders();
    if (setup_.steady() >= nextDeadline_)
        dropUnsent();
    noteState(false);
    if (recipe.kind == Undertaking::Kind::READ_RECIPE)
        return !recipe.isToCancel && (!hasBegun || recipe.begin());
    if (hasBegun)
        return true;
    return runtime_->canWrite() ? recipe.begin() : !recipe.isToCancel;
}

// Returns why variables were not sent, if any were not.
std::string Engine::writeRecipe(RecipeTransfer &transfer, const Undertaking &recipe, TimePoint end)
{
    const TransferEnd written = transfer.write(end);
    if (!transfer.hasBegun())
        return recipe.isToCancel ? "it was cancelled" : "it could not be sent in time";
    if (!report_->settled())
        transfer.read(end);
    if (written == TransferEnd::REFUSED)
        return "the PLC refused what was to be written before it";
    return written == TransferEnd::CUT_OFF ? "the link was lost before" : "no answer in time";
}

RecipeValues Engine::readRecipe(RecipeTransfer &transfer, const Undertaking &recipe, TimePoint end) const
{
    RecipeValues result;
    const TransferEnd read = transfer.read(end);
    if (read == TransferEnd::DONE || read == TransferEnd::REFUSED)
        result.end = read == TransferEnd::DONE ? RecipeValues::End::DONE : RecipeValues::End::REFUSED;
    for (const RecipeEntry &entry : recipe.entries) {
        std::vector<Item> items;
        std::vector<Sample> samples = samplesOf(entry, items);
        const bool isRefused = read == TransferEnd::REFUSED && transfer.refused(entry.item);
        const std::vector<quint8> bytes = transfer.values(entry.item);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            Sample &sample = samples[i];
            sample.index = result.values.size();
            if (isRefused) {
                sample.quality = Quality::REFUSED;
            } else if (result.end != RecipeValues::End::NO_ANSWER) {
                const auto from = bytes.begin() + 2 * (items[i].address - entry.item.address);
                const std::vector<quint8> own(from, from + static_cast<std::ptrdiff_t>(items[i].byteSize()));
                sample.text    = decodeValues(entry.format, own);
                sample.value   = valueOf(entry.format, own);
                sample.quality = Quality::GOOD;
                sample.utc     = setup_.utc();
                sample.steady  = setup_.steady();
            }
            result.values.push_back(std::move(sample));
        }
    }
    return result;
}

// ---- The end -----------------------------------------------------------------------------------------------------

void Engine::endAll()
{
    if (active_)
        endWrite("the link was closed");
    {
        const std::lock_guard<std::mutex> lock(ordersMutex_);
        isClosing_ = true;
        waiting_.insert(waiting_.end(), orders_.begin(), orders_.end());
        orders_.clear();
    }
    for (const std::shared_ptr<Undertaking> &undertaking : std::exchange(waiting_, {}))
        endUnsent(undertaking, "the link was closed");
    for (Inquiry &inquiry : inquiries_)
        endInquiry(inquiry, "the link was closed");
    inquiries_.clear();
    State state = state_;
    state.phase = Phase::CLOSED;
    state.since = setup_.utc();
    values_->noteLost();
    postChanges();
    calls_.clear();
    values_.reset();
    {
        const std::lock_guard<std::mutex> lock(runtimeMutex_);
        runtime_.reset();
    }
    postState(state);
}

} // namespace fins
