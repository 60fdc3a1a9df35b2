#include "link/answerer.h"
#include "link/clients.h"

#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

// The link benchmark; see usage(). Client and other end run on one core where the program is started with taskset, and
// only one pair at a time has anything to do.

namespace {

double seconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Throws if fewer changes are delivered than are made, `made` of them.
void measure(int round, const char *name, Client &client, long requests, long made)
{
    const long changes = client.changes();
    const double start = seconds(CLOCK_MONOTONIC);
    const double startCpu = seconds(CLOCK_PROCESS_CPUTIME_ID);
    client.request(requests);
    const double cpu = seconds(CLOCK_PROCESS_CPUTIME_ID) - startCpu;
    const double elapsed = seconds(CLOCK_MONOTONIC) - start;
    const long delivered = client.changes() - changes;
    if (delivered < made)
        throw std::runtime_error(std::string(name) + ": " + std::to_string(delivered) + " changes delivered, "
                                 + std::to_string(made) + " made");
    std::printf("%d %s %.9f %.9f %ld\n", round, name, elapsed / static_cast<double>(requests),
                cpu / static_cast<double>(requests), delivered);
}

/// Paired rounds: in each, every client makes as many requests, one client after the other in turning order.
int rounds(int count, long requests, int changingWords)
{
    const AnswererProcess pingPongEnd(answerPingPong());
    const AnswererProcess finsEnd(answerFins(changingWords));
    const AnswererProcess modbusEnd(answerModbus(changingWords));
    const auto pingPong = pingPongClient(pingPongEnd.port());
    const auto panel = panelClient(finsEnd.port(), 0);
    const auto modbus = modbusClient(modbusEnd.port());
    const struct {
        const char *name;
        Client     *client;
        bool        delivers; // every change
    } clients[] = { { "pingpong", pingPong.get(), false },
                    { "panel", panel.get(), true },
                    { "libmodbus", modbus.get(), false } };
    for (int round = -1; round < count; ++round) {
        for (int i = 0; i < 3; ++i) {
            const auto &turn = clients[(round + 1 + i) % 3];
            if (round < 0)
                turn.client->request(requests / 10 + 1);
            else
                measure(round, turn.name, *turn.client, requests, turn.delivers ? requests * changingWords : 0);
        }
    }
    return 0;
}

/// Requests of fins_panel's loop alone, for counting the system calls of this process.
int panelOnly(long requests, int changingWords)
{
    const AnswererProcess end(answerFins(changingWords));
    const auto panel = panelClient(end.port(), 0);
    panel->request(requests);
    return 0;
}

/// CPU time of the process while fins_panel's loop waits until the next request is due, in percent of the time.
int idle(long ms)
{
    const AnswererProcess end(answerFins(0));
    const auto panel = panelClient(end.port(), ms);
    const double start = seconds(CLOCK_MONOTONIC);
    const double startCpu = seconds(CLOCK_PROCESS_CPUTIME_ID);
    panel->request(1);
    const double cpu = seconds(CLOCK_PROCESS_CPUTIME_ID) - startCpu;
    std::printf("idle %.4f\n", 100 * cpu / (seconds(CLOCK_MONOTONIC) - start));
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: bench_link rounds COUNT REQUESTS CHANGING_WORDS\n"
                         "       bench_link panel REQUESTS CHANGING_WORDS\n"
                         "       bench_link idle MILLISECONDS\n");
    return 2;
}

int run(const std::vector<std::string> &arguments)
{
    const std::string what = arguments.empty() ? "" : arguments[0];
    const auto number = [&arguments](std::size_t i) { return std::atoi(arguments[i].c_str()); };
    if (what == "rounds" && arguments.size() == 4)
        return rounds(number(1), number(2), number(3));
    if (what == "panel" && arguments.size() == 3)
        return panelOnly(number(1), number(2));
    if (what == "idle" && arguments.size() == 2)
        return idle(number(1));
    return usage();
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_link: %s\n", error.what());
        return 3;
    }
}
