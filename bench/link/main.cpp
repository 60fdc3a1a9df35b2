#include "link/answerer.h"
#include "link/clients.h"
#include "link/meters.h"
#include "link/scenes.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

// The link benchmark; see usage(). Client and other end run on one core where the program is started with taskset, and
// only one pair at a time has anything to do.

namespace {

/// Requests of fins_panel's loop alone, for counting the system calls of this process.
int panelOnly(long requests, int changingWords)
{
    const AnswererProcess end(answerFins(changingWords));
    const auto panel = panelClient(end.port(), 0);
    panel->request(requests);
    return 0;
}

/// The same for the library's public object.
int plcOnly(long requests, int changingWords)
{
    Gate gate;
    const AnswererProcess end(answerFins(changingWords, &gate));
    const auto plc = plcClient(end.port(), gate);
    plc->request(requests);
    return 0;
}

/// CPU time of the process while fins_panel's loop waits until the next request is due, in percent of the time.
int idle(long ms)
{
    const AnswererProcess end(answerFins(0));
    const auto panel = panelClient(end.port(), ms);
    const Meter meter;
    panel->request(1);
    std::printf("idle %.4f\n", 100 * meter.cpu() / meter.elapsed());
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: bench_link rounds COUNT REQUESTS CHANGING_WORDS\n"
                         "       bench_link servers COUNT REQUESTS PORT...\n"
                         "       bench_link writes COUNT WRITES\n"
                         "       bench_link many PLCS SECONDS\n"
                         "       bench_link panel REQUESTS CHANGING_WORDS\n"
                         "       bench_link plc REQUESTS CHANGING_WORDS\n"
                         "       bench_link idle MILLISECONDS\n");
    return 2;
}

int run(const std::vector<std::string> &arguments)
{
    const std::string what = arguments.empty() ? "" : arguments[0];
    const auto number = [&arguments](std::size_t i) { return std::atoi(arguments[i].c_str()); };
    if (what == "rounds" && arguments.size() == 4)
        return rounds(number(1), number(2), number(3));
    if (what == "servers" && arguments.size() > 3) {
        std::vector<int> ports;
        for (std::size_t i = 3; i < arguments.size(); ++i)
            ports.push_back(number(i));
        return servers(number(1), number(2), ports);
    }
    if (what == "writes" && arguments.size() == 3)
        return writes(number(1), number(2));
    if (what == "many" && arguments.size() == 3)
        return many(number(1), number(2));
    if (what == "panel" && arguments.size() == 3)
        return panelOnly(number(1), number(2));
    if (what == "plc" && arguments.size() == 3)
        return plcOnly(number(1), number(2));
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
