#include "watch/watch_view.h"

#include "common/time_text.h"
#include "terminal/stop_flag.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>

static const std::size_t COURSE_LENGTH = 60;

WatchView::WatchView(Runtime &runtime, const WatchValues &values)
    : runtime_(runtime), values_(values), style_(styleOfEnvironment()), courses_(values.values().size()),
      first_(0), rate_(0), ratedRequests_(0), ratedAt_(Clock::now()), sampleAt_(ratedAt_), drawAt_(ratedAt_),
      terminal_(std::in_place)
{
    runtime.messages().redirect([this](const Message &message) { recent_.add(message); });
    runtime.onTick([this] { tick(); });
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) {
        if (exchange.judgement.verdict == Verdict::REFUSED || !runtime_.isSteady())
            cycle_.restart(); // the block with which the cycle began may not be polled as it was
        else if (exchange.kind == RequestKind::READ && exchange.judgement.verdict != Verdict::NO_ANSWER)
            cycle_.note(exchange.request.regType, exchange.request.address, Clock::now());
    }));
    calls_.push_back(runtime.onLost([this] { cycle_.restart(); }));
}

WatchView::~WatchView()
{
    runtime_.onTick(nullptr);
    terminal_.reset();
    runtime_.messages().redirect(nullptr);
    recent_.sayTo(runtime_.messages());
}

void WatchView::tick()
{
    const TimePoint now = Clock::now();
    const bool isResized = terminal_->resized();
    terminal_->sendOn();
    if (now < drawAt_ && !isResized)
        return;
    drawAt_ = now + REDRAW;
    terminal_->suspendIfAsked();
    takeKeys();
    sample(now);
    measureRate(now);
    first_ = std::min(first_, lastTop(values_.values().size(), terminal_->size()));
    if (terminal_->isReady())
        terminal_->show(renderTable(content(now), terminal_->size(), style_));
}

void WatchView::takeKeys()
{
    for (Keystroke stroke = terminal_->readKey(); stroke.key != Key::NONE; stroke = terminal_->readKey()) {
        if (stroke.text == "q" || stroke.text == "Q")
            programStop().stop();
        else if (stroke.text == "k" || stroke.text == "j")
            scroll(stroke.text == "k" ? Key::UP : Key::DOWN);
        else
            scroll(stroke.key);
    }
}

void WatchView::scroll(Key key)
{
    const std::size_t page = visibleRows(terminal_->size());
    const std::size_t last = lastTop(values_.values().size(), terminal_->size());
    switch (key) {
    case Key::UP:        first_ -= std::min<std::size_t>(first_, 1); break;
    case Key::DOWN:      first_ += 1; break;
    case Key::PAGE_UP:   first_ -= std::min(first_, page); break;
    case Key::PAGE_DOWN: first_ += page; break;
    case Key::HOME:      first_ = 0; break;
    case Key::END:       first_ = last; break;
    default:             break;
    }
    first_ = std::min(first_, last);
}

static double numberOf(const std::string &text)
{
    char *end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    return end != text.c_str() && *end == '\0' ? number : std::numeric_limits<double>::infinity();
}

// After a pause of the program the steps that it missed are left out.
void WatchView::sample(TimePoint now)
{
    if (now < sampleAt_)
        return;
    sampleAt_ = std::max(sampleAt_ + COURSE_STEP, now);
    for (std::size_t i = 0; i < courses_.size(); ++i) {
        const WatchedValue &value = values_.values()[i];
        const bool known = value.quality == Quality::GOOD || value.quality == Quality::WRITE_PENDING;
        if (value.text.empty())
            continue;
        courses_[i].push_back(known ? numberOf(value.text) : std::numeric_limits<double>::quiet_NaN());
        if (courses_[i].size() > COURSE_LENGTH)
            courses_[i].erase(courses_[i].begin());
    }
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
    if (now >= runtime_.retryAt())
        return "connecting";
    const auto left = std::chrono::ceil<std::chrono::seconds>(runtime_.retryAt() - now);
    return "no link, retry in " + std::to_string(left.count()) + " s";
}

TableRow WatchView::row(std::size_t index, TimePoint now) const
{
    const WatchedValue &value = values_.values()[index];
    TableRow row = {value.name, value.text, value.format.unit, "-", value.quality, false, courses_[index]};
    if (value.changes > 0) {
        row.age   = ageText(now - value.changedAt);
        row.isNew = now - value.changedAt < NEW_FOR;
    }
    return row;
}

TableContent WatchView::content(TimePoint now) const
{
    TableContent content = {};
    content.peer   = runtime_.options().host + ":" + runtime_.options().port;
    content.link   = linkText(now);
    content.isUp   = runtime_.phase() > LinkPhase::HANDSHAKING && runtime_.answering();
    content.cycle  = cycle_.all().count() > 0 ? millisText(cycle_.latest()) + " ms" : "";
    content.requestsPerSecond = rate_;
    content.errors  = runtime_.statistics().errorCount();
    content.clock   = fmt::format("{:%H:%M:%S}", fmt::localtime(std::time(nullptr)));
    content.messages = recent_.lines(messageRows(terminal_->size()));
    content.first   = first_;
    for (std::size_t i = 0; i < values_.values().size(); ++i)
        content.rows.push_back(row(i, now));
    return content;
}
