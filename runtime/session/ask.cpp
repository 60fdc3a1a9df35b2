#include "session/ask.h"

#include "link/fins_codes.h"
#include "link/frame_text.h"
#include "session/step_until.h"

namespace {

// Records of one answer: as many as most PLCs keep.
const std::uint16_t LOG_RECORDS = 20;

enum { FIRST_RECORD_MISSING = 0x1103, LAST_RECORD_MISSING = 0x1104 };

ServiceReply askAgain(Runtime &runtime, const ServiceRequest &request, TimePoint limit)
{
    for (;;) {
        ServiceReply reply = order(runtime, request, limit);
        const bool isLost = reply.end == ServiceEnd::NO_ANSWER && runtime.phase() == LinkPhase::WAITING;
        if (!isLost || runtime.isStopped() || Clock::now() >= limit)
            return reply;
    }
}

template <typename Content>
Answer<Content> decoded(ServiceReply reply, std::optional<Content> decode(const std::vector<std::uint8_t> &))
{
    if (reply.end != ServiceEnd::DONE)
        return {std::nullopt, std::move(reply)};
    std::optional<Content> content = decode(reply.data);
    if (!content) {
        reply.end     = ServiceEnd::NO_ANSWER;
        reply.problem = "the reply makes no sense, its data are " + std::to_string(reply.data.size()) + " bytes"
                        + (reply.data.empty() ? "" : ": " + hexText(reply.data.data(), reply.data.size()));
    }
    return {std::move(content), std::move(reply)};
}

// A PLC gives the records that there are, and says that the last one asked for does not exist.
ServiceReply askRecords(Runtime &runtime, std::size_t first, TimePoint limit)
{
    ServiceReply reply = askAgain(runtime, askErrorLog(static_cast<std::uint16_t>(first), LOG_RECORDS), limit);
    if (plainEndCode(reply.endCode) == LAST_RECORD_MISSING && !reply.data.empty())
        reply.end = ServiceEnd::DONE;
    return reply;
}

} // namespace

ServiceReply order(Runtime &runtime, const ServiceRequest &request, TimePoint limit)
{
    if (stepUntil(runtime, limit, [&] { return runtime.canServe(); }))
        return runtime.serve(request, limit);
    ServiceReply reply;
    reply.problem = endedEarly(runtime);
    return reply;
}

Answer<Controller> readController(Runtime &runtime, TimePoint limit)
{
    return decoded(askAgain(runtime, askController(), limit), decodeController);
}

Answer<PlcStatus> readStatus(Runtime &runtime, TimePoint limit)
{
    return decoded(askAgain(runtime, askStatus(), limit), decodeStatus);
}

Answer<CycleTime> readCycleTime(Runtime &runtime, TimePoint limit)
{
    return decoded(askAgain(runtime, askCycleTime(), limit), decodeCycleTime);
}

Answer<PlcTime> readClock(Runtime &runtime, TimePoint limit)
{
    return decoded(askAgain(runtime, askClock(), limit), decodeClock);
}

Answer<ErrorLog> readErrorLog(Runtime &runtime, TimePoint limit)
{
    Answer<ErrorLog> whole = decoded(askRecords(runtime, 0, limit), decodeErrorLog);
    // A log without a record has no first one.
    if (!whole && plainEndCode(whole.reply.endCode) == FIRST_RECORD_MISSING)
        return {ErrorLog(), {ServiceEnd::DONE, whole.reply.endCode}};
    while (whole && !whole->records.empty() && static_cast<int>(whole->records.size()) < whole->stored) {
        Answer<ErrorLog> more = decoded(askRecords(runtime, whole->records.size(), limit), decodeErrorLog);
        if (!more || more->records.empty())
            return {std::nullopt, more.reply};
        whole.content->records.insert(whole->records.end(), more->records.begin(), more->records.end());
    }
    return whole;
}
