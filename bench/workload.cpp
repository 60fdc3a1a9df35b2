#include "harness.h"
#include "heap.h"

#include <malloc.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

// One workload of the library a run, in sections; see usage(). Under callgrind each section is one dump, in the order of
// the printed lines, of what ran inside the functions that bars.py names. Lines: section, units of work, allocations
// inside the driver, callbacks.

namespace {

void beginSection()
{
    resetAllocations();
    BenchRuntime::changes = 0;
    CALLGRIND_ZERO_STATS;
}

void endSection(const char *name, long units)
{
    CALLGRIND_DUMP_STATS;
    std::printf("%s %ld %ld %ld\n", name, units, allocations(), BenchRuntime::changes);
}

qint32 watch(BenchRuntime &runtime, int words, const std::string &order, int tags, bool withBits)
{
    QList<KEY_ADDRESS> watched = watchList(wordsOfPlc(words, order), tags, withBits);
    return runtime.library.addrMerge(watched);
}

/// The same number of calls of the callback with the same kind of arguments, and nothing else.
extern "C" __attribute__((noinline)) void bench_bareCallbacks(ValueChangeCallback callback, const QString &regType,
                                                              long calls)
{
    for (long i = 0; i < calls; ++i)
        callback(1, 0, regType, static_cast<qint32>(i));
}

/// Poll passes over the first words of a PLC, none of which changes.
int poll(int words, const std::string &order, int tags, int passes)
{
    BenchRuntime runtime;
    const long blocks = watch(runtime, words, order, tags, false);
    ConstantPlc plc(runtime.library);
    plc.serve(0, 2 * blocks + 1); // the handshake, and two passes

    beginSection();
    plc.serve(0, passes * blocks);
    endSection("poll", passes * blocks);
    return 0;
}

/// Poll passes over words that are all watched as words and as bits: nothing changes, then everything each time.
int change(int words, int passes)
{
    BenchRuntime runtime;
    const long blocks = watch(runtime, words, "shuffled", 1, true);
    ConstantPlc plc(runtime.library);
    plc.serve(0, 2 * blocks + 1);

    beginSection();
    plc.serve(0, passes * blocks);
    endSection("unchanged", passes * blocks);

    beginSection();
    for (int pass = 1; pass <= passes; ++pass)
        plc.serve(pass % 2 != 0 ? 0xFF : 0, blocks);
    const long calls = BenchRuntime::changes;
    endSection("changed", passes * blocks);

    beginSection();
    bench_bareCallbacks(BenchRuntime::countChange, QLatin1String("DM_bit"), calls);
    endSection("callbacks", passes * blocks);
    return 0;
}

/// Reads or writes of 64 words or 64 bits on an image of `words` words.
int access(const std::string &what, int words, int calls)
{
    BenchRuntime runtime;
    watch(runtime, words, "shuffled", 1, false);
    std::vector<quint8> buffer(128, 1);
    const bool bits = what == "getbits" || what == "setbits";
    const QString regType = QLatin1String(bits ? "DM_bit" : "DM");
    // Fifteen places, spread over the image: as many writes wait in the queue whatever the size of the image.
    const int stride = (std::min(words, 32768) - 64) / 14;
    const auto call = [&](int i) {
        const qint32 address = (i % 15) * stride * (bits ? 16 : 1);
        if (what[0] == 'g')
            runtime.library.getData(0, regType, address, 64, buffer.data());
        else
            runtime.library.setData(0, regType, address, 64, buffer.data(), 1);
    };
    for (int i = 0; i < 30; ++i)
        call(i);

    beginSection();
    for (int i = 0; i < calls; ++i)
        call(i);
    endSection(what.c_str(), calls);
    return 0;
}

/// Distinct one-word writes: the first 513 fill the queue, the others find it full.
int flood(int calls)
{
    BenchRuntime runtime;
    const int queueSize = 513;
    const quint8 value[2] = { 1, 0 };
    const QString regType = QLatin1String("DM");
    qint32 address = 0;
    const auto write = [&](int count) {
        for (int i = 0; i < count; ++i)
            runtime.library.setData(0, regType, address++, 1, value, 1);
    };

    beginSection();
    write(queueSize);
    endSection("append", queueSize);

    beginSection();
    write(calls);
    endSection("flood", calls);
    return 0;
}

int plan(int words)
{
    BenchRuntime runtime;
    QList<KEY_ADDRESS> watched = watchList(wordsOfPlc(words, "shuffled"), 1, false);
    beginSection();
    runtime.library.addrMerge(watched);
    endSection("plan", words);
    return 0;
}

int recipe(int words)
{
    BenchRuntime runtime;
    QVector<_RCP_VAR_PRO> variables = recipeVariables(wordsOfPlc(words, "shuffled"));
    beginSection();
    runtime.library.setRcpAddress(variables);
    endSection("recipe", words);
    return 0;
}

/// What the library keeps for watched words, after they were polled: bytes of heap and of resident memory.
int memory(int words)
{
    BenchRuntime runtime;
    malloc_trim(0);
    const std::size_t heapBefore = heapBytes();
    const std::size_t residentBefore = residentBytes();
    {
        const qint32 blocks = watch(runtime, words, "shuffled", 1, false);
        ConstantPlc(runtime.library).serve(1, 2 * blocks + 1);
    }
    malloc_trim(0);
    std::printf("memory %d %ld %ld\n", words, static_cast<long>(heapBytes() - heapBefore),
                static_cast<long>(residentBytes() - residentBefore));
    return 0;
}

/// What the heap and the resident memory grow by over many requests: polls with changes, and writes among them.
int growth(int words, long requests)
{
    BenchRuntime runtime;
    const qint32 blocks = watch(runtime, words, "shuffled", 1, true);
    ConstantPlc plc(runtime.library);
    const quint8 value[2] = { 1, 0 };
    const auto serve = [&](long count) {
        for (long i = 0; i < count; ++i) {
            if (i % 8 == 0)
                runtime.library.setData(0, QLatin1String("DM"), static_cast<qint32>(i % words), 1, value, 1);
            plc.serve(i / blocks % 4 == 0 ? 0xFF : 0, 1);
        }
    };
    // Both figures are taken with the same values polled and no write waiting.
    const auto settle = [&] {
        plc.serve(0, 2 * blocks);
        malloc_trim(0);
    };
    serve(20 * blocks);
    residentBytes();
    settle();
    const std::size_t heapBefore = heapBytes();
    const std::size_t residentBefore = residentBytes();
    serve(requests);
    settle();
    std::printf("growth %ld %ld %ld\n", requests, static_cast<long>(heapBytes() - heapBefore),
                static_cast<long>(residentBytes() - residentBefore));
    return 0;
}

/// The start of a panel: milliseconds to load and configure the library, and to hand over shuffled watched items.
int startUp(int items)
{
    using Clock = std::chrono::steady_clock;
    const auto ms = [](Clock::duration time) { return std::chrono::duration<double, std::milli>(time).count(); };
    QList<KEY_ADDRESS> watched = watchList(wordsOfPlc(items, "shuffled"), 1, false);

    const Clock::time_point start = Clock::now();
    BenchRuntime runtime;
    const Clock::time_point loaded = Clock::now();
    runtime.library.addrMerge(watched);
    const Clock::time_point planned = Clock::now();
    std::printf("startup %d %.3f %.3f\n", items, ms(loaded - start), ms(planned - start));
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: bench_workload poll WORDS sorted|reversed|shuffled TAGS PASSES\n"
                         "       bench_workload change WORDS PASSES\n"
                         "       bench_workload getwords|getbits|setwords|setbits WORDS CALLS\n"
                         "       bench_workload flood CALLS\n"
                         "       bench_workload plan|recipe|memory|startup WORDS\n"
                         "       bench_workload growth WORDS REQUESTS\n");
    return 2;
}

int run(const std::string &what, const std::vector<std::string> &arguments)
{
    const std::size_t count = arguments.size();
    const auto number = [&arguments](std::size_t i) { return std::atoi(arguments[i].c_str()); };
    if (what == "poll" && count == 4)
        return poll(number(0), arguments[1], number(2), number(3));
    if (what == "change" && count == 2)
        return change(number(0), number(1));
    if ((what == "getwords" || what == "getbits" || what == "setwords" || what == "setbits") && count == 2)
        return access(what, number(0), number(1));
    if (what == "flood" && count == 1)
        return flood(number(0));
    if (what == "plan" && count == 1)
        return plan(number(0));
    if (what == "recipe" && count == 1)
        return recipe(number(0));
    if (what == "memory" && count == 1)
        return memory(number(0));
    if (what == "startup" && count == 1)
        return startUp(number(0));
    if (what == "growth" && count == 2)
        return growth(number(0), number(1));
    return usage();
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> arguments(argv + std::min(argc, 2), argv + argc);
    return run(argc > 1 ? argv[1] : "", arguments);
}
