#include "link/host_port.h"

#include "common/numbers.h"
#include "common/usage_error.h"

static const char DEFAULT_PORT[] = "9600";

void parseHost(const std::string &text, std::string &host, std::string &port)
{
    const bool bracketed = !text.empty() && text[0] == '[';
    const std::size_t end   = bracketed ? text.find(']') : text.find(':');
    const std::size_t begin = bracketed ? 1 : 0;
    if (bracketed && end == std::string::npos)
        throw UsageError("'" + text + "' is not a host; write [ADDRESS]:PORT for an IPv6 address");
    host = text.substr(begin, end == std::string::npos ? end : end - begin);
    std::string rest = end == std::string::npos ? "" : text.substr(end + (bracketed ? 1 : 0));
    port = rest.empty() ? DEFAULT_PORT : rest.substr(1);
    long number = 0;
    if (host.empty() || (!rest.empty() && (rest[0] != ':' || !parseNumber(port, 1, 65535, number))))
        throw UsageError("'" + text + "' is not a host; write HOST or HOST:PORT with a port from 1 to 65535");
}

std::string hostAndPort(const std::string &host, const std::string &port)
{
    const bool isIpv6 = host.find(':') != std::string::npos;
    return (isIpv6 ? "[" + host + "]" : host) + ":" + port;
}
