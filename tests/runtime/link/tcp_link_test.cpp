#include "link/tcp_link.h"

#include "support/held_port.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// One connection, whose other end the test holds in its hand: what the PLC is to answer it sends before it is asked.

namespace {

using Bytes = std::vector<std::uint8_t>;

// A read of DM0 with a service ID, and its reply: FINS/TCP header, FINS header, command, end code, one word.
Bytes request(std::uint8_t sid)
{
    return {0x46, 0x49, 0x4E, 0x53, 0, 0, 0, 26, 0, 0, 0, 2, 0, 0, 0, 0, 0x80, 0, 2, 0, 1, 0, 0, 10, 0, sid,
            1, 1, 0x82, 0, 0, 0, 0, 1};
}

Bytes reply(std::uint8_t sid)
{
    return {0x46, 0x49, 0x4E, 0x53, 0, 0, 0, 24, 0, 0, 0, 2, 0, 0, 0, 0, 0xC0, 0, 2, 0, 10, 0, 0, 1, 0, sid,
            1, 1, 0, 0, 0x12, 0x34};
}

const Millis LONG(20000);

class TcpLinkTest : public ::testing::Test {
protected:
    ~TcpLinkTest() override
    {
        hangUp();
        close(listener);
    }

    void connect(TcpLink &link)
    {
        ASSERT_TRUE(link.connect("127.0.0.1", std::to_string(port.number()))) << link.problem();
        hangUp();
        plc = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        ASSERT_GE(plc, 0);
    }

    void hangUp()
    {
        if (plc >= 0)
            close(std::exchange(plc, -1));
    }

    void answer(const Bytes &bytes) const
    {
        ASSERT_EQ(send(plc, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    void answer(const std::string &text) const { answer(Bytes(text.begin(), text.end())); }

    static ExchangeStatus ask(TcpLink &link, std::uint8_t sid)
    {
        const Bytes bytes = request(sid);
        return link.exchange(bytes.data(), bytes.size(), Clock::now());
    }

    static Bytes replyOf(const TcpLink &link) { return Bytes(link.reply(), link.reply() + link.replySize()); }

    const HeldPort port;
    const int      listener = port.startListening();
    int            plc = -1;
};

} // namespace

TEST_F(TcpLinkTest, BringsTheReply)
{
    TcpLink link(LONG, nullptr);
    connect(link);
    EXPECT_EQ(link.address(), "127.0.0.1");
    answer(reply(7));
    ASSERT_TRUE(ask(link, 7) == ExchangeStatus::REPLY) << link.problem();
    EXPECT_EQ(replyOf(link), reply(7));
    EXPECT_TRUE(link.failure() == LinkFailure::NONE);
    Bytes got(100);
    got.resize(static_cast<std::size_t>(recv(plc, got.data(), got.size(), 0)));
    EXPECT_EQ(got, request(7));
}

// With a timeout of a whole second, as by default, and with parts of one.
TEST_F(TcpLinkTest, SaysHowMuchOfAReplyCame)
{
    const std::pair<Millis, std::pair<std::size_t, std::string>> rows[] = {
        {Millis(30), {20, "only 20 of 32 bytes of the reply came in time"}},
        {Millis(30), {1, "only 1 byte of the reply came in time"}},
        {Millis(30), {3, "only 3 bytes of the reply came in time"}},
        {Millis(1000), {0, "no reply in time"}},
    };
    for (const auto &[timeout, part] : rows) {
        TcpLink link(timeout, nullptr);
        connect(link);
        const Bytes whole = reply(7);
        answer(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(part.first)));
        EXPECT_TRUE(ask(link, 7) == ExchangeStatus::NO_REPLY);
        EXPECT_EQ(link.problem(), part.second);
        EXPECT_TRUE(link.failure() == (part.first > 0 ? LinkFailure::CUT_REPLY : LinkFailure::SILENCE));
    }
}

TEST_F(TcpLinkTest, KeepsTheBeginningOfWhatIsNoReply)
{
    TcpLink link(LONG, nullptr);
    connect(link);
    answer("HTTP/1.1 400 Bad Request\r\n");
    EXPECT_TRUE(ask(link, 7) == ExchangeStatus::NO_REPLY);
    EXPECT_TRUE(link.failure() == LinkFailure::WRONG_PROTOCOL);
    EXPECT_EQ(link.problem(), "the reply does not begin with FINS");
    EXPECT_EQ(link.strayBytes(), "HTTP/1.1 400 Bad");
    connect(link);
    EXPECT_EQ(link.strayBytes(), "");
    answer(Bytes{0x46, 0x49, 0x4E, 0x53, 0, 0, 0, 1});
    EXPECT_TRUE(ask(link, 7) == ExchangeStatus::NO_REPLY);
    EXPECT_EQ(link.problem(), "the reply has an impossible length");
    EXPECT_EQ(link.strayBytes(), std::string("FINS\0\0\0\1", 8));
}

// The first request is answered under another number, so that its own reply may still come.
TEST_F(TcpLinkTest, DropsLateReplies)
{
    TcpLink link(LONG, nullptr);
    std::vector<int> late;
    link.onLate([&](const std::uint8_t *frame, std::size_t) { late.push_back(frame[25]); });
    connect(link);
    answer(reply(99));
    ASSERT_TRUE(ask(link, 7) == ExchangeStatus::REPLY);
    EXPECT_EQ(replyOf(link), reply(99));
    answer(reply(7));
    answer(reply(8));
    ASSERT_TRUE(ask(link, 8) == ExchangeStatus::REPLY);
    EXPECT_EQ(replyOf(link), reply(8));
    EXPECT_EQ(late, std::vector<int>{7});
    answer(reply(7)); // nothing is owed any more
    ASSERT_TRUE(ask(link, 9) == ExchangeStatus::REPLY);
    EXPECT_EQ(replyOf(link), reply(7));
}

TEST_F(TcpLinkTest, IsLostWhenThePlcHangsUp)
{
    TcpLink link(LONG, nullptr);
    connect(link);
    hangUp();
    EXPECT_TRUE(ask(link, 7) == ExchangeStatus::LOST);
    EXPECT_TRUE(link.failure() == LinkFailure::CLOSED);
    EXPECT_EQ(link.problem(), "the PLC closed the connection");
    connect(link);
    EXPECT_TRUE(link.pauseUntil(Clock::now() + Millis(1)));
    EXPECT_TRUE(link.failure() == LinkFailure::NONE);
    hangUp();
    EXPECT_FALSE(link.pauseUntil(Clock::now() + LONG));
    EXPECT_TRUE(link.failure() == LinkFailure::CLOSED);
    EXPECT_EQ(link.problem(), "the PLC closed the connection");
}

// A name that is longer than a label may be has no address; the one of the host before is not its.
TEST_F(TcpLinkTest, KnowsTheAddressOfAHostThatRefuses)
{
    const HeldPort silent;
    TcpLink link(LONG, nullptr);
    EXPECT_FALSE(link.connect("127.0.0.1", std::to_string(silent.number())));
    EXPECT_TRUE(link.failure() == LinkFailure::REFUSED);
    EXPECT_EQ(link.problem(), "Connection refused");
    EXPECT_EQ(link.address(), "127.0.0.1");
    EXPECT_FALSE(link.connect(std::string(64, 'a'), "9600"));
    EXPECT_TRUE(link.failure() == LinkFailure::NOT_RESOLVED);
    EXPECT_EQ(link.problem().find("cannot resolve the host name: "), 0u) << link.problem();
    EXPECT_EQ(link.address(), "");
}

// The reply comes after the second tick.
TEST_F(TcpLinkTest, TicksWhileItWaits)
{
    TcpLink link(LONG, nullptr);
    int ticks = 0;
    link.onTick([&] {
        if (++ticks == 2)
            answer(reply(7));
    });
    connect(link);
    EXPECT_TRUE(ask(link, 7) == ExchangeStatus::REPLY);
    EXPECT_EQ(ticks, 2);
}

TEST_F(TcpLinkTest, EndsItsWaitsWithTheProgramAndAtTheLimit)
{
    StopSignal stop;
    TcpLink link(LONG, &stop);
    connect(link);
    EXPECT_FALSE(link.isOver());
    link.setLimit(Clock::now());
    EXPECT_TRUE(link.isOver());
    EXPECT_TRUE(ask(link, 7) == ExchangeStatus::INTERRUPTED);
    link.setLimit(TimePoint::max());
    EXPECT_FALSE(link.isOver());
    stop.wake();
    EXPECT_TRUE(link.pauseUntil(TimePoint::max()));
    stop.stop();
    link.abort();
    EXPECT_TRUE(ask(link, 8) == ExchangeStatus::INTERRUPTED);
}
