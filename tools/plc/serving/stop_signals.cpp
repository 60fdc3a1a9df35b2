#include "serving/stop_signals.h"

#include <csignal>

namespace plc {

namespace {

bool isIgnored(int signalNumber)
{
    struct sigaction inherited = {};
    return sigaction(signalNumber, nullptr, &inherited) == 0 && inherited.sa_handler == SIG_IGN;
}

} // namespace

void stopAtSignals(asio::signal_set &signals, asio::io_context &io)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(number))
            signals.add(number);
    signals.async_wait([&io](const asio::error_code &, int) { io.stop(); });
}

} // namespace plc
