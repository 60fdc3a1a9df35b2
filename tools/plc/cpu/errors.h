#ifndef PLC_CPU_ERRORS_H
#define PLC_CPU_ERRORS_H

#include "cpu/bytes.h"

#include <cstddef>
#include <ctime>
#include <deque>
#include <string>
#include <vector>

// What is wrong with the CPU unit: the errors that stand, and the log of those that came.

namespace plc {

struct ErrorKind {
    const char *name;
    unsigned    code;     // with number 0
    unsigned    least;    // number of the unit, rack or instruction; it is added to the code
    unsigned    most;     // 0: it has no number
    bool        isFatal;  // the CPU unit stops
    unsigned    bit;      // of word A401 if it is fatal, of A402 if not
    bool        hasCause; // that has to go before the error can be cleared
    bool        hasText;  // that the program gives with it
};

/// The kind called `name`, or null.
const ErrorKind *findErrorKind(const std::string &name);

/// The names, separated by spaces.
std::string errorKindNames();

struct CpuError {
    const ErrorKind *kind;
    unsigned         number;
    std::string      text; // up to 16 characters

    unsigned code() const { return kind->code + number; }
};

/// The errors that stand, the worst one first.
class StandingErrors {
public:
    /// Adds the error. Returns false if it stands already; then it has a new text.
    bool add(const CpuError &error);

    /// Takes the error away. Returns false if it does not stand.
    bool remove(unsigned code);

    void removeAll() { errors.clear(); }

    bool has(unsigned code) const;

    const std::vector<CpuError> &all() const { return errors; }

    /// The worst error; null if there is none.
    const CpuError *worst() const { return errors.empty() ? nullptr : &errors.front(); }

    unsigned worstCode() const { return errors.empty() ? 0 : errors.front().code(); }
    bool isFatal() const { return !errors.empty() && errors.front().kind->isFatal; }

    /// Word A401 or A402.
    unsigned fatalWord() const { return wordOf(true); }
    unsigned nonFatalWord() const { return wordOf(false); }

    /// The bits of an end code that tell of them.
    unsigned endFlags() const;

private:
    unsigned wordOf(bool isFatal) const;

    std::vector<CpuError> errors;
};

struct ErrorRecord {
    unsigned code = 0;
    std::tm  time = {};
};

/// The record as ERROR LOG READ and AR have it: error code, details, then minute, second, day, hour, year and month.
Bytes recordBytes(const ErrorRecord &record);

/// The errors that came, oldest first; with one too many the oldest goes.
class ErrorLog {
public:
    enum : std::size_t { RECORDS_MAX = 20 };

    void add(const ErrorRecord &record)
    {
        if (records.size() == RECORDS_MAX)
            records.pop_front();
        records.push_back(record);
    }
    void clear() { records.clear(); }
    const std::deque<ErrorRecord> &all() const { return records; }

private:
    std::deque<ErrorRecord> records;
};

} // namespace plc

#endif
