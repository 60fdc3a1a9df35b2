#include "plants/playback.h"

#include "common/numbers.h"
#include "documents/csv_reader.h"
#include "documents/text_check.h"

#include <algorithm>
#include <cmath>

namespace plc {

namespace {

const double CELL_MOST = 1e15; // every whole number up to it is exact

// Adds the number of a field. Returns an empty text, or what is wrong.
std::string addCell(const std::string &text, unsigned decimals, std::vector<Number> *rows)
{
    double number = 0;
    if (!readNumber(text, number) || !std::isfinite(number))
        return "'" + text + "' is no number; write one such as 12 or 0.5";
    const double scaled = number * std::pow(10.0, decimals);
    if (std::fabs(scaled) > CELL_MOST)
        return "the number " + text + " is too large";
    rows->push_back(std::llround(scaled));
    return std::string();
}

// The place of the column in the header, or the number of columns if it is not there.
std::size_t columnOf(const std::vector<Field> &header, const std::string &column)
{
    const auto found =
        std::find_if(header.begin(), header.end(), [&](const Field &field) { return field.text == column; });
    return static_cast<std::size_t>(found - header.begin());
}

} // namespace

Number Playback::value(Number step) const
{
    const Number row = step / every;
    const Number count = static_cast<Number>(rows.size());
    return rows[static_cast<std::size_t>(repeats ? row % count : std::min(row, count - 1))];
}

std::vector<Number> readColumn(const std::string &text, const std::string &file, const std::string &column,
                               unsigned decimals, Problems &problems)
{
    std::vector<Number> rows;
    std::vector<Field> fields;
    bool isSound = true;
    CsvReader reader(text, file, problems);
    if (!checkCharacters(text, file, problems))
        return rows;
    const bool hasHeader = reader.readRecord(fields, isSound);
    const std::size_t index = columnOf(fields, column);
    if (!hasHeader || index == fields.size()) {
        problems.add(file, {1, 1}, "there is no column '" + column + "'; name it in the first line");
        return rows;
    }
    while (reader.readRecord(fields, isSound)) {
        if (!isSound || !checkFields(fields, file, problems))
            continue;
        const std::string wrong = index < fields.size() ? addCell(fields[index].text, decimals, &rows)
                                                        : "the column '" + column + "' is missing in this line";
        if (!wrong.empty())
            problems.add(file, index < fields.size() ? fields[index].place : fields.front().place, wrong);
    }
    if (rows.empty() && !problems.any())
        problems.add(file, {2, 1}, "there is no row of numbers behind the header");
    return rows;
}

} // namespace plc
