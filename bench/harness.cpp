#include "harness.h"

#include <QtCore/QMutex>

#include <algorithm>
#include <cstring>
#include <new>
#include <random>

namespace {

struct Area {
    const char *name;
    qint32      words;
};

const Area AREAS[] = {
    { "DM",  32768 },
    { "CIO", 6144 },
    { "T",   4096 },
    { "C",   4096 },
    { "HR",  1536 },
    { "AR",  960 },
    { "WR",  512 },
};

// FINS/TCP: a reply's header up to its data, and where the service ID stands in both directions.
enum {
    FRAME_SID  = 25,
    REPLY_DATA = 30
};

bool hasBits(const QString &wordType)
{
    return wordType != QLatin1String("T") && wordType != QLatin1String("C");
}

} // namespace

std::vector<BenchItem> wordsOfPlc(int wordCount, const std::string &order)
{
    std::vector<BenchItem> items;
    for (const Area &area : AREAS) {
        for (qint32 word = 0; word < area.words && static_cast<int>(items.size()) < wordCount; ++word)
            items.push_back({ area.name, word });
    }
    if (order == "reversed")
        std::reverse(items.begin(), items.end());
    std::mt19937 random(1);
    if (order == "shuffled")
        std::shuffle(items.begin(), items.end(), random);
    return items;
}

QList<KEY_ADDRESS> watchList(const std::vector<BenchItem> &items, int tags, bool withBits)
{
    QList<KEY_ADDRESS> list;
    for (std::size_t i = 0; i < items.size(); ++i) {
        KEY_ADDRESS key;
        std::memset(key.data, 0, sizeof key.data);
        key.requestTag = static_cast<qint32>(i % static_cast<std::size_t>(tags));
        key.regType = QLatin1String(items[i].regType);
        key.address = items[i].address;
        key.count = 1;
        list.append(key);
        if (!withBits || !hasBits(key.regType))
            continue;
        key.regType += QLatin1String("_bit");
        key.address *= 16;
        key.count = 16;
        list.append(key);
    }
    return list;
}

QVector<_RCP_VAR_PRO> recipeVariables(const std::vector<BenchItem> &items)
{
    QVector<_RCP_VAR_PRO> variables;
    qint32 offset = 0;
    for (const BenchItem &item : items)
        variables.append({ 1, 0, QLatin1String(item.regType), item.address, 1, offset++, 0 });
    return variables;
}

long BenchRuntime::changes = 0;

void BenchRuntime::countChange(qint32, qint32, QString, qint32)
{
    ++changes;
}

BenchRuntime::BenchRuntime(ValueChangeCallback callback)
    : sharedBlock_(60117), recipeBuffer_(2 * 65536, 2), mutexPlace_(sizeof(QMutex), alignof(QMutex)),
      mutex_(new (mutexPlace_.data()) QMutex)
{
    qint32 status = 0;
    library.setAddrValueChangeCallBack(callback);
    library.initProperty(sharedBlock_.address(), 0, recipeBuffer_.address(), &status, "1#0#0#3#64",
                         mutexPlace_.address());
}

BenchRuntime::~BenchRuntime()
{
    mutex_->~QMutex();
}

bool insideDriver = false;

bool ConstantPlc::takeRequest(quint8 value)
{
    insideDriver = true;
    const bool taken = library_.getSendFrame(&request_) == 1;
    insideDriver = false;
    if (!taken)
        return false;
    reply_.resize(request_.rcvLen);
    quint8 *bytes = reinterpret_cast<quint8 *>(reply_.data());
    const int size = request_.rcvLen;
    std::fill(bytes, bytes + std::min<int>(size, REPLY_DATA), quint8(0));
    std::fill(bytes + std::min<int>(size, REPLY_DATA), bytes + size, value);
    if (size > FRAME_SID)
        bytes[FRAME_SID] = request_.frame[FRAME_SID];
    return true;
}

void ConstantPlc::giveReply()
{
    insideDriver = true;
    library_.dealRcvFrame(reply_, info_);
    insideDriver = false;
}

void ConstantPlc::serve(quint8 value, long count)
{
    for (long i = 0; i < count && takeRequest(value); ++i)
        giveReply();
}
