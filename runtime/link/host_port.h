#ifndef RUNTIME_LINK_HOST_PORT_H
#define RUNTIME_LINK_HOST_PORT_H

#include <string>

/// Splits HOST, HOST:PORT or [IPV6]:PORT; without a port it is 9600. Throws UsageError.
void parseHost(const std::string &text, std::string &host, std::string &port);

/// What parseHost() takes apart, with the port.
std::string hostAndPort(const std::string &host, const std::string &port);

#endif
