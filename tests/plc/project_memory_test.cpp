#include "options/project.h"

#include <gtest/gtest.h>

// The table [memory] of a project. What becomes of it in the PLC is seen by starting one.

namespace {

plc::Content contentOf(const std::string &line)
{
    std::vector<plc::Options> plcs;
    const std::vector<std::string> wrong = plc::readProjectText("[memory]\n" + line, "a", plc::Options(), &plcs);
    EXPECT_EQ(wrong, std::vector<std::string>()) << line;
    return plcs.at(0).contents->at(0);
}

} // namespace

TEST(ProjectMemoryTest, AValueThatFillsIsKeptOnce)
{
    const plc::Content filled = contentOf("\"DM:0:32768\" = 7");
    EXPECT_EQ(filled.values, (std::vector<unsigned>{7}));
    EXPECT_EQ(filled.place.count, 32768u);
    EXPECT_EQ(filled.value(0), 7u);
    EXPECT_EQ(filled.value(32767), 7u);
}

TEST(ProjectMemoryTest, TheCurrentBankOfEmIsThatOfTheLinesAbove)
{
    std::vector<plc::Options> plcs;
    const std::string lines = "[memory]\n'E:1' = 5\n'BANK:0' = 24\n'E:2:3' = 6\n'BANK:0:1' = 3\n'E_bit:4.0' = true\n";
    EXPECT_EQ(plc::readProjectText(lines, "a", plc::Options(), &plcs), std::vector<std::string>());
    std::vector<int> areas;
    for (const plc::Content &content : *plcs.at(0).contents)
        areas.push_back(content.place.area);
    EXPECT_EQ(areas, (std::vector<int>{plc::AREA_E0, plc::AREA_BANK, plc::AREA_E0 + 24, plc::AREA_BANK, plc::AREA_E0 + 3}));
    plcs.clear();
    EXPECT_EQ(plc::readProjectText("[memory]\n'BANK:0' = 25\n'E:1' = 5\n", "a", plc::Options(), &plcs),
              (std::vector<std::string>{"a:3:1: 'E:1' is in a bank of EM that this PLC does not have; it has 25"}));
}

TEST(ProjectMemoryTest, WordsOfAValueTakeTurnsAndATextComesOnce)
{
    const plc::Content pairs = contentOf("\"DM:0:32768\" = { u32 = 0x00030001 }");
    EXPECT_EQ(pairs.values, (std::vector<unsigned>{1, 3}));
    EXPECT_EQ(pairs.value(32766), 1u);
    EXPECT_EQ(pairs.value(32767), 3u);
    const plc::Content text = contentOf("\"DM:0:32768\" = 'ABC'");
    EXPECT_EQ(text.values, (std::vector<unsigned>{0x4142, 0x4300}));
    EXPECT_EQ(text.value(1), 0x4300u);
    EXPECT_EQ(text.value(2), 0u);
    EXPECT_EQ(text.value(32767), 0u);
}
