#ifndef DOCUMENTS_TOML_GUARD_H
#define DOCUMENTS_TOML_GUARD_H

#include <cstddef>
#include <optional>
#include <string>

// Whether a text may be handed to the TOML parser, which calls itself for every level of nesting and takes some forty
// times the memory of a list of small numbers.

/// Bytes of a text, levels of brackets and braces, and parts of one dotted key.
enum : std::size_t { TOML_MAX_BYTES = 4 * 1024 * 1024, TOML_MAX_LEVELS = 32, TOML_MAX_KEY_PARTS = 32 };

/// What is wrong at a place of a text; line and column count from 1, the column in bytes.
struct TomlProblem {
    unsigned    line   = 1;
    unsigned    column = 1;
    std::string text;
};

/// Returns the first place of `text` that the parser must not see. Whether the rest is TOML is the parser's to say.
std::optional<TomlProblem> findTomlDanger(const std::string &text);

#endif
