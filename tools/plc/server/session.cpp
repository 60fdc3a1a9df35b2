#include "server/session.h"

#include "fins/fins_command.h"
#include "fins/fins_frame.h"

#include <algorithm>

namespace plc {

namespace {

const unsigned NODE_MAX = 254;

Answer lastAnswer(const Bytes &bytes)
{
    Answer answer;
    answer.bytes = bytes;
    answer.isLast = true;
    return answer;
}

// Adds flags to the end code of the FINS response that begins at `from`. They are all in its low byte.
void addFlags(Bytes &bytes, std::size_t from, unsigned flags)
{
    if (bytes.size() >= from + RESPONSE_DATA)
        bytes[from + RESPONSE_DATA - 1] |= static_cast<std::uint8_t>(flags);
}

// Makes it the response of a command that is refused with `endCode`.
void replaceEndCode(Bytes &response, unsigned endCode)
{
    if (endCode == END_NORMAL || response.size() < RESPONSE_DATA)
        return;
    response.resize(RESPONSE_DATA - END_CODE);
    add16(response, endCode);
}

} // namespace

void Session::end()
{
    if (node != 0)
        plc.nodes.release(node);
    node = 0;
}

FaultTarget Session::targetOf(const TcpFrame &frame) const
{
    const Slice nothing(frame.bytes.data(), 0);
    if (frame.command() == TCP_FINS_FRAME)
        return {frame.body().from(FINS_HEADER_SIZE), node, client.address, plc.controller.memory};
    const bool asksForNode = node == 0 && frame.command() == TCP_CLIENT_NODE;
    return {nothing, asksForNode ? frame.body().get32(0) : node, client.address, plc.controller.memory};
}

unsigned Session::delayBefore(const TcpFrame &frame) { return plc.faults.delayMs(targetOf(frame), Moment::REQUEST); }

Answer Session::receive(const TcpFrame &frame)
{
    ++plc.stats.requests;
    const FaultTarget target = targetOf(frame);
    if (plc.faults.strike(FAULT_SILENCE, target, Moment::REQUEST))
        return Answer();
    Answer answer;
    if (frame.command() == TCP_CLIENT_NODE)
        answer = exchangeNodes(frame);
    else if (frame.command() == TCP_FINS_FRAME)
        answer = answerCommand(frame);
    slowDown(target, answer);
    return answer;
}

Answer Session::reject(TcpError error)
{
    const Slice nothing(nullptr, 0);
    if (plc.faults.strike(FAULT_SILENCE, {nothing, node, client.address, plc.controller.memory}, Moment::REQUEST))
        return lastAnswer(Bytes());
    if (error == TCP_TOO_SHORT)
        return lastAnswer(Bytes());
    return node == 0 ? refuseExchange(error, 0) : lastAnswer(makeErrorNotice(error));
}

// Until a node is given, whatever is wrong has the form of the exchange's reply.
Answer Session::refuseExchange(TcpError error, std::uint32_t requested)
{
    return lastAnswer(makeNodeReply(error, requested, plc.nodes.server()));
}

// After the exchange there is no command but that which sends a frame.
Answer Session::exchangeNodes(const TcpFrame &frame)
{
    const std::uint32_t requested = frame.body().get32(0);
    if (const auto forced = plc.faults.strike(FAULT_TCP_ERROR, targetOf(frame), Moment::REQUEST))
        return refuseExchange(static_cast<TcpError>(*forced), requested);
    if (node != 0)
        return lastAnswer(makeErrorNotice(TCP_UNSUPPORTED_COMMAND));
    const TcpError error = plc.nodes.assign(requested, client, &node);
    if (error != TCP_OK)
        return refuseExchange(error, requested);
    return {makeNodeReply(TCP_OK, node, plc.nodes.server())};
}

// Without a node address a connection has no place in the FINS network yet.
Answer Session::answerCommand(const TcpFrame &frame)
{
    if (node == 0)
        return refuseExchange(TCP_UNSUPPORTED_COMMAND, 0);
    const FaultTarget target = targetOf(frame);
    Answer ended;
    if (endsConnection(target, Moment::REQUEST, &ended) || plc.faults.strike(FAULT_DROP, target, Moment::REQUEST))
        return ended;
    unsigned flags = 0;
    unsigned refusal = plc.faults.strikeEndCode(target, Moment::REQUEST, &flags);
    Answer recorded;
    if (plc.recorded && refusal == END_NORMAL) {
        if (plc.recorded->answer(frame.bytes, &recorded.bytes)) {
            addFlags(recorded.bytes, TCP_BODY, flags);
            return recorded;
        }
        refusal = END_UNKNOWN_COMMAND;
    }
    Bytes response = answerFins(plc.controller, plc.nodes.server(), frame.body(), refusal);
    replaceEndCode(response, plc.faults.strikeEndCode(target, Moment::REPLY, &flags));
    addFlags(response, 0, flags);
    if (endsConnection(target, Moment::REPLY, &ended))
        return ended;
    if (response.empty() || plc.faults.strike(FAULT_DROP, target))
        return Answer();
    return sendResponse(target, response);
}

// Whether a fault ends the connection instead of what would come now.
bool Session::endsConnection(const FaultTarget &target, Moment moment, Answer *answer)
{
    answer->isReset = plc.faults.strike(FAULT_RST, target, moment).has_value();
    answer->isLast = answer->isReset || plc.faults.strike(FAULT_CLOSE, target, moment);
    return answer->isLast;
}

Answer Session::sendResponse(const FaultTarget &target, Bytes &response)
{
    spoil(target, response);
    Answer answer;
    answer.bytes = makeFrameSend(response);
    if (plc.faults.strike(FAULT_DOUBLE, target)) {
        const Bytes once = answer.bytes;
        answer.bytes.insert(answer.bytes.end(), once.begin(), once.end());
    }
    if (held.empty() && plc.faults.strike(FAULT_REORDER, target)) {
        held.swap(answer.bytes);
        return answer;
    }
    answer.bytes.insert(answer.bytes.end(), held.begin(), held.end());
    held.clear();
    if (const auto length = plc.faults.strike(FAULT_CUT, target)) {
        answer.bytes.resize(std::min<std::size_t>(answer.bytes.size(), *length));
        answer.isLast = true;
    }
    return answer;
}

void Session::spoil(const FaultTarget &target, Bytes &response)
{
    if (plc.faults.strike(FAULT_WRONG_SID, target))
        ++response[FINS_SID];
    if (plc.faults.strike(FAULT_WRONG_NODE, target))
        response[FINS_DA1] = static_cast<std::uint8_t>(response[FINS_DA1] % NODE_MAX + 1);
    const unsigned missing = plc.faults.strikeAll(FAULT_SHORT, target);
    response.resize(response.size() - std::min<std::size_t>(response.size(), missing));
    response.resize(response.size() + plc.faults.strikeAll(FAULT_LONG, target));
}

void Session::slowDown(const FaultTarget &target, Answer &answer)
{
    answer.delayMs += plc.faults.delayMs(target, Moment::REPLY);
    const auto bytePause = plc.faults.strike(FAULT_BYTEWISE, target);
    answer.isBytewise = bytePause.has_value();
    answer.bytePauseMs = bytePause.value_or(0);
}

} // namespace plc
