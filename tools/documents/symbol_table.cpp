#include "documents/symbol_table.h"

#include "documents/csv_reader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <uniconv.h>
#include <unistr.h>

namespace {

// ---- Characters --------------------------------------------------------------------------------------------------

// The text in UTF-8; nothing for one that is in none of the encodings that exports have.
std::optional<std::string> inUtf8(const std::string &text)
{
    const bool isUtf16 = text.compare(0, 2, "\xFF\xFE") == 0 || text.compare(0, 2, "\xFE\xFF") == 0;
    if (!isUtf16 && !u8_check(reinterpret_cast<const std::uint8_t *>(text.data()), text.size()))
        return text;
    std::size_t size = 0;
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> converted(
        u8_conv_from_encoding(isUtf16 ? "UTF-16" : "CP1252", iconveh_error, text.data(), text.size(), nullptr, nullptr,
                              &size),
        &std::free);
    if (!converted)
        return std::nullopt;
    return std::string(reinterpret_cast<const char *>(converted.get()), size);
}

std::string trimmed(const std::string &text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// The one that the first line has most of, outside quotes.
char separatorOf(const std::string &text)
{
    const std::string candidates = "\t;,";
    std::array<std::size_t, 3> counts = {0, 0, 0};
    bool isQuoted = false;
    const std::size_t begin = std::min(text.find_first_not_of("\r\n"), text.size());
    for (std::size_t at = begin; at < text.size() && (isQuoted || text[at] != '\n'); ++at) {
        isQuoted = isQuoted != (text[at] == '"');
        const std::size_t candidate = isQuoted ? std::string::npos : candidates.find(text[at]);
        if (candidate != std::string::npos)
            ++counts[candidate];
    }
    const auto most = std::max_element(counts.begin(), counts.end());
    return candidates[static_cast<std::size_t>(most - counts.begin())];
}

// ---- Columns -----------------------------------------------------------------------------------------------------

using Record = std::vector<Field>;

enum Role { NAME, TYPE, ADDRESS, COMMENT, ROLES };

const std::size_t NO_COLUMN = COLUMNS_MOST + 1;

using Columns = std::array<std::size_t, ROLES>;

struct Heading {
    const char *word; // small letters alone
    Role        role;
};

const Heading HEADINGS[] = {
    {"name", NAME},           {"symbol", NAME},          {"symbolname", NAME},  {"variable", NAME},
    {"variablename", NAME},   {"tag", NAME},             {"tagname", NAME},     {"type", TYPE},
    {"datatype", TYPE},       {"address", ADDRESS},      {"addressvalue", ADDRESS}, {"at", ADDRESS},
    {"plcaddress", ADDRESS},  {"comment", COMMENT},      {"comments", COMMENT}, {"description", COMMENT},
};

std::string letters(const std::string &text)
{
    std::string small;
    for (const char c : text) {
        if (std::isalpha(static_cast<unsigned char>(c)))
            small += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return small;
}

Columns noColumns()
{
    Columns columns = {};
    columns.fill(NO_COLUMN);
    return columns;
}

std::string cell(const Record &record, std::size_t column)
{
    return column < record.size() ? record[column].text : "";
}

Columns namedColumns(const Record &record)
{
    Columns columns = noColumns();
    for (std::size_t i = 0; i < record.size(); ++i) {
        for (const Heading &heading : HEADINGS) {
            if (letters(record[i].text) == heading.word && columns[heading.role] == NO_COLUMN)
                columns[heading.role] = i;
        }
    }
    return columns;
}

bool isHeading(const Record &record, const SymbolForms &forms)
{
    const Columns columns = namedColumns(record);
    const auto isAddress = [&](const Field &field) { return forms.isAddress(field.text); };
    return std::count(columns.begin(), columns.end(), NO_COLUMN) <= ROLES - 2
        && std::none_of(record.begin(), record.end(), isAddress);
}

// The column with the highest sum of `weight`, which is above 0, but not `other`.
template <typename Weight>
std::size_t bestColumn(const std::vector<Record> &records, std::size_t other, const Weight &weight)
{
    std::size_t best = NO_COLUMN;
    long most        = 0;
    for (std::size_t column = 0; column <= COLUMNS_MOST; ++column) {
        long sum = 0;
        for (const Record &record : records)
            sum += column < record.size() ? weight(record[column].text) : 0;
        if (column == other || sum <= most)
            continue;
        most = sum;
        best = column;
    }
    return best;
}

// A table without a heading: names come before comments. A column of plain numbers may be a count of its lines.
Columns foundColumns(const std::vector<Record> &records, const SymbolForms &forms)
{
    Columns columns = noColumns();
    columns[ADDRESS] = bestColumn(records, NO_COLUMN, [&](const std::string &text) {
        return !forms.isAddress(text) ? 0 : text.find_first_not_of("0123456789") == std::string::npos ? 1 : 2;
    });
    columns[TYPE] = bestColumn(records, columns[ADDRESS],
                               [&](const std::string &text) { return forms.isType(text) ? 1 : 0; });
    const auto hasText = [](const std::string &text) { return text.find_first_not_of("0123456789") != std::string::npos; };
    const auto isText = [&](std::size_t column) {
        return column != columns[ADDRESS] && column != columns[TYPE]
            && std::any_of(records.begin(), records.end(),
                           [&](const Record &record) { return hasText(cell(record, column)); });
    };
    for (std::size_t column = 0; column <= COLUMNS_MOST; ++column) {
        const Role next = columns[NAME] == NO_COLUMN ? NAME : COMMENT;
        if (columns[next] == NO_COLUMN && isText(column))
            columns[next] = column;
    }
    return columns;
}

// ---- Lines -------------------------------------------------------------------------------------------------------

std::vector<Record> readRecords(const std::string &text, const std::string &file, Problems &problems)
{
    std::vector<Record> records;
    CsvReader reader(text, file, problems, separatorOf(text));
    Record record;
    bool sound = true;
    while (reader.readRecord(record, sound)) {
        if (!sound || !checkFields(record, file, problems))
            continue;
        bool isEmpty = true;
        for (Field &field : record) {
            field.text = trimmed(field.text);
            isEmpty    = isEmpty && field.text.empty();
        }
        if (!isEmpty)
            records.push_back(record);
    }
    return records;
}

// A comment with separators but no quotes has more cells than the heading.
bool hasMore(const Record &record, std::size_t cells)
{
    return std::any_of(record.begin() + static_cast<std::ptrdiff_t>(std::min(cells, record.size())), record.end(),
                       [](const Field &field) { return !field.text.empty(); });
}

} // namespace

std::optional<std::vector<Symbol>> readSymbolTable(const std::string &text, const std::string &file,
                                                   const SymbolForms &forms, Problems &problems)
{
    const std::optional<std::string> utf8 = inUtf8(text);
    if (!utf8)
        return std::nullopt;
    Problems found;
    std::vector<Record> records = readRecords(*utf8, file, found);
    const bool hasHeading = !records.empty() && isHeading(records.front(), forms);
    const Columns columns = hasHeading ? namedColumns(records.front()) : foundColumns(records, forms);
    if (columns[NAME] == NO_COLUMN || columns[ADDRESS] == NO_COLUMN)
        return std::nullopt;
    const std::size_t cells = hasHeading ? records.front().size() : COLUMNS_MOST;
    if (hasHeading)
        records.erase(records.begin());
    std::vector<Symbol> symbols;
    for (const Record &record : records) {
        const Place place = {record.front().place.line, 0};
        if (hasMore(record, cells))
            found.add(file, place, "'" + cell(record, columns[NAME]) + "': more cells than columns; quote the cell that "
                                   "has separators in it");
        else
            symbols.push_back({place.line, cell(record, columns[NAME]), cell(record, columns[TYPE]),
                               cell(record, columns[ADDRESS]), cell(record, columns[COMMENT])});
    }
    for (const Problems::Entry &entry : found.entries())
        problems.add(entry.file, entry.place, entry.text);
    return symbols;
}
