#ifndef PLC_CPU_CALENDAR_H
#define PLC_CPU_CALENDAR_H

#include "cpu/clock.h"

#include <ctime>

// Date and time of day as the CPU unit shows them: the PLC's clock, ahead or behind by what was set. It knows no zones and
// no summer time.

namespace plc {

class Calendar {
public:
    using Time = Clock::Time;

    /// Shows the machine's local time; without this UTC.
    void beginLocal(Time now);

    /// The date, the time of day, and in tm_wday the weekday, 0 for Sunday.
    std::tm read(Time now) const;

    /// Sets date and time of day; the weekday follows the calendar. Returns false, nothing being set, if `wanted` is no
    /// time that there is in the years 1998 to 2097.
    bool set(const std::tm &wanted, Time now);

    /// Sets the weekday, 0 to 6, even to another one than the date's; it is counted on from there.
    void setWeekday(int weekday, Time now);

private:
    Time::duration offset = Time::duration::zero();
    int            weekdayShift = 0;
};

/// The year of two digits as a tm_year: 98 and 99 are 1998 and 1999, all others lie behind 2000.
int yearOf(unsigned digits);

/// A byte of two binary-coded decimals; `number` is 0 to 99.
unsigned bcdOf(unsigned number);

/// Returns false, `number` unchanged, if a digit of the byte is above 9.
bool readBcd(unsigned byte, int *number);

} // namespace plc

#endif
