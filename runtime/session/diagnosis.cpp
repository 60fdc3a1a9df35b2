#include "session/diagnosis.h"

#include "link/fins_codes.h"
#include "link/frame_text.h"

#include <algorithm>

std::string strayText(const std::string &stray)
{
    std::string printable = stray;
    std::replace_if(printable.begin(), printable.end(), [](char c) { return c < 32 || c > 126; }, '.');
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(stray.data());
    return hexText(bytes, stray.size()) + " '" + printable + "'";
}

static std::string inTime(const Peer &peer)
{
    return " within " + std::to_string(peer.timeout.count()) + " ms";
}

static Diagnosis diagnoseConnect(const LinkTrouble &trouble, const Peer &peer)
{
    const std::string where = peer.address.empty() ? peer.host : peer.address;
    switch (trouble.failure) {
    case LinkFailure::NOT_RESOLVED:
        return {"there is no host named '" + peer.host + "': " + trouble.text,
                {"check the spelling, or give the PLC's IP address, such as 192.168.250.1",
                 "getent hosts " + peer.host + "     shows what this computer finds"}};
    case LinkFailure::RESOLVE_TIMEOUT:
        return {"no name server answered for '" + peer.host + "'" + inTime(peer),
                {"give the PLC's IP address", "check the name server in /etc/resolv.conf"}};
    case LinkFailure::REFUSED:
        return {"the host " + where + " is there, but nothing listens on TCP port " + peer.port,
                {"check the port: FINS/TCP is 9600 unless the unit's settings say another",
                 "switch FINS/TCP on in the settings of the PLC's Ethernet unit, and restart the unit",
                 "check that this is the PLC's address and not another device's"}};
    case LinkFailure::UNREACHABLE:
        return {"there is no way to " + where + ": " + trouble.text,
                {"check cable, switch and the PLC's power",
                 "ip route get " + where + "     shows the way that is taken",
                 "give this computer an address in the PLC's subnet"}};
    case LinkFailure::CONNECT_TIMEOUT:
        return {where + " does not answer on TCP port " + peer.port + inTime(peer),
                {"ping " + where + "     tells whether the host is there at all",
                 "check cable, address and subnet mask on both sides",
                 "a firewall on the way may drop TCP port " + peer.port, "on a slow line try --timeout 5000"}};
    default:
        return {"no connection to " + where + ": " + trouble.text, {"check address and port"}};
    }
}

static Diagnosis diagnoseTcpError(const LinkTrouble &trouble)
{
    return {"the PLC refuses the connection with FINS/TCP error " + tcpErrorText(trouble.tcpError),
            {tcpErrorHint(trouble.tcpError)}};
}

static Diagnosis diagnoseNodes(const LinkTrouble &trouble, const Peer &peer)
{
    return {"the connection is made, but there are " + trouble.text,
            {"set the unit to assign node addresses by itself, for the range of its network",
             "check the node address of the PLC's Ethernet unit: 1 to 254, and no other's",
             "fins_panel link " + peer.host + ":" + peer.port + " --trace=full     shows the addresses"}};
}

static Diagnosis diagnoseStranger(const Peer &peer, const std::string &stray)
{
    const std::string what = stray.empty() ? "" : "; it began with " + strayText(stray);
    return {"what answers on " + peer.address + " port " + peer.port + " does not speak FINS/TCP" + what,
            {"check the port: FINS/TCP is 9600 unless the unit's settings say another",
             "check that this is the PLC's address and not another device's",
             "fins_panel link " + peer.host + ":" + peer.port + " --trace=full     shows every byte"}};
}

// After the connection was made: the first frame tells the most.
static Diagnosis diagnoseExchange(const LinkTrouble &trouble, const Peer &peer)
{
    const bool first = trouble.phase == LinkPhase::HANDSHAKING;
    if (trouble.failure == LinkFailure::SILENCE && first)
        return {"the connection is made, but the node address request is not answered" + inTime(peer),
                {"the port may belong to another service: FINS/TCP is 9600 unless the unit's settings say another",
                 "restart the Ethernet unit if it answered before", "on a slow line try --timeout 5000"}};
    if (trouble.failure == LinkFailure::CUT_REPLY && first)
        return {"the connection is made, but there are " + trouble.text,
                {"something on the way may hold back packets: connect directly", "on a slow line try --timeout 5000",
                 "fins_panel link " + peer.host + " --trace=full     shows what came"}};
    if (trouble.failure == LinkFailure::CUT_REPLY)
        return {"the PLC gave a node address, then did not end its replies: " + trouble.text,
                {"use fewer --words-per-frame: something on the way may hold back long packets",
                 "on a slow line try --timeout 5000",
                 "fins_panel link " + peer.host + " --trace=line     shows where"}};
    if (trouble.failure == LinkFailure::SILENCE)
        return {"the PLC gave a node address, then left requests without an answer" + inTime(peer),
                {"check the unit address and the routing tables: the CPU unit may not be reachable from the unit",
                 "on a slow line try --timeout 5000",
                 "fins_panel link " + peer.host + " --trace=line     shows where"}};
    if (trouble.failure == LinkFailure::CLOSED && first)
        return {"the connection is closed again before a node address is given: " + trouble.text,
                {"the PLC may have no connection left: end other programs, or restart the unit",
                 "the unit may accept certain IP addresses only: check its FINS/TCP settings"}};
    if (trouble.failure == LinkFailure::WRONG_PROTOCOL)
        return {"the PLC gave a node address, then answered wrongly: " + trouble.text,
                {"a gateway or another program on the way may mix up replies: connect directly",
                 "fins_panel link " + peer.host + " --trace=line     shows where"}};
    return {"the link broke: " + trouble.text,
            {"try again; if it breaks again, check cable and switch", "look at the frames with --trace=line"}};
}

Diagnosis diagnose(const LinkTrouble &trouble, const Peer &peer, const std::string &stray)
{
    if (trouble.phase == LinkPhase::WAITING)
        return diagnoseConnect(trouble, peer);
    if (trouble.failure == LinkFailure::TCP_ERROR)
        return diagnoseTcpError(trouble);
    if (trouble.failure == LinkFailure::BAD_NODES)
        return diagnoseNodes(trouble, peer);
    if (trouble.failure == LinkFailure::WRONG_PROTOCOL && trouble.phase == LinkPhase::HANDSHAKING)
        return diagnoseStranger(peer, stray);
    return diagnoseExchange(trouble, peer);
}
