#include "link/answerer.h"
#include "link/clients.h"
#include "link/meters.h"
#include "link/scenes.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Turn {
    const char *name;
    Client     *client;
    bool        delivers; // every change, or a later one of the same word
    bool        anyCore = false;
};

void measure(int round, const Turn &turn, long requests, int changingWords)
{
    Client &client = *turn.client;
    const long changes = client.changes();
    const long leftOut = client.leftOut();
    const Meter meter;
    client.request(requests);
    const double cpu = meter.cpu();
    const double elapsed = meter.elapsed();
    const long delivered = client.changes() - changes;
    const long dropped = client.leftOut() - leftOut;
    if (turn.delivers && delivered + dropped != requests * changingWords)
        throw std::runtime_error(std::string(turn.name) + ": " + std::to_string(delivered) + " changes delivered, "
                                 + std::to_string(requests * changingWords) + " made");
    std::printf("%d %s %.9f %.9f %ld %ld\n", round, turn.name, elapsed / static_cast<double>(requests),
                cpu / static_cast<double>(requests), delivered, dropped);
}

} // namespace

int servers(int count, long requests, const std::vector<int> &ports)
{
    const AnswererProcess end(answerFins(0));
    std::vector<std::unique_ptr<Client>> clients;
    clients.push_back(finsClient(end.port()));
    for (const int port : ports)
        clients.push_back(finsClient(port));
    for (const auto &client : clients)
        client->request(requests / 10 + 1);
    for (int round = 0; round < count; ++round) {
        std::printf("%d", round);
        for (const auto &client : clients) {
            const Meter meter;
            client->request(requests);
            std::printf(" %.9f", meter.elapsed() / static_cast<double>(requests));
        }
        std::printf("\n");
    }
    return 0;
}

int rounds(int count, long requests, int changingWords)
{
    Gate wokenGate;
    Gate plcGate;
    const AnswererProcess pingPongEnd(answerPingPong());
    const AnswererProcess wokenEnd(answerPingPong(&wokenGate));
    const AnswererProcess finsEnd(answerFins(changingWords));
    const AnswererProcess plcEnd(answerFins(changingWords, &plcGate));
    const AnswererProcess modbusEnd(answerModbus(changingWords));
    const auto pingPong = pingPongClient(pingPongEnd.port());
    const auto panel = panelClient(finsEnd.port(), 0);
    const auto modbus = modbusClient(modbusEnd.port());
    const auto woken = wokenClient(wokenEnd.port(), wokenGate);
    const auto plc = plcClient(plcEnd.port(), plcGate);
    std::vector<Turn> turns = { { "pingpong", pingPong.get(), false }, { "panel", panel.get(), true },
                                { "libmodbus", modbus.get(), false }, { "woken", woken.get(), false },
                                { "plc", plc.get(), true } };
    if (AnyCore::isThere()) {
        turns.push_back({ "woken-2", woken.get(), false, true });
        turns.push_back({ "plc-2", plc.get(), true, true });
    }
    for (int round = -1; round < count; ++round) {
        for (std::size_t i = 0; i < turns.size(); ++i) {
            const Turn &turn = turns[(static_cast<std::size_t>(round + 1) + i) % turns.size()];
            const AnyCore cores(turn.anyCore);
            if (round < 0)
                turn.client->request(requests / 10 + 1);
            else
                measure(round, turn, requests, changingWords);
        }
    }
    return 0;
}
