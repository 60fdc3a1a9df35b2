#include "soak_run.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "resources.h"

namespace soak {

enum { PARTS = 10 };

static bool parse(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; i += 2) {
        const bool isRequests = std::strcmp(argv[i], "--requests") == 0;
        if ((!isRequests && std::strcmp(argv[i], "--seed") != 0) || i + 1 == argc)
            return false;
        char *end = nullptr;
        errno = 0;
        const long long value = std::strtoll(argv[i + 1], &end, 10);
        if (errno != 0 || end == argv[i + 1] || *end != '\0' || value < 0)
            return false;
        (isRequests ? options.requests : options.seed) = value;
    }
    return options.requests >= PARTS;
}

static void printAccount(const Counters &c)
{
    const WriteAccount &w = c.writes;
    std::printf("%lld requests, %lld replies rejected, %lld reconnects, %lld configurations, %lld plans, %lld recipe "
                "transfers, %lld conditional reads, %lld changes reported\n",
                c.requests, c.rejected, c.reconnects, c.configurations, c.plans, c.recipes, c.conditionReads,
                c.changes);
    std::printf("write pieces: %lld queued = %lld done + %lld refused + %lld reported as failed + %lld ended by a "
                "handshake + %lld cleared by a configuration\n",
                w.queued, w.done, w.refused, w.failed, w.byHandshake, w.cleared);
    std::printf("compared with the PLC: %lld words of the image, %lld bits of acknowledged writes, no difference\n",
                c.wordsCompared, c.bitsOfWrites);
}

static void runParts(const Options &options, Link &link)
{
    PanelRuntime runtime(link, static_cast<std::uint32_t>(options.seed));
    Resources warm, warmPeer;
    for (int part = 1; part <= PARTS; ++part) {
        runtime.run(options.requests * part / PARTS);
        runtime.settle();
        const Resources now = currentResources(), nowPeer = currentResources(link.peer());
        if (part == 1) {
            warm = now;
            warmPeer = nowPeer;
        }
        checkFlat(warm, now);
        if (link.peer() != 0)
            checkFlat(warmPeer, nowPeer);
    }
    printAccount(runtime.counters());
    std::printf("after warm-up: %s\nat the end:    %s\n", textOf(warm).c_str(), textOf(currentResources()).c_str());
    if (link.peer() != 0)
        std::printf("simulator after warm-up: %s\nsimulator at the end:    %s\n", textOf(warmPeer).c_str(),
                    textOf(currentResources(link.peer())).c_str());
}

int runSoak(int argc, char **argv, Options options,
            const std::function<std::unique_ptr<Link>(const Options &options)> &makeLink)
{
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--requests COUNT] [--seed NUMBER], both decimal; COUNT at least %d\n", argv[0],
                     int(PARTS));
        return 2;
    }
    try {
        const std::unique_ptr<Link> link = makeLink(options);
        runParts(options, *link);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s: seed %lld: %s\n", argv[0], options.seed, error.what());
        return 1;
    }
    return 0;
}

} // namespace soak
