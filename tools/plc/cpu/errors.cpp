#include "cpu/errors.h"

#include "cpu/calendar.h"
#include "cpu/end_codes.h"

#include <algorithm>

namespace plc {

namespace {

// The worst first: the first one that stands is the one that word A400 and the status tell of.
const ErrorKind ERROR_KINDS[] = {
    // name               code  numbers  fatal   bit cause text
    {"memory",           0x80F1, 0,   0, true,  15, true,  false},
    {"io-bus",           0x80C0, 0,   7, true,  14, true,  false},
    {"duplicate",        0x80E9, 0,   0, true,  13, true,  false},
    {"too-many-io",      0x80E1, 0,   0, true,  11, true,  false},
    {"io-setting",       0x80E0, 0,   0, true,  10, true,  false},
    {"program",          0x80F0, 0,   0, true,   9, true,  false},
    {"cycle-time",       0x809F, 0,   0, true,   8, false, false},
    {"fals",             0xC100, 1, 511, true,   6, false, true},
    {"fal",              0x4100, 1, 511, false, 15, false, true},
    {"io-verify",        0x00E7, 0,   0, false,  9, true,  false},
    {"bus-unit",         0x0200, 0,  15, false,  7, true,  false},
    {"battery",          0x00F7, 0,   0, false,  4, true,  false},
    {"bus-unit-setting", 0x0400, 0,  15, false,  3, true,  false},
};

// The kinds are rows of one table, so their places in it compare.
bool isWorse(const CpuError &a, const CpuError &b)
{
    return a.kind != b.kind ? a.kind < b.kind : a.number < b.number;
}

} // namespace

const ErrorKind *findErrorKind(const std::string &name)
{
    for (const ErrorKind &kind : ERROR_KINDS)
        if (name == kind.name)
            return &kind;
    return nullptr;
}

std::string errorKindNames()
{
    std::string names;
    for (const ErrorKind &kind : ERROR_KINDS)
        names += (names.empty() ? "" : " ") + std::string(kind.name);
    return names;
}

bool StandingErrors::add(const CpuError &error)
{
    for (CpuError &standing : errors) {
        if (standing.code() != error.code())
            continue;
        standing.text = error.text;
        return false;
    }
    errors.insert(std::upper_bound(errors.begin(), errors.end(), error, isWorse), error);
    return true;
}

bool StandingErrors::remove(unsigned code)
{
    const auto hasCode = [code](const CpuError &error) { return error.code() == code; };
    const auto found = std::find_if(errors.begin(), errors.end(), hasCode);
    if (found == errors.end())
        return false;
    errors.erase(found);
    return true;
}

bool StandingErrors::has(unsigned code) const
{
    return std::any_of(errors.begin(), errors.end(), [code](const CpuError &error) { return error.code() == code; });
}

unsigned StandingErrors::wordOf(bool isFatal) const
{
    unsigned word = 0;
    for (const CpuError &error : errors)
        if (error.kind->isFatal == isFatal)
            word |= 1u << error.kind->bit;
    return word;
}

unsigned StandingErrors::endFlags() const
{
    return (fatalWord() != 0 ? unsigned(END_FLAG_FATAL) : 0u) | (nonFatalWord() != 0 ? unsigned(END_FLAG_NON_FATAL) : 0u);
}

// The simulated errors have no details.
Bytes recordBytes(const ErrorRecord &record)
{
    const std::tm &time = record.time;
    Bytes bytes;
    add16(bytes, record.code);
    add16(bytes, 0);
    for (const int part : {time.tm_min, time.tm_sec, time.tm_mday, time.tm_hour, time.tm_year % 100, time.tm_mon + 1})
        add8(bytes, bcdOf(static_cast<unsigned>(part)));
    return bytes;
}

} // namespace plc
