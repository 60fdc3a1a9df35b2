#include "session/read_once.h"

#include "base/exit_codes.h"
#include "link/host_port.h"
#include "session/diagnosis.h"

#include <algorithm>
#include <iostream>

FreshValues::FreshValues(Runtime &runtime, const std::vector<Item> &items) : runtime_(runtime)
{
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { note(exchange); }));
    runtime.watch(items);
    awaited_.expect(items);
}

void FreshValues::note(const Exchange &exchange)
{
    if (exchange.kind != RequestKind::READ || !(exchange.accepted || exchange.leftOut))
        return;
    const FRAME_PRO &request = exchange.request;
    if (awaited_.settle(request.regType, request.address, request.count) > 0 && exchange.leftOut)
        refused_.push_back({request.regType, request.address, request.count, false});
}

bool FreshValues::refused(const Item &item) const
{
    for (const Item &block : refused_) {
        if (shareWord(block, item))
            return true;
    }
    return false;
}

std::string endedEarly(const Runtime &runtime)
{
    if (stopRequested())
        return "interrupted";
    return runtime.isUnreachable() ? "there is no PLC to connect to" : "no answer in time";
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

static std::string noAnswerText(const Runtime &runtime, Millis giveUp)
{
    const std::string host    = hostAndPort(runtime.options().host, runtime.options().port);
    const std::string trouble = troubleText(runtime, giveUp);
    const std::string advice  = "; 'fins_panel link " + host + "' tells what to try";
    if (runtime.isUnreachable())
        return trouble + advice + ", --give-up SECONDS keeps trying";
    return "no answer from " + host + " within " + std::to_string(giveUp.count()) + " ms"
           + (trouble.empty() ? "" : ": " + trouble) + advice + ", --give-up SECONDS waits longer";
}

int noAnswer(Runtime &runtime, Millis giveUp)
{
    runtime.messages().finish();
    std::cerr << "fins_panel: " << (stopRequested() ? "interrupted" : noAnswerText(runtime, giveUp)) << std::endl;
    return EXIT_NO_LINK;
}
