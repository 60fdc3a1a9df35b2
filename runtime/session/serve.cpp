#include "link/fins_codes.h"
#include "link/fins_layout.h"
#include "session/runtime.h"

// Service requests: what is asked of the PLC beside the driver.

static const int LATE_TIMEOUTS = 3;

// A write that was handed over and not yet sent has to be the next request: see lose(). The cyclic poll takes its turn
// only when the driver has no write left.
bool Runtime::canServe() const
{
    const bool hasNodes = state_.phase() == LinkPhase::PROVING || state_.phase() == LinkPhase::ONLINE;
    return hasNodes && !inFlight_ && writesSincePoll_ == 0 && !recipeRunning() && !(link_.awaitsLate(SERVICE_SID) && Clock::now() < lateUntil_);
}

ServiceReply Runtime::serve(const ServiceRequest &request, TimePoint limit)
{
    const std::vector<std::uint8_t> frame = serviceFrame(request, clientNode_, serverNode_);
    link_.setLimit(limit);
    ++statistics_.requests;
    const ExchangeStatus status = send(frame.data(), frame.size());
    lateUntil_ = Clock::now() + LATE_TIMEOUTS * options_.timeout;
    const std::size_t size = status == ExchangeStatus::REPLY ? link_.replySize() : 0;
    const Judgement judgement = judgeReply(frame.data(), frame.size(), link_.reply(), size);
    if (status != ExchangeStatus::INTERRUPTED)
        count(status, judgement);
    ServiceReply reply = serviceReply(frame, judgement, size);
    if (status == ExchangeStatus::INTERRUPTED)
        reply.problem = isStopped() ? "interrupted" : "no reply in time";
    if (reply.end != ServiceEnd::DONE)
        statistics_.noteError(reply.problem);
    if (status == ExchangeStatus::LOST)
        loseInPause();
    if (judgement.verdict == Verdict::TCP_ERROR) {
        inFlight_ = true; // the driver takes itself for connected
        lose(reply.problem, LinkFailure::TCP_ERROR, judgement.code, tcpErrorHint(judgement.code));
    }
    return reply;
}

ServiceReply Runtime::serviceReply(const std::vector<std::uint8_t> &frame, const Judgement &judgement,
                                   std::size_t size) const
{
    ServiceReply reply;
    reply.end = ServiceEnd::NO_ANSWER;
    if (judgement.verdict == Verdict::TCP_ERROR)
        reply.problem = "FINS/TCP error " + tcpErrorText(judgement.code);
    else if (judgement.verdict == Verdict::NO_ANSWER)
        reply.problem = size == 0 ? link_.problem() : flawText(judgement.flaw, frame.data(), link_.reply());
    if (judgement.verdict != Verdict::GOOD && judgement.verdict != Verdict::REFUSED)
        return reply;
    reply.endCode = get16(link_.reply() + FINS_END);
    reply.data.assign(link_.reply() + REPLY_DATA, link_.reply() + size);
    reply.end = judgement.verdict == Verdict::GOOD ? ServiceEnd::DONE : ServiceEnd::REFUSED;
    if (reply.end == ServiceEnd::REFUSED)
        reply.problem = "the PLC refuses " + endCodeText(reply.endCode);
    return reply;
}
