#include "watch_table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// Lines of the screen besides the values: head, titles; message, keys.
const std::size_t LINES_ABOVE = 2;
const std::size_t LINES_BELOW = 2;

const std::size_t WIDE_SCREEN  = 120; // from here on names and values get more room
const std::size_t NARROWEST    = 8;   // a course with fewer characters is left out
const std::size_t WIDEST       = 60;  // one minute
const std::size_t BITS_WIDTH   = 19;  // a word as bits
const std::size_t AGE_WIDTH    = 7;
const std::size_t QUALITY_WIDTH = 13;

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

struct Columns {
    std::size_t name;
    std::size_t value;
    std::size_t unit;   // 0: none has one
    std::size_t course; // 0: no room
};

// Is this byte the first of a UTF-8 character?
bool startsCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

std::size_t characters(const std::string &text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

// The first `count` characters.
std::string leading(const std::string &text, std::size_t count)
{
    std::size_t seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (startsCharacter(text[i]) && seen++ == count)
            return text.substr(0, i);
    }
    return text;
}

// Control characters, which would move the cursor, become question marks.
std::string harmless(std::string text)
{
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; };
    std::replace_if(text.begin(), text.end(), isControl, '?');
    return text;
}

// Exactly `width` characters: clipped, which a ~ shows, or filled up.
std::string fit(const std::string &text, std::size_t width, bool right = false)
{
    const std::string clean = harmless(text);
    const std::size_t size = characters(clean);
    if (size > width)
        return width == 0 ? "" : leading(clean, width - 1) + "~";
    const std::string filling(width - size, ' ');
    return right ? filling + clean : clean + filling;
}

template <typename Field>
std::size_t widest(const std::vector<TableRow> &rows, Field field, std::size_t least, std::size_t most)
{
    std::size_t width = least;
    for (const TableRow &row : rows)
        width = std::max(width, characters(field(row)));
    return std::min(width, most);
}

Columns planColumns(const TableContent &content, std::size_t columns)
{
    const bool wide = columns >= WIDE_SCREEN;
    Columns plan = {};
    plan.name  = widest(content.rows, [](const TableRow &row) { return row.name; }, 3, wide ? 48 : 20);
    plan.value = widest(content.rows, [](const TableRow &row) { return row.value; }, 7, wide ? 32 : BITS_WIDTH);
    plan.unit  = widest(content.rows, [](const TableRow &row) { return row.unit; }, 0, wide ? 12 : 6);
    if (plan.unit > 0)
        plan.unit = std::max(plan.unit, characters("UNIT"));
    // One or two spaces between two columns, and the mark of a new value.
    const std::size_t unit = plan.unit > 0 ? plan.unit + 1 : 0;
    const std::size_t used = plan.name + 1 + plan.value + 2 + unit + AGE_WIDTH + 2 + QUALITY_WIDTH + 2;
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

std::string coloured(const std::string &text, const char *attribute, TableStyle style)
{
    return style.colour ? attribute + text + PLAIN : text;
}

// Colours the text but not the spaces ahead of it.
std::string colouredRight(const std::string &text, const char *attribute, TableStyle style)
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
    char rate[48];
    std::snprintf(rate, sizeof rate, "%.0f requests/s", content.requestsPerSecond);
    const std::string cycle = content.cycle.empty() ? "-" : content.cycle;
    const std::string rest = "  " + content.link + "  cycle " + cycle + "  " + rate + "  "
                             + std::to_string(content.errors) + (content.errors == 1 ? " error" : " errors");
    // The time of day goes first where there is no room for all.
    const std::size_t others = characters(rest) + 2;
    const std::size_t room   = columns > others + 10 ? columns - others : 10;
    const std::string peer   = characters(content.peer) > room ? fit(content.peer, room) : content.peer;
    const std::string left   = " " + peer + rest;
    const std::size_t width  = characters(left) + characters(content.clock) + 1;
    if (width + 1 > columns)
        return fit(left, columns);
    return left + std::string(columns - width, ' ') + content.clock + " ";
}

std::string titleLine(const Columns &plan)
{
    std::string line = fit("TAG", plan.name) + " " + fit("VALUE", plan.value, true) + "  ";
    if (plan.unit > 0)
        line += fit("UNIT", plan.unit) + " ";
    line += fit("CHANGED", AGE_WIDTH, true) + "  " + fit("QUALITY", QUALITY_WIDTH);
    return plan.course > 0 ? line + "  COURSE" : line;
}

std::string rowLine(const TableRow &row, const Columns &plan, std::size_t columns, TableStyle style)
{
    const std::string value = fit(row.value.empty() ? "-" : row.value, plan.value, true) + (row.isNew ? "*" : " ");
    const char *look = row.isNew ? NEW_VALUE : row.quality == Quality::GOOD ? "" : OLD_VALUE;
    const std::string unit = plan.unit > 0 ? fit(row.unit, plan.unit) + " " : "";
    const std::string name = fit(row.name, plan.name) + " ";
    const std::string tail = unit + fit(row.age, AGE_WIDTH, true) + "  ";
    const std::string quality = fit(qualityText(row.quality), QUALITY_WIDTH);
    const std::string course = plan.course > 0 ? "  " + courseText(row.course, plan.course, style.utf8) : "";
    if (!style.colour || characters(name + value + " " + tail + quality) > columns)
        return trimmed(leading(name + value + " " + tail + quality + course, columns));
    return name + (*look ? colouredRight(value, look, style) : value) + " " + tail
           + coloured(quality, qualityColour(row.quality), style) + course;
}

std::string footText(const TableContent &content, std::size_t shown)
{
    std::string text = "q quit";
    if (shown < content.rows.size())
        text += "  arrows, page keys: scroll  " + std::to_string(content.first + 1) + "-"
                + std::to_string(content.first + shown) + " of " + std::to_string(content.rows.size());
    return text;
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

std::string ageText(std::chrono::seconds age)
{
    const long long seconds = age.count();
    if (seconds < 60)
        return std::to_string(seconds) + " s";
    if (seconds < 3600)
        return std::to_string(seconds / 60) + " min";
    if (seconds < 86400)
        return std::to_string(seconds / 3600) + " h";
    return std::to_string(seconds / 86400) + " d";
}

std::size_t visibleRows(ScreenSize size)
{
    return size.rows > LINES_ABOVE + LINES_BELOW ? size.rows - LINES_ABOVE - LINES_BELOW : 0;
}

std::vector<std::string> renderTable(const TableContent &content, ScreenSize size, TableStyle style)
{
    const Columns plan = planColumns(content, size.columns);
    std::vector<std::string> lines;
    lines.push_back(coloured(headText(content, size.columns), content.isUp ? HEAD_UP : HEAD_DOWN, style));
    lines.push_back(coloured(trimmed(leading(titleLine(plan), size.columns)), TITLES, style));
    const std::size_t first = std::min(content.first, content.rows.size());
    const std::size_t shown = std::min(visibleRows(size), content.rows.size() - first);
    for (std::size_t i = first; i < first + shown; ++i)
        lines.push_back(rowLine(content.rows[i], plan, size.columns, style));
    if (size.rows > LINES_ABOVE + LINES_BELOW)
        lines.resize(size.rows - LINES_BELOW);
    lines.push_back(trimmed(fit(content.message, size.columns)));
    lines.push_back(trimmed(fit(footText(content, shown), size.columns)));
    if (lines.size() > size.rows)
        lines.resize(size.rows);
    return lines;
}

std::size_t screenWidth(const std::string &text)
{
    std::size_t width = 0;
    bool inAttribute = false;
    for (const char c : text) {
        if (c == '\033')
            inAttribute = true;
        else if (inAttribute)
            inAttribute = c != 'm';
        else if (startsCharacter(c))
            ++width;
    }
    return width;
}
