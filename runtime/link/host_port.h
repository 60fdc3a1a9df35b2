#ifndef RUNTIME_LINK_HOST_PORT_H
#define RUNTIME_LINK_HOST_PORT_H

#include "base/clock.h"

#include <string>

/// Splits HOST, HOST:PORT or [IPV6]:PORT; without a port it is 9600. Throws UsageError.
void parseHost(const std::string &text, std::string &host, std::string &port);

/// What parseHost() takes apart, with the port.
std::string hostAndPort(const std::string &host, const std::string &port);

/// Settings for the system's resolver, as its variable RES_OPTIONS takes them, so that a name server that does not
/// answer holds up for `timeout` only, in whole seconds.
std::string resolverOptions(Millis timeout);

#endif
