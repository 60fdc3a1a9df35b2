#ifndef PLC_OPTIONS_PROJECT_READER_H
#define PLC_OPTIONS_PROJECT_READER_H

#include "common/toml_text.h"

#include <string>
#include <vector>

// What the two tables of a project file are read with.

namespace plc {

/// Collects what is wrong in a file.
class Problems {
public:
    explicit Problems(const std::string &fileName) : file(fileName) {}

    void add(const toml::source_position &place, const std::string &text);
    void add(const toml::node &node, const std::string &text) { add(node.source().begin, text); }
    void add(const toml::key &key, const std::string &text) { add(key.source().begin, text); }

    /// "FILE:LINE:COL: text", in the order of the file.
    std::vector<std::string> lines() const;

private:
    struct Entry {
        toml::source_position place;
        std::string           text;
    };
    std::string        file;
    std::vector<Entry> entries;
};

/// One key of a table with its value.
struct Member {
    const toml::key  *key;
    const toml::node *value;
};

/// The members in the order of the file.
std::vector<Member> membersOf(const toml::table &table);

} // namespace plc

#endif
