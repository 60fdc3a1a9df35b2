#include "commands/ending.h"

#include "link/host_port.h"
#include "session/diagnosis.h"
#include "session/write_report.h"

#include <algorithm>
#include <iostream>

int exitCode(WriteVerdict verdict)
{
    switch (verdict) {
    case WriteVerdict::UNKNOWN:
        return EXIT_NO_LINK;
    case WriteVerdict::NOT_AS_ASKED:
        return EXIT_REFUSED;
    case WriteVerdict::DONE:
        break;
    }
    return EXIT_DONE;
}

// What is known of the trouble; "" while there is none, such as before the first reply is due.
static std::string troubleText(const Runtime &runtime, Millis giveUp)
{
    if (runtime.trouble().failure == LinkFailure::NONE || runtime.phase() == LinkPhase::ONLINE)
        return "";
    const LinkOptions &options = runtime.options();
    const Peer peer = {options.host, options.port, runtime.link().address(),
                       std::min(options.timeout, giveUp)};
    return diagnose(runtime.trouble(), peer, runtime.link().strayBytes()).problem;
}

static std::string hostOf(const Runtime &runtime)
{
    return hostAndPort(runtime.options().host, runtime.options().port);
}

static std::string adviceAt(const std::string &host)
{
    return "; 'fins_panel link " + host + "' tells what to try";
}

static std::string noAnswerText(const Runtime &runtime, Millis giveUp)
{
    const std::string host    = hostOf(runtime);
    const std::string trouble = troubleText(runtime, giveUp);
    const std::string advice  = adviceAt(host);
    if (runtime.isUnreachable())
        return trouble + advice + ", --give-up SECONDS keeps trying";
    return "no answer from " + host + " within " + std::to_string(giveUp.count()) + " ms"
           + (trouble.empty() ? "" : ": " + trouble) + advice + ", --give-up SECONDS waits longer";
}

int noAnswer(Runtime &runtime, Millis giveUp)
{
    runtime.messages().finish();
    std::cerr << "fins_panel: " << (runtime.isStopped() ? "interrupted" : noAnswerText(runtime, giveUp)) << std::endl;
    return EXIT_NO_LINK;
}

int noLink(Runtime &runtime)
{
    const std::string host    = hostOf(runtime);
    const std::string trouble = troubleText(runtime, runtime.options().timeout);
    runtime.messages().finish();
    std::cerr << "fins_panel: no answer from " << host << (trouble.empty() ? "" : ": " + trouble) << adviceAt(host)
              << std::endl;
    return EXIT_NO_LINK;
}
