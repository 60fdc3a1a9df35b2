#include "fresh_values.h"

#include "exit_codes.h"

#include <iostream>

FreshValues::FreshValues(Runtime &runtime, const std::vector<Item> &items) : runtime_(runtime), items_(items)
{
    runtime.onExchange([this](const Exchange &exchange) { note(exchange); });
    restart();
}

void FreshValues::restart()
{
    runtime_.watch(items_); // what the PLC refuses is left out of the poll until then
    refused_.clear();
    awaited_.expect(items_);
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

std::string endedEarly()
{
    return stopRequested() ? "interrupted" : "no answer in time";
}

int noAnswer(Runtime &runtime, Millis giveUp)
{
    runtime.messages().finish();
    const std::string peer = runtime.options().host + ":" + runtime.options().port;
    if (stopRequested())
        std::cerr << "fins_panel: interrupted" << std::endl;
    else
        std::cerr << "fins_panel: no answer from " << peer << " within " << giveUp.count()
                  << " ms; check the address and the cable, or wait longer with --give-up SECONDS" << std::endl;
    return EXIT_NO_LINK;
}
