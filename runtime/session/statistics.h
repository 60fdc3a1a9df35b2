#ifndef RUNTIME_SESSION_STATISTICS_H
#define RUNTIME_SESSION_STATISTICS_H

#include "base/durations.h"

#include <map>
#include <string>

// What a run did on the link: counts, round trips and errors. The time is an argument.

struct Statistics {
    unsigned long connections  = 0; // TCP connections made
    unsigned long requests     = 0; // frames sent, repetitions included
    unsigned long retries      = 0; // of these, frames that were sent before
    unsigned long replies      = 0; // whole replies received
    unsigned long refused      = 0; // of these, replies that refuse the request with an end code
    unsigned long missing      = 0; // requests without a whole reply in time
    unsigned long wrong        = 0; // replies that do not answer their request
    unsigned long losses       = 0; // links lost and attempts to connect that failed
    unsigned long wordsRead    = 0;
    unsigned long wordsWritten = 0; // a bit counts as a word
    Durations     roundTrips;       // from the first byte sent to the last byte received

    /// Requests whose reply was missing or wrong.
    unsigned long rejected() const { return missing + wrong; }
    unsigned long reconnects() const { return connections > 0 ? connections - 1 : 0; }

    /// Counts an error. At most ERROR_KINDS texts are told apart.
    void noteError(const std::string &text);

    /// The number of errors that were counted.
    unsigned long errorCount() const;

    /// Lines with their ends, for a run that took `elapsed`.
    std::string text(std::chrono::milliseconds elapsed) const;

    static constexpr std::size_t ERROR_KINDS = 20;

private:
    std::map<std::string, unsigned long> errors_;
};

#endif
