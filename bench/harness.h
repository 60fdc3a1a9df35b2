#ifndef BENCH_HARNESS_H
#define BENCH_HARNESS_H

#include "support/loaded_driver.h"
#include "support/low_memory.h"

#include <string>
#include <vector>

// What the benchmarks of the library's functions share: watch lists over a PLC's memory, a runtime that has loaded and
// configured the library, and a PLC in memory that answers at once.

/// Words of a whole PLC: CIO 6144, WR 512, HR 1536, AR 960, T 4096, C 4096, DM 32768.
constexpr int PLC_WORDS = 50112;

struct BenchItem {
    const char *regType;
    qint32      address;
};

/// The first `wordCount` words of a PLC, DM first, in the order "sorted", "reversed" or "shuffled" (always alike).
std::vector<BenchItem> wordsOfPlc(int wordCount, const std::string &order);

/// One item a word, the tags 0 to `tags` - 1 in turn; with `withBits` each word is followed by its 16 bits as one more
/// item, where the type has bits.
QList<KEY_ADDRESS> watchList(const std::vector<BenchItem> &items, int tags, bool withBits);

QVector<_RCP_VAR_PRO> recipeVariables(const std::vector<BenchItem> &items);

/// The library loaded and configured for blocks of 64 words. Its callback only counts.
class BenchRuntime {
public:
    explicit BenchRuntime(ValueChangeCallback callback = countChange);
    ~BenchRuntime();
    BenchRuntime(const BenchRuntime &) = delete;
    BenchRuntime &operator=(const BenchRuntime &) = delete;

    LoadedDriver library;

    static void countChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address);
    static long changes;

private:
    LowMemory sharedBlock_;
    LowMemory recipeBuffer_;
    LowMemory mutexPlace_;
    QMutex   *mutex_;
};

/// True while one of the library's functions runs that ConstantPlc calls.
extern bool insideDriver;

/// Moves one request and its reply at a time, without a link.
class ConstantPlc {
public:
    explicit ConstantPlc(LoadedDriver &library) : library_(library), request_() {}

    /// Takes the next request, and prepares its reply: `value` in every data byte.
    bool takeRequest(quint8 value);

    /// Hands the prepared reply over.
    void giveReply();

    /// Both, `count` times.
    void serve(quint8 value, long count);

private:
    LoadedDriver &library_;
    FRAME_PRO     request_;
    QByteArray    reply_;
    QString       info_;
};

#endif
