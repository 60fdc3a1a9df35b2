#include "fins/cpu_commands.h"

namespace plc {

namespace {

// Parameters of CLOCK WRITE and data of CLOCK READ, one byte each, in BCD. Seconds and weekday may both be left out.
enum : std::size_t {
    CLOCK_YEAR    = 2,
    CLOCK_MONTH   = 3,
    CLOCK_DAY     = 4,
    CLOCK_HOUR    = 5,
    CLOCK_MINUTE  = 6,
    CLOCK_SECOND  = 7,
    CLOCK_WEEKDAY = 8, // 00 is Sunday
    CLOCK_END     = 9
};

enum : int { WEEKDAY_MAX = 6 };

// Returns false if a byte is no BCD or the weekday none.
bool readTime(Slice command, std::tm *time)
{
    int year = 0;
    int month = 0;
    const bool isGood = readBcd(command.get8(CLOCK_YEAR), &year) && readBcd(command.get8(CLOCK_MONTH), &month) &&
                        readBcd(command.get8(CLOCK_DAY), &time->tm_mday) &&
                        readBcd(command.get8(CLOCK_HOUR), &time->tm_hour) &&
                        readBcd(command.get8(CLOCK_MINUTE), &time->tm_min) &&
                        readBcd(command.get8(CLOCK_SECOND), &time->tm_sec) &&
                        readBcd(command.get8(CLOCK_WEEKDAY), &time->tm_wday);
    time->tm_year = yearOf(static_cast<unsigned>(year));
    time->tm_mon = month - 1;
    return isGood && time->tm_wday <= WEEKDAY_MAX;
}

} // namespace

// CLOCK READ, 07 01.
unsigned readClock(Controller &controller, Slice command, Bytes &data)
{
    if (const EndCode wrong = checkLength(command, 0, 0))
        return wrong;
    const std::tm time = controller.time();
    for (const int part : {time.tm_year % 100, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec,
                           time.tm_wday})
        add8(data, bcdOf(static_cast<unsigned>(part)));
    return END_NORMAL;
}

// CLOCK WRITE, 07 02. Seconds that are left out are 0, a weekday that is left out is the calendar's.
unsigned writeClock(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkLength(command, CLOCK_SECOND - CLOCK_YEAR, CLOCK_END - CLOCK_YEAR))
        return wrong;
    if (command.size() == CLOCK_WEEKDAY)
        return END_COMMAND_TOO_SHORT;
    std::tm time = {};
    const Clock::Time now = controller.clock.now();
    Calendar changed = controller.calendar;
    if (!readTime(command, &time) || !changed.set(time, now))
        return END_PARAMETER_ERROR;
    if (controller.right.isHeldByAnother())
        return END_NO_ACCESS_RIGHT;
    if (command.size() == CLOCK_END)
        changed.setWeekday(time.tm_wday, now);
    controller.calendar = changed;
    return END_NORMAL;
}

} // namespace plc
