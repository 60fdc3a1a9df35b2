#include "proxy/proxy.h"

#include <chrono>
#include <utility>

namespace plc {

namespace {

const std::chrono::milliseconds RETRY_PAUSE(100);

} // namespace

Proxy::Proxy(asio::io_context &context, const asio::ip::tcp::endpoint &local, const PlcPlaces &places,
             const WitnessSettings &settings)
    : acceptor(context, local), retry(context), target(places), witnesses(settings)
{
    acceptNext();
}

Proxy::~Proxy()
{
    const auto all = links; // each close() takes its link out of the map
    for (const auto &entry : all)
        entry.second->close(Ending::CLOSED);
}

void Proxy::acceptNext()
{
    acceptor.async_accept([this](const asio::error_code &error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted)
            return;
        if (error) {
            retryAccept();
            return;
        }
        const unsigned id = ++lastId;
        links[id] = std::make_shared<Link>(std::move(socket), id, target, witnesses,
                                           [this](unsigned ended) { links.erase(ended); });
        links[id]->start();
        acceptNext();
    });
}

// Accepting fails for want of descriptors, for instance; trying again at once would keep the processor busy.
void Proxy::retryAccept()
{
    retry.expires_after(RETRY_PAUSE);
    retry.async_wait([this](const asio::error_code &error) {
        if (!error)
            acceptNext();
    });
}

} // namespace plc
