#include "documents/csv_reader.h"

#include "documents/text_check.h"

CsvReader::CsvReader(const std::string &text, const std::string &file, Problems &problems, char separator)
    : text_(text), file_(file), problems_(problems), separator_(separator)
{
    if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0)
        at_ = 3;
}

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
    if (atFieldEnd())
        return true;
    problems_.add(file_, place_, "text behind a closing quote; write a quote inside a quoted field as \"\"");
    while (!atFieldEnd())
        step();
    return false;
}

bool CsvReader::readField(Field &field)
{
    field = {"", place_};
    if (!atEnd() && text_[at_] == '"')
        return readQuoted(field);
    bool sound = true;
    for (; !atFieldEnd(); step()) {
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
        step(); // the separator
    }
    endLine();
    return true;
}

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
