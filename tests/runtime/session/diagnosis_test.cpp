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

struct RemedyRow {
    const char              *name;
    LinkPhase                phase;
    LinkFailure              failure;
    std::vector<std::string> remedies;
};

void PrintTo(const RemedyRow &row, std::ostream *out) { *out << row.name; }

const char SLOW[]       = "on a slow line try --timeout 5000";
const char PORT_9600[]  = "check the port: FINS/TCP is 9600 unless the unit's settings say another";
const char ASK_WHERE[]  = "fins_panel link plc --trace=line     shows where";
const char NOT_ANOTHER[] = "check that this is the PLC's address and not another device's";

const RemedyRow REMEDIES[] = {
    {"NotResolved", LinkPhase::WAITING, LinkFailure::NOT_RESOLVED,
     {"check the spelling, or give the PLC's IP address, such as 192.168.250.1",
      "getent hosts plc     shows what this computer finds"}},
    {"ResolveTimeout", LinkPhase::WAITING, LinkFailure::RESOLVE_TIMEOUT,
     {"give the PLC's IP address", "check the name server in /etc/resolv.conf"}},
    {"Refused", LinkPhase::WAITING, LinkFailure::REFUSED,
     {PORT_9600, "switch FINS/TCP on in the settings of the PLC's Ethernet unit, and restart the unit", NOT_ANOTHER}},
    {"ConnectTimeout", LinkPhase::WAITING, LinkFailure::CONNECT_TIMEOUT,
     {"ping 192.168.250.1     tells whether the host is there at all",
      "check cable, address and subnet mask on both sides", "a firewall on the way may drop TCP port 9600", SLOW}},
    {"NoConnection", LinkPhase::WAITING, LinkFailure::OTHER, {"check address and port"}},
    {"BadNodes", LinkPhase::HANDSHAKING, LinkFailure::BAD_NODES,
     {"set the unit to assign node addresses by itself, for the range of its network",
      "check the node address of the PLC's Ethernet unit: 1 to 254, and no other's",
      "fins_panel link plc:9600 --trace=full     shows the addresses"}},
    {"Stranger", LinkPhase::HANDSHAKING, LinkFailure::WRONG_PROTOCOL,
     {PORT_9600, NOT_ANOTHER, "fins_panel link plc:9600 --trace=full     shows every byte"}},
    {"SilentFromTheFirst", LinkPhase::HANDSHAKING, LinkFailure::SILENCE,
     {"the port may belong to another service: FINS/TCP is 9600 unless the unit's settings say another",
      "restart the Ethernet unit if it answered before", SLOW}},
    {"CutFromTheFirst", LinkPhase::HANDSHAKING, LinkFailure::CUT_REPLY,
     {"something on the way may hold back packets: connect directly", SLOW,
      "fins_panel link plc --trace=full     shows what came"}},
    {"Cut", LinkPhase::ONLINE, LinkFailure::CUT_REPLY,
     {"use fewer --words-per-frame: something on the way may hold back long packets", SLOW, ASK_WHERE}},
    {"Silent", LinkPhase::ONLINE, LinkFailure::SILENCE,
     {"check the unit address and the routing tables: the CPU unit may not be reachable from the unit", SLOW, ASK_WHERE}},
    {"ClosedFromTheFirst", LinkPhase::HANDSHAKING, LinkFailure::CLOSED,
     {"the PLC may have no connection left: end other programs, or restart the unit",
      "the unit may accept certain IP addresses only: check its FINS/TCP settings"}},
    {"AnswersWrongly", LinkPhase::ONLINE, LinkFailure::WRONG_PROTOCOL,
     {"a gateway or another program on the way may mix up replies: connect directly", ASK_WHERE}},
    {"Broken", LinkPhase::ONLINE, LinkFailure::CLOSED,
     {"try again; if it breaks again, check cable and switch", "look at the frames with --trace=line"}},
};

class Remedies : public ::testing::TestWithParam<RemedyRow> {};

INSTANTIATE_TEST_SUITE_P(Diagnosis, Remedies, ::testing::ValuesIn(REMEDIES),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(Remedies, AreThoseOfTheFailure)
{
    EXPECT_EQ(of(GetParam().failure, GetParam().phase, "").remedies, GetParam().remedies);
}

TEST(StrayText, ShowsWhatIsPrintable)
{
    EXPECT_EQ(strayText(std::string("\x01 ~\x7f\xff", 5)), "01 20 7E 7F FF '. ~..'");
}

} // namespace
