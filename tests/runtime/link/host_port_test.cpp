#include "link/host_port.h"

#include "support/built_driver.h"

namespace {

std::string split(const std::string &text)
{
    std::string host;
    std::string port;
    parseHost(text, host, port);
    return host + " " + port;
}

} // namespace

TEST(Host, ThePortIs9600WhereNoneIsGiven)
{
    EXPECT_EQ(split("192.168.1.99"), "192.168.1.99 9600");
    EXPECT_EQ(split("plc.line3"), "plc.line3 9600");
    EXPECT_EQ(split("[::1]"), "::1 9600");
}

TEST(Host, TakesAPort)
{
    EXPECT_EQ(split("plc:1"), "plc 1");
    EXPECT_EQ(split("10.0.0.1:65535"), "10.0.0.1 65535");
    EXPECT_EQ(split("[fe80::1]:44818"), "fe80::1 44818");
}

TEST(Host, RefusesWhatIsNoHost)
{
    for (const char *text : {"", ":9600", "plc:", "plc:0", "plc:65536", "plc:fins", "[::1", "[::1]9600", "[]:1", "::1"})
        EXPECT_NE(usageError([&] { split(text); }).find("is not a host"), std::string::npos) << text;
}

TEST(Host, IsPutTogetherAsItWasTakenApart)
{
    EXPECT_EQ(hostAndPort("plc.line3", "9600"), "plc.line3:9600");
    EXPECT_EQ(hostAndPort("::1", "9601"), "[::1]:9601");
}
