#ifndef PLC_SERVING_STOP_SIGNALS_H
#define PLC_SERVING_STOP_SIGNALS_H

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>

namespace plc {

/// Stops `io` at SIGINT, SIGTERM and SIGHUP, but for those that were ignored before the start, by nohup for one.
void stopAtSignals(asio::signal_set &signals, asio::io_context &io);

} // namespace plc

#endif
