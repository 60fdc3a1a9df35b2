#include "link/reply_assembler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using Bytes = std::vector<std::uint8_t>;

// "FINS", the number of bytes behind it, then as many bytes that count up from `first`.
Bytes replyOf(std::size_t following, std::uint8_t first)
{
    Bytes bytes = {0x46, 0x49, 0x4E, 0x53, 0, 0, static_cast<std::uint8_t>(following / 256),
                   static_cast<std::uint8_t>(following % 256)};
    for (std::size_t i = 0; i < following; ++i)
        bytes.push_back(static_cast<std::uint8_t>(first + i));
    return bytes;
}

class ReplyAssemblerTest : public testing::Test {
protected:
    AssemblyState add(const Bytes &bytes)
    {
        EXPECT_LE(bytes.size(), assembler.roomSize());
        std::copy(bytes.begin(), bytes.end(), assembler.room());
        return assembler.added(bytes.size());
    }

    AssemblyState addPart(const Bytes &bytes, std::size_t from, std::size_t to)
    {
        using Offset = std::ptrdiff_t;
        return add(Bytes(bytes.begin() + static_cast<Offset>(from), bytes.begin() + static_cast<Offset>(to)));
    }

    Bytes reply() const { return Bytes(assembler.reply(), assembler.reply() + assembler.replySize()); }

    ReplyAssembler assembler;
};

} // namespace

TEST_F(ReplyAssemblerTest, IsIncompleteWithoutBytes)
{
    EXPECT_EQ(assembler.state(), AssemblyState::INCOMPLETE);
    EXPECT_EQ(assembler.replySize(), 0u);
}

TEST_F(ReplyAssemblerTest, TakesAWholeReply)
{
    const Bytes bytes = replyOf(16, 1);
    EXPECT_EQ(add(bytes), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), bytes);
    EXPECT_EQ(assembler.leftOver(), 0u);
}

TEST_F(ReplyAssemblerTest, TakesAReplyCutAtEveryByte)
{
    const Bytes bytes = replyOf(22, 7);
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i)
        ASSERT_EQ(addPart(bytes, i, i + 1), AssemblyState::INCOMPLETE) << i;
    EXPECT_EQ(addPart(bytes, 29, 30), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), bytes);
}

// What is said of a reply of which the rest does not come.
TEST_F(ReplyAssemblerTest, TellsHowMuchOfAReplyHasCome)
{
    const Bytes bytes = replyOf(22, 7);
    addPart(bytes, 0, 7);
    EXPECT_EQ(assembler.leftOver(), 7u);
    EXPECT_EQ(assembler.expectedSize(), 0u);
    addPart(bytes, 7, 8);
    EXPECT_EQ(assembler.leftOver(), 8u);
    EXPECT_EQ(assembler.expectedSize(), 30u);
    addPart(bytes, 8, 29);
    EXPECT_EQ(assembler.leftOver(), 29u);
    EXPECT_EQ(assembler.expectedSize(), 30u);
    // The rest of it is no part of the next one.
    assembler.beginReply();
    addPart(bytes, 29, 30);
    EXPECT_EQ(assembler.leftOver(), 0u);
    EXPECT_EQ(assembler.expectedSize(), 0u);
}

TEST_F(ReplyAssemblerTest, UsesAllFourBytesOfTheLength)
{
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x53, 0, 0, 1, 0}), AssemblyState::INCOMPLETE); // 256 follow
    assembler.reset();
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x53, 0, 1, 0, 16}), AssemblyState::TOO_LONG);
    assembler.reset();
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x53, 1, 0, 0, 16}), AssemblyState::TOO_LONG);
    assembler.reset();
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x53, 0xFF, 0xFF, 0xFF, 0xFF}), AssemblyState::TOO_LONG);
}

TEST_F(ReplyAssemblerTest, TakesTheLongestReplyAndNoLongerOne)
{
    const Bytes longest = replyOf(2040, 0);
    EXPECT_EQ(add(longest), AssemblyState::COMPLETE);
    EXPECT_EQ(assembler.replySize(), 2048u);
    EXPECT_GE(assembler.roomSize(), 1u);
    assembler.reset();
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x53, 0, 0, 0x07, 0xF9}), AssemblyState::TOO_LONG); // 2041 follow
}

TEST_F(ReplyAssemblerTest, NeedsRoomForCommandAndErrorCode)
{
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x53, 0, 0, 0, 7}), AssemblyState::TOO_SHORT);
    assembler.reset();
    EXPECT_EQ(add(replyOf(8, 0)), AssemblyState::COMPLETE);
    EXPECT_EQ(assembler.replySize(), 16u);
}

TEST_F(ReplyAssemblerTest, SeesAWrongMagicAtItsFirstByte)
{
    EXPECT_EQ(add({0x46, 0x49}), AssemblyState::INCOMPLETE);
    EXPECT_EQ(add({0x4F}), AssemblyState::WRONG_MAGIC);
    assembler.reset();
    EXPECT_EQ(add({0x48, 0x54, 0x54, 0x50}), AssemblyState::WRONG_MAGIC);
    assembler.reset();
    EXPECT_EQ(add({0x46, 0x49, 0x4E, 0x54, 0, 0, 0, 8}), AssemblyState::WRONG_MAGIC);
}

TEST_F(ReplyAssemblerTest, CountsLeftOverBytesAndDropsThemWithTheNextReply)
{
    Bytes two = replyOf(16, 1);
    const Bytes second = replyOf(17, 90);
    two.insert(two.end(), second.begin(), second.end());
    EXPECT_EQ(add(two), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), replyOf(16, 1));
    EXPECT_EQ(assembler.leftOver(), 25u);
    assembler.beginReply();
    EXPECT_EQ(assembler.state(), AssemblyState::INCOMPLETE);
    EXPECT_EQ(add(replyOf(18, 50)), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), replyOf(18, 50));
}

TEST_F(ReplyAssemblerTest, DropsOneReplyAndShowsTheNextOne)
{
    Bytes two = replyOf(16, 1);
    const Bytes second = replyOf(17, 90);
    two.insert(two.end(), second.begin(), second.end());
    add(two);
    assembler.dropReply();
    EXPECT_EQ(assembler.state(), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), second);
    EXPECT_EQ(assembler.leftOver(), 0u);
}

TEST_F(ReplyAssemblerTest, SkipsTheRestOfAReplyThatWasGivenUp)
{
    const Bytes late = replyOf(20, 1);
    EXPECT_EQ(addPart(late, 0, 13), AssemblyState::INCOMPLETE);
    assembler.beginReply();
    EXPECT_EQ(addPart(late, 13, 20), AssemblyState::INCOMPLETE);
    Bytes rest(late.begin() + 20, late.end());
    const Bytes own = replyOf(16, 40);
    rest.insert(rest.end(), own.begin(), own.end());
    EXPECT_EQ(add(rest), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), own);
}

TEST_F(ReplyAssemblerTest, SkipsTheRestOfASecondReplyThatWasLeftOver)
{
    Bytes bytes = replyOf(16, 1);
    const Bytes second = replyOf(16, 90);
    bytes.insert(bytes.end(), second.begin(), second.begin() + 10);
    EXPECT_EQ(add(bytes), AssemblyState::COMPLETE);
    assembler.beginReply();
    EXPECT_EQ(addPart(second, 10, 24), AssemblyState::INCOMPLETE);
    EXPECT_EQ(add(replyOf(18, 50)), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), replyOf(18, 50));
}

TEST_F(ReplyAssemblerTest, TakesANewReplyWhereTheRestOfTheOldOneNeverComes)
{
    addPart(replyOf(20, 1), 0, 13);
    assembler.beginReply();
    const Bytes own = replyOf(16, 40);
    EXPECT_EQ(add(own), AssemblyState::COMPLETE);
    EXPECT_EQ(reply(), own);
    // The old reply's rest is no longer expected either.
    assembler.beginReply();
    EXPECT_EQ(add({1, 2, 3}), AssemblyState::WRONG_MAGIC);
}

TEST_F(ReplyAssemblerTest, RemembersWhatIsOwedOverASilence)
{
    const Bytes late = replyOf(20, 1);
    addPart(late, 0, 13);
    assembler.beginReply();
    assembler.beginReply();
    EXPECT_EQ(addPart(late, 13, 28), AssemblyState::INCOMPLETE);
    EXPECT_EQ(add(replyOf(16, 40)), AssemblyState::COMPLETE);
}

TEST_F(ReplyAssemblerTest, IsOwedNothingOfAReplyThatDidNotTellItsLength)
{
    addPart(replyOf(20, 1), 0, 7);
    assembler.beginReply();
    EXPECT_EQ(add({1, 2, 3}), AssemblyState::WRONG_MAGIC);
}

TEST_F(ReplyAssemblerTest, StartsAfreshAfterBrokenBytes)
{
    EXPECT_EQ(add({1, 2, 3, 4, 5, 6, 7, 8, 9}), AssemblyState::WRONG_MAGIC);
    assembler.beginReply();
    EXPECT_EQ(add(replyOf(16, 40)), AssemblyState::COMPLETE);
}

TEST_F(ReplyAssemblerTest, ForgetsWhatIsOwedOnANewConnection)
{
    addPart(replyOf(20, 1), 0, 13);
    assembler.beginReply();
    assembler.reset();
    EXPECT_EQ(add({1, 2, 3}), AssemblyState::WRONG_MAGIC);
}
