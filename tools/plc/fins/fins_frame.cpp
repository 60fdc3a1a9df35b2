#include "fins/fins_frame.h"

#include "fins/fins_command.h"

namespace plc {

namespace {

enum : unsigned {
    ICF_IS_RESPONSE      = 0x40,
    ICF_NO_RESPONSE      = 0x01,
    ICF_RESPONSE         = 0xC0,
    GCT_DEFAULT          = 0x02,
    NODE_BROADCAST       = 0xFF
};

// A frame that is not for this node is answered by the node itself, as no network lies behind it. Destination node 0 is
// the node that the frame reaches, FF every node.
unsigned routingError(unsigned node, Slice frame)
{
    if (frame.get8(FINS_DNA) != 0)
        return END_NO_ROUTING_TABLE;
    const unsigned wanted = frame.get8(FINS_DA1);
    if (wanted != 0 && wanted != NODE_BROADCAST && wanted != node)
        return END_NODE_ABSENT;
    const Unit unit = static_cast<Unit>(frame.get8(FINS_DA2));
    return unit == Unit::CPU || unit == Unit::ETHERNET ? END_NORMAL : END_UNIT_ABSENT;
}

// The answer comes from where the request went to; that to a broadcast from the node itself.
Bytes responseHeader(Slice request, unsigned node)
{
    Bytes header;
    add8(header, ICF_RESPONSE);
    add8(header, 0);
    add8(header, GCT_DEFAULT);
    for (const std::size_t field : {FINS_SNA, FINS_SA1, FINS_SA2, FINS_DNA, FINS_DA1, FINS_DA2, FINS_SID})
        add8(header, request.get8(field));
    if (header[FINS_SA1] == NODE_BROADCAST)
        header[FINS_SA1] = static_cast<std::uint8_t>(node);
    return header;
}

} // namespace

Bytes answerFins(Controller &controller, unsigned node, Slice frame, unsigned forcedEndCode)
{
    if ((frame.get8(FINS_ICF) & ICF_IS_RESPONSE) != 0)
        return Bytes();
    const Slice command = frame.from(FINS_HEADER_SIZE);
    controller.right.setAsking({frame.get8(FINS_SNA), frame.get8(FINS_SA1), frame.get8(FINS_SA2)});
    const unsigned refusal = forcedEndCode != END_NORMAL ? forcedEndCode : routingError(node, frame);
    const Unit unit = static_cast<Unit>(frame.get8(FINS_DA2));
    const Bytes answer =
        refusal != END_NORMAL ? refuseCommand(command, refusal) : runCommand(controller, command, unit);
    if ((frame.get8(FINS_ICF) & ICF_NO_RESPONSE) != 0)
        return Bytes();
    Bytes response = responseHeader(frame, node);
    response.insert(response.end(), answer.begin(), answer.end());
    return response;
}

} // namespace plc
