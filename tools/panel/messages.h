#ifndef PANEL_MESSAGES_H
#define PANEL_MESSAGES_H

#include <functional>
#include <string>

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

    /// Says how often the last message came again, if it did.
    void finish();

private:
    Sink          sink_; // empty: standard error
    std::string   last_;
    unsigned long again_; // times that `last_` came again
};

#endif
