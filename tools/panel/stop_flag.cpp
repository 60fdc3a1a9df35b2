#include "stop_flag.h"

#include <unistd.h>

#include <csignal>

static volatile std::sig_atomic_t stopFlag = 0;

// A signal that comes just before a blocking call does not interrupt that call, so the alarm interrupts it again.
static void onStopSignal(int)
{
    stopFlag = 1;
    alarm(1);
}

void installStopSignals()
{
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0; // no SA_RESTART: a blocking receive returns
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGALRM, &action, nullptr);
    // A program started with nohup goes on without its terminal.
    struct sigaction hangup = {};
    sigaction(SIGHUP, nullptr, &hangup);
    if (hangup.sa_handler != SIG_IGN)
        sigaction(SIGHUP, &action, nullptr);
}

void requestStop()
{
    stopFlag = 1;
}

bool stopRequested()
{
    return stopFlag != 0;
}
