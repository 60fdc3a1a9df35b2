#include "common/csv_text.h"

#include <gtest/gtest.h>

TEST(CsvText, QuotesWhereItHasTo)
{
    EXPECT_EQ(csvField("plain text"), "plain text");
    EXPECT_EQ(csvField(""), "");
    EXPECT_EQ(csvField("a,b"), "\"a,b\"");
    EXPECT_EQ(csvField("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(csvField("a\nb"), "\"a\nb\"");
    EXPECT_EQ(csvField("a\rb"), "\"a\rb\"");
    EXPECT_EQ(csvField("-5"), "-5");
}

TEST(CsvText, NoTextIsAFormula)
{
    EXPECT_EQ(csvText("=1+1"), "'=1+1");
    EXPECT_EQ(csvText("+1"), "'+1");
    EXPECT_EQ(csvText("-1"), "'-1");
    EXPECT_EQ(csvText("@A1"), "'@A1");
    EXPECT_EQ(csvText("\t=1"), "'\t=1");
    EXPECT_EQ(csvText("\r=1"), "\"'\r=1\"");
    EXPECT_EQ(csvText("=A1,B1"), "\"'=A1,B1\"");
    for (const char *text : {"", "a=1", "1+1", "'a", "%", "\xC2\xB0" "C"})
        EXPECT_EQ(csvText(text), text);
}

TEST(CsvText, IsReadAsItWasWritten)
{
    for (const char *text : {"", "=1", "'=1", "''=1", "'", "'a", "-", "+-", "a"})
        EXPECT_EQ(textOfCell(csvText(text)), text);
    EXPECT_EQ(textOfCell("'=1"), "=1");
    EXPECT_EQ(textOfCell("'a"), "'a");
}
