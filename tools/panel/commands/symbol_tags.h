#ifndef PANEL_COMMANDS_SYMBOL_TAGS_H
#define PANEL_COMMANDS_SYMBOL_TAGS_H

#include "documents/symbol_table.h"
#include "values/tags.h"

// Tags from a table of symbols of a programming tool, which is no list of tags as projects have it.

/// The symbols of the table; nothing if the text is a list of tags, or no table. Malformed lines become problems.
std::optional<std::vector<Symbol>> readSymbols(const std::string &text, const std::string &file, Problems &problems);

/// Adds those that the driver can read to `book`. The others become problems, "'NAME': why"; a name that a tag may not
/// have is changed, which is among the `notes`.
void addSymbols(const std::vector<Symbol> &symbols, const std::string &file, TagBook &book, Problems &problems,
                Problems &notes);

#endif
