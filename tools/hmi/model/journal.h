#ifndef HMI_MODEL_JOURNAL_H
#define HMI_MODEL_JOURNAL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

// What happened at the panel: the latest KEPT events, of all PLCs together.

struct JournalEvent {
    enum class Kind { WRITE, ALARM, LINK, MESSAGE };

    std::chrono::system_clock::time_point utc;
    Kind        kind = Kind::MESSAGE;
    std::string plc;     // its name; "" where none is concerned
    std::string tag;     // or the alarm's; "" where none is concerned
    std::string oldText; // of a write
    std::string newText;
    std::string words;   // the fate of a write, or what happened
};

/// "write", "alarm", "link", "message".
const char *text(JournalEvent::Kind kind);

class Journal {
public:
    static constexpr std::size_t KEPT = 1000;

    void add(JournalEvent event);

    std::size_t size() const { return events_.size(); }

    /// The latest is 0.
    const JournalEvent &at(std::size_t index) const { return events_[events_.size() - 1 - index]; }

    /// How many events are no longer here, since newer ones came.
    std::uint64_t dropped() const { return dropped_; }

    /// A file of comma-separated values as in RFC 4180, the earliest event first: time,kind,plc,tag,old,new,words.
    std::string csv() const;

private:
    std::deque<JournalEvent> events_; // the latest last
    std::uint64_t            dropped_ = 0;
};

#endif
