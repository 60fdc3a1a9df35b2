#include "documents/document.h"

#include "documents/csv_reader.h"
#include "documents/text_check.h"

#include <algorithm>

namespace {

bool checkHeader(const std::vector<Field> &header, const std::string &file, Problems &problems)
{
    if (header.size() > COLUMNS_MOST) {
        problems.add(file, header.back().place, "the header has more than " + std::to_string(COLUMNS_MOST)
                                                    + " columns; name each that is needed once");
        return false;
    }
    bool sound = checkFields(header, file, problems);
    for (std::size_t i = 0; i < header.size(); ++i) {
        const auto same = [&](const Field &other) { return other.text == header[i].text; };
        const auto end  = header.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::find_if(header.begin(), end, same) == end)
            continue;
        problems.add(file, header[i].place, "the column '" + header[i].text + "' is there twice; remove one");
        sound = false;
    }
    return sound;
}

} // namespace

DataNode parseCsv(const std::string &text, const std::string &file, Problems &problems)
{
    DataNode rows;
    rows.kind = NodeKind::ARRAY;
    if (!checkCharacters(text, file, problems))
        return rows;
    CsvReader reader(text, file, problems);
    std::vector<Field> header;
    std::vector<Field> fields;
    bool sound = true;
    if (!reader.readRecord(header, sound)) {
        problems.add(file, {1, 1}, "the file is empty; begin it with a line that names the columns");
        return rows;
    }
    if (!checkHeader(header, file, problems) || !sound)
        return rows;
    while (reader.readRecord(fields, sound)) {
        if (reader.fieldCount() != header.size()) {
            problems.add(file, fields.front().place, "the record has " + std::to_string(reader.fieldCount())
                         + " fields, and the header " + std::to_string(header.size())
                         + "; write one field for each column");
            continue;
        }
        if (!sound || !checkFields(fields, file, problems))
            continue;
        DataNode row;
        row.place = fields.front().place;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            DataNode cell;
            cell.kind  = NodeKind::CELL;
            cell.place = fields[i].place;
            cell.text  = fields[i].text;
            row.append(header[i].text, header[i].place, cell);
        }
        rows.children.push_back(row);
    }
    return rows;
}
