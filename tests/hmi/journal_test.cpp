#include "model/journal.h"

#include <gtest/gtest.h>

namespace {

// 2026-03-01 08:15:30.007 UTC
const auto TIME = std::chrono::system_clock::from_time_t(1772352930) + std::chrono::milliseconds(7);

JournalEvent message(const std::string &words)
{
    JournalEvent event;
    event.utc   = TIME;
    event.words = words;
    return event;
}

TEST(Journal, LatestIsFirst)
{
    Journal journal;
    EXPECT_EQ(journal.size(), 0U);
    journal.add(message("one"));
    journal.add(message("two"));
    ASSERT_EQ(journal.size(), 2U);
    EXPECT_EQ(journal.at(0).words, "two");
    EXPECT_EQ(journal.at(1).words, "one");
}

TEST(Journal, DropsTheEarliestOfMoreThanAThousandAndCountsThem)
{
    Journal journal;
    for (int i = 0; i < 1000; ++i)
        journal.add(message(std::to_string(i)));
    EXPECT_EQ(journal.dropped(), 0U);
    EXPECT_EQ(journal.at(999).words, "0");
    journal.add(message("1000"));
    journal.add(message("1001"));
    EXPECT_EQ(journal.size(), 1000U);
    EXPECT_EQ(journal.dropped(), 2U);
    EXPECT_EQ(journal.at(0).words, "1001");
    EXPECT_EQ(journal.at(999).words, "2");
}

TEST(Journal, IsWrittenAsCsvTheEarliestFirst)
{
    Journal journal;
    journal.add({TIME, JournalEvent::Kind::WRITE, "mixer", "SetPoint", "5", "-7.5", "done: SetPoint = -7.5 %"});
    journal.add({TIME + std::chrono::milliseconds(993), JournalEvent::Kind::ALARM, "mixer", "LevelHigh", "", "", "came"});
    journal.add({TIME, JournalEvent::Kind::LINK, "oven", "", "", "", "refused, no route"});
    EXPECT_EQ(journal.csv(), "time,kind,plc,tag,old,new,words\r\n"
                             "2026-03-01T08:15:30.007Z,write,mixer,SetPoint,5,-7.5,done: SetPoint = -7.5 %\r\n"
                             "2026-03-01T08:15:31.000Z,alarm,mixer,LevelHigh,,,came\r\n"
                             "2026-03-01T08:15:30.007Z,link,oven,,,,\"refused, no route\"\r\n");
}

TEST(Journal, NothingInAFileIsAFormula)
{
    Journal journal;
    journal.add({TIME, JournalEvent::Kind::MESSAGE, "=1", "+2", "@3", "-inf", "-4 \"x\""});
    EXPECT_EQ(journal.csv(), "time,kind,plc,tag,old,new,words\r\n"
                             "2026-03-01T08:15:30.007Z,message,'=1,'+2,'@3,'-inf,\"'-4 \"\"x\"\"\"\r\n");
}

} // namespace
