#include "proxy/run_proxy.h"

#include "common/numbers.h"
#include "console/line_reader.h"
#include "console/served_output.h"
#include "proxy/proxy.h"
#include "server/server.h"

#include <iostream>

namespace plc {

namespace {

std::string answer(asio::io_context &io, const std::string &line)
{
    if (line != "quit")
        return "error '" + line + "' is no command; a proxy knows quit alone";
    io.stop();
    return "ok";
}

void serve(asio::io_context &io, Proxy &proxy)
{
    std::cout << "listening on " << proxy.endpoint() << std::endl;
    const LineReader reader(io, LineReader::Unit::LINES,
                            [&io](const std::string &line) { std::cout << answer(io, line) << std::endl; });
    io.run();
}

} // namespace

std::string parsePlcAddress(const std::string &text, ProxySettings *settings)
{
    const bool isBracketed = !text.empty() && text[0] == '[';
    const std::size_t hostEnd = isBracketed ? text.find(']') : text.find(':');
    const std::string host = isBracketed ? text.substr(1, hostEnd - 1) : text.substr(0, hostEnd);
    const std::size_t portFrom = isBracketed && hostEnd != std::string::npos ? hostEnd + 1 : hostEnd;
    const std::string rest = portFrom < text.size() ? text.substr(portFrom) : "";
    unsigned port = 0;
    const bool isPort =
        rest.empty() || (rest[0] == ':' && readNumber(rest.substr(1), port) && port > 0 && port < 65536);
    const bool isHost = !host.empty() && (!isBracketed || hostEnd != std::string::npos);
    if (!isHost || !isPort)
        return "'" + text + "' is no address of a PLC; use HOST, HOST:PORT or [IPV6]:PORT";
    settings->host = host;
    if (!rest.empty())
        settings->port = rest.substr(1);
    return std::string();
}

std::string runProxy(asio::io_context &io, const ProxySettings &settings)
{
    asio::error_code error;
    const PlcPlaces places = asio::ip::tcp::resolver(io).resolve(settings.host, settings.port, error);
    if (error)
        return "--proxy: there is no host " + settings.host + ": " + error.message();
    const ServedOutput words(std::cout);
    const ServedOutput errors(std::cerr);
    std::unique_ptr<Proxy> proxy;
    try {
        proxy = std::make_unique<Proxy>(io, settings.local, places, settings.witness);
    } catch (const asio::system_error &failed) {
        return listenProblem(settings.local, failed.code());
    }
    serve(io, *proxy);
    return std::string();
}

} // namespace plc
