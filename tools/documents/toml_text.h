#ifndef DOCUMENTS_TOML_TEXT_H
#define DOCUMENTS_TOML_TEXT_H

#include "documents/toml_guard.h"

// The TOML parser, set up so that no text ends the program: some malformed ones break what the parser asserts, and without
// assertions it would go on with what is wrong. Here it gives up on the text in every build. This header is the only one
// that includes the parser's.

[[noreturn]] void giveUpOnToml();

#pragma push_macro("NDEBUG")
#undef NDEBUG
#define TOML_EXCEPTIONS 1
#define TOML_ASSERT(condition) ((condition) ? static_cast<void>(0) : giveUpOnToml())
#include <toml++/toml.h>
#pragma pop_macro("NDEBUG")

/// Parses `text` into `parsed`. Returns the first thing that is wrong; then `parsed` is as it was.
std::optional<TomlProblem> parseTomlText(const std::string &text, toml::table *parsed);

/// One key of a table with its value.
struct TomlMember {
    const toml::key  *key;
    const toml::node *value;
};

/// The members in the order of the file.
std::vector<TomlMember> membersOf(const toml::table &table);

#endif
