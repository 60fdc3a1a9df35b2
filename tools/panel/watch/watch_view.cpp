#include "watch/watch_view.h"

#include "common/time_text.h"
#include "terminal/stop_flag.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <ctime>
#include <limits>

static const std::size_t COURSE_LENGTH = 60;

WatchView::WatchView(Runtime &runtime, const TagBook &book, const std::vector<Tag> &tags, WatchValues &values,
                     WatchWrites &writes)
    : runtime_(runtime), tags_(tags), values_(values), editor_(runtime, book, tags, values, writes), model_(editor_),
      style_(styleOfEnvironment()), courses_(values.values().size()), rate_(0), ratedRequests_(0),
      ratedAt_(Clock::now()), sampleAt_(ratedAt_), drawAt_(ratedAt_), terminal_(std::in_place)
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
    values.onEvent([this](const WatchEvent &event) {
        if (event.value.quality == Quality::GOOD)
            model_.noteGood(static_cast<std::size_t>(&event.value - values_.values().data()), event.value.text);
    });
}

WatchView::~WatchView()
{
    runtime_.onTick(nullptr);
    values_.onEvent(nullptr);
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
    model_.setSize(terminal_->size());
    sample(now);
    measureRate(now);
    model_.take(rows(), now);
    takeKeys();
    if (!terminal_->isReady())
        return;
    terminal_->show(renderTable(content(now), terminal_->size(), style_));
    model_.noteShown();
}

void WatchView::takeKeys()
{
    for (Keystroke stroke = terminal_->readKey(); stroke.key != Key::NONE; stroke = terminal_->readKey()) {
        if (stroke.key != Key::ANSWER)
            model_.press(stroke);
    }
    if (model_.wantsEnd())
        programStop().stop();
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
        courses_[i].push_back(known ? shownNumber(value.text).value_or(std::numeric_limits<double>::infinity())
                                    : std::numeric_limits<double>::quiet_NaN());
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

ValueRow WatchView::row(std::size_t index) const
{
    const WatchedValue &value = values_.values()[index];
    const Tag &tag = tags_[value.tag];
    ValueRow row;
    row.name    = value.name;
    row.plc     = tag.plc.substr(0, tag.plc.find('.'));
    row.group   = tag.group;
    row.comment = tag.comment;
    row.value   = value.text;
    row.unit    = value.format.unit;
    row.quality = value.quality;
    if (value.changes > 0)
        row.changedAt = value.changedAt;
    row.course = courses_[index];
    row.fate   = editor_.fate(index);
    return row;
}

std::vector<ValueRow> WatchView::rows() const
{
    std::vector<ValueRow> rows;
    rows.reserve(values_.values().size());
    for (std::size_t i = 0; i < values_.values().size(); ++i)
        rows.push_back(row(i));
    return rows;
}

TableContent WatchView::content(TimePoint now)
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
    model_.fill(content, now);
    return content;
}
