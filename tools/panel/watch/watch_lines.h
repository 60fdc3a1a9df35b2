#ifndef PANEL_WATCH_WATCH_LINES_H
#define PANEL_WATCH_WATCH_LINES_H

#include "common/time_text.h"
#include "session/watch_values.h"

#include <string>

// What happens to watched values, one line each, for other programs.

enum class LineFormat {
    PLAIN, // TIME NAME OLD NEW; first values and changes only
    JSON,  // an object
    CSV    // a record; csvHead() comes first
};

/// The names of the fields. They and their order stay as they are: time, tag, item, event, old, value, unit, quality.
std::string csvHead();

/// The line without its end, or "" if this format has none for the event.
std::string eventLine(LineFormat format, const WatchEvent &event, SystemTime time);

#endif
