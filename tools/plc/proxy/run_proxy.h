#ifndef PLC_PROXY_RUN_PROXY_H
#define PLC_PROXY_RUN_PROXY_H

#include "proxy/witness.h"

#include <string>

namespace plc {

struct ProxySettings {
    std::string             host; // of the PLC
    std::string             port = "9600";
    asio::ip::tcp::endpoint local; // where clients are awaited
    WitnessSettings         witness;
};

/// Splits HOST, HOST:PORT or [IPV6]:PORT. Returns an empty text, or what is wrong; then `settings` is untouched.
std::string parsePlcAddress(const std::string &text, ProxySettings *settings);

/// Stands between clients and a PLC until `io` is stopped or the line `quit` comes. Returns an empty text at the end,
/// or what is in the way of a beginning.
std::string runProxy(asio::io_context &io, const ProxySettings &settings);

} // namespace plc

#endif
