#ifndef PANEL_HOST_H
#define PANEL_HOST_H

#include <string>

/// Splits HOST, HOST:PORT or [IPV6]:PORT; without a port it is 9600. Throws UsageError.
void parseHost(const std::string &text, std::string &host, std::string &port);

#endif
