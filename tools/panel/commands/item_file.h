#ifndef PANEL_COMMANDS_ITEM_FILE_H
#define PANEL_COMMANDS_ITEM_FILE_H

#include <functional>
#include <string>
#include <vector>

// A file of items, or of ITEM=VALUE, one a line. Empty lines, and those that begin with #, are passed over; so are blanks
// before an item and, unless a value ends there, behind it.

/// Calls `take` for each of `items` and then for each line of `file`, which is standard input for "-" and none for "".
/// Throws UsageError for a file that cannot be read or holds no item. A UsageError of `take` gets FILE:LINE before it.
void forEachItem(const std::vector<std::string> &items, const std::string &file,
                 const std::function<void(const std::string &)> &take);

#endif
