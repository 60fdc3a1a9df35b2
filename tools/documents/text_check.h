#ifndef DOCUMENTS_TEXT_CHECK_H
#define DOCUMENTS_TEXT_CHECK_H

#include "documents/problems.h"

#include <optional>
#include <string>

// Names, units and comments reach terminals, tables and lines of results. What could write over them, or turn their
// direction around, is refused where a file is read.

struct BadCharacter {
    std::size_t at; // of its first byte
    std::string what;
};

/// The first byte that is no UTF-8, or the first control character that is not one of `allowed`.
std::optional<BadCharacter> findBadCharacter(const std::string &text, const std::string &allowed = std::string());

/// Reports the first such character of a file's text, where tabs and line ends are allowed. Returns true if there is
/// none.
bool checkCharacters(const std::string &text, const std::string &file, Problems &problems);

/// The text with a ? for each such character.
std::string withoutBadCharacters(std::string text);

#endif
