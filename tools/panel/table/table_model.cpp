#include "table/table_model.h"

#include "common/time_text.h"
#include "table/text_match.h"

#include <algorithm>

void TableModel::take(std::vector<ValueRow> rows, TimePoint now)
{
    extremes_.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].quality == fins::Quality::GOOD)
            extremes_[i].note(rows[i].value);
    }
    if (isPaused_)
        return;
    rows_          = std::move(rows);
    takenAt_       = now;
    shownExtremes_ = extremes_;
}

void TableModel::noteGood(std::size_t value, const std::string &text)
{
    extremes_.resize(std::max(extremes_.size(), value + 1));
    extremes_[value].note(text);
}

void TableModel::press(const Keystroke &stroke)
{
    notice_.clear();
    if (lines_.empty())
        arrange(); // a key that was pressed before anything was shown
    if (edit_.isOpen())
        notice_ = edit_.take(stroke);
    else if (isFiltering_)
        typeFilter(stroke);
    else
        command(stroke);
}

void TableModel::command(const Keystroke &stroke)
{
    switch (stroke.key) {
    case Key::TEXT:   letter(stroke.text); break;
    case Key::ENTER:  openEdit(); break;
    case Key::ESCAPE: giveUp(); break;
    default:          move(stroke.key); break;
    }
}

// A fate that comes later is shown again.
void TableModel::giveUp()
{
    selected_.reset();
    for (const ValueRow &row : rows_) {
        if (!row.fate.empty())
            seenFate_ = row.fate;
    }
}

void TableModel::letter(const std::string &text)
{
    if (text == "q" || text == "Q") {
        wantsEnd_ = true;
    } else if (text == "k" || text == "j") {
        move(text == "k" ? Key::UP : Key::DOWN);
    } else if (text == "/") {
        isFiltering_ = true;
    } else if (text == "s") {
        order_ = nextOrder(order_);
        first_ = 0;
    } else if (text == "p") {
        isPaused_ = !isPaused_;
    } else if (text == "r") {
        extremes_.assign(extremes_.size(), {});
        notice_ = "minimum and maximum begin anew";
    }
}

void TableModel::typeFilter(const Keystroke &stroke)
{
    if (filter_.take(stroke)) {
        first_ = 0;
    } else if (stroke.key == Key::ENTER || stroke.key == Key::ESCAPE) {
        isFiltering_ = false;
        if (stroke.key == Key::ESCAPE)
            filter_.clear();
    } else {
        move(stroke.key);
    }
}

void TableModel::openEdit()
{
    if (isPaused_)
        notice_ = "what is shown is paused: p goes on, and then values can be edited";
    else if (!selected_)
        notice_ = "choose a value by the arrows, then Enter";
    else
        notice_ = edit_.open(*selected_);
    if (edit_.isOpen())
        seenFate_.clear();
}

void TableModel::move(Key key)
{
    if (selected_ || key == Key::UP || key == Key::DOWN)
        select(key);
    else
        scroll(key);
}

// The first arrow selects what is at the top of the screen.
void TableModel::select(Key key)
{
    if (shown_.empty())
        return;
    std::size_t at = 0;
    if (selected_) {
        at = static_cast<std::size_t>(std::find(shown_.begin(), shown_.end(), *selected_) - shown_.begin());
        const std::size_t steps = key == Key::PAGE_UP || key == Key::PAGE_DOWN ? std::max<std::size_t>(page(), 1)
                                  : key == Key::UP || key == Key::DOWN         ? 1
                                                                               : shown_.size();
        const bool isBack = key == Key::UP || key == Key::PAGE_UP || key == Key::HOME;
        at = isBack ? at - std::min(at, steps) : std::min(at + steps, shown_.size() - 1);
    } else {
        while (first_ < lines_.size() && at + 1 < shown_.size() && shown_[at] != lines_[first_].value)
            ++at;
    }
    selected_ = shown_[at];
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (!lines_[i].isHeading && lines_[i].value == *selected_)
            bringIntoView(i);
    }
}

// A heading stays with the first value below it.
void TableModel::bringIntoView(std::size_t line)
{
    const std::size_t top = line > 0 && lines_[line - 1].isHeading ? line - 1 : line;
    if (top < first_)
        first_ = top;
    else if (line >= first_ + page())
        first_ = line + 1 - std::min(page(), line + 1);
}

void TableModel::scroll(Key key)
{
    const std::size_t last = lastTop(lines_.size(), page());
    switch (key) {
    case Key::PAGE_UP:   first_ -= std::min(first_, page()); break;
    case Key::PAGE_DOWN: first_ += page(); break;
    case Key::HOME:      first_ = 0; break;
    case Key::END:       first_ = last; break;
    default:             break;
    }
    first_ = std::min(first_, last);
}

std::vector<std::size_t> TableModel::shownValues()
{
    if (matched_ != filter_.text() || matches_.size() != rows_.size()) {
        matched_ = filter_.text();
        matches_.assign(rows_.size(), true);
        for (std::size_t i = 0; i < rows_.size() && !matched_.empty(); ++i) {
            const ValueRow &row = rows_[i];
            matches_[i] = containsLoosely(row.name, matched_) || containsLoosely(row.unit, matched_)
                          || containsLoosely(row.comment, matched_);
        }
    }
    std::vector<std::size_t> values;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (matches_[i])
            values.push_back(i);
    }
    return values;
}

std::string TableModel::headingOf(std::size_t value) const
{
    const ValueRow &row = rows_[value];
    return row.plc + (row.plc.empty() || row.group.empty() ? "" : ": ") + row.group;
}

void TableModel::arrange()
{
    shown_ = shownValues();
    sortRows(shown_, rows_, order_);
    lines_.clear();
    std::string heading;
    for (const std::size_t value : shown_) {
        const std::string own = order_ == RowOrder::GIVEN ? headingOf(value) : "";
        if (own != heading)
            lines_.push_back({value, true});
        heading = own;
        lines_.push_back({value, false});
    }
    if (selected_ && !edit_.isOpen() && std::find(shown_.begin(), shown_.end(), *selected_) == shown_.end())
        selected_.reset();
    first_ = std::min(first_, lastTop(lines_.size(), page()));
}

TableRow TableModel::rowOf(std::size_t value) const
{
    const ValueRow &from = rows_[value];
    TableRow row = {from.name, from.value, from.unit, "-", from.quality, false, from.course};
    if (from.changedAt) {
        row.age   = ageText(takenAt_ - *from.changedAt);
        row.isNew = !isPaused_ && takenAt_ - *from.changedAt < NEW_FOR;
    }
    row.minimum    = shownExtremes_[value].minimum();
    row.maximum    = shownExtremes_[value].maximum();
    row.fate       = from.fate == seenFate_ ? "" : from.fate;
    row.isSelected = selected_ == value;
    return row;
}

std::string TableModel::modeText(TimePoint now) const
{
    std::vector<std::string> parts;
    if (isPaused_)
        parts.push_back("PAUSED: " + ageText(now - takenAt_) + " old, polling goes on");
    if (isFiltering_ || !filter_.text().empty())
        parts.push_back(std::to_string(shown_.size()) + " of " + std::to_string(rows_.size()) + " shown"
                        + (filter_.text().empty() ? "" : ": " + filter_.text()));
    if (order_ != RowOrder::GIVEN)
        parts.push_back(std::string("by ") + orderText(order_));
    std::string text;
    for (const std::string &part : parts)
        text += (text.empty() ? "" : "  ") + part;
    return text;
}

void TableModel::fill(TableContent &content, TimePoint now)
{
    arrange();
    for (const Line &line : lines_) {
        content.rows.push_back(line.isHeading ? TableRow() : rowOf(line.value));
        content.rows.back().heading = line.isHeading ? headingOf(line.value) : "";
    }
    content.first    = first_;
    content.mode     = modeText(now);
    content.isPaused = isPaused_;
    content.notice   = notice_;
    if (edit_.isOpen()) {
        content.input  = edit_.line();
        content.remark = edit_.remark();
    } else if (isFiltering_) {
        content.input  = "/" + filter_.text() + "_";
        content.remark = "Enter keeps the filter, Esc drops it; * stands for any characters, ? for one";
    }
}
