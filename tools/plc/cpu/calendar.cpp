#include "cpu/calendar.h"

namespace plc {

namespace {

const int WEEK = 7;

// The time as if it were UTC, so that every date and time of day is there once.
std::time_t secondsOf(const std::tm &time)
{
    std::tm copy = time;
    return timegm(&copy);
}

std::tm calendarOf(Calendar::Time time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm calendar = {};
    gmtime_r(&seconds, &calendar);
    return calendar;
}

bool isEqual(const std::tm &a, const std::tm &b)
{
    return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday && a.tm_hour == b.tm_hour &&
           a.tm_min == b.tm_min && a.tm_sec == b.tm_sec;
}

} // namespace

void Calendar::beginLocal(Time now)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local = {};
    localtime_r(&seconds, &local);
    offset = std::chrono::seconds(secondsOf(local) - seconds);
}

std::tm Calendar::read(Time now) const
{
    std::tm time = calendarOf(now + offset);
    time.tm_wday = (time.tm_wday + weekdayShift) % WEEK;
    return time;
}

// A date that there is not, 30 February for one, comes back as another one. A Time ends in the year 2262.
bool Calendar::set(const std::tm &wanted, Time now)
{
    if (wanted.tm_year < yearOf(98) || wanted.tm_year > yearOf(97))
        return false;
    const Time time = std::chrono::system_clock::from_time_t(secondsOf(wanted));
    if (!isEqual(calendarOf(time), wanted))
        return false;
    offset = time - now;
    weekdayShift = 0;
    return true;
}

void Calendar::setWeekday(int weekday, Time now)
{
    weekdayShift = (weekdayShift + weekday - read(now).tm_wday + WEEK) % WEEK;
}

int yearOf(unsigned digits) { return static_cast<int>(digits < 98 ? digits + 100 : digits); }

unsigned bcdOf(unsigned number) { return number / 10 << 4 | number % 10; }

bool readBcd(unsigned byte, int *number)
{
    if (byte >> 4 > 9 || (byte & 0xFu) > 9)
        return false;
    *number = static_cast<int>((byte >> 4) * 10 + (byte & 0xFu));
    return true;
}

} // namespace plc
