#ifndef RUNTIME_SERVICE_SERVICE_REPLY_H
#define RUNTIME_SERVICE_SERVICE_REPLY_H

#include <cstdint>
#include <string>
#include <vector>

// What became of a service request.

enum class ServiceEnd {
    DONE,      // the PLC has done it
    REFUSED,   // the PLC said no: `endCode`
    NO_ANSWER, // sent, and nothing came that answers it: what it orders was done or not
    NOT_SENT
};

struct ServiceReply {
    ServiceEnd    end     = ServiceEnd::NOT_SENT;
    std::uint16_t endCode = 0;      // with the flags of CPU unit errors
    std::vector<std::uint8_t> data = {}; // behind the end code; a refusal may have some
    std::string   problem = "";     // why it is not DONE, as part of a sentence
};

#endif
