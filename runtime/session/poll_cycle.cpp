#include "session/poll_cycle.h"

void PollCycle::note(const QString &regType, qint32 address, TimePoint now)
{
    if (running_ && (regType != regType_ || address != address_))
        return;
    if (running_) {
        latest_ = std::chrono::duration_cast<Micros>(now - start_);
        all_.add(latest_);
    }
    running_ = true;
    regType_ = regType;
    address_ = address;
    start_   = now;
}
