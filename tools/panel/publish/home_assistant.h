#ifndef PANEL_PUBLISH_HOME_ASSISTANT_H
#define PANEL_PUBLISH_HOME_ASSISTANT_H

#include "fins_runtime/config.h"
#include "publish/topics.h"

#include <string>

// The messages by which Home Assistant finds the values without being told of them: a retained configuration for each.

struct Discovery {
    std::string topic;
    std::string payload;
};

/// For the value `name` of the tag; an array has several. With `writable` a bit is a switch and a number with limits
/// can be set; else they are shown.
Discovery discoveryOf(const std::string &discoveryPrefix, const Topics &topics, const std::string &plc,
                      const std::string &name, const fins::TagConfig &tag, bool writable);

#endif
