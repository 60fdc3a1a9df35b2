#include "session/diagnosis.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

namespace {

const Peer PEER = {"plc", "9600", "192.168.250.1", Millis(1000)};

Diagnosis of(LinkFailure failure, LinkPhase phase, const std::string &text, std::uint32_t tcpError = 0)
{
    return diagnose({failure, tcpError, phase, text}, PEER, "");
}

std::string whileConnecting(LinkFailure failure, const std::string &text = "")
{
    return of(failure, LinkPhase::WAITING, text).problem;
}

TEST(Diagnosis, WhileConnecting)
{
    const Peer unknown = {"plc", "9600", "", Millis(1000)};
    EXPECT_EQ(diagnose({LinkFailure::NOT_RESOLVED, 0, LinkPhase::WAITING, "Host not found"}, unknown, "").problem,
              "there is no host named 'plc': Host not found");
    EXPECT_EQ(whileConnecting(LinkFailure::RESOLVE_TIMEOUT), "no name server answered for 'plc' within 1000 ms");
    EXPECT_EQ(whileConnecting(LinkFailure::REFUSED),
              "the host 192.168.250.1 is there, but nothing listens on TCP port 9600");
    EXPECT_EQ(whileConnecting(LinkFailure::UNREACHABLE, "No route to host"),
              "there is no way to 192.168.250.1: No route to host");
    EXPECT_EQ(whileConnecting(LinkFailure::CONNECT_TIMEOUT),
              "192.168.250.1 does not answer on TCP port 9600 within 1000 ms");
    EXPECT_EQ(whileConnecting(LinkFailure::OTHER, "odd"), "no connection to 192.168.250.1: odd");
}

// From the number of the system's error to what the user reads.
Diagnosis afterError(int number)
{
    return of(connectFailure(number), LinkPhase::WAITING, std::generic_category().message(number));
}

TEST(Diagnosis, NoWayToTheHost)
{
    EXPECT_EQ(afterError(EHOSTUNREACH).problem, "there is no way to 192.168.250.1: No route to host");
    EXPECT_EQ(afterError(ENETUNREACH).problem, "there is no way to 192.168.250.1: Network is unreachable");
    const std::vector<std::string> remedies = {"check cable, switch and the PLC's power",
                                               "ip route get 192.168.250.1     shows the way that is taken",
                                               "give this computer an address in the PLC's subnet"};
    EXPECT_EQ(afterError(EHOSTUNREACH).remedies, remedies);
    EXPECT_EQ(afterError(ENETUNREACH).remedies, remedies);
}

TEST(Diagnosis, OtherErrorsOfTheSystem)
{
    EXPECT_EQ(afterError(ECONNREFUSED).problem,
              "the host 192.168.250.1 is there, but nothing listens on TCP port 9600");
    EXPECT_EQ(afterError(ETIMEDOUT).problem, "192.168.250.1 does not answer on TCP port 9600 within 1000 ms");
    EXPECT_EQ(afterError(EACCES).problem, "no connection to 192.168.250.1: Permission denied");
}

TEST(Diagnosis, FinsTcpErrorsInWords)
{
    const auto refused = [](std::uint32_t error) {
        return of(LinkFailure::TCP_ERROR, LinkPhase::HANDSHAKING, "", error).problem;
    };
    const std::string start = "the PLC refuses the connection with FINS/TCP error ";
    EXPECT_EQ(refused(0x20), start + "20 (all connections of the PLC are in use)");
    EXPECT_EQ(refused(0x21), start + "21 (this node is already connected)");
    EXPECT_EQ(refused(0x22), start + "22 (the PLC does not accept connections from this IP address)");
    EXPECT_EQ(refused(0x23), start + "23 (the node address of this client is out of range)");
    EXPECT_EQ(refused(0x24), start + "24 (the same node address is used by this client and the PLC)");
    EXPECT_EQ(refused(0x25), start + "25 (the PLC has no free node address for this client)");
}

TEST(Diagnosis, FinsTcpErrorHasItsRemedy)
{
    const Diagnosis filtered = of(LinkFailure::TCP_ERROR, LinkPhase::HANDSHAKING, "", 0x22);
    EXPECT_EQ(filtered.remedies, std::vector<std::string>{
        "add this computer's address in the unit's settings, or switch its IP address filter off"});
}

TEST(Diagnosis, SilenceBeforeAndAfterTheNodeAddress)
{
    EXPECT_EQ(of(LinkFailure::SILENCE, LinkPhase::HANDSHAKING, "").problem,
              "the connection is made, but the node address request is not answered within 1000 ms");
    EXPECT_EQ(of(LinkFailure::SILENCE, LinkPhase::PROVING, "").problem,
              "the PLC gave a node address, then left requests without an answer within 1000 ms");
    EXPECT_EQ(of(LinkFailure::SILENCE, LinkPhase::ONLINE, "").problem,
              "the PLC gave a node address, then left requests without an answer within 1000 ms");
}

TEST(Diagnosis, HalfAReplyBeforeAndAfterTheNodeAddress)
{
    EXPECT_EQ(of(LinkFailure::CUT_REPLY, LinkPhase::HANDSHAKING,
                 "no node addresses: only 20 of 24 bytes of the reply came in time").problem,
              "the connection is made, but there are no node addresses: only 20 of 24 bytes of the reply came in time");
    for (const LinkPhase phase : {LinkPhase::PROVING, LinkPhase::ONLINE}) {
        EXPECT_EQ(of(LinkFailure::CUT_REPLY, phase, "only 31 of 32 bytes of the reply came in time").problem,
                  "the PLC gave a node address, then did not end its replies: only 31 of 32 bytes of the reply came in "
                  "time");
    }
}

TEST(Diagnosis, UnusableNodeAddresses)
{
    const Diagnosis unusable = of(LinkFailure::BAD_NODES, LinkPhase::HANDSHAKING,
                                  "no node addresses: this node is to be 0, a node is 1 to 254");
    EXPECT_EQ(unusable.problem, "the connection is made, but there are no node addresses: this node is to be 0, a node "
                                "is 1 to 254");
    EXPECT_EQ(unusable.remedies.front(),
              "set the unit to assign node addresses by itself, for the range of its network");
}

TEST(Diagnosis, ClosedBeforeAndAfterTheNodeAddress)
{
    EXPECT_EQ(of(LinkFailure::CLOSED, LinkPhase::HANDSHAKING, "reset").problem,
              "the connection is closed again before a node address is given: reset");
    EXPECT_EQ(of(LinkFailure::CLOSED, LinkPhase::ONLINE, "reset").problem, "the link broke: reset");
}

TEST(Diagnosis, AnotherProtocol)
{
    const LinkTrouble trouble = {LinkFailure::WRONG_PROTOCOL, 0, LinkPhase::HANDSHAKING, "x"};
    EXPECT_EQ(diagnose(trouble, PEER, "HTTP").problem,
              "what answers on 192.168.250.1 port 9600 does not speak FINS/TCP; it began with 48 54 54 50 'HTTP'");
    EXPECT_EQ(diagnose(trouble, PEER, "").problem,
              "what answers on 192.168.250.1 port 9600 does not speak FINS/TCP");
    EXPECT_EQ(of(LinkFailure::WRONG_PROTOCOL, LinkPhase::PROVING, "bad reply").problem,
              "the PLC gave a node address, then answered wrongly: bad reply");
}

TEST(Diagnosis, EveryOneHasARemedy)
{
    for (const LinkPhase phase : {LinkPhase::WAITING, LinkPhase::HANDSHAKING, LinkPhase::PROVING, LinkPhase::ONLINE}) {
        for (int failure = 0; failure <= static_cast<int>(LinkFailure::OTHER); ++failure)
            EXPECT_FALSE(of(static_cast<LinkFailure>(failure), phase, "").remedies.empty()) << failure;
    }
}

TEST(StrayText, ShowsWhatIsPrintable)
{
    EXPECT_EQ(strayText(std::string("\x01 ~\x7f\xff", 5)), "01 20 7E 7F FF '. ~..'");
}

} // namespace
