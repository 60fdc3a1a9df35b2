#ifndef RUNTIME_SESSION_ASK_H
#define RUNTIME_SESSION_ASK_H

#include "service/plc_errors.h"
#include "session/runtime.h"

// Service requests as a conversation: each waits until it may be sent, and its answer is decoded.

/// What was read, or why not.
template <typename Content>
struct Answer {
    std::optional<Content> content;
    ServiceReply           reply; // of the latest request; it is DONE only if there is content

    explicit operator bool() const { return content.has_value(); }
    const Content *operator->() const { return &*content; }
    const Content &operator*() const { return *content; }
};

enum class Turn {
    AWAITED, // the runtime is stepped until a request may be sent
    NOW      // what may not be sent at once is NOT_SENT
};

/// Sends the request once, when it may be sent. Ends at `limit` at the latest.
ServiceReply order(Runtime &runtime, const ServiceRequest &request, TimePoint limit, Turn turn = Turn::AWAITED);

// A read whose connection is lost is sent again with the next one, until `limit`.

Answer<Controller> readController(Runtime &runtime, TimePoint limit, Turn turn = Turn::AWAITED);
Answer<PlcStatus>  readStatus(Runtime &runtime, TimePoint limit, Turn turn = Turn::AWAITED);
Answer<CycleTime>  readCycleTime(Runtime &runtime, TimePoint limit, Turn turn = Turn::AWAITED);
Answer<PlcTime>    readClock(Runtime &runtime, TimePoint limit, Turn turn = Turn::AWAITED);

/// All records.
Answer<ErrorLog>   readErrorLog(Runtime &runtime, TimePoint limit, Turn turn = Turn::AWAITED);

#endif
