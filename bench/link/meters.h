#ifndef BENCH_LINK_METERS_H
#define BENCH_LINK_METERS_H

#include <sched.h>

// Time, processor time and cores of what is measured.

class Meter {
public:
    Meter();
    double elapsed() const; // seconds since the meter was made
    double cpu() const;     // of the process, in seconds

private:
    double startCpu_;
    double start_; // last, since the processor's time takes longer to ask for
};

/// Lets the calling thread run on every core as long as this lives, whatever the program was started with. Threads that
/// are made before stay where they are.
class AnyCore {
public:
    explicit AnyCore(bool isWanted);
    ~AnyCore();
    AnyCore(const AnyCore &) = delete;
    AnyCore &operator=(const AnyCore &) = delete;

    /// True if there is another core.
    static bool isThere();

private:
    cpu_set_t before_;
};

#endif
