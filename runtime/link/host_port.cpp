#include "link/host_port.h"

#include "base/numbers.h"
#include "base/usage_error.h"

#include <algorithm>

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

// The resolver takes 1 to 30 seconds for each try, and makes two unless told otherwise.
std::string resolverOptions(Millis timeout)
{
    const long long seconds = std::chrono::ceil<std::chrono::seconds>(timeout).count();
    return "timeout:" + std::to_string(std::clamp(seconds, 1LL, 30LL)) + " attempts:1";
}
