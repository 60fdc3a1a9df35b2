#ifndef PANEL_PUBLISH_BROKER_MESSAGE_H
#define PANEL_PUBLISH_BROKER_MESSAGE_H

#include <cstdint>
#include <string>

/// What goes to the broker: on its way through the spool, or waiting for the broker's acknowledgement.
struct BrokerMessage {
    std::string  topic;
    std::string  payload;          // a JSON object
    std::int64_t at       = 0;     // when it came up: milliseconds since 1970
    bool         retain   = true;
    bool         repeated = false; // it may have reached the broker before
    std::int64_t id       = 0;     // its place in the spool; 0: it is not there
};

#endif
