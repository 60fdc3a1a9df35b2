#include "harness.h"

#include <benchmark/benchmark.h>

#include <algorithm>

// The library's functions against the clock, on images of several sizes.

namespace {

/// Watches the first words of a PLC, shuffled, and polls them all once. Returns the number of blocks.
qint32 watchAndPoll(BenchRuntime &runtime, ConstantPlc &plc, int words, bool withBits)
{
    QList<KEY_ADDRESS> watched = watchList(wordsOfPlc(words, "shuffled"), 1, withBits);
    const qint32 blocks = runtime.library.addrMerge(watched);
    plc.serve(0, 2 * blocks + 1);
    return blocks;
}

void imageSizes(benchmark::internal::Benchmark *function)
{
    for (const int words : { 100, 300, 1000, 3000, 10000, 30000, PLC_WORDS })
        function->Arg(words);
}

void planSizes(benchmark::internal::Benchmark *function)
{
    function->Arg(1000)->Arg(10000)->Arg(PLC_WORDS)->Unit(benchmark::kMillisecond);
}

/// One steady poll request with its reply.
void poll(benchmark::State &state)
{
    BenchRuntime runtime;
    ConstantPlc plc(runtime.library);
    watchAndPoll(runtime, plc, static_cast<int>(state.range(0)), false);
    for (auto unused : state)
        plc.serve(0, 1);
}

/// The same when every word and every bit of it changes and is watched.
void pollChanged(benchmark::State &state)
{
    BenchRuntime runtime;
    ConstantPlc plc(runtime.library);
    const long blocks = watchAndPoll(runtime, plc, static_cast<int>(state.range(0)), true);
    long request = 0;
    for (auto unused : state)
        plc.serve(request++ / blocks % 2 == 0 ? 0xFF : 0, 1);
}

/// 64 words or bits of the image, at fifteen places that are spread over it.
class Access {
public:
    Access(benchmark::State &state, const char *regType, int itemsPerWord)
        : plc_(runtime_.library), regType_(QLatin1String(regType)), place_(0)
    {
        const int words = static_cast<int>(state.range(0));
        watchAndPoll(runtime_, plc_, words, false);
        stride_ = (std::min(words, 32768) - 64) / 14 * itemsPerWord;
    }

    void read() { runtime_.library.getData(0, regType_, nextAddress(), 64, values_); }
    void write() { runtime_.library.setData(0, regType_, nextAddress(), 64, values_, 1); }

private:
    qint32 nextAddress()
    {
        place_ = (place_ + 1) % 15;
        return place_ * stride_;
    }

    BenchRuntime  runtime_;
    ConstantPlc   plc_;
    const QString regType_;
    qint32        stride_;
    qint32        place_;
    quint8        values_[128] = {};
};

void getWords(benchmark::State &state)
{
    Access access(state, "DM", 1);
    for (auto unused : state)
        access.read();
}

void getBits(benchmark::State &state)
{
    Access access(state, "DM_bit", 16);
    for (auto unused : state)
        access.read();
}

void setWords(benchmark::State &state)
{
    Access access(state, "DM", 1);
    for (auto unused : state)
        access.write();
}

void setBits(benchmark::State &state)
{
    Access access(state, "DM_bit", 16);
    for (auto unused : state)
        access.write();
}

void addrMerge(benchmark::State &state)
{
    BenchRuntime runtime;
    const QList<KEY_ADDRESS> items = watchList(wordsOfPlc(static_cast<int>(state.range(0)), "shuffled"), 1, false);
    for (auto unused : state) {
        QList<KEY_ADDRESS> watched = items;
        benchmark::DoNotOptimize(runtime.library.addrMerge(watched));
    }
}

void setRcpAddress(benchmark::State &state)
{
    BenchRuntime runtime;
    QVector<_RCP_VAR_PRO> variables = recipeVariables(wordsOfPlc(static_cast<int>(state.range(0)), "shuffled"));
    for (auto unused : state)
        benchmark::DoNotOptimize(runtime.library.setRcpAddress(variables));
}

} // namespace

BENCHMARK(poll)->Apply(imageSizes);
BENCHMARK(pollChanged)->Apply(imageSizes);
BENCHMARK(getWords)->Arg(1000)->Arg(PLC_WORDS);
BENCHMARK(getBits)->Arg(1000)->Arg(PLC_WORDS);
BENCHMARK(setWords)->Arg(1000)->Arg(PLC_WORDS);
BENCHMARK(setBits)->Arg(1000)->Arg(PLC_WORDS);
BENCHMARK(addrMerge)->Apply(planSizes);
BENCHMARK(setRcpAddress)->Apply(planSizes);

BENCHMARK_MAIN();
