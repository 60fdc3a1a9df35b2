#ifndef PANEL_COMMANDS_SITES_H
#define PANEL_COMMANDS_SITES_H

#include "commands/item_choice.h"
#include "session/runtime.h"

#include <functional>
#include <memory>
#include <vector>

// The PLCs that a command works with, each with links of its own.

struct Site {
    using Driver = std::shared_ptr<const DriverLibrary>;

    TagBook                 book;
    LinkOptions             link;
    std::function<Driver()> driver; // of a link: it serves no other one
};

using Sites = std::vector<Site>;

TagBooks booksOf(const Sites &sites);

/// Those of the tags that are of the PLC.
std::vector<Tag> tagsOf(const Site &site, const std::vector<Tag> &tags);

/// Calls `work` with 0, 1 and so on, one below `count`: all at once, each on a thread of its own where there are several.
/// What one of them throws comes out when all have ended.
void forEachAtOnce(std::size_t count, const std::function<void(std::size_t)> &work);

#endif
