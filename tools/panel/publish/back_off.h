#ifndef PANEL_PUBLISH_BACK_OFF_H
#define PANEL_PUBLISH_BACK_OFF_H

#include "base/clock.h"

#include <algorithm>
#include <random>

/// The pauses between attempts to connect: of 1 s at first, twice as long after each failure, of 30 s at the most, and
/// each shortened by up to a half, so that many programs that have lost one broker do not come back at once.
class BackOff {
public:
    explicit BackOff(unsigned seed) : random_(seed) {}

    Millis next()
    {
        const Millis longest = longest_;
        longest_ = std::min(2 * longest_, MOST);
        return Millis(std::uniform_int_distribution<Millis::rep>(longest.count() / 2, longest.count())(random_));
    }

    void reset() { longest_ = LEAST; }

private:
    static constexpr Millis LEAST{1000};
    static constexpr Millis MOST{30000};

    std::minstd_rand random_;
    Millis           longest_ = LEAST;
};

#endif
