#include "fins_runtime/values.h"

#include <gtest/gtest.h>

#include <string>

// The texts by which all programs name what the library tells.

using fins::Fate;
using fins::Outcome;
using fins::Phase;
using fins::Quality;

TEST(Texts, NameEveryQuality)
{
    EXPECT_STREQ(fins::text(Quality::GOOD), "good");
    EXPECT_STREQ(fins::text(Quality::WRITE_PENDING), "write pending");
    EXPECT_STREQ(fins::text(Quality::LAST_KNOWN), "last known");
    EXPECT_STREQ(fins::text(Quality::NOT_CONNECTED), "not connected");
    EXPECT_STREQ(fins::text(Quality::REFUSED), "refused");
}

TEST(Texts, NameEveryFate)
{
    EXPECT_STREQ(fins::text(Fate::ACCEPTED), "accepted");
    EXPECT_STREQ(fins::text(Fate::VERIFIED), "verified");
    EXPECT_STREQ(fins::text(Fate::DIFFERS), "differs");
    EXPECT_STREQ(fins::text(Fate::REFUSED), "refused");
    EXPECT_STREQ(fins::text(Fate::UNCONFIRMED), "unconfirmed");
    EXPECT_STREQ(fins::text(Fate::NOT_SENT), "not sent");
    EXPECT_STREQ(fins::text(Fate::INVALID), "invalid");
}

TEST(Texts, NameEveryPhase)
{
    EXPECT_STREQ(fins::text(Phase::WAITING), "waiting");
    EXPECT_STREQ(fins::text(Phase::CONNECTING), "connecting");
    EXPECT_STREQ(fins::text(Phase::HANDSHAKE), "handshake");
    EXPECT_STREQ(fins::text(Phase::PROVING), "proving");
    EXPECT_STREQ(fins::text(Phase::ONLINE), "online");
    EXPECT_STREQ(fins::text(Phase::SILENT), "silent");
    EXPECT_STREQ(fins::text(Phase::CLOSED), "closed");
}

TEST(ConfigError, TellsTheFirstProblemWithItsPlaceAndHowManyMore)
{
    const auto what = [](std::vector<fins::Problem> problems) {
        return std::string(fins::ConfigError(std::move(problems)).what());
    };
    EXPECT_EQ(what({}), "the configuration cannot be used");
    EXPECT_EQ(what({{"", 0, 0, "no host"}}), "no host");
    EXPECT_EQ(what({{"line.toml", 0, 0, "no host"}}), "line.toml: no host");
    EXPECT_EQ(what({{"tags.csv", 4, 0, "no address"}}), "tags.csv:4: no address");
    EXPECT_EQ(what({{"line.toml", 2, 9, "no host"}, {"line.toml", 3, 1, "no port"}, {"", 0, 0, "no tag"}}),
              "line.toml:2:9: no host (and 2 more)");
}

TEST(IsDone, OnlyWhereEveryValueIsAcceptedOrVerified)
{
    const auto isDone = [](Fate one, Fate other) {
        Outcome first, second;
        first.fate  = one;
        second.fate = other;
        return fins::isDone({first, second});
    };
    EXPECT_TRUE(isDone(Fate::ACCEPTED, Fate::VERIFIED));
    for (const Fate fate : {Fate::DIFFERS, Fate::REFUSED, Fate::UNCONFIRMED, Fate::NOT_SENT, Fate::INVALID}) {
        EXPECT_FALSE(isDone(Fate::VERIFIED, fate)) << fins::text(fate);
        EXPECT_FALSE(isDone(fate, Fate::ACCEPTED)) << fins::text(fate);
    }
}
