#include "session/read_once.h"

ReadOnce::ReadOnce(Runtime &runtime, const std::vector<Item> &items) : runtime_(runtime)
{
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { note(exchange); }));
    runtime.watch(items);
    awaited_.expect(items);
}

void ReadOnce::note(const Exchange &exchange)
{
    if (exchange.kind != RequestKind::READ || !(exchange.accepted || exchange.leftOut))
        return;
    const FRAME_PRO &request = exchange.request;
    if (awaited_.settle(request.regType, request.address, request.count) > 0 && exchange.leftOut)
        refused_.push_back({request.regType, request.address, request.count, false});
}

bool ReadOnce::refused(const Item &item) const
{
    for (const Item &block : refused_) {
        if (shareWord(block, item))
            return true;
    }
    return false;
}
