#ifndef PANEL_MESSAGES_H
#define PANEL_MESSAGES_H

#include <functional>
#include <string>
#include <vector>

// The program's messages about the link, one line each. A message that is the same as the one before is counted instead
// of being said again; the count is said before the next other message, or at the end.

class Messages {
public:
    using Sink = std::function<void(const std::string &line)>;

    /// Messages go to standard error.
    Messages();
    ~Messages() { finish(); }
    Messages(const Messages &) = delete;
    Messages &operator=(const Messages &) = delete;

    /// Messages go to `sink` instead; it gets every message at once, and no counts.
    void redirect(Sink sink);

    void say(const std::string &line);

    /// Says a line that must not get lost: it is not counted, and comes on standard error when the sink has gone.
    void sayAlways(const std::string &line);

    /// Says how often the last message came again, if it did, and what the sink alone has shown.
    void finish();

private:
    Sink          sink_; // empty: standard error
    std::string   last_;
    std::vector<std::string> kept_; // what the sink was told by sayAlways()
    unsigned long again_; // times that `last_` came again
};

#endif
