#include "session/link_state.h"

#include <algorithm>

LinkState::LinkState(TimePoint now, std::uint32_t spread)
    : phase_(LinkPhase::WAITING), retryAt_(now), delay_(0), nextDelay_(FIRST_DELAY), isSpread_(spread != 0),
      random_(spread)
{
}

// The pause doubles with every loss, and starts anew only after a read was accepted: a PLC that accepts connections and
// then nothing else is not hurried.
//
//   phase \ event  CONNECTED     HANDSHAKE_ACCEPTED  READ_ACCEPTED          NODES_FORGOTTEN  LOST
//   WAITING        HANDSHAKING   -                   -                      -                WAITING, longer pause
//   HANDSHAKING    -             PROVING             -                      -                WAITING, longer pause
//   PROVING        -             -                   ONLINE, first pause    -                WAITING, longer pause
//   ONLINE         -             -                   -                      PROVING          WAITING, longer pause
void LinkState::on(LinkEvent event, TimePoint now)
{
    switch (event) {
    case LinkEvent::CONNECTED:
        if (phase_ == LinkPhase::WAITING)
            phase_ = LinkPhase::HANDSHAKING;
        return;
    case LinkEvent::HANDSHAKE_ACCEPTED:
        if (phase_ == LinkPhase::HANDSHAKING)
            phase_ = LinkPhase::PROVING;
        return;
    case LinkEvent::READ_ACCEPTED:
        if (phase_ != LinkPhase::PROVING)
            return;
        phase_     = LinkPhase::ONLINE;
        nextDelay_ = FIRST_DELAY;
        return;
    case LinkEvent::NODES_FORGOTTEN:
        if (phase_ == LinkPhase::ONLINE)
            phase_ = LinkPhase::PROVING;
        return;
    case LinkEvent::LOST:
        lost(now);
        return;
    }
}

void LinkState::lost(TimePoint now)
{
    phase_     = LinkPhase::WAITING;
    delay_     = nextDelay_;
    if (isSpread_)
        delay_ -= Millis(std::uniform_int_distribution<Millis::rep>(0, nextDelay_.count() / 2)(random_));
    retryAt_   = now + delay_;
    nextDelay_ = std::min(LAST_DELAY, 2 * nextDelay_);
}
