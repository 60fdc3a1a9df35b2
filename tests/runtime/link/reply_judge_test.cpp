#include "link/reply_judge.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes hex(const std::string &text)
{
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != ' ')
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(i++, 2), nullptr, 16)));
    }
    return bytes;
}

Judgement judge(const std::string &request, const std::string &reply)
{
    const Bytes sent = hex(request);
    const Bytes received = hex(reply);
    return judgeReply(sent.data(), sent.size(), received.data(), received.size());
}

RequestKind kindOf(const std::string &request)
{
    const Bytes bytes = hex(request);
    return requestKind(bytes.data(), bytes.size());
}

const std::string HANDSHAKE = "46494E53 0000000C 00000000 00000000 00000000";
const std::string READ      = "46494E53 0000001A 00000002 00000000 800002000100000A0007 0101 82 0064 00 0001";
const std::string WRITE     = "46494E53 0000001C 00000002 00000000 800002000100000A0007 0102 82 0064 00 0001 0005";
const std::string MODE      = "46494E53 00000017 00000002 00000000 800002000100000A0007 0401 FFFF 02";

// Why the reply is no answer; empty if it is one.
std::string flawOf(const std::string &request, const std::string &reply)
{
    const Judgement judgement = judge(request, reply);
    EXPECT_EQ(judgement.verdict == Verdict::NO_ANSWER, judgement.flaw != Flaw::NONE);
    return judgement.flaw == Flaw::NONE ? "" : flawText(judgement.flaw, hex(request).data(), hex(reply).data());
}

// The reply to `command` with service ID 07 and `end` behind it.
std::string replyTo(const std::string &command, const std::string &end)
{
    return "46494E53 00000016 00000002 00000000 C00002000A000001 0007 " + command + end;
}

} // namespace

TEST(ReplyJudge, TellsTheRequestsApart)
{
    EXPECT_EQ(kindOf(HANDSHAKE), RequestKind::HANDSHAKE);
    EXPECT_EQ(kindOf(READ), RequestKind::READ);
    EXPECT_EQ(kindOf(WRITE), RequestKind::WRITE);
    EXPECT_EQ(kindOf(MODE), RequestKind::MODE_CHANGE);
}

TEST(ReplyJudge, OnlyFinsFramesCarryAServiceId)
{
    const Bytes read = hex(READ);
    EXPECT_TRUE(carriesFins(read.data(), read.size()));
    EXPECT_TRUE(carriesFins(read.data(), 28));
    EXPECT_FALSE(carriesFins(read.data(), 27));
    const Bytes error = hex("46494E53 00000016 00000003 00000000 C00002000A0000010007 0101 0000");
    EXPECT_FALSE(carriesFins(error.data(), error.size()));
}

TEST(ReplyJudge, AcceptsTheNodeAddresses)
{
    const Judgement judgement = judge(HANDSHAKE, "46494E53 00000010 00000001 00000000 000000EF 00000001");
    EXPECT_EQ(judgement.verdict, Verdict::GOOD);
}

TEST(ReplyJudge, AcceptsNothingElseForNodeAddresses)
{
    EXPECT_EQ(judge(HANDSHAKE, "46494E53 00000010 00000002 00000000 000000EF 00000001").verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(HANDSHAKE, "46494E53 0000000F 00000001 00000000 000000EF 000000").verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(HANDSHAKE, "46494E53 00000011 00000001 00000000 000000EF 00000001 00").verdict,
              Verdict::NO_ANSWER);
    EXPECT_EQ(judge(HANDSHAKE, "").verdict, Verdict::NO_ANSWER);
}

TEST(ReplyJudge, SeesFinsTcpErrors)
{
    Judgement judgement = judge(HANDSHAKE, "46494E53 00000010 00000001 00000020 00000000 00000000");
    EXPECT_EQ(judgement.verdict, Verdict::TCP_ERROR);
    EXPECT_EQ(judgement.code, 0x20u);
    judgement = judge(READ, "46494E53 00000008 00000003 01020304");
    EXPECT_EQ(judgement.verdict, Verdict::TCP_ERROR);
    EXPECT_EQ(judgement.code, 0x01020304u);
}

TEST(ReplyJudge, AcceptsRepliesWithANormalEnd)
{
    EXPECT_EQ(judge(READ, replyTo("0101", "0000 1234")).verdict, Verdict::GOOD);
    EXPECT_EQ(judge(WRITE, replyTo("0102", "0000")).verdict, Verdict::GOOD);
    EXPECT_EQ(judge(MODE, replyTo("0401", "0000")).verdict, Verdict::GOOD);
    EXPECT_EQ(judge(READ, replyTo("0101", "0040 1234")).verdict, Verdict::GOOD); // with a CPU unit error flag
}

TEST(ReplyJudge, SeesAnEndCodeInARefusedReadOfTheRightLength)
{
    const Judgement judgement = judge(READ, replyTo("0101", "1103 0000"));
    EXPECT_EQ(judgement.verdict, Verdict::REFUSED);
    EXPECT_EQ(judgement.code, 0x1103u);
}

TEST(ReplyJudge, RefusesAnotherServiceIdOrCommand)
{
    EXPECT_EQ(judge(WRITE, "46494E53 00000016 00000002 00000000 C00002000A0000010008 0102 0000").verdict,
              Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, replyTo("0101", "0000")).verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(READ, replyTo("0102", "0000")).verdict, Verdict::NO_ANSWER);
}

// A reply to a read of node 1 from node 10, with this FINS header up to the service ID.
std::string flawOfReply(const std::string &header)
{
    return flawOf(READ, "46494E53 00000018 00000002 00000000 " + header + "07 0101 0000 0007");
}

TEST(ReplyJudge, TakesOnlyAResponseFromTheNodeAskedToTheNodeThatAsked)
{
    EXPECT_EQ(flawOfReply("C00002 000A00 000100"), "");
    EXPECT_EQ(flawOfReply("C10007 000A00 000100"), "");   // other bits of ICF, RSV and GCT do not matter
    EXPECT_EQ(flawOfReply("800002 000A00 000100"), "the reply is no response but a command");
    EXPECT_EQ(flawOfReply("000002 000A00 000100"), "the reply is no response but a command");
    EXPECT_EQ(flawOfReply("C00002 000A00 000500"), "the reply comes from node 5, not 1");
    EXPECT_EQ(flawOfReply("C00002 000A00 020100"), "the reply comes from network 2, not 0");
    EXPECT_EQ(flawOfReply("C00002 000A00 000110"), "the reply comes from unit 16, not 0");
    EXPECT_EQ(flawOfReply("C00002 000B00 000100"), "the reply is for node 11, not 10");
    EXPECT_EQ(flawOfReply("C00002 030A00 000100"), "the reply is for network 3, not 0");
    EXPECT_EQ(flawOfReply("C00002 000A04 000100"), "the reply is for unit 4, not 0");
    EXPECT_EQ(flawOfReply("C00002 000100 000A00"), "the reply is for node 1, not 10"); // the request's own header
}

// Beyond network 0 and unit 0 the same holds.
TEST(ReplyJudge, ComparesWithTheRequestsOwnAddresses)
{
    const std::string read = "46494E53 0000001A 00000002 00000000 800002 070106 050A04 07 0101 82 0064 00 0001";
    EXPECT_EQ(flawOf(read, "46494E53 00000018 00000002 00000000 C00002 050A04 070106 07 0101 0000 0007"), "");
    EXPECT_EQ(flawOf(read, "46494E53 00000018 00000002 00000000 C00002 000A04 070106 07 0101 0000 0007"),
              "the reply is for network 0, not 5");
    EXPECT_EQ(flawOf(read, "46494E53 00000018 00000002 00000000 C00002 050A04 070100 07 0101 0000 0007"),
              "the reply comes from unit 0, not 6");
}

TEST(ReplyJudge, ARefusalOfAnotherNodeIsNoRefusal)
{
    EXPECT_EQ(flawOf(READ, "46494E53 00000016 00000002 00000000 C00002 000A00 000500 07 0101 1103"),
              "the reply comes from node 5, not 1");
}

TEST(ReplyJudge, RefusesNodeAddressesThatAreNone)
{
    const auto given = [](const std::string &nodes) {
        return flawOf(HANDSHAKE, "46494E53 00000010 00000001 00000000 " + nodes);
    };
    EXPECT_EQ(given("00000001 000000FE"), "");
    EXPECT_EQ(given("000000FE 00000001"), "");
    EXPECT_EQ(given("00000000 00000001"), "this node is to be 0, a node is 1 to 254");
    EXPECT_EQ(given("000000FF 00000001"), "this node is to be 255, a node is 1 to 254");
    EXPECT_EQ(given("00000105 00000001"), "this node is to be 261, a node is 1 to 254");
    EXPECT_EQ(given("000000EF 00000000"), "the PLC's node is said to be 0, a node is 1 to 254");
    EXPECT_EQ(given("000000EF 000000FF"), "the PLC's node is said to be 255, a node is 1 to 254");
    EXPECT_EQ(given("000000EF 80000001"), "the PLC's node is said to be 2147483649, a node is 1 to 254");
    EXPECT_EQ(given("00000009 00000009"), "this node and the PLC's are to be the same, 9");
}

TEST(ReplyJudge, SaysNoMoreOfOtherFlaws)
{
    EXPECT_EQ(flawOf(WRITE, replyTo("0101", "0000")), "the reply does not answer the request");
    EXPECT_EQ(flawOf(HANDSHAKE, replyTo("0101", "0000")), "the reply does not answer the request");
    EXPECT_EQ(flawOf(READ, "46494E53 00000008 00000002 00000000"), "the reply does not answer the request");
    EXPECT_EQ(judge(READ, "").flaw, Flaw::NONE);
}

TEST(ReplyJudge, RefusesAReplyWithoutEndCode)
{
    EXPECT_EQ(judge(WRITE, replyTo("0102", "00")).verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, "46494E53 00000016 00000001 00000000 C00002000A0000010007 0102 0000").verdict,
              Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, "46494E53 00000008 00000002 00000000").verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, "46494E53 00000007 00000002 000000").verdict, Verdict::NO_ANSWER);
}
