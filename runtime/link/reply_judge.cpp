#include "link/reply_judge.h"

#include "link/fins_codes.h"
#include "link/fins_layout.h"

#include <algorithm>

static const std::uint32_t TCP_NODE_ADDRESSES = 1;
static const std::uint32_t TCP_FINS_FRAME     = 2;

static const std::uint32_t LAST_NODE = 254; // 255 is for all nodes

static const std::ptrdiff_t ADDRESS_SIZE = 3;

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

static Judgement noAnswer(Flaw flaw)
{
    return {Verdict::NO_ANSWER, 0, flaw};
}

static bool isNode(std::uint32_t address)
{
    return address >= 1 && address <= LAST_NODE;
}

static Judgement judgeHandshake(const std::uint8_t *reply, std::size_t size)
{
    if (size != HANDSHAKE_SIZE || get32(reply + TCP_COMMAND) != TCP_NODE_ADDRESSES)
        return noAnswer(Flaw::OTHER);
    const std::uint32_t client = get32(reply + CLIENT_NODE);
    const std::uint32_t server = get32(reply + SERVER_NODE);
    if (!isNode(client) || !isNode(server) || client == server)
        return noAnswer(Flaw::NODES);
    return {Verdict::GOOD, 0};
}

// An address is network, node and unit.
static bool sameAddress(const std::uint8_t *a, const std::uint8_t *b)
{
    return std::equal(a, a + ADDRESS_SIZE, b);
}

static Flaw findFlaw(const std::uint8_t *request, const std::uint8_t *reply)
{
    if ((reply[FINS_ICF] & ICF_RESPONSE) == 0)
        return Flaw::COMMAND;
    if (!sameAddress(reply + FINS_DNA, request + FINS_SNA))
        return Flaw::TARGET;
    if (!sameAddress(reply + FINS_SNA, request + FINS_DNA))
        return Flaw::SOURCE;
    if (reply[FINS_SID] != request[FINS_SID] || get16(reply + FINS_COMMAND) != get16(request + FINS_COMMAND))
        return Flaw::OTHER;
    return Flaw::NONE;
}

Judgement judgeReply(const std::uint8_t *request, std::size_t requestSize, const std::uint8_t *reply, std::size_t size)
{
    if (size < TCP_SIZE)
        return noAnswer(size == 0 ? Flaw::NONE : Flaw::OTHER);
    if (const std::uint32_t error = get32(reply + TCP_ERROR))
        return {Verdict::TCP_ERROR, error};
    if (requestKind(request, requestSize) == RequestKind::HANDSHAKE)
        return judgeHandshake(reply, size);
    if (get32(reply + TCP_COMMAND) != TCP_FINS_FRAME || size < REPLY_DATA)
        return noAnswer(Flaw::OTHER);
    const Flaw flaw = findFlaw(request, reply);
    if (flaw != Flaw::NONE)
        return noAnswer(flaw);
    const std::uint16_t endCode = get16(reply + FINS_END);
    if (!isNormalEnd(endCode))
        return {Verdict::REFUSED, endCode};
    return {Verdict::GOOD, 0};
}

static std::string nodesText(const std::uint8_t *reply)
{
    const std::uint32_t client = get32(reply + CLIENT_NODE);
    const std::uint32_t server = get32(reply + SERVER_NODE);
    const std::string range = ", a node is 1 to " + std::to_string(LAST_NODE);
    if (!isNode(client))
        return "this node is to be " + std::to_string(client) + range;
    if (!isNode(server))
        return "the PLC's node is said to be " + std::to_string(server) + range;
    return "this node and the PLC's are to be the same, " + std::to_string(client);
}

// The first part of an address that is not the expected one.
static std::string differenceText(const std::uint8_t *address, const std::uint8_t *expected)
{
    static const char *const PARTS[ADDRESS_SIZE] = {"network ", "node ", "unit "};
    const auto at = std::mismatch(address, address + ADDRESS_SIZE, expected);
    return PARTS[at.first - address] + std::to_string(*at.first) + ", not " + std::to_string(*at.second);
}

std::string flawText(Flaw flaw, const std::uint8_t *request, const std::uint8_t *reply)
{
    switch (flaw) {
    case Flaw::COMMAND: return "the reply is no response but a command";
    case Flaw::TARGET:  return "the reply is for " + differenceText(reply + FINS_DNA, request + FINS_SNA);
    case Flaw::SOURCE:  return "the reply comes from " + differenceText(reply + FINS_SNA, request + FINS_DNA);
    case Flaw::NODES:   return nodesText(reply);
    case Flaw::NONE:
    case Flaw::OTHER:   break;
    }
    return "the reply does not answer the request";
}
