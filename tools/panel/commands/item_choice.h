#ifndef PANEL_COMMANDS_ITEM_CHOICE_H
#define PANEL_COMMANDS_ITEM_CHOICE_H

#include "values/tags.h"

#include <string>
#include <vector>

// What a command is to work on: items and tags of the command line, of a file, and groups of tags.

struct ItemChoice {
    std::vector<std::string> items;  // on the command line
    std::string              file;   // with further ones, one a line; "-" is standard input, "" none
    std::vector<std::string> groups; // of tags

    bool isEmpty() const { return items.empty() && file.empty() && groups.empty(); }
};

/// The tags of the PLCs that a command is for: of one, or of several, whose names begin with that of their PLC.
using TagBooks = std::vector<const TagBook *>;

/// What is to be read, in the order in which it is named; all tags of the project for an empty choice. A name with *, ?
/// or [ is a pattern as of a shell for names of tags, which come in the order of the project. What a pattern or a group
/// brings is taken once. Throws UsageError, which begins with FILE:LINE for what a file names.
std::vector<Tag> chosenTags(const TagBooks &books, const ItemChoice &choice);

/// The same for ITEM=VALUE; there are neither patterns nor groups.
std::vector<TagWrite> chosenWrites(const TagBooks &books, const ItemChoice &choice);

/// The only book, or that of the PLC that the name begins with. Throws UsageError.
const TagBook &ownerOf(const TagBooks &books, const std::string &name);

/// The names of all groups, each once.
std::vector<std::string> groupsOf(const TagBooks &books);

#endif
