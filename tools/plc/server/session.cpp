#include "server/session.h"

#include "fins/fins_command.h"
#include "fins/fins_frame.h"

#include <algorithm>

namespace plc {

namespace {

// Whether the frame, bad or not, asks for a node address, so that the reply has to have that form.
bool isNodeRequest(const TcpFrame &frame, TcpError error)
{
    return error != TCP_NOT_FINS && frame.bytes.size() >= TCP_BODY && frame.command() == TCP_CLIENT_NODE;
}

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

} // namespace

void Session::end()
{
    if (node != 0)
        plc.nodes.release(node);
    node = 0;
}

Answer Session::receive(const TcpFrame &frame)
{
    ++plc.stats.requests;
    if (plc.faults.strikes(FAULT_SILENCE))
        return Answer();
    Answer answer;
    if (frame.command() == TCP_CLIENT_NODE)
        answer = exchangeNodes(frame);
    else if (frame.command() == TCP_FINS_FRAME)
        answer = answerCommand(frame);
    slowDown(answer);
    return answer;
}

Answer Session::reject(const TcpFrame &frame, TcpError error)
{
    if (plc.faults.strikes(FAULT_SILENCE))
        return lastAnswer(Bytes());
    return lastAnswer(isNodeRequest(frame, error) ? makeNodeReply(error, 0, plc.nodes.server())
                                                  : makeErrorNotice(error));
}

// Errors of a node have the form of the exchange's reply. That the header is none of FINS, or its command unknown, can
// only be told by a notice.
Answer Session::refuseExchange(TcpError error, std::uint32_t requested)
{
    const bool isNotice = error == TCP_NOT_FINS || error == TCP_UNSUPPORTED_COMMAND;
    return lastAnswer(isNotice ? makeErrorNotice(error) : makeNodeReply(error, requested, plc.nodes.server()));
}

// A second exchange on a connection is refused: its node is connected already.
Answer Session::exchangeNodes(const TcpFrame &frame)
{
    const std::uint32_t requested = frame.body().get32(0);
    if (plc.faults.strikes(FAULT_TCP_ERROR))
        return refuseExchange(static_cast<TcpError>(plc.faults.value(FAULT_TCP_ERROR)), requested);
    const TcpError error = node != 0 ? TCP_NODE_IN_USE : plc.nodes.assign(requested, &node);
    if (error != TCP_OK)
        return refuseExchange(error, requested);
    return {makeNodeReply(TCP_OK, node, plc.nodes.server())};
}

// Without a node address a connection has no place in the FINS network yet.
Answer Session::answerCommand(const TcpFrame &frame)
{
    if (node == 0)
        return lastAnswer(makeErrorNotice(TCP_UNSUPPORTED_COMMAND));
    const unsigned forced = plc.faults.strikes(FAULT_END_CODE) ? plc.faults.value(FAULT_END_CODE) : END_NORMAL;
    const unsigned flags = (forced & ~END_FLAGS) == 0 ? forced : 0;
    unsigned refusal = forced & ~flags;
    Answer recorded;
    if (plc.recorded && refusal == END_NORMAL) {
        if (plc.recorded->answer(frame.bytes, &recorded.bytes)) {
            addFlags(recorded.bytes, TCP_BODY, flags);
            return recorded;
        }
        refusal = END_UNKNOWN_COMMAND;
    }
    Bytes response = answerFins(plc.controller, plc.nodes.server(), frame.body(), refusal);
    addFlags(response, 0, flags);
    if (plc.faults.strikes(FAULT_CLOSE))
        return lastAnswer(Bytes());
    Answer answer;
    if (response.empty() || plc.faults.strikes(FAULT_DROP))
        return answer;
    spoil(response);
    answer.bytes = makeFrameSend(response);
    if (plc.faults.strikes(FAULT_DOUBLE)) {
        const Bytes once = answer.bytes;
        answer.bytes.insert(answer.bytes.end(), once.begin(), once.end());
    }
    return answer;
}

void Session::spoil(Bytes &response)
{
    if (plc.faults.strikes(FAULT_WRONG_SID))
        ++response[FINS_SID];
    if (plc.faults.strikes(FAULT_SHORT))
        response.resize(response.size() - std::min<std::size_t>(response.size(), plc.faults.value(FAULT_SHORT)));
    if (plc.faults.strikes(FAULT_LONG))
        response.resize(response.size() + plc.faults.value(FAULT_LONG));
}

void Session::slowDown(Answer &answer)
{
    if (plc.faults.strikes(FAULT_DELAY))
        answer.delayMs += plc.faults.value(FAULT_DELAY);
    if (plc.faults.strikes(FAULT_JITTER))
        answer.delayMs += plc.faults.upTo(plc.faults.value(FAULT_JITTER));
    answer.isBytewise = plc.faults.strikes(FAULT_BYTEWISE);
    answer.bytePauseMs = plc.faults.value(FAULT_BYTEWISE);
}

} // namespace plc
