#include "cpu/clock.h"

namespace plc {

namespace {

const std::chrono::seconds YEAR_2000(946684800); // since 1970-01-01 00:00:00 UTC

} // namespace

void Clock::standStill()
{
    stepped = true;
    time = Time(YEAR_2000);
}

} // namespace plc
