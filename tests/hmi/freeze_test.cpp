#include "hmi_fixture.h"

#include <QtCore/QAbstractEventDispatcher>

#include <dlfcn.h>
#include <netdb.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <fstream>
#include <mutex>
#include <thread>

// The window's thread never waits for anything but its next event: not for the network, a resolver or a disk, whatever
// they do. What is looked at is whether the thread sleeps elsewhere, not how long something takes, so that a busy machine
// makes no difference.

namespace {

const char SILENT_NAME[] = "silent.example";

/// What a resolver or a disk is held by until it is opened.
struct Gate {
    std::mutex              mutex;
    std::condition_variable changed;
    bool                    isOpen  = true;
    int                     waiting = 0;

    void pass()
    {
        std::unique_lock<std::mutex> lock(mutex);
        ++waiting;
        changed.notify_all();
        changed.wait(lock, [this] { return isOpen; });
        --waiting;
    }

    void set(bool open)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        isOpen = open;
        changed.notify_all();
    }

    bool isAwaited()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return waiting > 0;
    }
};

// Never destroyed: the resolver's thread may end after main().
Gate &resolver()
{
    static Gate &made = *new Gate;
    return made;
}

Gate &disk()
{
    static Gate &made = *new Gate;
    return made;
}

} // namespace

// Both stand before the system's in this program.
extern "C" int getaddrinfo(const char *name, const char *service, const addrinfo *hints, addrinfo **found)
{
    static const auto next = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (name == nullptr || std::string(name) != SILENT_NAME)
        return next(name, service, hints, found);
    if (hints != nullptr && (hints->ai_flags & AI_NUMERICHOST) != 0)
        return EAI_NONAME;
    resolver().pass();
    return EAI_AGAIN;
}

extern "C" int fsync(int fd)
{
    disk().pass();
    return static_cast<int>(syscall(SYS_fsync, fd));
}

namespace {

/// Looks every few milliseconds whether the thread that made it sleeps while it is not waiting for an event. A sleep is
/// one as long as the thread has not been on a core since.
class Watchdog {
public:
    Watchdog() : folder_("/proc/self/task/" + std::to_string(syscall(SYS_gettid)))
    {
        QAbstractEventDispatcher *events = QAbstractEventDispatcher::instance();
        connections_[0] = QObject::connect(events, &QAbstractEventDispatcher::aboutToBlock, [this] { isIdle_ = true; });
        connections_[1] = QObject::connect(events, &QAbstractEventDispatcher::awake, [this] { isIdle_ = false; });
        thread_ = std::thread([this] { look(); });
    }

    ~Watchdog()
    {
        isEnding_ = true;
        thread_.join();
        for (const QMetaObject::Connection &connection : connections_)
            QObject::disconnect(connection);
    }

    std::chrono::milliseconds longest() const { return std::chrono::milliseconds(longestMs_); }
    int looks() const { return looks_; }

private:
    struct Moment {
        bool        isAsleep = false;
        std::string switches; // how often the thread was taken from its core
    };

    Moment moment() const
    {
        std::ifstream stat(folder_ + "/stat");
        std::string word;
        while (stat >> word && word.back() != ')') {
        }
        stat >> word;
        Moment now;
        now.isAsleep = word == "S" || word == "D";
        std::ifstream status(folder_ + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.find("ctxt_switches") != std::string::npos)
                now.switches += line;
        }
        return now;
    }

    void look()
    {
        std::string sleep;
        auto since = std::chrono::steady_clock::now();
        while (!isEnding_) {
            const Moment now = moment();
            const auto time  = std::chrono::steady_clock::now();
            ++looks_;
            if (isIdle_ || !now.isAsleep) {
                sleep.clear();
            } else if (now.switches != sleep) {
                sleep = now.switches;
                since = time;
            } else {
                const auto lasted = std::chrono::duration_cast<std::chrono::milliseconds>(time - since).count();
                longestMs_ = std::max<long>(longestMs_, static_cast<long>(lasted));
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    std::string           folder_;
    std::atomic<bool>     isIdle_{false};
    std::atomic<bool>     isEnding_{false};
    std::atomic<long>     longestMs_{0};
    std::atomic<int>      looks_{0};
    QMetaObject::Connection connections_[2];
    std::thread           thread_;
};

const char PROJECT[] = R"([tags]
Level    = { type = "DM", address = 0 }
SetPoint = { type = "DM", address = 3 }
Pump     = { type = "CIO_bit", address = "0.0" }
Far      = { type = "DM", address = 9000 }
[recipes.Mix.values]
SetPoint = 7
[alarms.High]
tag = "Level"
high = 5
text = "High"
[screens.main]
elements = [
  { type = "number", tag = "Level", at = [1, 1] },
  { type = "set-point", tag = "SetPoint", at = [2, 1] },
  { type = "button", tag = "Pump", at = [3, 1], mode = "toggle", text = "Start", text_on = "Stop" },
  { type = "trend", tag = "Level", at = [1, 2], size = [4, 3] },
  { type = "recipe", recipe = "Mix", at = [5, 1] },
]
)";

class Freeze : public HmiTest {
protected:
    void TearDown() override
    {
        resolver().set(true);
        disk().set(true);
        HmiTest::TearDown();
    }

    // All that a user can do, whatever the link is like.
    void useEverything()
    {
        Station &station = panel->stations().front();
        for (LiveValue &value : station.values())
            station.write(value, "1");
        station.writeRecipe("Mix", {}, {});
        window->actions().showRecipe({&station}, "Mix");
        QTest::qWait(30);
        window->actions().setNumber(station.values().front());
        for (const char *label : {"SetPoint", "Pump"})
            click(label);
        window->actions().showJournal();
        press("Save as CSV");
        window->actions().showAlarms();
        window->actions().showLink();
        QTest::qWait(50);
        press("Close");
        window->showScreen(0);
    }
};

} // namespace

TEST_F(Freeze, NoFaultOfThePlcStopsTheWindow)
{
    openProject(PROJECT);
    ASSERT_TRUE(untilOnline());
    const Watchdog watchdog;
    for (const char *fault : {"delay=200", "jitter=100", "drop", "wrong-sid", "short=3", "long=5", "bytewise=2", "double",
                              "end-code=2108", "close", "silence", "refuse", "tcp-error=20"}) {
        plc.tell(std::string("fault ") + fault);
        if (std::string(fault) == "refuse" || std::string(fault) == "tcp-error=20")
            plc.tell("disconnect");
        useEverything();
        QTest::qWait(100);
        plc.tell("faults off");
    }
    panel->close();
    EXPECT_LE(watchdog.longest().count(), 50);
    EXPECT_GT(watchdog.looks(), 100);
}

TEST_F(Freeze, StoppedPlcDoesNotStopTheWindow)
{
    openProject(PROJECT);
    ASSERT_TRUE(untilOnline());
    plc.process().sendSignal(SIGSTOP);
    {
        const Watchdog watchdog;
        useEverything();
        QTest::qWait(500);
        panel->close();
        EXPECT_LE(watchdog.longest().count(), 50);
    }
    plc.process().sendSignal(SIGCONT);
}

TEST_F(Freeze, SilentNameServerDoesNotStopTheWindow)
{
    resolver().set(false);
    Options options;
    options.projects = {folder.put("plant.toml", "[connection]\nhost = \"silent.example\"\n" + std::string(PROJECT))};
    {
        const Watchdog watchdog;
        open(options, {800, 480});
        EXPECT_TRUE(until([] { return resolver().isAwaited(); }));
        useEverything();
        panel->close();
        EXPECT_LE(watchdog.longest().count(), 50);
    }
}

TEST_F(Freeze, SlowDiskDoesNotStopTheWindow)
{
    openProject(PROJECT);
    disk().set(false);
    {
        const Watchdog watchdog;
        useEverything();
        EXPECT_TRUE(until([] { return disk().isAwaited(); }));
        QTest::qWait(200);
        EXPECT_LE(watchdog.longest().count(), 50);
    }
    disk().set(true);
}

// The measure itself: a thread that sleeps is seen.
TEST_F(Freeze, WatchdogSeesASleep)
{
    const Watchdog watchdog;
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    EXPECT_TRUE(until([&] { return watchdog.longest().count() > 50; }));
}
