#include "reply_judge.h"

#include "fins_codes.h"
#include "fins_layout.h"

static const std::uint32_t TCP_NODE_ADDRESSES = 1;
static const std::uint32_t TCP_FINS_FRAME     = 2;

bool carriesFins(const std::uint8_t *frame, std::size_t size)
{
    return size >= FINS_SIZE && get32(frame + TCP_COMMAND) == TCP_FINS_FRAME;
}

RequestKind requestKind(const std::uint8_t *request, std::size_t size)
{
    if (!carriesFins(request, size))
        return RequestKind::HANDSHAKE;
    switch (get16(request + FINS_COMMAND)) {
    case 0x0101: return RequestKind::READ;
    case 0x0102: return RequestKind::WRITE;
    default:     return RequestKind::MODE_CHANGE;
    }
}

static Judgement judgeHandshake(const std::uint8_t *reply, std::size_t size)
{
    const bool isAnswer = size == HANDSHAKE_SIZE && get32(reply + TCP_COMMAND) == TCP_NODE_ADDRESSES;
    return {isAnswer ? Verdict::GOOD : Verdict::NO_ANSWER, 0};
}

Judgement judgeReply(const std::uint8_t *request, std::size_t requestSize, const std::uint8_t *reply, std::size_t size)
{
    if (size < TCP_SIZE)
        return {Verdict::NO_ANSWER, 0};
    if (const std::uint32_t error = get32(reply + TCP_ERROR))
        return {Verdict::TCP_ERROR, error};
    if (requestKind(request, requestSize) == RequestKind::HANDSHAKE)
        return judgeHandshake(reply, size);
    if (get32(reply + TCP_COMMAND) != TCP_FINS_FRAME || size < REPLY_DATA)
        return {Verdict::NO_ANSWER, 0};
    if (reply[FINS_SID] != request[FINS_SID])
        return {Verdict::NO_ANSWER, 0};
    if (get16(reply + FINS_COMMAND) != get16(request + FINS_COMMAND))
        return {Verdict::NO_ANSWER, 0};
    const std::uint16_t endCode = get16(reply + FINS_END);
    if (!isNormalEnd(endCode))
        return {Verdict::REFUSED, endCode};
    return {Verdict::GOOD, 0};
}
