#include "common/time_text.h"

#include <fmt/chrono.h>

std::string timeText(SystemTime time)
{
    using namespace std::chrono;
    const auto whole = floor<seconds>(time);
    const auto millis = duration_cast<milliseconds>(time - whole).count();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(whole), millis);
}
