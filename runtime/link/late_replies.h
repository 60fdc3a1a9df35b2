#ifndef RUNTIME_LINK_LATE_REPLIES_H
#define RUNTIME_LINK_LATE_REPLIES_H

#include <array>
#include <cstdint>

// Which replies a connection still owes. A request whose reply does not come in time is sent again; if the first reply
// is only late, two come, and the second would be taken for the reply to the next request, whose own reply would then
// meet the one after it, and so on for ever. Service IDs tell them apart.

class LateReplies {
public:
    LateReplies() { forget(); }

    /// For a new connection.
    void forget() { owed_.fill(0); }

    /// A request went out, and its own reply was not received.
    void unanswered(std::uint8_t sid)
    {
        if (owed_[sid] < 255)
            ++owed_[sid];
    }

    bool owes(std::uint8_t sid) const { return owed_[sid] > 0; }

    /// A reply with another service ID than the request's has arrived: true if it is a late one. It is then settled.
    bool settle(std::uint8_t sid)
    {
        const bool isOwed = owed_[sid] > 0;
        owed_[sid] = static_cast<std::uint8_t>(owed_[sid] - (isOwed ? 1 : 0));
        return isOwed;
    }

private:
    std::array<std::uint8_t, 256> owed_; // per service ID, at most 255
};

#endif
