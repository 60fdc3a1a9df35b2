#ifndef RUNTIME_SESSION_LINK_STATE_H
#define RUNTIME_SESSION_LINK_STATE_H

#include "base/clock.h"

#include <cstdint>
#include <random>

// The life of the link to one PLC, without the link: which state it is in, what ends the state, and when the next
// attempt to connect is due. The time is an argument everywhere.

enum class LinkPhase {
    WAITING,     // no connection; ends when a connection is made, which is due at retryAt()
    HANDSHAKING, // connected; awaits the PLC's node addresses
    PROVING,     // node addresses known; awaits the first accepted read, before which nothing is written
    ONLINE       // reads are accepted; ends with the link
};

enum class LinkEvent {
    CONNECTED,          // the TCP connection is made
    HANDSHAKE_ACCEPTED, // the driver has accepted the node addresses
    READ_ACCEPTED,      // the driver has accepted read data
    NODES_FORGOTTEN,    // the driver takes itself for unconnected, though the connection stands
    LOST                // no connection could be made, it was lost, or the driver has dropped the link
};

class LinkState {
public:
    static constexpr Millis FIRST_DELAY{100};
    static constexpr Millis LAST_DELAY{5000};

    /// The first attempt is due at once. With a `spread` other than 0, which seeds it, each pause is shortened at random,
    /// to half at most: links that were lost together do not come back together.
    explicit LinkState(TimePoint now, std::uint32_t spread = 0);

    /// The one place where the phase changes.
    void on(LinkEvent event, TimePoint now);

    LinkPhase phase() const { return phase_; }
    TimePoint retryAt() const { return retryAt_; }

    /// The pause before the next attempt, as of the last loss.
    Millis delay() const { return delay_; }

private:
    void lost(TimePoint now);

    LinkPhase phase_;
    TimePoint retryAt_;
    Millis    delay_;     // the pause of the last loss
    Millis    nextDelay_; // the pause of the next loss
    bool      isSpread_;
    std::minstd_rand random_;
};

#endif
