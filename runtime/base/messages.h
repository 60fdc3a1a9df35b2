#ifndef RUNTIME_BASE_MESSAGES_H
#define RUNTIME_BASE_MESSAGES_H

#include "base/clock.h"

#include <functional>
#include <string>
#include <vector>

// The program's messages, one line each, and a line more for a hint. A message that is the same as the one before is
// counted instead of being said again; the count is said before the next other message, or at the end.

struct Message {
    std::string text;
    std::string hint;     // what to do about it; "" for none
    bool        isAlways; // comes on standard error in any case
};

class Messages {
public:
    using Sink  = std::function<void(const Message &message)>;
    using Watch = std::function<TimePoint()>;

    // So many messages are said at once, and then so many a second.
    static constexpr unsigned long BURST      = 100;
    static constexpr unsigned long PER_SECOND = 10;

    /// Messages go to standard error.
    explicit Messages(Watch now = Clock::now);
    ~Messages() { finish(); }
    Messages(const Messages &) = delete;
    Messages &operator=(const Messages &) = delete;

    /// Messages go to `sink` instead; it gets every message at once, and no counts.
    /// With `keeps` what must not get lost is said again on standard error once the sink has gone.
    void redirect(Sink sink, bool keeps = true);

    /// Says what happens on the link. A peer can cause any number of messages: those that come too fast are counted
    /// instead, and their number is said before the next one that is not, or at the end.
    void say(const std::string &text, const std::string &hint = "");

    /// The same for the course of the link, which nobody needs to know: not if hush() was called.
    void sayCourse(const std::string &text, const std::string &hint = "");
    void hush() { hushed_ = true; }

    /// Says a line that must not get lost: it is not counted, and comes on standard error when the sink has gone.
    void sayAlways(const std::string &line);

    /// Says how often the last message came again, how many were left out, and what the sink alone has shown.
    void finish();

private:
    bool takeToken();

    Watch         now_;
    Sink          sink_; // empty: standard error
    bool          keeps_ = true;
    bool          hushed_ = false;
    std::string   last_;
    std::vector<std::string> kept_; // what the sink was told by sayAlways()
    unsigned long again_   = 0;     // times that `last_` came again
    unsigned long leftOut_ = 0;
    double        tokens_  = BURST; // messages that may be said at once
    TimePoint     countedAt_;       // when `tokens_` was right
};

#endif
