#ifndef TESTS_UNIT_DRIVER_FIXTURE_H
#define TESTS_UNIT_DRIVER_FIXTURE_H

#include "omron_fins_ethernet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <ostream>
#include <string>
#include <vector>

// What the unit tests share: a driver as it is after loading, the runtime's side of it, and a record of notifications.

/// One call of the change callback.
struct Notification {
    qint32      stationNo;
    qint32      requestTag;
    std::string regType;
    qint32      address;
};

inline bool operator==(const Notification &a, const Notification &b)
{
    return a.stationNo == b.stationNo && a.requestTag == b.requestTag && a.regType == b.regType
        && a.address == b.address;
}

inline std::ostream &operator<<(std::ostream &out, const Notification &n)
{
    return out << '(' << n.stationNo << ", " << n.requestTag << ", " << n.regType << ", " << n.address << ')';
}

/// Every test starts with a driver as loaded, a shared block, a recipe buffer and a mutex that `driver` points to, and
/// a callback that records its calls in order.
class DriverTest : public ::testing::Test {
protected:
    enum { SHARED_BLOCK_SIZE = 60117, RECIPE_BUFFER_WORDS = 4096 };

    DriverTest() : sharedBlock(SHARED_BLOCK_SIZE, 0), recipeWords(RECIPE_BUFFER_WORDS, 0)
    {
        reload();
        notifications().clear();
        seen().clear();
        driver.runtimeBlock = sharedBlock.data();
        driver.recipeBuffer = recipeWords.data();
        driver.runtimeMutex = &mutex;
        driver.valueChangeCallback = &DriverTest::record;
    }

    ~DriverTest() override { reload(); }

    /// The calls so far.
    static std::vector<Notification> &notifications()
    {
        static std::vector<Notification> calls;
        return calls;
    }

    /// What the callbacks found.
    static std::vector<int> &seen()
    {
        static std::vector<int> values;
        return values;
    }

    /// A callback that reads what changed and makes the data image 200 words longer with each call.
    static void readBack(qint32 stationNo, qint32 requestTag, QString regType, qint32 address)
    {
        notifications().push_back({stationNo, requestTag, regType.toStdString(), address});
        quint8 value[2] = {0, 0};
        intf_getData(requestTag, regType, address, 1, value);
        seen().push_back(value[0] + 256 * value[1]);
        quint8 other[2 * 200];
        intf_getData(1000 + address + static_cast<qint32>(seen().size()), QLatin1String("WR"), 0, 200, other);
    }

    /// A callback that finds whether the mutex is free.
    static void tryMutex(qint32, qint32, QString, qint32)
    {
        const bool isFree = driver.runtimeMutex->tryLock();
        if (isFree)
            driver.runtimeMutex->unlock();
        seen().push_back(isFree);
    }

    std::vector<quint8>  sharedBlock;
    std::vector<quint16> recipeWords;
    QMutex               mutex;

private:
    // The driver lives in zeroed static storage when it is constructed, so it is zeroed here too.
    static void reload()
    {
        driver.~omron_fins_ethernet();
        void *storage = &driver;
        std::fill_n(static_cast<unsigned char *>(storage), sizeof driver, static_cast<unsigned char>(0));
        new (storage) omron_fins_ethernet;
    }

    static void record(qint32 stationNo, qint32 requestTag, QString regType, qint32 address)
    {
        notifications().push_back({stationNo, requestTag, regType.toStdString(), address});
    }
};

#endif
