#include "service/plc_time.h"

#include <fmt/format.h>

#include <ctime>

namespace {

const std::size_t CLOCK_SIZE = 7;
const int FIRST_YEAR = 98; // and all behind it are of the last century

std::uint8_t bcd(int number)
{
    return static_cast<std::uint8_t>(number / 10 << 4 | number % 10);
}

std::tm calendarOf(const PlcTime &time)
{
    std::tm calendar = {};
    calendar.tm_year  = time.year - 1900;
    calendar.tm_mon   = time.month - 1;
    calendar.tm_mday  = time.day;
    calendar.tm_hour  = time.hour;
    calendar.tm_min   = time.minute;
    calendar.tm_sec   = time.second;
    return calendar;
}

int weekdayOf(const PlcTime &time)
{
    std::tm noon = calendarOf(time);
    noon.tm_hour = 12;
    timegm(&noon);
    return noon.tm_wday;
}

} // namespace

std::string plcTimeText(const PlcTime &time)
{
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", time.year, time.month, time.day, time.hour, time.minute,
                       time.second);
}

PlcTime localTime(std::chrono::system_clock::time_point time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
    std::tm calendar = {};
    localtime_r(&seconds, &calendar);
    return {calendar.tm_year + 1900, calendar.tm_mon + 1, calendar.tm_mday,
            calendar.tm_hour, calendar.tm_min, calendar.tm_sec};
}

// As clocks on a wall: where summer time ends, an hour comes twice, and a zone does not tell which of the two is meant.
std::optional<std::chrono::seconds> aheadBy(const PlcTime &time, const PlcTime &other)
{
    std::tm calendar = calendarOf(time);
    std::tm from     = calendarOf(other);
    const std::chrono::seconds difference(timegm(&calendar) - timegm(&from));
    if (calendar.tm_mday != time.day || calendar.tm_mon != time.month - 1)
        return std::nullopt;
    return difference;
}

std::optional<int> readBcd(std::uint8_t byte, int least, int most)
{
    const int tens = byte >> 4;
    const int ones = byte & 0x0F;
    const int number = 10 * tens + ones;
    if (tens > 9 || ones > 9 || number < least || number > most)
        return std::nullopt;
    return number;
}

int wholeYear(int twoDigits)
{
    return twoDigits + (twoDigits >= FIRST_YEAR ? 1900 : 2000);
}

std::vector<std::uint8_t> clockBytes(const PlcTime &time)
{
    return {bcd(time.year % 100), bcd(time.month),  bcd(time.day),           bcd(time.hour),
            bcd(time.minute),     bcd(time.second), bcd(weekdayOf(time))};
}

std::optional<PlcTime> decodeClock(const std::vector<std::uint8_t> &data)
{
    if (data.size() != CLOCK_SIZE)
        return std::nullopt;
    const auto year   = readBcd(data[0], 0, 99);
    const auto month  = readBcd(data[1], 1, 12);
    const auto day    = readBcd(data[2], 1, 31);
    const auto hour   = readBcd(data[3], 0, 23);
    const auto minute = readBcd(data[4], 0, 59);
    const auto second = readBcd(data[5], 0, 59);
    if (!year || !month || !day || !hour || !minute || !second)
        return std::nullopt;
    return PlcTime{wholeYear(*year), *month, *day, *hour, *minute, *second};
}
