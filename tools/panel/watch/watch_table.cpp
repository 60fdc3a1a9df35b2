#include "watch/watch_table.h"

#include "common/numbers.h"
#include "terminal/text_width.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// Lines of the screen besides the values: head, titles; messages, keys.
const std::size_t LINES_ABOVE = 2;
const std::size_t KEYS_LINE   = 1;

const std::size_t MESSAGES_MOST = 3;
const std::size_t HIGH_SCREEN   = 16; // from here on there is room for so many messages, else for one

const std::size_t AGE_WIDTH     = 7;
const std::size_t QUALITY_WIDTH = 13;
const std::size_t NARROWEST     = 8;  // a course with fewer characters is left out
const std::size_t WIDEST        = 60; // one minute

const char PLAIN[]     = "\033[0m";
const char HEAD_UP[]   = "\033[7m";      // reverse
const char HEAD_DOWN[] = "\033[1;37;41m"; // bold white on red
const char TITLES[]    = "\033[1m";
const char NEW_VALUE[] = "\033[1;7m";
const char OLD_VALUE[] = "\033[2m";      // dim
const char GREEN[]     = "\033[32m";
const char CYAN[]      = "\033[36m";
const char YELLOW[]    = "\033[33m";
const char RED[]       = "\033[31m";

// Widths; 0: left out.
struct Columns {
    std::size_t name;
    std::size_t value;
    std::size_t unit; // 0 if none has one, too
    std::size_t age;
    std::size_t quality;
    std::size_t course;
};

// Exactly `width` columns: clipped, which a ~ shows, or filled up.
std::string fit(const std::string &text, std::size_t width, bool right = false)
{
    const std::string clean = showable(text);
    const std::size_t size = textWidth(clean);
    if (size > width && width == 0)
        return "";
    const std::string shown = size > width ? textStart(clean, width - 1) + "~" : clean;
    const std::string filling(width - textWidth(shown), ' ');
    return right ? filling + shown : shown + filling;
}

template <typename Field>
std::size_t widest(const std::vector<TableRow> &rows, Field field, std::size_t least, std::size_t most)
{
    std::size_t width = least;
    for (const TableRow &row : rows)
        width = std::max(width, textWidth(showable(field(row))));
    return std::min(width, most);
}

// With one or two spaces between two columns, and the mark of a new value.
std::size_t usedColumns(const Columns &plan)
{
    const std::size_t unit = plan.unit > 0 ? plan.unit + 1 : 0;
    const std::size_t age  = plan.age > 0 ? plan.age + 2 : 0;
    return plan.name + 1 + plan.value + 2 + unit + age + plan.quality;
}

// Takes from `width`, down to `least`, what is used more than `columns`.
void shrink(std::size_t &width, std::size_t least, const Columns &plan, std::size_t columns)
{
    const std::size_t used = usedColumns(plan);
    if (used > columns && width > least)
        width -= std::min(used - columns, width - least);
}

// Gives to `width`, up to `most`, what is left of `columns`.
void grow(std::size_t &width, std::size_t most, const Columns &plan, std::size_t columns)
{
    const std::size_t used = usedColumns(plan);
    if (used < columns && width < most)
        width += std::min(columns - used, most - width);
}

// Unit and age go where the rest would not fit, and the quality last of all. What is left is for names and values that
// are longer than usual, and then for the course.
Columns planColumns(const TableContent &content, std::size_t columns)
{
    const std::size_t name  = widest(content.rows, [](const TableRow &row) { return row.name; }, 3, columns);
    const std::size_t value = widest(content.rows, [](const TableRow &row) { return row.value; }, 7, 60);
    const std::size_t unit  = widest(content.rows, [](const TableRow &row) { return row.unit; }, 0, 12);
    Columns plan = {std::min<std::size_t>(name, 20), std::min<std::size_t>(value, 19),
                    unit > 0 ? std::clamp<std::size_t>(unit, 4, 6) : 0, AGE_WIDTH, QUALITY_WIDTH, 0};
    if (usedColumns(plan) > columns)
        plan.unit = 0;
    if (usedColumns(plan) > columns)
        plan.age = 0;
    shrink(plan.name, 8, plan, columns);
    shrink(plan.value, 7, plan, columns);
    shrink(plan.name, 3, plan, columns);
    shrink(plan.quality, 4, plan, columns);
    grow(plan.name, name, plan, columns);
    if (plan.unit > 0)
        grow(plan.unit, unit, plan, columns);
    grow(plan.value, value, plan, columns);
    const std::size_t used = usedColumns(plan) + 2;
    plan.course = used + NARROWEST <= columns ? std::min(columns - used, WIDEST) : 0;
    return plan;
}

const char *qualityColour(Quality quality)
{
    switch (quality) {
    case Quality::GOOD:          return GREEN;
    case Quality::WRITE_PENDING: return CYAN;
    case Quality::LAST_KNOWN:    return YELLOW;
    case Quality::NOT_CONNECTED:
    case Quality::REFUSED:       return RED;
    }
    return PLAIN;
}

std::string coloured(const std::string &text, const char *attribute, ScreenStyle style)
{
    return style.colour ? attribute + text + PLAIN : text;
}

// Colours the text but not the spaces ahead of it.
std::string colouredRight(const std::string &text, const char *attribute, ScreenStyle style)
{
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(0, begin) + coloured(text.substr(begin), attribute, style);
}

std::string trimmed(std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string headText(const TableContent &content, std::size_t columns)
{
    const std::string rest = fmt::format("  {}  cycle {}  {:.0f} requests/s  {}", content.link,
                                         content.cycle.empty() ? "-" : content.cycle, content.requestsPerSecond,
                                         counted(content.errors, "error"));
    // The time of day goes first where there is no room for all.
    const std::size_t others = textWidth(rest) + 2;
    const std::size_t room   = columns > others + 10 ? columns - others : 10;
    const std::string peer   = textWidth(content.peer) > room ? fit(content.peer, room) : content.peer;
    const std::string left   = " " + peer + rest;
    const std::size_t width  = textWidth(left) + textWidth(content.clock) + 1;
    if (width + 1 > columns)
        return fit(left, columns);
    return left + std::string(columns - width, ' ') + content.clock + " ";
}

std::string titleLine(const Columns &plan)
{
    std::string line = fit("TAG", plan.name) + " " + fit("VALUE", plan.value, true) + "  ";
    if (plan.unit > 0)
        line += fit("UNIT", plan.unit) + " ";
    if (plan.age > 0)
        line += fit("CHANGED", plan.age, true) + "  ";
    line += fit("QUALITY", plan.quality);
    return plan.course > 0 ? line + "  COURSE" : line;
}

std::string rowLine(const TableRow &row, const Columns &plan, std::size_t columns, ScreenStyle style)
{
    const std::string value = fit(row.value.empty() ? "-" : row.value, plan.value, true) + (row.isNew ? "*" : " ");
    const char *look = row.isNew ? NEW_VALUE : row.quality == Quality::GOOD ? "" : OLD_VALUE;
    const std::string name = fit(row.name, plan.name) + " ";
    const std::string unit = plan.unit > 0 ? fit(row.unit, plan.unit) + " " : "";
    const std::string tail = unit + (plan.age > 0 ? fit(row.age, plan.age, true) + "  " : "");
    const std::string quality = fit(fins::text(row.quality), plan.quality);
    const std::string course = plan.course > 0 ? "  " + courseText(row.course, plan.course, style.utf8) : "";
    if (!style.colour || usedColumns(plan) > columns)
        return trimmed(textStart(name + value + " " + tail + quality + course, columns));
    return name + (*look ? colouredRight(value, look, style) : value) + " " + tail
           + coloured(quality, qualityColour(row.quality), style) + course;
}

std::string footText(const TableContent &content, std::size_t shown)
{
    std::string text = "q quit";
    if (shown < content.rows.size())
        text += fmt::format("  arrows, page keys: scroll  {}-{} of {}", content.first + 1, content.first + shown,
                            content.rows.size());
    return text;
}

// As many as there is room for, the latest at the bottom.
std::vector<std::string> messageLines(const TableContent &content, ScreenSize size)
{
    std::vector<std::string> lines(messageRows(size));
    auto line = lines.rbegin();
    for (auto message = content.messages.rbegin(); message != content.messages.rend() && line != lines.rend(); ++message)
        *line++ = trimmed(fit(*message, size.columns));
    return lines;
}

// The ends of the shown values; false if none is known.
bool findRange(const std::vector<double> &course, std::size_t begin, double &least, double &greatest)
{
    bool any = false;
    for (std::size_t i = begin; i < course.size(); ++i) {
        if (!std::isfinite(course[i]))
            continue;
        least    = any ? std::min(least, course[i]) : course[i];
        greatest = any ? std::max(greatest, course[i]) : course[i];
        any = true;
    }
    return any;
}

} // namespace

std::string courseText(const std::vector<double> &course, std::size_t width, bool utf8)
{
    static const char *const BLOCKS[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    static const char *const ASCII[]  = {"_", ".", ",", "-", "~", "=", "^", "#"};
    const std::size_t begin = course.size() > width ? course.size() - width : 0;
    double least = 0;
    double greatest = 0;
    findRange(course, begin, least, greatest);
    std::string text;
    for (std::size_t i = begin; i < course.size(); ++i) {
        if (std::isnan(course[i])) {
            text += utf8 ? "·" : "?";
            continue;
        }
        if (std::isinf(course[i])) {
            text += " ";
            continue;
        }
        // Halves, so that the difference of two huge values is not infinite.
        const double range = greatest / 2 - least / 2;
        const double part  = range > 0 ? (course[i] / 2 - least / 2) / range : 0;
        const std::size_t level = std::min<std::size_t>(7, static_cast<std::size_t>(part * 8));
        text += utf8 ? BLOCKS[level] : ASCII[level];
    }
    return text;
}

std::size_t messageRows(ScreenSize size)
{
    return size.rows < HIGH_SCREEN ? 1 : MESSAGES_MOST;
}

std::size_t visibleRows(ScreenSize size)
{
    const std::size_t others = LINES_ABOVE + messageRows(size) + KEYS_LINE;
    return size.rows > others ? size.rows - others : 0;
}

std::size_t lastTop(std::size_t rows, ScreenSize size)
{
    const std::size_t page = visibleRows(size);
    return rows > page ? rows - page : 0;
}

std::vector<std::string> renderTable(const TableContent &content, ScreenSize size, ScreenStyle style)
{
    const Columns plan = planColumns(content, size.columns);
    std::vector<std::string> lines;
    lines.push_back(coloured(headText(content, size.columns), content.isUp ? HEAD_UP : HEAD_DOWN, style));
    lines.push_back(coloured(trimmed(textStart(titleLine(plan), size.columns)), TITLES, style));
    const std::size_t first = std::min(content.first, content.rows.size());
    const std::size_t shown = std::min(visibleRows(size), content.rows.size() - first);
    for (std::size_t i = first; i < first + shown; ++i)
        lines.push_back(rowLine(content.rows[i], plan, size.columns, style));
    lines.resize(std::max(lines.size(), LINES_ABOVE + visibleRows(size)));
    const std::vector<std::string> messages = messageLines(content, size);
    lines.insert(lines.end(), messages.begin(), messages.end());
    lines.push_back(trimmed(fit(footText(content, shown), size.columns)));
    if (lines.size() > size.rows)
        lines.resize(size.rows);
    return lines;
}
