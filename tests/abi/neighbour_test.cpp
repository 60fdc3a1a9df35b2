#include "neighbour_globals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/loaded_driver.h"
#include "support/low_memory.h"
#include "support/temporary_folder.h"

// The library beside others in one process: a program that exports the same names, and a second copy of itself.

namespace {

int lastStation = 0;

void noteStation(qint32 stationNo, qint32, QString, qint32) { lastStation = stationNo; }

// What a runtime owns for one loaded driver.
struct Panel {
    explicit Panel(const std::string &path, const std::string &property)
        : driver(path, RTLD_NOW | RTLD_GLOBAL)
    {
        qint32 status = 0;
        driver.setAddrValueChangeCallBack(&noteStation);
        driver.initProperty(block.address(), 0, recipe.address(), &status, property.c_str(), mutex.address());
    }

    // The station that the driver reports a change under.
    int reportedStation()
    {
        QList<KEY_ADDRESS> list;
        KEY_ADDRESS key;
        key.requestTag = 7;
        key.regType = QString::fromLatin1("DM");
        key.address = 100;
        key.count = 1;
        list.append(key);
        driver.addrMerge(list);
        quint8 value[2] = {0, 0};
        driver.getData(7, key.regType, 100, 1, value);
        value[0] = static_cast<quint8>(value[0] + 1);
        lastStation = -1;
        driver.setData(7, key.regType, 100, 1, value, 1);
        return lastStation;
    }

    // Sends a poll read: handshake, its answer, and the read; returns the read's area code.
    int areaCodeOfPoll()
    {
        FRAME_PRO frame = FRAME_PRO();
        QByteArray reply(24, '\x05');
        QString info;
        if (driver.getSendFrame(&frame) != 1 || driver.dealRcvFrame(reply, info) != 1
            || driver.getSendFrame(&frame) != 1)
            return -1;
        return frame.frame[28];
    }

    LowMemory         block{60117};
    LowMemory         recipe{64, 2};
    LowObject<QMutex> mutex;
    LoadedDriver      driver;
};

// The loader finds the program's globals by the driver's own names: without that, none of these tests would show
// anything.
class NeighbourAbi : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(neighbourDriver(), dlsym(RTLD_DEFAULT, "driver"));
        ASSERT_EQ(neighbourRegList(), dlsym(RTLD_DEFAULT, "REG_LIST"));
        ASSERT_NE(nullptr, dlsym(RTLD_DEFAULT, "_Z7getSSIDv"));
        ASSERT_NE(nullptr, dlsym(RTLD_DEFAULT, "_Z15connectToServerv"));
    }
};

} // namespace

TEST_F(NeighbourAbi, BothKeepTheirGlobals)
{
    {
        Panel panel(driverPath(), "7#0#0#3#64");
        EXPECT_TRUE(neighbourGlobalsAreUntouched());
        EXPECT_EQ(7, panel.reportedStation());
        QList<QString> names;
        EXPECT_EQ(1, panel.driver.getRegListByType(0, names));
        ASSERT_EQ(5, static_cast<int>(names.size()));
        EXPECT_EQ("CIO_bit", names.at(0).toStdString());
        EXPECT_TRUE(neighbourGlobalsAreUntouched());
        EXPECT_EQ(neighbourDriver(), dlsym(RTLD_DEFAULT, "driver"));
        EXPECT_EQ(nullptr, dlsym(panel.driver.handle(), "driver")) << "the driver's object is visible";
        EXPECT_EQ(nullptr, dlsym(panel.driver.handle(), "REG_LIST"));
    }
    EXPECT_TRUE(neighbourGlobalsAreUntouched()) << "unloading the library touched the neighbour";
}

TEST_F(NeighbourAbi, DriverCallsItsOwnFunctions)
{
    Panel panel(driverPath(), "7#0#0#3#64");
    EXPECT_EQ(7, panel.reportedStation());
    EXPECT_EQ(0x82, panel.areaCodeOfPoll());
    EXPECT_EQ(0, neighbourCalls());
}

TEST_F(NeighbourAbi, TwoCopiesOfTheLibraryKeepTwoStates)
{
    const TemporaryFolder folder;
    const std::string copy = folder.path("libneighbour.so");
    std::filesystem::copy_file(driverPath(), copy);
    Panel first(driverPath(), "1#0#0#3#64");
    Panel second(copy, "2#0#0#3#64");
    EXPECT_EQ(1, first.reportedStation());
    EXPECT_EQ(2, second.reportedStation());
    EXPECT_EQ(1, first.reportedStation());
    quint8 value[2] = {0, 0};
    first.driver.getData(7, QString::fromLatin1("DM"), 100, 1, value);
    EXPECT_EQ(2, value[0]);
    second.driver.getData(7, QString::fromLatin1("DM"), 100, 1, value);
    EXPECT_EQ(1, value[0]);
}

TEST_F(NeighbourAbi, FileLoadedTwiceIsOneDriver)
{
    Panel first(driverPath(), "1#0#0#3#64");
    Panel second(driverPath(), "2#0#0#3#64");
    EXPECT_EQ(2, first.reportedStation());
}

TEST_F(NeighbourAbi, LibraryThatLacksTheFunctionsIsNamed)
{
    try {
        LoadedDriver other("libm.so.6");
        FAIL() << "libm was taken for a driver";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ("libm.so.6 lacks the function intf_getProtocolType", error.what());
    }
}
