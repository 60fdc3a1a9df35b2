#ifndef PLC_OPTIONS_PROJECT_MEMORY_H
#define PLC_OPTIONS_PROJECT_MEMORY_H

#include "documents/toml_text.h"
#include "options/options.h"

#include <string>
#include <vector>

// The table [memory] of a project file: TYPE:ADDRESS[:COUNT] = value.

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

/// Reads the table. The places have to lie inside `memory`, and E is its current bank or what the table makes it.
std::vector<Content> readMemoryTable(const toml::table &table, Memory memory, Problems &problems);

} // namespace plc

#endif
