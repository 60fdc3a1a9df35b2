#include "cpu/write_log.h"

#include <gtest/gtest.h>

// What the live view tells of written places.

class WriteLogTest : public ::testing::Test {
protected:
    void write(unsigned first, const std::vector<unsigned> &values)
    {
        const plc::Span span = {plc::AREA_DM, plc::Access::WORD, first, static_cast<unsigned>(values.size())};
        for (unsigned i = 0; i < span.count; ++i)
            memory.set(span, i, values[i]);
        log.add(span, memory);
    }

    std::string text() const
    {
        std::string all;
        for (const plc::WriteLog::Entry &entry : log.entries())
            all += plc::placeText(entry.place) + "=" + std::to_string(entry.value) + " ";
        return all;
    }

    plc::Memory   memory;
    plc::WriteLog log;
};

TEST_F(WriteLogTest, NewestFirstEachOnce)
{
    write(5, {1, 2});
    write(9, {3});
    EXPECT_EQ(text(), "DM:9=3 DM:5=1 DM:6=2 ");
    write(6, {4});
    EXPECT_EQ(text(), "DM:6=4 DM:9=3 DM:5=1 ");
}

TEST_F(WriteLogTest, KeepsWhatWasWritten)
{
    write(5, {600});
    memory.setWord(plc::AREA_DM, 5, 514);
    EXPECT_EQ(text(), "DM:5=600 ");
}

TEST_F(WriteLogTest, KeepsTheFirst64OfALongWrite)
{
    write(0, std::vector<unsigned>(100, 7));
    EXPECT_EQ(log.entries().size(), 64u);
    EXPECT_EQ(log.entries().front().place.first, 0u);
    EXPECT_EQ(log.entries().front().place.count, 1u);
    EXPECT_EQ(log.entries().back().place.first, 63u);
    write(500, {1});
    EXPECT_EQ(log.entries().size(), 64u);
    EXPECT_EQ(log.entries().back().place.first, 62u);
}
