#ifndef DOCUMENTS_DOCUMENT_H
#define DOCUMENTS_DOCUMENT_H

#include "documents/problems.h"

#include <algorithm>
#include <string>
#include <vector>

// The content of a TOML or CSV file as a tree of values, each with its place in the file.

enum class NodeKind {
    TEXT,
    INTEGER,
    NUMBER,  // with a decimal point or exponent
    BOOLEAN,
    ARRAY,
    TABLE,
    CELL,    // of a CSV file: a text or a number, as it is needed
    OTHER    // a date or a time
};

struct DataNode {
    NodeKind    kind = NodeKind::TABLE;
    Place       place;
    std::string text;                // of a single value
    std::vector<std::string> keys;   // of a table, in the order of the file
    std::vector<Place>       keyPlaces;
    std::vector<DataNode>    children; // of a table or an array

    /// The child of a table, or null.
    const DataNode *find(const std::string &key) const
    {
        const auto found = std::find(keys.begin(), keys.end(), key);
        return found == keys.end() ? nullptr : &children[static_cast<std::size_t>(found - keys.begin())];
    }

    void append(const std::string &key, Place keyPlace, const DataNode &child)
    {
        keys.push_back(key);
        keyPlaces.push_back(keyPlace);
        children.push_back(child);
    }
};

/// Parses TOML. A syntax error becomes a problem, and so does a text with control characters; the table is then empty.
DataNode parseToml(const std::string &text, const std::string &file, Problems &problems);

/// Parses CSV as in RFC 4180, with a header line: an array of tables whose keys are the header's names. Lines end with
/// LF or CR LF; empty lines and a byte-order mark are skipped. Every malformed record, and every field with control
/// characters, becomes a problem.
DataNode parseCsv(const std::string &text, const std::string &file, Problems &problems);

/// The text as a basic string of TOML, with its quotes.
std::string tomlString(const std::string &text);

/// The key of a TOML table, bare where that is possible.
std::string tomlKey(const std::string &key);

#endif
