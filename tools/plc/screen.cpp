#include "screen.h"

#include <algorithm>
#include <cstdio>

namespace plc {

namespace {

enum class Style { PLAIN, HEADING, GOOD, ALERT, NEW };

const std::size_t CELL_WIDTH = 39; // of plant values: two in 80 columns
const std::size_t WRITE_WIDTH = 26; // of written places: three in 80 columns
const unsigned NEW_SECONDS = 2;
const std::size_t FIXED_ROWS = 11; // headings, empty rows, command line and answer

// One row, made of pieces with a style each.
class Row {
public:
    Row &add(const std::string &text, Style style = Style::PLAIN)
    {
        pieces.push_back({text, style});
        return *this;
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
        const std::string shown = piece.text.substr(0, left);
        left -= shown.size();
        const bool isStyled = hasColour && piece.style != Style::PLAIN && !shown.empty();
        text += isStyled ? sequenceOf(piece.style) + shown + "\033[0m" : shown;
    }
    return text;
}

// `text` in `width` columns and a space.
std::string cell(const std::string &text, std::size_t width)
{
    return text.substr(0, width) + std::string(width - std::min(width, text.size()) + 1, ' ');
}

std::string rateText(double rate)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", rate);
    return text;
}

std::string timeText(unsigned seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text;
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
    const std::size_t count1 = state.clients.size() > room ? room - 1 : state.clients.size();
    for (std::size_t i = 0; i < count1; ++i) {
        const Connection::Client &client = state.clients[i].client;
        rows->push_back(Row().add(cell("#" + std::to_string(client.id), 18) +
                                  cell(client.node ? std::to_string(client.node) : "-", 5) +
                                  cell(client.address, 28) + cell(std::to_string(client.requests), 11) +
                                  rateText(state.clients[i].requestRate)));
    }
    if (count1 < state.clients.size())
        rows->push_back(Row().add("and " + std::to_string(state.clients.size() - count1) + " more"));
    rows->push_back(Row());
}

void addPlant(const ScreenState &state, std::size_t columns, std::size_t room, std::vector<Row> *rows)
{
    if (state.plant.empty())
        return;
    rows->push_back(Row().add("PLANT " + state.plant, Style::HEADING));
    const std::size_t across = std::max<std::size_t>(columns / (CELL_WIDTH + 1), 1);
    for (std::size_t i = 0; i < state.values.size() && i / across < room; ++i) {
        if (i % across == 0)
            rows->push_back(Row());
        const PlantValue &value = state.values[i];
        rows->back().add(cell(cell(value.name, 10) + cell(value.place, 11) + value.text, CELL_WIDTH));
    }
    rows->push_back(Row());
}

void addWrites(const ScreenState &state, std::size_t columns, std::size_t room, std::vector<Row> *rows)
{
    rows->push_back(Row().add("WRITTEN LAST", Style::HEADING).add(state.writes.empty() ? ": nothing yet" : ""));
    const std::size_t across = std::max<std::size_t>(columns / (WRITE_WIDTH + 1), 1);
    for (std::size_t i = 0; i < state.writes.size() && i / across < room; ++i) {
        if (i % across == 0)
            rows->push_back(Row());
        const ScreenWrite &write = state.writes[i];
        rows->back().add(cell(cell(write.place + " = " + std::to_string(write.value), WRITE_WIDTH - 7) +
                                  ageText(write.ageSeconds),
                              WRITE_WIDTH),
                         write.ageSeconds < NEW_SECONDS ? Style::NEW : Style::PLAIN);
    }
}

// What is left to lay out after `used` rows of `all`.
std::size_t rest(std::size_t all, std::size_t used) { return all > used ? all - used : 0; }

} // namespace

std::vector<std::string> drawScreen(const ScreenState &state, TerminalSize size, bool hasColour)
{
    const std::size_t room = rest(size.rows, FIXED_ROWS);
    const std::size_t across = std::max<std::size_t>(size.columns / (CELL_WIDTH + 1), 1);
    const std::size_t plantRows = std::min((state.values.size() + across - 1) / across, room / 2);
    const std::size_t clientRows = std::max<std::size_t>(rest(room, plantRows) / 2, 1);
    std::vector<Row> rows;
    addHead(state, &rows);
    addClients(state, clientRows, &rows);
    addPlant(state, size.columns, plantRows, &rows);
    const std::size_t body = rest(size.rows, 2);
    addWrites(state, size.columns, rest(body, rows.size() + 1), &rows);
    rows.resize(body);
    if (size.rows >= 2)
        rows.push_back(Row().add(state.answer));
    rows.push_back(Row().add("> ", Style::HEADING).add(state.typed + "_"));
    std::vector<std::string> lines;
    for (const Row &row : rows)
        lines.push_back(row.render(size.columns, hasColour));
    return lines;
}

} // namespace plc
