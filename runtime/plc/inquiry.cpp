#include "plc/inquiry.h"

namespace fins {

static const double TENTHS = 10; // of a millisecond

// Keeps what was told; the reply says what became of the question.
template <typename Content, typename Keep>
static ServiceReply kept(const Answer<Content> &answer, Keep keep)
{
    if (answer)
        keep(*answer);
    return answer.reply;
}

ServiceReply Inquiry::ask(Topic topic, Runtime &runtime, TimePoint limit)
{
    switch (topic) {
    case Topic::CONTROLLER:
        return kept(readController(runtime, limit, Turn::NOW), [this](const Controller &controller) {
            facts_.model   = controller.model;
            facts_.version = controller.version;
        });
    case Topic::STATUS:
        return kept(readStatus(runtime, limit, Turn::NOW), [this](const PlcStatus &status) {
            facts_.mode   = modeText(status.mode);
            facts_.errors = fatalTexts(status.fatal);
            for (std::string &text : nonFatalTexts(status.nonFatal))
                facts_.errors.push_back(std::move(text));
        });
    case Topic::CYCLE_TIME:
        return kept(readCycleTime(runtime, limit, Turn::NOW), [this](const CycleTime &cycle) {
            facts_.averageMs  = cycle.average / TENTHS;
            facts_.longestMs  = cycle.longest / TENTHS;
            facts_.shortestMs = cycle.shortest / TENTHS;
        });
    case Topic::CLOCK:
        return kept(readClock(runtime, limit, Turn::NOW),
                    [this](const PlcTime &time) { facts_.clock = plcTimeText(time); });
    case Topic::ERROR_LOG:
        return kept(readErrorLog(runtime, limit, Turn::NOW), [this](const ErrorLog &log) {
            for (const LoggedError &record : log.records)
                facts_.log.push_back(loggedText(record));
        });
    }
    return {};
}

// What could not be sent, or was cut off by the end of the link's thread, is left for later, or for end().
void Inquiry::advance(Runtime &runtime, TimePoint limit)
{
    while (!isOver() && runtime.canServe() && order_->begin()) {
        const Topic topic = order_->topics[next_];
        const ServiceReply reply = ask(topic, runtime, limit);
        if (reply.end == ServiceEnd::NOT_SENT || runtime.isStopped())
            return;
        if (reply.end == ServiceEnd::DONE) {
            facts_.told.push_back(topic);
            ++next_;
        } else {
            addProblem(reply.problem);
        }
    }
}

void Inquiry::addProblem(const std::string &problem)
{
    facts_.problems.push_back(text(order_->topics[next_]) + std::string(": ") + problem);
    ++next_;
}

PlcFacts Inquiry::end(const std::string &reason)
{
    while (!isOver())
        addProblem(reason);
    return std::move(facts_);
}

} // namespace fins
