#include "reply_judge.h"

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

TEST(ReplyJudge, RefusesAReplyWithoutEndCode)
{
    EXPECT_EQ(judge(WRITE, replyTo("0102", "00")).verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, "46494E53 00000016 00000001 00000000 C00002000A0000010007 0102 0000").verdict,
              Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, "46494E53 00000008 00000002 00000000").verdict, Verdict::NO_ANSWER);
    EXPECT_EQ(judge(WRITE, "46494E53 00000007 00000002 000000").verdict, Verdict::NO_ANSWER);
}
