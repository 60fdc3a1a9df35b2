#include "view/screen.h"

#include <algorithm>
#include <fmt/format.h>

namespace plc {

namespace {

enum class Style { PLAIN, HEADING, GOOD, ALERT, NEW };

const std::size_t CELL_WIDTH = 39; // of plant values: two in 80 columns
const std::size_t NAME_WIDTH = 12; // of a plant value's name
const std::size_t PLACE_WIDTH = 11; // of its place
const std::size_t WRITE_WIDTH = 26; // of written places: three in 80 columns
const std::size_t AGE_WIDTH = 6; // of the time since
const unsigned NEW_SECONDS = 2;
const std::size_t ANSWER_ROWS = 3; // at most
const std::size_t FIXED_ROWS = 11; // headings, empty rows and command line

// `text` in at most `width` columns; a ~ at the end tells that it goes on.
std::string clipped(const std::string &text, std::size_t width)
{
    return text.size() <= width || width == 0 ? text.substr(0, width) : text.substr(0, width - 1) + "~";
}

// One row, made of pieces with a style each.
class Row {
public:
    Row &add(const std::string &text, Style style = Style::PLAIN)
    {
        pieces.push_back({text, style});
        return *this;
    }

    // One of several cells side by side: `text`, filled up or clipped to `width`.
    Row &addCell(const std::string &text, std::size_t width, Style style = Style::PLAIN)
    {
        if (!pieces.empty())
            add(" ");
        return add(clipped(text, width) + std::string(width - std::min(width, text.size()), ' '), style);
    }

    std::string render(std::size_t columns, bool hasColour) const;

private:
    struct Piece {
        std::string text;
        Style       style;
    };
    std::vector<Piece> pieces;
};

const char *sequenceOf(Style style)
{
    switch (style) {
    case Style::PLAIN:   return "";
    case Style::HEADING: return "\033[1m";
    case Style::GOOD:    return "\033[32m";
    case Style::ALERT:   return "\033[31m";
    case Style::NEW:     return "\033[33m";
    }
    return "";
}

std::string Row::render(std::size_t columns, bool hasColour) const
{
    std::string text;
    std::size_t left = columns;
    for (const Piece &piece : pieces) {
        const std::string shown = clipped(piece.text, left);
        left -= shown.size();
        const bool isStyled = hasColour && piece.style != Style::PLAIN && !shown.empty();
        text += isStyled ? sequenceOf(piece.style) + shown + "\033[0m" : shown;
    }
    return text;
}

// `text` in `width` columns and a space.
std::string cell(const std::string &text, std::size_t width)
{
    return clipped(text, width) + std::string(width - std::min(width, text.size()) + 1, ' ');
}

// How many cells of this width, with a space between them, a row has room for.
std::size_t cellsAcross(std::size_t columns, std::size_t width)
{
    return std::max<std::size_t>((columns + 1) / (width + 1), 1);
}

// Rows that so many cells of this width take.
std::size_t rowsOf(std::size_t cells, std::size_t columns, std::size_t width)
{
    const std::size_t across = cellsAcross(columns, width);
    return (cells + across - 1) / across;
}

// `text` in rows of at most `width` columns, broken at spaces where there are any, and at most `most` of them.
std::vector<std::string> wrapped(const std::string &text, std::size_t width, std::size_t most)
{
    std::vector<std::string> rows;
    std::string left = text;
    while (left.size() > width && rows.size() + 1 < most) {
        const std::size_t space = left.rfind(' ', width);
        const std::size_t end = space == std::string::npos || space == 0 ? width : space;
        rows.push_back(left.substr(0, end));
        left.erase(0, end + (end == space ? 1 : 0));
    }
    rows.push_back(left);
    return rows;
}

std::string rateText(double rate) { return fmt::format("{:.1f}", rate); }

std::string timeText(unsigned seconds)
{
    return fmt::format("{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string ageText(unsigned seconds)
{
    if (seconds < 60)
        return std::to_string(seconds) + " s";
    return seconds < 3600 ? std::to_string(seconds / 60) + " min" : std::to_string(seconds / 3600) + " h";
}

void addHead(const ScreenState &state, std::vector<Row> *rows)
{
    const bool isStopped = state.mode == "program";
    std::string mode = state.mode;
    std::transform(mode.begin(), mode.end(), mode.begin(), [](char c) { return static_cast<char>(c - 'a' + 'A'); });
    rows->push_back(Row()
                        .add("fins_plc ", Style::HEADING)
                        .add(state.address + "  node " + std::to_string(state.node) + "  profile " + state.profile +
                             "  mode ")
                        .add(mode, isStopped ? Style::ALERT : Style::GOOD)
                        .add(state.error.empty() ? "" : "  error " + state.error, Style::ALERT)
                        .add("  up " + timeText(state.upSeconds)));
    rows->push_back(Row().add("requests " + std::to_string(state.stats.requests) + "  replies " +
                              std::to_string(state.stats.replies) + "  " + rateText(state.requestRate) +
                              " requests/s" + (state.files.empty() ? "" : "  " + state.files)));
    rows->push_back(Row().add("faults ").add(state.faults, state.faults == "none" ? Style::PLAIN : Style::ALERT));
    rows->push_back(Row());
}

void addClients(const ScreenState &state, std::size_t room, std::vector<Row> *rows)
{
    const std::string count = std::to_string(state.clients.size()) + " OF " + std::to_string(state.clientLimit);
    rows->push_back(Row().add(cell("CLIENTS " + count, 18) + cell("NODE", 5) + cell("ADDRESS", 28) +
                                  cell("REQUESTS", 11) + "REQUESTS/S",
                              Style::HEADING));
    const std::size_t shown = state.clients.size() > room ? room - 1 : state.clients.size();
    for (std::size_t i = 0; i < shown; ++i) {
        const Connection::Client &client = state.clients[i].client;
        rows->push_back(Row().add(cell("#" + std::to_string(client.id), 18) +
                                  cell(client.node ? std::to_string(client.node) : "-", 5) +
                                  cell(client.address, 28) + cell(std::to_string(client.requests), 11) +
                                  rateText(state.clients[i].requestRate)));
    }
    if (shown < state.clients.size())
        rows->push_back(Row().add("and " + std::to_string(state.clients.size() - shown) + " more"));
    rows->push_back(Row());
}

// The values go down the columns, so that what belongs together stands in one.
void addPlant(const ScreenState &state, std::size_t columns, std::size_t room, std::vector<Row> *rows)
{
    if (state.plant.empty())
        return;
    rows->push_back(Row().add("PLANT " + state.plant, Style::HEADING));
    const std::size_t across = cellsAcross(columns, CELL_WIDTH);
    const std::size_t count = std::min(state.values.size(), across * room);
    const std::size_t down = rowsOf(count, columns, CELL_WIDTH);
    const std::size_t first = rows->size();
    rows->resize(first + down);
    for (std::size_t i = 0; i < count; ++i) {
        const PlantValue &value = state.values[i];
        const std::string text = cell(value.name, NAME_WIDTH) + cell(value.place, PLACE_WIDTH) + value.text;
        (*rows)[first + i % down].addCell(text, CELL_WIDTH);
    }
    rows->push_back(Row());
}

void addWrites(const ScreenState &state, std::size_t columns, std::size_t room, std::vector<Row> *rows)
{
    rows->push_back(Row().add("WRITTEN LAST", Style::HEADING).add(state.writes.empty() ? ": nothing yet" : ""));
    const std::size_t across = cellsAcross(columns, WRITE_WIDTH);
    for (std::size_t i = 0; i < state.writes.size() && i / across < room; ++i) {
        if (i % across == 0)
            rows->push_back(Row());
        const ScreenWrite &write = state.writes[i];
        const std::string item = write.place + " = " + std::to_string(write.value);
        rows->back().addCell(cell(item, WRITE_WIDTH - AGE_WIDTH - 1) + ageText(write.ageSeconds), WRITE_WIDTH,
                             write.ageSeconds < NEW_SECONDS ? Style::NEW : Style::PLAIN);
    }
}

// The end of what is typed is shown, where the next key goes.
Row commandRow(const std::string &typed, std::size_t columns)
{
    const std::size_t room = columns > 3 ? columns - 3 : 0; // besides the prompt and the cursor
    const bool isLong = typed.size() > room && room > 0;
    return Row().add("> ", Style::HEADING).add((isLong ? "~" + typed.substr(typed.size() - room + 1) : typed) + "_");
}

// What is left to lay out after `used` rows of `all`.
std::size_t rest(std::size_t all, std::size_t used) { return all > used ? all - used : 0; }

} // namespace

std::vector<std::string> drawScreen(const ScreenState &state, TerminalSize size, bool hasColour)
{
    const std::vector<std::string> answer = wrapped(state.answer, size.columns, ANSWER_ROWS);
    const std::size_t room = rest(size.rows, FIXED_ROWS + answer.size());
    const std::size_t plantRows = std::min(rowsOf(state.values.size(), size.columns, CELL_WIDTH), room / 2);
    const std::size_t left = rest(room, plantRows);
    const std::size_t writeRows = std::min(rowsOf(state.writes.size(), size.columns, WRITE_WIDTH), left / 2);
    const std::size_t clientRows = std::max<std::size_t>(rest(left, writeRows), 1);
    std::vector<Row> rows;
    addHead(state, &rows);
    addClients(state, clientRows, &rows);
    addPlant(state, size.columns, plantRows, &rows);
    const std::size_t body = rest(size.rows, answer.size() + 1);
    addWrites(state, size.columns, rest(body, rows.size() + 2), &rows);
    rows.resize(body);
    for (const std::string &row : answer)
        if (rows.size() + 1 < size.rows)
            rows.push_back(Row().add(row));
    rows.push_back(commandRow(state.typed, size.columns));
    std::vector<std::string> lines;
    lines.reserve(rows.size());
    for (const Row &row : rows)
        lines.push_back(row.render(size.columns, hasColour));
    return lines;
}

} // namespace plc
