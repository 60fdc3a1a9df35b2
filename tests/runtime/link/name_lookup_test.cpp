#include "link/name_lookup.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>

#include <cerrno>

static std::string firstAddress(const NameLookup::Addresses &found)
{
    char text[NI_MAXHOST] = "";
    getnameinfo(found->ai_addr, found->ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
    return text;
}

// The addresses of a name, after the resolver has ended.
static NameLookup::Addresses lookedUp(const std::string &name, std::string &problem)
{
    const std::shared_ptr<NameLookup> lookup = NameLookup::begin(name, "9600");
    EXPECT_TRUE(lookup->isOf(name, "9600"));
    EXPECT_FALSE(lookup->isOf(name, "9601"));
    pollfd polled = {lookup->fd(), POLLIN, 0};
    EXPECT_EQ(poll(&polled, 1, 60000), 1);
    return lookup->take(problem);
}

TEST(NameLookup, TakesNumbersWithoutAResolver)
{
    const NameLookup::Addresses four = NameLookup::ofNumbers("192.168.250.1", "9600");
    ASSERT_NE(four, nullptr);
    EXPECT_EQ(firstAddress(four), "192.168.250.1");
    EXPECT_EQ(ntohs(reinterpret_cast<const sockaddr_in *>(four->ai_addr)->sin_port), 9600);
    const NameLookup::Addresses six = NameLookup::ofNumbers("::1", "9600");
    ASSERT_NE(six, nullptr);
    EXPECT_EQ(six->ai_family, AF_INET6);
    EXPECT_EQ(NameLookup::ofNumbers("localhost", "9600"), nullptr);
}

TEST(NameLookup, FindsTheLocalHost)
{
    std::string problem;
    const NameLookup::Addresses found = lookedUp("localhost", problem);
    ASSERT_NE(found, nullptr) << problem;
    const std::string address = firstAddress(found);
    EXPECT_TRUE(address == "127.0.0.1" || address == "::1") << address;
    EXPECT_EQ(problem, "");
}

// Longer than a label may be: no name server is asked.
TEST(NameLookup, SaysWhyThereAreNoAddresses)
{
    std::string problem;
    EXPECT_EQ(lookedUp(std::string(64, 'a'), problem), nullptr);
    EXPECT_NE(problem, "");
}

TEST(NameLookup, TellsAMissingNameFromAMissingNameServer)
{
    EXPECT_EQ(lookupProblem(0), "");
    EXPECT_EQ(lookupProblem(EAI_NONAME), "Host not found (authoritative)");
    EXPECT_EQ(lookupProblem(EAI_AGAIN), "Host not found (non-authoritative), try again later");
    errno = EMFILE;
    EXPECT_EQ(lookupProblem(EAI_SYSTEM), "Too many open files");
    EXPECT_EQ(lookupProblem(EAI_FAIL), gai_strerror(EAI_FAIL));
}

TEST(NameLookup, MayBeForgottenBeforeItEnds)
{
    for (int i = 0; i < 20; ++i)
        NameLookup::begin("localhost", "9600");
}
