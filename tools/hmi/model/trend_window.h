#ifndef HMI_MODEL_TREND_WINDOW_H
#define HMI_MODEL_TREND_WINDOW_H

#include "model/trend_level.h"

// The stretch of time that a trend shows: the latest, which follows the time, or an earlier one, which stands.

class TrendWindow {
public:
    static constexpr TrendTime SHORTEST = 10 * 1000;       // ms
    static constexpr TrendTime LONGEST  = 8 * 3600 * 1000; // and the earliest that can be shown

    explicit TrendWindow(TrendTime span);

    TrendTime begin() const { return end_ - span_; }
    TrendTime end() const { return end_; }
    TrendTime span() const { return span_; }
    bool      isLive() const { return isLive_; }

    void setNow(TrendTime now);
    void setLive(bool isLive);

    /// Shows `factor` times as long a stretch. The time stays in place that is at the part `at`, 0 to 1, of the window;
    /// while it is live, its end does.
    void zoom(double factor, double at);

    /// Moves by a part of the span, to later times if positive. The window then stands.
    void pan(double part);

private:
    void limit();

    TrendTime now_  = 0;
    TrendTime end_  = 0;
    TrendTime span_ = LONGEST;
    bool      isLive_ = true;
};

#endif
