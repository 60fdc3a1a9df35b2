#ifndef RUNTIME_PROJECT_SETTINGS_H
#define RUNTIME_PROJECT_SETTINGS_H

#include "session/runtime.h"
#include "values/codec.h"

#include <string>

// The numbers that a user can set, each in one row: its option, its key in a project file, its range, unit and help.
// Options, keys, their checks and the help texts come from here. The default is the value that its variable starts with.

struct Setting {
    const char *option; // null: none
    const char *key;    // null: none
    bool        isWhole;
    double      minimum;
    double      maximum;
    const char *unit;   // "": a bare number
    const char *help;
    bool        refusesZero = false; // although it lies in the range
};

/// The longest read that fits a FINS frame of a PLC's Ethernet unit; a write is shorter, see WRITE_WORDS_LIMIT.
constexpr qint32 READ_WORDS_LIMIT = 999;

namespace settings {

constexpr Setting PORT = {nullptr, "port", true, 1, 65535, "", "TCP port of the PLC"};
constexpr Setting TIMEOUT = {
    "--timeout", "timeout_ms", true, 10, 60000, "ms", "deadline to connect, to send and for a reply"};
constexpr Setting READ_WORDS = {
    "--words-per-frame", nullptr, true, 1, READ_WORDS_LIMIT, "words", "the most of one request"};
constexpr Setting WRITE_WORDS = {
    "--words-per-frame", "words_per_frame", true, 1, WRITE_WORDS_LIMIT, "words", "the most of one request"};
constexpr Setting RETRIES = {
    "--retries", "retries", true, 1, 100, "", "missing or wrong replies in a row that drop the link"};
constexpr Setting STATION = {"--station", "station", true, 0, 255, "", "station number of the PLC in the panel"};
constexpr Setting INTERVAL = {"--interval", "interval_ms", true, 0, 60000, "ms", "pause between requests"};
constexpr Setting RETRY_REFUSED = {"--retry-refused", nullptr, false, 0.01, 86400, "seconds",
                                   "time after which a block that the PLC refused is read again"};
constexpr Setting GIVE_UP = {"--give-up", nullptr, false, 0.1, 86400, "seconds",
                             "time after which the command ends without success"};
constexpr Setting WATCH_FOR = {"--for", nullptr, false, 0.001, 1e9, "seconds", "time to watch; for ever by default"};
constexpr Setting WAIT_FOR = {"--for", nullptr, false, 0.001, 1e9, "seconds", "time to wait; for ever by default"};
constexpr Setting LOG_FOR = {"--for", nullptr, false, 0.001, 1e9, "seconds", "time to log; for ever by default"};
constexpr Setting DEADBAND = {"--deadband", nullptr, false, 0, 1e15, "",
                              "smaller changes, as shown, are left out, where the tag has no deadband of its own"};
constexpr Setting KEEP = {"--keep", nullptr, true, 1, 1e6, "files", "closed files to keep, the latest ones; all by default"};
constexpr Setting CHANGES = {"--changes", nullptr, true, 1, 1e9, "",
                             "end after this many changes, first values not counted"};
constexpr Setting ROUND_TRIPS = {"--count", nullptr, true, 1, 1e6, "", "round trips to measure"};
constexpr Setting BENCH_WORDS = {"--words", nullptr, true, 1, 10000, "words", "size of the block that is polled"};
constexpr Setting BENCH_SIZES = {"--sizes", nullptr, true, 1, READ_WORDS_LIMIT, "words",
                                 "words per frame to try, separated by commas"};
constexpr Setting BENCH_FOR = {"--for", nullptr, false, 0.01, 3600, "seconds", "time for each size"};
constexpr Setting SCALE = {"--scale", nullptr, false, -1e15, 1e15, "", "what one step of the raw number is worth", true};
constexpr Setting OFFSET = {"--offset", nullptr, false, -1e15, 1e15, "", "added to the scaled number"};
constexpr Setting DECIMALS = {"--decimals", nullptr, true, 0, DECIMALS_LIMIT, "",
                              "digits behind the point; as many as needed by default"};
constexpr Setting COPIES = {"count", nullptr, true, 1, 100000, "", "number of copies"};
constexpr Setting STEP = {"--step", nullptr, true, 1, 100000, "",
                          "distance of two copies in words, or bits for a bit type"};

} // namespace settings

/// "10 to 60000 ms", "-1e+15 to 1e+15, not 0"
std::string rangeText(const Setting &setting);

/// A number of the setting's range. Returns false for anything else, such as nan; then `value` is untouched.
bool parseSetting(const Setting &setting, const std::string &text, double &value);

/// True if a variable with this value has been given one: what lies outside the range stands for none.
bool isSet(const Setting &setting, double value);

/// A number in as few characters as tell it.
std::string plainNumber(double number);

#endif
