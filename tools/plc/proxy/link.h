#ifndef PLC_PROXY_LINK_H
#define PLC_PROXY_LINK_H

#include "proxy/witness.h"

#include <array>
#include <asio.hpp>
#include <functional>
#include <memory>
#include <string>

// A client's connection together with the one to the PLC that was made for it. Bytes go on unchanged and at once, and
// nothing else does. Each way holds one buffer: it reads again when the other side has taken all of that. The end of
// one side's sending, and a reset, go on, too.

namespace plc {

/// The PLC's addresses, which are tried in turn.
using PlcPlaces = asio::ip::tcp::resolver::results_type;

class Link : public std::enable_shared_from_this<Link> {
public:
    using EndHandler = std::function<void(unsigned id)>;

    Link(asio::ip::tcp::socket &&accepted, unsigned number, const PlcPlaces &places,
         const WitnessSettings &settings, EndHandler atEnd);

    /// Connects to the PLC. The client's bytes wait until it is there.
    void start();

    /// Closes both connections and reports the end.
    void close(Ending ending);

private:
    using Socket = asio::ip::tcp::socket;

    struct Way {
        Socket &from;
        Socket &to;
        char    direction; // as in a recording
        bool    hasEnded = false;
        bool    isPassing = false; // the buffer's bytes are on their way out
        std::array<std::uint8_t, 16384> buffer{};
    };

    Ending resetBy(const Socket &side) const;
    void begin();
    void giveUp(const std::string &reason);
    void read(Way &way);
    void pass(Way &way, std::size_t count);
    void endWay(Way &way);
    void watchForReset(Way &way);

    Socket             client;
    Socket             plc;
    asio::steady_timer patience; // until the PLC's connection stands
    unsigned           id;
    PlcPlaces          target;
    Witness            witness;
    EndHandler         onEnd;
    bool               isConnected = false;
    bool               isClosed = false;
    Way                requests{client, plc, '<'};
    Way                replies{plc, client, '>'};
};

} // namespace plc

#endif
