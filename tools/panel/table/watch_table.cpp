#include "table/watch_table.h"

#include "common/numbers.h"
#include "table/columns.h"
#include "table/course_text.h"
#include "terminal/text_width.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

// Lines of the screen besides the values: head, titles; messages, keys.
const std::size_t LINES_ABOVE = 2;
const std::size_t MODE_LINE   = 1; // if there is one
const std::size_t KEYS_LINE   = 1;

const std::size_t MESSAGES_MOST = 3;
const std::size_t HIGH_SCREEN   = 16; // from here on there is room for so many messages, else for one

const char PLAIN[]     = "\033[0m";
const char HEAD_UP[]   = "\033[7m";      // reverse
const char HEAD_DOWN[] = "\033[1;37;41m"; // bold white on red
const char TITLES[]    = "\033[1m";
const char NEW_VALUE[] = "\033[1;7m";
const char OLD_VALUE[] = "\033[2m";      // dim
const char MODE[]      = "\033[1;7m";
const char SELECTED[]  = "\033[7m";
const char GREEN[]     = "\033[32m";
const char CYAN[]      = "\033[36m";
const char YELLOW[]    = "\033[33m";
const char RED[]       = "\033[31m";

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

std::string headText(const TableContent &content, std::size_t columns)
{
    const std::string traffic = content.requestsPerSecond
                                    ? fmt::format("  cycle {}  {:.0f} requests/s", content.cycle.empty() ? "-" : content.cycle,
                                                  *content.requestsPerSecond)
                                    : "";
    const std::string rest = "  " + content.link + traffic + "  " + counted(content.errors, "error");
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

// With the spaces behind them; "" where they are left out.
std::string extremes(const std::string &minimum, const std::string &maximum, const Columns &plan)
{
    return plan.extreme > 0 ? fit(minimum, plan.extreme, true) + " " + fit(maximum, plan.extreme, true) + "  " : "";
}

std::string titleLine(const Columns &plan, bool isPaused)
{
    std::string line = fit("TAG", plan.name) + " " + fit("VALUE", plan.value, true) + "  ";
    if (plan.unit > 0)
        line += fit("UNIT", plan.unit) + " ";
    line += extremes("MIN", "MAX", plan);
    if (plan.age > 0)
        line += fit("CHANGED", plan.age, true) + "  ";
    line += fit(isPaused ? "QUALITY THEN" : "QUALITY", plan.quality);
    if (plan.fate > 0)
        line += "  " + fit("WRITE", plan.fate);
    return plan.course > 0 ? line + "  COURSE" : line;
}

std::string rowLine(const TableRow &row, const Columns &plan, std::size_t columns, ScreenStyle style)
{
    const std::string value = fit(row.value.empty() ? "-" : row.value, plan.value, true) + (row.isNew ? "*" : " ");
    const char *look = row.isNew ? NEW_VALUE : row.quality == Quality::GOOD ? "" : OLD_VALUE;
    const std::string name = fit(row.name, plan.name);
    const char *gap = row.isSelected ? ">" : " ";
    const std::string unit = plan.unit > 0 ? fit(row.unit, plan.unit) + " " : "";
    const std::string tail = unit + extremes(row.minimum, row.maximum, plan)
                             + (plan.age > 0 ? fit(row.age, plan.age, true) + "  " : "");
    const std::string quality = fit(fins::text(row.quality), plan.quality);
    const std::string fate    = plan.fate > 0 ? "  " + fit(row.fate, plan.fate) : "";
    const std::string course  = plan.course > 0 ? "  " + courseText(row.course, plan.course, style.utf8) : "";
    if (!style.colour || usedColumns(plan) > columns)
        return trimmed(textStart(name + gap + value + " " + tail + quality + fate + course, columns));
    return (row.isSelected ? coloured(name, SELECTED, style) : name) + gap
           + (*look ? colouredRight(value, look, style) : value) + " " + tail
           + coloured(quality, qualityColour(row.quality), style) + fate + course;
}

// What is paused has none of the looks of what is live.
std::string lineOf(const TableRow &row, const TableContent &content, const Columns &plan, std::size_t columns,
                   ScreenStyle style)
{
    if (!row.heading.empty())
        return coloured(trimmed(fit("-- " + row.heading + " --", columns)), TITLES, style);
    if (content.isPaused)
        return coloured(rowLine(row, plan, columns, {false, style.utf8}), OLD_VALUE, style);
    return rowLine(row, plan, columns, style);
}

// "1-18 of 30", headings not counted; "" if all rows are shown.
std::string rangeText(const TableContent &content, std::size_t shown)
{
    if (shown >= content.rows.size())
        return "";
    const auto count = [&content](std::size_t end) {
        return std::count_if(content.rows.begin(), content.rows.begin() + static_cast<std::ptrdiff_t>(end),
                             [](const TableRow &row) { return row.heading.empty(); });
    };
    const auto before = count(content.first);
    return fmt::format("{}-{} of {}  ", before + 1, count(content.first + shown), count(content.rows.size()));
}

// Of a line that is typed the end is to be seen.
std::string inputText(const std::string &input, std::size_t columns)
{
    const std::string text = showable(input);
    std::size_t begin = 0;
    while (begin < text.size() && textWidth(text.substr(begin)) + (begin > 0 ? 1 : 0) > columns) {
        do
            ++begin;
        while (begin < text.size() && (static_cast<unsigned char>(text[begin]) & 0xC0) == 0x80);
    }
    return begin > 0 ? "~" + text.substr(begin) : text;
}

std::string footText(const TableContent &content, std::size_t shown, std::size_t columns)
{
    if (!content.input.empty())
        return inputText(content.input, columns);
    if (!content.notice.empty())
        return content.notice;
    return "q quit  " + rangeText(content, shown) + "/ filter  s sort  p pause  r new min, max  Enter edit";
}

// As many as there is room for, the latest at the bottom.
std::vector<std::string> messageLines(const TableContent &content, ScreenSize size)
{
    std::vector<std::string> lines(messageRows(size));
    auto line = lines.rbegin();
    for (auto message = content.messages.rbegin(); message != content.messages.rend() && line != lines.rend(); ++message)
        *line++ = trimmed(fit(*message, size.columns));
    if (!content.remark.empty())
        lines.back() = trimmed(fit(content.remark, size.columns));
    return lines;
}

} // namespace

std::size_t messageRows(ScreenSize size)
{
    return size.rows < HIGH_SCREEN ? 1 : MESSAGES_MOST;
}

std::size_t visibleRows(ScreenSize size, bool hasMode)
{
    const std::size_t others = LINES_ABOVE + (hasMode ? MODE_LINE : 0) + messageRows(size) + KEYS_LINE;
    return size.rows > others ? size.rows - others : 0;
}

std::size_t lastTop(std::size_t rows, std::size_t page)
{
    return rows > page ? rows - page : 0;
}

static std::vector<std::string> headLines(const TableContent &content, std::size_t columns, ScreenStyle style)
{
    std::vector<std::string> lines;
    lines.push_back(coloured(headText(content, columns), content.isUp ? HEAD_UP : HEAD_DOWN, style));
    if (!content.mode.empty())
        lines.push_back(coloured(trimmed(fit(" " + content.mode, columns)), MODE, style));
    return lines;
}

std::vector<std::string> renderTable(const TableContent &content, ScreenSize size, ScreenStyle style)
{
    const Columns plan = planColumns(content, size.columns);
    std::vector<std::string> lines = headLines(content, size.columns, style);
    lines.push_back(coloured(trimmed(textStart(titleLine(plan, content.isPaused), size.columns)), TITLES, style));
    const std::size_t page  = visibleRows(size, !content.mode.empty());
    const std::size_t above = lines.size();
    const std::size_t first = std::min(content.first, content.rows.size());
    const std::size_t shown = std::min(page, content.rows.size() - first);
    for (std::size_t i = first; i < first + shown; ++i)
        lines.push_back(lineOf(content.rows[i], content, plan, size.columns, style));
    lines.resize(above + page);
    const std::vector<std::string> messages = messageLines(content, size);
    lines.insert(lines.end(), messages.begin(), messages.end());
    lines.push_back(trimmed(fit(footText(content, shown, size.columns), size.columns)));
    if (lines.size() > size.rows)
        lines.resize(size.rows);
    return lines;
}
