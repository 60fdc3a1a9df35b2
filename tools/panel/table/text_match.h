#ifndef PANEL_TABLE_TEXT_MATCH_H
#define PANEL_TABLE_TEXT_MATCH_H

#include <string>

/// True if `text` contains `part`, capitals being the same as small letters; in `part`, * stands for any characters and
/// ? for one. UTF-8.
bool containsLoosely(const std::string &text, const std::string &part);

#endif
