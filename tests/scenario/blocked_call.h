#ifndef TESTS_SCENARIO_BLOCKED_CALL_H
#define TESTS_SCENARIO_BLOCKED_CALL_H

#include <sys/syscall.h>
#include <unistd.h>

#include <QtCore/QMutex>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

// Shows whether a call takes a mutex: it runs on a thread of its own while this thread holds the mutex.

/// True when the kernel reports the thread `id` of this process as sleeping, which is how it waits for a lock.
inline bool isSleeping(long id)
{
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/stat");
    std::string stat;
    // A thread that has ended since the file was opened makes the reading fail, which leaves the text empty.
    std::getline(file, stat, '\0');
    const std::size_t name = stat.rfind(')');
    return name != std::string::npos && stat.compare(name, 3, ") S") == 0;
}

/// Looks in a row, 2 ms apart, that must find a thread asleep. On a busy machine, and under memcheck, which runs one
/// thread at a time, a thread that waits for nothing but its turn may look asleep a few times.
const int LOOKS_ASLEEP = 25;

/// True when `call` waits until `mutex` is unlocked; `meanwhile` runs while it waits. Returns after `call` has ended.
inline bool waitsForMutex(QMutex &mutex, const std::function<void()> &call, const std::function<void()> &meanwhile)
{
    std::atomic<long> id(0);
    std::atomic<bool> ended(false);
    mutex.lock();
    std::thread worker([&] {
        id = syscall(SYS_gettid);
        call();
        ended = true;
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int seenAsleep = 0;
    while (!ended && seenAsleep < LOOKS_ASLEEP && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        seenAsleep = id != 0 && isSleeping(id) ? seenAsleep + 1 : 0;
    }
    const bool waits = !ended && seenAsleep == LOOKS_ASLEEP;
    if (waits)
        meanwhile();
    mutex.unlock();
    worker.join();
    return waits;
}

#endif
