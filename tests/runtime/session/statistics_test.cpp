#include "session/statistics.h"

#include <gtest/gtest.h>

namespace {

TEST(Statistics, TextOfARun)
{
    Statistics run;
    run.connections  = 3;
    run.losses       = 4;
    run.requests     = 100;
    run.retries      = 5;
    run.replies      = 97;
    run.refused      = 1;
    run.missing      = 3;
    run.wrong        = 2;
    run.wordsRead    = 900;
    run.wordsWritten = 100;
    run.roundTrips.add(Micros(2000));
    run.noteError("no reply in time");
    run.noteError("a second error");
    run.noteError("no reply in time");
    EXPECT_EQ(run.text(std::chrono::milliseconds(4000)),
              "statistics of 4.0 s\n"
              "  link         connections 3, reconnects 2, lost or not made 4\n"
              "  requests     100, retries 5, 25.0 a second\n"
              "  replies      97, refused 1\n"
              "  rejected     5, missing 3, wrong 2\n"
              "  words        read 900, written 100, 250.0 a second\n"
              "  round trip   min 2.00, median 2.00, 95 % 2.00, 99 % 2.00, max 2.00 ms\n"
              "  error        1 x a second error\n"
              "  error        2 x no reply in time\n");
    EXPECT_EQ(run.errorCount(), 3u);
}

TEST(Statistics, TextOfARunWithoutALink)
{
    EXPECT_EQ(Statistics().text(std::chrono::milliseconds(0)),
              "statistics of 0.0 s\n"
              "  link         connections 0, reconnects 0, lost or not made 0\n"
              "  requests     0, retries 0, 0.0 a second\n"
              "  replies      0, refused 0\n"
              "  rejected     0, missing 0, wrong 0\n"
              "  words        read 0, written 0, 0.0 a second\n");
}

TEST(Statistics, TextOfAnHour)
{
    Statistics run;
    run.requests = 36000;
    const std::string text = run.text(std::chrono::hours(1));
    EXPECT_NE(text.find("statistics of 3600.0 s\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  requests     36000, retries 0, 10.0 a second\n"), std::string::npos) << text;
}

TEST(Statistics, OneConnectionIsNoReconnect)
{
    Statistics run;
    EXPECT_EQ(run.reconnects(), 0u);
    run.connections = 1;
    EXPECT_EQ(run.reconnects(), 0u);
    run.connections = 2;
    EXPECT_EQ(run.reconnects(), 1u);
}

TEST(Statistics, TellsTwentyErrorsApartAndCountsTheOthers)
{
    Statistics run;
    for (int i = 0; i < 22; ++i)
        run.noteError("error number " + std::to_string(i));
    run.noteError("error number 19");
    EXPECT_EQ(run.errorCount(), 23u);
    const std::string text = run.text(std::chrono::milliseconds(1));
    EXPECT_NE(text.find("  error        2 x other errors\n"), std::string::npos);
    EXPECT_NE(text.find("  error        2 x error number 19\n"), std::string::npos);
    EXPECT_EQ(text.find("error number 20"), std::string::npos);
}

} // namespace
