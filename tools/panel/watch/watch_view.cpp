#include "watch/watch_view.h"

#include "common/time_text.h"

WatchView::WatchView(Runtime &runtime, const TagBook &book, const std::vector<Tag> &tags, WatchValues &values,
                     WatchWrites &writes)
    : runtime_(runtime), values_(values), editor_(book, tags, values.values(), writes), rate_(0), ratedRequests_(0),
      ratedAt_(Clock::now()),
      table_(editor_, [this] { return editor_.rows(); },
             [this](TableContent &content, TimePoint now) { fillHead(content, now); }, runtime.messages())
{
    runtime.onTick([this] { tick(); });
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) {
        if (exchange.judgement.verdict == Verdict::REFUSED || !runtime_.isSteady())
            cycle_.restart(); // the block with which the cycle began may not be polled as it was
        else if (exchange.kind == RequestKind::READ && exchange.judgement.verdict != Verdict::NO_ANSWER)
            cycle_.note(exchange.request.regType, exchange.request.address, Clock::now());
    }));
    calls_.push_back(runtime.onLost([this] { cycle_.restart(); }));
    values.onEvent([this](const WatchEvent &event) {
        if (event.value.quality == Quality::GOOD)
            table_.noteGood(static_cast<std::size_t>(&event.value - values_.values().data()), event.value.text);
    });
}

WatchView::~WatchView()
{
    runtime_.onTick(nullptr);
    values_.onEvent(nullptr);
}

void WatchView::tick()
{
    measureRate(Clock::now());
    table_.tick();
}

void WatchView::measureRate(TimePoint now)
{
    if (now - ratedAt_ < std::chrono::seconds(1))
        return;
    const unsigned long requests = runtime_.statistics().requests;
    rate_          = perSecond(requests - ratedRequests_, now - ratedAt_);
    ratedRequests_ = requests;
    ratedAt_       = now;
}

std::string WatchView::linkText(TimePoint now) const
{
    if (runtime_.phase() == LinkPhase::PROVING || runtime_.phase() == LinkPhase::ONLINE)
        return runtime_.answering() ? "online" : "no answer";
    if (runtime_.phase() == LinkPhase::HANDSHAKING)
        return "handshake";
    return now >= runtime_.retryAt() ? "connecting" : retryText(runtime_.retryAt() - now);
}

void WatchView::fillHead(TableContent &content, TimePoint now) const
{
    content.peer   = runtime_.options().host + ":" + runtime_.options().port;
    content.link   = linkText(now);
    content.isUp   = runtime_.phase() > LinkPhase::HANDSHAKING && runtime_.answering();
    content.cycle  = cycle_.all().count() > 0 ? millisText(cycle_.latest()) + " ms" : "";
    content.requestsPerSecond = rate_;
    content.errors = runtime_.statistics().errorCount();
}
