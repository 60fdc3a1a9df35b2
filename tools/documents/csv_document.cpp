#include "documents/document.h"

#include "documents/text_check.h"

#include <algorithm>

namespace {

// More than any file has: what names more is none.
const std::size_t COLUMNS_MOST = 64;

struct Field {
    std::string text;
    Place       place;
};

// Reads one record after the other. Columns count characters of UTF-8, as TOML's places do.
class CsvReader {
public:
    CsvReader(const std::string &text, const std::string &file, Problems &problems)
        : text_(text), file_(file), problems_(problems)
    {
        if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0)
            at_ = 3;
    }

    // Returns false at the end of the file. `sound` tells whether the record is well formed. Of a record with too many
    // fields, `fields` holds one more than is allowed.
    bool readRecord(std::vector<Field> &fields, bool &sound);

    // The fields of the latest record.
    std::size_t fieldCount() const { return fieldCount_; }

private:
    bool atEnd() const { return at_ >= text_.size(); }
    bool atLineEnd() const { return atEnd() || text_[at_] == '\n' || text_.compare(at_, 2, "\r\n") == 0; }
    void step();
    void endLine();
    bool readField(Field &field);
    bool readQuoted(Field &field);

    const std::string &text_;
    const std::string &file_;
    Problems          &problems_;
    std::size_t        at_ = 0;
    std::size_t        fieldCount_ = 0;
    Place              place_{1, 1};
};

void CsvReader::step()
{
    const unsigned char c = static_cast<unsigned char>(text_[at_++]);
    if (c == '\n')
        place_ = {place_.line + 1, 1};
    else if ((c & 0xC0) != 0x80) // a byte that continues a character does not count
        ++place_.column;
}

void CsvReader::endLine()
{
    if (!atEnd() && text_[at_] == '\r')
        step();
    if (!atEnd())
        step();
}

// The part of a field between its quotes; the opening one is at the place.
bool CsvReader::readQuoted(Field &field)
{
    step();
    for (;; step()) {
        if (atEnd()) {
            problems_.add(file_, field.place, "the quote is not closed; end the field with another \"");
            return false;
        }
        if (text_[at_] == '"') {
            step();
            if (atEnd() || text_[at_] != '"')
                break;
        }
        field.text += text_[at_];
    }
    if (atLineEnd() || text_[at_] == ',')
        return true;
    problems_.add(file_, place_, "text behind a closing quote; write a quote inside a quoted field as \"\"");
    while (!atLineEnd() && text_[at_] != ',')
        step();
    return false;
}

bool CsvReader::readField(Field &field)
{
    field = {"", place_};
    if (!atEnd() && text_[at_] == '"')
        return readQuoted(field);
    bool sound = true;
    for (; !atLineEnd() && text_[at_] != ','; step()) {
        if (text_[at_] == '"' && sound) {
            problems_.add(file_, place_, "a quote inside a field without quotes; quote the field and write \"\"");
            sound = false;
        }
        field.text += text_[at_];
    }
    return sound;
}

bool CsvReader::readRecord(std::vector<Field> &fields, bool &sound)
{
    while (!atEnd() && atLineEnd())
        endLine();
    if (atEnd())
        return false;
    fields.clear();
    sound = true;
    for (fieldCount_ = 1;; ++fieldCount_) {
        Field field;
        sound = readField(field) && sound;
        if (fieldCount_ <= COLUMNS_MOST + 1)
            fields.push_back(field);
        if (atLineEnd())
            break;
        step(); // the comma
    }
    endLine();
    return true;
}

// A field may be a text of several lines; what it is shown in has one.
bool checkFields(const std::vector<Field> &fields, const std::string &file, Problems &problems)
{
    bool sound = true;
    for (const Field &field : fields) {
        if (const std::optional<BadCharacter> bad = findBadCharacter(field.text)) {
            problems.add(file, field.place, bad->what);
            sound = false;
        }
    }
    return sound;
}

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
