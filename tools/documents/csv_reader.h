#ifndef DOCUMENTS_CSV_READER_H
#define DOCUMENTS_CSV_READER_H

#include "documents/problems.h"

#include <cstddef>
#include <string>
#include <vector>

// The records of a text as in RFC 4180, separated by any one character. Lines end with LF or CR LF; empty lines and a
// byte-order mark are skipped.

/// More columns than any file has: what names more is none.
constexpr std::size_t COLUMNS_MOST = 64;

struct Field {
    std::string text;
    Place       place;
};

/// Reads one record after the other. Columns count characters of UTF-8, as TOML's places do.
class CsvReader {
public:
    CsvReader(const std::string &text, const std::string &file, Problems &problems, char separator = ',');

    /// Returns false at the end of the file. `sound` tells whether the record is well formed; what is not is a problem.
    /// Of a record with too many fields, `fields` holds one more than is allowed.
    bool readRecord(std::vector<Field> &fields, bool &sound);

    /// The fields of the latest record.
    std::size_t fieldCount() const { return fieldCount_; }

private:
    bool atEnd() const { return at_ >= text_.size(); }
    bool atLineEnd() const { return atEnd() || text_[at_] == '\n' || text_.compare(at_, 2, "\r\n") == 0; }
    bool atFieldEnd() const { return atLineEnd() || text_[at_] == separator_; }
    void step();
    void endLine();
    bool readField(Field &field);
    bool readQuoted(Field &field);

    const std::string &text_;
    const std::string &file_;
    Problems          &problems_;
    char               separator_;
    std::size_t        at_ = 0;
    std::size_t        fieldCount_ = 0;
    Place              place_{1, 1};
};

/// Reports every field with control characters: a field may be a text of several lines, and what it is shown in has one.
bool checkFields(const std::vector<Field> &fields, const std::string &file, Problems &problems);

#endif
