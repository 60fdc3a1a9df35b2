#ifndef RUNTIME_LINK_REPLY_JUDGE_H
#define RUNTIME_LINK_REPLY_JUDGE_H

#include <cstddef>
#include <cstdint>
#include <string>

// What a request is and whether a reply answers it, read from their bytes. The driver makes few checks of its own: it
// takes the first 24 bytes after connecting for the node addresses, and a refused read of the right length for data.
// The panel therefore looks at every reply first, and hands the driver only what is one.

enum class RequestKind {
    HANDSHAKE,  // asks for the node addresses
    READ,       // Memory Area Read, 0101
    WRITE,      // Memory Area Write, 0102
    MODE_CHANGE // RUN in MONITOR mode, 0401
};

enum class Verdict {
    GOOD,      // the answer, done
    REFUSED,   // the answer, with an end code: `code` holds it
    TCP_ERROR, // a FINS/TCP error: `code` holds it; the PLC is about to close the connection
    NO_ANSWER  // nothing, or nothing that answers this request
};

/// What keeps a reply from being an answer.
enum class Flaw {
    NONE,    // nothing, or there is no reply
    OTHER,   // the kind of frame, its length, the service ID or the command
    COMMAND, // it is a command itself
    TARGET,  // it is not for the node that the request came from
    SOURCE,  // it does not come from the node that the request went to
    NODES    // it gives node addresses that cannot be used
};

struct Judgement {
    Verdict       verdict;
    std::uint32_t code;
    Flaw          flaw = Flaw::NONE; // of NO_ANSWER
};

RequestKind requestKind(const std::uint8_t *request, std::size_t size);

/// `size` is 0 when no reply came. The checks are in the order of the bytes.
Judgement judgeReply(const std::uint8_t *request, std::size_t requestSize, const std::uint8_t *reply, std::size_t size);

/// Why a reply with that flaw does not answer the request, as part of a sentence. Both have been judged.
std::string flawText(Flaw flaw, const std::uint8_t *request, const std::uint8_t *reply);

/// True if `frame` carries a FINS command or its reply; only then it has a service ID.
bool carriesFins(const std::uint8_t *frame, std::size_t size);

#endif
