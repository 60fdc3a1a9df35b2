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
        : m_plc(m_runtime.library), m_regType(QLatin1String(regType)), m_place(0)
    {
        const int words = static_cast<int>(state.range(0));
        watchAndPoll(m_runtime, m_plc, words, false);
        m_stride = (std::min(words, 32768) - 64) / 14 * itemsPerWord;
    }

    void read() { m_runtime.library.getData(0, m_regType, nextAddress(), 64, m_values); }
    void write() { m_runtime.library.setData(0, m_regType, nextAddress(), 64, m_values, 1); }

private:
    qint32 nextAddress()
    {
        m_place = (m_place + 1) % 15;
        return m_place * m_stride;
    }

    BenchRuntime  m_runtime;
    ConstantPlc   m_plc;
    const QString m_regType;
    qint32        m_stride;
    qint32        m_place;
    quint8        m_values[128] = {};
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
