#include "model/trend_window.h"

#include <algorithm>
#include <cmath>

TrendWindow::TrendWindow(TrendTime span) : span_(std::clamp(span, SHORTEST, LONGEST))
{
}

void TrendWindow::setNow(TrendTime now)
{
    now_ = now;
    if (isLive_)
        end_ = now;
}

void TrendWindow::setLive(bool isLive)
{
    isLive_ = isLive;
    if (isLive_)
        end_ = now_;
}

void TrendWindow::zoom(double factor, double at)
{
    const double wanted = static_cast<double>(span_) * factor;
    const TrendTime span = std::llround(std::clamp(wanted, static_cast<double>(SHORTEST), static_cast<double>(LONGEST)));
    const double behind = isLive_ ? 0 : 1 - at; // part of the window that is later than what stays
    end_ += std::llround(behind * static_cast<double>(span - span_));
    span_ = span;
    limit();
}

void TrendWindow::pan(double part)
{
    isLive_ = false;
    end_ += std::llround(part * static_cast<double>(span_));
    limit();
}

void TrendWindow::limit()
{
    end_ = std::clamp(end_, now_ - LONGEST + span_, now_);
}
