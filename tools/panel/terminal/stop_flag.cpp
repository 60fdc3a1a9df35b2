#include "terminal/stop_flag.h"

#include <unistd.h>

#include <csignal>
#include <initializer_list>

StopSignal &programStop()
{
    static StopSignal signal;
    return signal;
}

// A signal that comes just before a blocking call does not interrupt that call, so the alarm interrupts it again.
static void onStopSignal(int)
{
    programStop().stop();
    alarm(1);
}

void installStopSignals()
{
    programStop(); // is made before the first signal
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0; // no SA_RESTART: a blocking receive returns
    sigaction(SIGALRM, &action, nullptr);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(number))
            sigaction(number, &action, nullptr);
    }
}

bool isIgnored(int signal)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}
