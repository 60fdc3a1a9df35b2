// One workload of the driver a run, for counting: `bench_workload poll WORDS ORDER TAGS PASSES [changing]` and others,
// see usage(). Under callgrind only the passes are counted, and of them only what runs inside the functions that
// scripts/bench names; without it the numbers of heap allocations are printed.

#include "support/loaded_driver.h"
#include "support/low_memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <valgrind/callgrind.h>

namespace {

long allocations = 0;
bool counting = false;
long callbacks = 0;

struct Item {
    const char *regType;
    qint32      address;
};

struct Area {
    const char *name;
    qint32      words;
};

const Area AREAS[] = { { "DM", 32768 }, { "CIO", 6144 }, { "T", 4096 }, { "C", 4096 }, { "HR", 1536 }, { "AR", 960 },
                       { "WR", 512 } };

/// The first `wordCount` words of a PLC, DM first.
std::vector<Item> wordsOfPlc(int wordCount)
{
    std::vector<Item> items;
    for (const Area &area : AREAS) {
        for (qint32 word = 0; word < area.words && static_cast<int>(items.size()) < wordCount; ++word)
            items.push_back({ area.name, word });
    }
    return items;
}

void arrange(std::vector<Item> &items, const std::string &order)
{
    if (order == "reversed")
        std::reverse(items.begin(), items.end());
    if (order == "shuffled") {
        std::mt19937 random(1);
        std::shuffle(items.begin(), items.end(), random);
    }
}

QList<KEY_ADDRESS> watchList(const std::vector<Item> &items, int tags, bool withBits)
{
    QList<KEY_ADDRESS> list;
    for (size_t i = 0; i < items.size(); ++i) {
        KEY_ADDRESS key;
        std::memset(key.data, 0, sizeof key.data);
        key.requestTag = static_cast<qint32>(i % static_cast<size_t>(tags));
        key.regType = QLatin1String(items[i].regType);
        key.address = items[i].address;
        key.count = 1;
        list.append(key);
        if (withBits && key.regType != QLatin1String("T") && key.regType != QLatin1String("C")) {
            key.regType += QLatin1String("_bit");
            key.address *= 16;
            key.count = 16;
            list.append(key);
        }
    }
    return list;
}

void onChange(qint32, qint32, QString, qint32)
{
    ++callbacks;
}

/// Answers requests with one value everywhere.
class ConstantPlc {
public:
    explicit ConstantPlc(LoadedDriver &library) : m_library(library) {}

    /// One request and its reply.
    void serve(quint8 value)
    {
        if (m_library.getSendFrame(&m_request) != 1)
            return;
        QByteArray reply(m_request.rcvLen, static_cast<char>(value));
        reply.replace(0, qMin(30, m_request.rcvLen), QByteArray(qMin(30, m_request.rcvLen), 0));
        if (m_request.sendLen > 25)
            reply.replace(25, 1, QByteArray(1, static_cast<char>(m_request.frame[25])));
        m_library.dealRcvFrame(reply, m_info);
    }

private:
    LoadedDriver &m_library;
    FRAME_PRO     m_request = FRAME_PRO();
    QString       m_info;
};

struct Runtime {
    LoadedDriver library;
    LowMemory    sharedBlock;
    LowMemory    recipeBuffer;
    LowMemory    mutexPlace;
    QMutex      *mutex;

    Runtime()
        : sharedBlock(60117), recipeBuffer(2 * 65536, 2), mutexPlace(sizeof(QMutex), alignof(QMutex)),
          mutex(new (mutexPlace.data()) QMutex)
    {
        qint32 status = 0;
        library.setAddrValueChangeCallBack(onChange);
        library.initProperty(sharedBlock.address(), 0, recipeBuffer.address(), &status, "1#0#0#3#64",
                             mutexPlace.address());
    }

    ~Runtime() { mutex->~QMutex(); }
};

void startCounting()
{
    allocations = 0;
    callbacks = 0;
    counting = true;
    CALLGRIND_ZERO_STATS;
}

void stopCounting(const char *unit, long units)
{
    CALLGRIND_DUMP_STATS;
    counting = false;
    std::printf("%s %ld allocations %ld callbacks %ld\n", unit, units, allocations, callbacks);
}

/// Poll passes over the first WORDS words; with `changing` every word is also watched as bits and changes each time.
void pollPasses(int words, const std::string &order, int tags, int passes, bool changing)
{
    Runtime runtime;
    std::vector<Item> items = wordsOfPlc(words);
    arrange(items, order);
    QList<KEY_ADDRESS> watched = watchList(items, tags, changing);
    const qint32 blocks = runtime.library.addrMerge(watched);

    ConstantPlc plc(runtime.library);
    quint8 value = 0;
    for (qint32 i = 0; i < 2 * blocks + 1; ++i)
        plc.serve(value);

    startCounting();
    for (int pass = 0; pass < passes; ++pass) {
        value = static_cast<quint8>(changing ? ~value : value);
        for (qint32 block = 0; block < blocks; ++block)
            plc.serve(value);
    }
    stopCounting("requests", static_cast<long>(passes) * blocks);
}

/// Reads or writes of 64 words or 64 bits on an image of WORDS words.
void accessValues(int words, const std::string &what, int calls)
{
    Runtime runtime;
    std::vector<Item> items = wordsOfPlc(words);
    arrange(items, "shuffled");
    QList<KEY_ADDRESS> watched = watchList(items, 1, false);
    runtime.library.addrMerge(watched);

    std::vector<quint8> buffer(128, 1);
    const QString wordType = QLatin1String("DM");
    const QString bitType = QLatin1String("DM_bit");
    // Fifteen places, spread over the image: as many writes wait in the queue whatever the size of the image.
    const int stride = (std::min(words, 32768) - 64) / 14;
    auto access = [&](int call) {
        const qint32 address = (call % 15) * stride;
        if (what == "getwords")
            runtime.library.getData(0, wordType, address, 64, buffer.data());
        else if (what == "getbits")
            runtime.library.getData(0, bitType, address * 16, 64, buffer.data());
        else if (what == "setwords")
            runtime.library.setData(0, wordType, address, 64, buffer.data(), 1);
        else
            runtime.library.setData(0, bitType, address * 16, 64, buffer.data(), 1);
    };
    for (int call = 0; call < 30; ++call)
        access(call);
    startCounting();
    for (int call = 0; call < calls; ++call)
        access(call);
    stopCounting("calls", calls);
}

/// Distinct one-word writes: the first 513 fill the queue, the others find it full.
void floodWrites(int calls, bool full)
{
    Runtime runtime;
    quint8 value[2] = { 1, 0 };
    const QString type = QLatin1String("DM");
    qint32 address = 0;
    for (int i = 0; i < (full ? 513 : 0); ++i)
        runtime.library.setData(0, type, address++, 1, value, 1);
    startCounting();
    for (int call = 0; call < calls; ++call)
        runtime.library.setData(0, type, address++, 1, value, 1);
    stopCounting("calls", calls);
}

void planWatchList(int words)
{
    Runtime runtime;
    std::vector<Item> items = wordsOfPlc(words);
    arrange(items, "shuffled");
    QList<KEY_ADDRESS> watched = watchList(items, 1, false);
    startCounting();
    runtime.library.addrMerge(watched);
    stopCounting("items", words);
}

void planRecipe(int words)
{
    Runtime runtime;
    std::vector<Item> items = wordsOfPlc(words);
    arrange(items, "shuffled");
    QVector<_RCP_VAR_PRO> variables;
    for (size_t i = 0; i < items.size(); ++i)
        variables.append({ 1, 0, QLatin1String(items[i].regType), items[i].address, 1, static_cast<qint32>(i), 0 });
    startCounting();
    runtime.library.setRcpAddress(variables);
    stopCounting("items", words);
}

int usage()
{
    std::fprintf(stderr, "usage: bench_workload poll WORDS sorted|reversed|shuffled TAGS PASSES [changing]\n"
                         "       bench_workload getwords|getbits|setwords|setbits WORDS CALLS\n"
                         "       bench_workload append|flood CALLS\n"
                         "       bench_workload plan|recipe WORDS\n");
    return 2;
}

int run(const std::vector<std::string> &arguments)
{
    const size_t count = arguments.size();
    const std::string what = count > 0 ? arguments[0] : "";
    auto number = [&arguments](size_t i) { return std::atoi(arguments[i].c_str()); };
    if (what == "poll" && count >= 5)
        pollPasses(number(1), arguments[2], number(3), number(4), count > 5);
    else if ((what == "getwords" || what == "getbits" || what == "setwords" || what == "setbits") && count == 3)
        accessValues(number(1), what, number(2));
    else if ((what == "append" || what == "flood") && count == 2)
        floodWrites(number(1), what == "flood");
    else if (what == "plan" && count == 2)
        planWatchList(number(1));
    else if (what == "recipe" && count == 2)
        planRecipe(number(1));
    else
        return usage();
    return 0;
}

} // namespace

// Counting allocator calls of the whole process: the C library's own functions do the work.
extern "C" void *__libc_malloc(size_t size);
extern "C" void *malloc(size_t size)
{
    if (counting)
        ++allocations;
    return __libc_malloc(size);
}

int main(int argc, char **argv)
{
    return run(std::vector<std::string>(argv + 1, argv + argc));
}
