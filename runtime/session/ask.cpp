#include "session/ask.h"

#include "link/fins_codes.h"
#include "link/frame_text.h"
#include "session/step_until.h"

namespace {

// Records of one answer: as many as most PLCs keep.
const std::uint16_t LOG_RECORDS = 20;

enum { FIRST_RECORD_MISSING = 0x1103, LAST_RECORD_MISSING = 0x1104 };

ServiceReply askAgain(Runtime &runtime, const ServiceRequest &request, TimePoint limit, Turn turn)
{
    for (;;) {
        ServiceReply reply = order(runtime, request, limit, turn);
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
ServiceReply askRecords(Runtime &runtime, std::size_t first, TimePoint limit, Turn turn)
{
    ServiceReply reply = askAgain(runtime, askErrorLog(static_cast<std::uint16_t>(first), LOG_RECORDS), limit, turn);
    if (plainEndCode(reply.endCode) == LAST_RECORD_MISSING && !reply.data.empty())
        reply.end = ServiceEnd::DONE;
    return reply;
}

} // namespace

ServiceReply order(Runtime &runtime, const ServiceRequest &request, TimePoint limit, Turn turn)
{
    const bool isNow = turn == Turn::NOW;
    if (isNow ? runtime.canServe() : stepUntil(runtime, limit, [&] { return runtime.canServe(); }))
        return runtime.serve(request, limit);
    ServiceReply reply;
    reply.problem = isNow ? "it could not be sent in time" : endedEarly(runtime);
    return reply;
}

Answer<Controller> readController(Runtime &runtime, TimePoint limit, Turn turn)
{
    return decoded(askAgain(runtime, askController(), limit, turn), decodeController);
}

Answer<PlcStatus> readStatus(Runtime &runtime, TimePoint limit, Turn turn)
{
    return decoded(askAgain(runtime, askStatus(), limit, turn), decodeStatus);
}

Answer<CycleTime> readCycleTime(Runtime &runtime, TimePoint limit, Turn turn)
{
    return decoded(askAgain(runtime, askCycleTime(), limit, turn), decodeCycleTime);
}

Answer<PlcTime> readClock(Runtime &runtime, TimePoint limit, Turn turn)
{
    return decoded(askAgain(runtime, askClock(), limit, turn), decodeClock);
}

Answer<ErrorLog> readErrorLog(Runtime &runtime, TimePoint limit, Turn turn)
{
    Answer<ErrorLog> whole = decoded(askRecords(runtime, 0, limit, turn), decodeErrorLog);
    // A log without a record has no first one.
    if (!whole && plainEndCode(whole.reply.endCode) == FIRST_RECORD_MISSING)
        return {ErrorLog(), {ServiceEnd::DONE, whole.reply.endCode}};
    while (whole && static_cast<int>(whole->records.size()) < whole->stored) {
        Answer<ErrorLog> more = decoded(askRecords(runtime, whole->records.size(), limit, turn), decodeErrorLog);
        if (!more)
            return more;
        if (more->records.empty()) {
            more.reply.end     = ServiceEnd::NO_ANSWER;
            more.reply.problem = "the PLC tells " + std::to_string(whole->records.size()) + " of the "
                                 + std::to_string(whole->stored) + " records that it has";
            return {std::nullopt, std::move(more.reply)};
        }
        whole.content->records.insert(whole->records.end(), more->records.begin(), more->records.end());
    }
    return whole;
}
