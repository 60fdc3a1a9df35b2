#include "watch/table_view.h"

#include "terminal/stop_flag.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <ctime>
#include <limits>

static const std::size_t COURSE_LENGTH = 60;

TableView::TableView(ValueEditor &editor, Rows rows, Head head, Messages &messages)
    : rows_(std::move(rows)), head_(std::move(head)), messages_(messages), model_(editor), style_(styleOfEnvironment()),
      sampleAt_(Clock::now()), drawAt_(sampleAt_), terminal_(std::in_place)
{
    messages.redirect([this](const Message &message) { recent_.add(message); });
}

TableView::~TableView()
{
    terminal_.reset();
    messages_.redirect(nullptr);
    recent_.sayTo(messages_);
}

void TableView::tick()
{
    const TimePoint now = Clock::now();
    const bool isResized = terminal_->resized();
    terminal_->sendOn();
    if (now < drawAt_ && !isResized)
        return;
    drawAt_ = now + REDRAW;
    terminal_->suspendIfAsked();
    model_.setSize(terminal_->size());
    std::vector<ValueRow> rows = rows_();
    addCourses(rows, now);
    model_.take(std::move(rows), now);
    takeKeys();
    if (!terminal_->isReady())
        return;
    terminal_->show(renderTable(content(now), terminal_->size(), style_));
    model_.noteShown();
}

void TableView::takeKeys()
{
    for (Keystroke stroke = terminal_->readKey(); stroke.key != Key::NONE; stroke = terminal_->readKey()) {
        if (stroke.key != Key::ANSWER)
            model_.press(stroke);
    }
    if (model_.wantsEnd())
        programStop().stop();
}

static double courseStep(const ValueRow &row)
{
    const bool known = row.quality == fins::Quality::GOOD || row.quality == fins::Quality::WRITE_PENDING;
    return known ? shownNumber(row.value).value_or(std::numeric_limits<double>::infinity())
                 : std::numeric_limits<double>::quiet_NaN();
}

// After a pause of the program the steps that it missed are left out.
void TableView::addCourses(std::vector<ValueRow> &rows, TimePoint now)
{
    courses_.resize(rows.size());
    const bool isStep = now >= sampleAt_;
    if (isStep)
        sampleAt_ = std::max(sampleAt_ + COURSE_STEP, now);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::vector<double> &course = courses_[i];
        if (isStep && !rows[i].value.empty())
            course.push_back(courseStep(rows[i]));
        if (course.size() > COURSE_LENGTH)
            course.erase(course.begin());
        rows[i].course = course;
    }
}

TableContent TableView::content(TimePoint now)
{
    TableContent content = {};
    head_(content, now);
    content.clock    = fmt::format("{:%H:%M:%S}", fmt::localtime(std::time(nullptr)));
    content.messages = recent_.lines(messageRows(terminal_->size()));
    model_.fill(content, now);
    return content;
}

std::string retryText(Clock::duration left)
{
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(left);
    return "no link, retry in " + std::to_string(seconds.count()) + " s";
}
