#include "common/time_text.h"

#include <fmt/chrono.h>

std::string timeText(SystemTime time)
{
    using namespace std::chrono;
    const auto whole = floor<seconds>(time);
    const auto millis = duration_cast<milliseconds>(time - whole).count();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(whole), millis);
}

std::string ageText(std::chrono::steady_clock::duration age)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(age).count();
    if (seconds < 60)
        return std::to_string(seconds < 0 ? 0 : seconds) + " s";
    if (seconds < 3600)
        return std::to_string(seconds / 60) + " min";
    if (seconds < 86400)
        return std::to_string(seconds / 3600) + " h";
    return std::to_string(seconds / 86400) + " d";
}
