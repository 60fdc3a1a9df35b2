#include "driver/driver_library.h"
#include "plc_fixture.h"

#include <dirent.h>
#include <fstream>
#include <set>

// Every Plc has the driver to itself, and leaves nothing of it behind.

class Copies : public PlcFixture {
protected:
    static std::size_t descriptors()
    {
        DIR *const folder = opendir("/proc/self/fd");
        std::size_t count = 0;
        while (readdir(folder) != nullptr)
            ++count;
        closedir(folder);
        return count;
    }

    // Of the driver's copies and of the memory that they are lent.
    static std::size_t mappingsOf(const std::string &part)
    {
        std::ifstream maps("/proc/self/maps");
        std::size_t count = 0;
        for (std::string line; std::getline(maps, line);)
            count += line.find(part) != std::string::npos ? 1 : 0;
        return count;
    }
};

TEST_F(Copies, OfTheDriverHaveFunctionsOfTheirOwn)
{
    std::vector<std::unique_ptr<DriverLibrary>> copies;
    std::set<const void *> addresses;
    for (int i = 0; i < 100; ++i) {
        copies.push_back(DriverLibrary::copyOf(DRIVER_LIBRARY));
        addresses.insert(reinterpret_cast<const void *>(copies.back()->getSendFrame));
    }
    EXPECT_EQ(addresses.size(), 100u);
}

TEST_F(Copies, OfTwoPlcsHoldTheirOwnValuesOfOneAddress)
{
    ServedPlc other;
    served.set(0, {111});
    other.set(0, {222});
    Plc one = Plc::open(config());
    Plc two = Plc::open(configOf(other.host()));
    Seen first, second;
    const Watch a = one.watch({"DM:0"}, first.call());
    const Watch b = two.watch({"DM:0"}, second.call());
    ASSERT_TRUE(until(one, [&] { return first.endsWith("111"); }));
    ASSERT_TRUE(until(two, [&] { return second.endsWith("222"); }));
    Told told;
    const Operation write = one.write({{"DM:0", number(5)}}, told.call());
    ASSERT_TRUE(until(one, [&] { return told.times > 0 && first.endsWith("5"); }));
    other.awaitRound();
    two.dispatch();
    EXPECT_TRUE(second.endsWith("222"));
    EXPECT_EQ(other.dm(0), 222);
}

TEST_F(Copies, LeaveNothingBehindAfterAHundredPlcs)
{
    const Config with = config();
    const auto openAndEnd = [&] {
        Plc plc = Plc::open(with);
        const Watch watch = plc.watch({"DM:0"}, [](const Samples &) {});
        plc.dispatch();
    };
    for (int i = 0; i < 10; ++i)
        openAndEnd();
    const auto settled = [&] { served.release(); }; // the peer has dealt with what came before
    settled();
    const std::size_t mappings = mappingsOf("omron_fins_ethernet");
    served.stopListening(); // the descriptors of connections to come are the peer's
    openAndEnd();
    const std::size_t before = descriptors();
    for (int i = 0; i < 100; ++i)
        openAndEnd();
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(mappingsOf("omron_fins_ethernet"), mappings);
}
