#ifndef RUNTIME_PLC_INQUIRY_H
#define RUNTIME_PLC_INQUIRY_H

#include "plc/listeners.h"
#include "session/ask.h"

// An application asks a PLC about itself.

namespace fins {

class Inquiry {
public:
    explicit Inquiry(std::shared_ptr<Undertaking> order) : order_(std::move(order)) {}

    Undertaking &order() const { return *order_; }
    const std::shared_ptr<Undertaking> &target() const { return order_; }

    /// Asks about one topic after the other, as long as service requests may be sent and until `limit` at the latest.
    void advance(Runtime &runtime, TimePoint limit);
    bool isOver() const { return next_ == order_->topics.size(); }

    /// What was told; the rest was not, for this reason.
    PlcFacts end(const std::string &reason);

private:
    ServiceReply ask(Topic topic, Runtime &runtime, TimePoint limit);
    void addProblem(const std::string &problem);

    std::shared_ptr<Undertaking> order_;
    std::size_t next_ = 0; // of the topics
    PlcFacts    facts_;
};

} // namespace fins

#endif
