#ifndef DOCUMENTS_SYMBOL_TABLE_H
#define DOCUMENTS_SYMBOL_TABLE_H

#include "documents/problems.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Tables of symbols as programming tools export them: columns of names, addresses, types and comments in any order,
// separated by tabs, semicolons or commas, with a heading or without one, in UTF-8, UTF-16 or Windows-1252.

struct Symbol {
    int         line = 0;
    std::string name;
    std::string type;    // "" where the table has none
    std::string address;
    std::string comment;
};

/// What the cells of a table without a heading are known by.
struct SymbolForms {
    std::function<bool(const std::string &)> isType;
    std::function<bool(const std::string &)> isAddress;
};

/// The symbols of the table, or nothing if it has no columns of names and of addresses. Lines that are malformed become
/// problems and are left out. Cells have no blanks around them.
std::optional<std::vector<Symbol>> readSymbolTable(const std::string &text, const std::string &file,
                                                   const SymbolForms &forms, Problems &problems);

#endif
