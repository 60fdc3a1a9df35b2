#include "commands/progress_bar.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

TEST(ProgressBar, FitsItsLine)
{
    EXPECT_EQ(progressText("writing", 0, 300, 79),
              "writing [----------------------------------------]   0 %  0 of 300 words");
    EXPECT_EQ(progressText("writing", 150, 300, 79),
              "writing [####################--------------------]  50 %  150 of 300 words");
    EXPECT_EQ(progressText("reading", 300, 300, 79),
              "reading [########################################] 100 %  300 of 300 words");
    EXPECT_EQ(progressText("reading", 301, 300, 40), "reading [######] 100 %  300 of 300 words");
    EXPECT_EQ(progressText("reading", 150, 300, 38), "reading [##--]  50 %  150 of 300 words");
    EXPECT_EQ(progressText("reading", 150, 300, 37), "reading  50 %  150 of 300 words");
    EXPECT_EQ(progressText("reading", 150, 300, 10), "reading  5");
}

TEST(ProgressBar, ClearsItsLineForMessagesAndAtTheEnd)
{
    std::ostringstream screen;
    std::streambuf *const before = std::cerr.rdbuf(screen.rdbuf());
    {
        ProgressBar bar("writing", true);
        bar.show(1, 4);
        std::cerr << "lost" << std::endl;
        bar.show(2, 4);
        bar.show(2, 4);
    }
    std::cerr << "end";
    std::cerr.rdbuf(before);
    // Whatever the terminal's width is, the bar's text is that of its width.
    const std::string text = screen.str();
    EXPECT_EQ(text.find("\r\033[Kwriting"), 0u) << text;
    EXPECT_NE(text.find("1 of 4 words\r\033[Klost\n\r\033[Kwriting"), std::string::npos) << text;
    const std::string last = "2 of 4 words\r\033[Kend";
    ASSERT_GT(text.size(), last.size());
    EXPECT_EQ(text.substr(text.size() - last.size()), last);
    EXPECT_EQ(text.find("2 of 4"), text.rfind("2 of 4")) << "the same bar is drawn once";
}

TEST(ProgressBar, IsSilentWhereItIsOff)
{
    std::ostringstream screen;
    std::streambuf *const before = std::cerr.rdbuf(screen.rdbuf());
    {
        ProgressBar bar("writing", false);
        bar.show(1, 4);
        std::cerr << "lost" << std::endl;
    }
    std::cerr.rdbuf(before);
    EXPECT_EQ(screen.str(), "lost\n");
}
