#include "documents/symbol_table.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Lines = std::vector<std::string>;

struct Read {
    Lines symbols;  // "LINE NAME|TYPE|ADDRESS|COMMENT"
    Lines problems;
};

// Here an address is D and digits, or digits alone.
Read read(const std::string &text)
{
    SymbolForms forms;
    forms.isType = [](const std::string &cell) { return std::set<std::string>{"BOOL", "INT", "REAL"}.count(cell) > 0; };
    forms.isAddress = [](const std::string &cell) {
        const std::string digits = cell.compare(0, 1, "D") == 0 ? cell.substr(1) : cell;
        return !digits.empty() && digits.find_first_not_of("0123456789.") == std::string::npos;
    };
    Problems problems;
    const std::optional<std::vector<Symbol>> symbols = readSymbolTable(text, "s.txt", forms, problems);
    if (!symbols)
        return {{"no table"}, problems.lines()};
    Read result;
    for (const Symbol &symbol : *symbols)
        result.symbols.push_back(std::to_string(symbol.line) + " " + symbol.name + "|" + symbol.type + "|" + symbol.address
                                 + "|" + symbol.comment);
    result.problems = problems.lines();
    return result;
}

} // namespace

TEST(SymbolTable, AHeadingNamesTheColumnsInAnyOrder)
{
    const Lines wanted = {"2 Level|INT|D100|the level", "3 Pump|BOOL|0.05|"};
    EXPECT_EQ(read("Name\tData Type\tAddress / Value\tComment\nLevel\tINT\tD100\tthe level\nPump\tBOOL\t0.05\t\n").symbols, wanted);
    EXPECT_EQ(read("comment;ADDRESS;type;symbol\nthe level;D100;INT;Level\n;0.05;BOOL;Pump\n").symbols, wanted);
    EXPECT_EQ(read("Address,Rack,Symbol,DataType,Description\r\nD100,1,Level,INT,the level\r\n0.05,2,Pump,BOOL,\r\n").symbols, wanted);
}

TEST(SymbolTable, WithoutAHeadingTheContentTells)
{
    const Lines wanted = {"1 Level|INT|D100|the level", "2 Pump|BOOL|0.05|"};
    EXPECT_EQ(read("Level\tINT\tD100\tthe level\nPump\tBOOL\t0.05\t\n").symbols, wanted);
    EXPECT_EQ(read("D100;Level;the level;INT\n0.05;Pump;;BOOL\n").symbols, wanted);
    EXPECT_EQ(read("7,Level,INT,D100,the level\n8,Pump,BOOL,0.05,\n").symbols, wanted); // lines with numbers
}

TEST(SymbolTable, ATypeAndACommentMayBeMissing)
{
    EXPECT_EQ(read("name;address\nLevel;D100\n").symbols, (Lines{"2 Level||D100|"}));
    EXPECT_EQ(read("Level;D100\nPump\n").symbols, (Lines{"1 Level||D100|", "2 Pump|||"}));
}

TEST(SymbolTable, CellsMayBeQuotedAndHaveBlanks)
{
    EXPECT_EQ(read("name,address,comment\n\" Level \", D100 ,\"level, \"\"upper\"\"\"\n\n , ,\nPump,0.05,a;b\n").symbols,
              (Lines{"2 Level||D100|level, \"upper\"", "5 Pump||0.05|a;b"}));
}

// A cell with more semicolons than the line has commas would be taken for several.
TEST(SymbolTable, TheSeparatorIsTheOneThatTheFirstLineHasMostOf)
{
    EXPECT_EQ(read("Level,D100,INT,a; b\n").symbols, (Lines{"1 Level|INT|D100|a; b"}));
    EXPECT_EQ(read("Level;D100;INT;\"a,b,c,d,e\"\n").symbols, (Lines{"1 Level|INT|D100|a,b,c,d,e"}));
}

TEST(SymbolTable, ReadsTheEncodingsOfExports)
{
    const Lines wanted = {"2 K\xC3\xBChlung||D5|5 \xE2\x82\xAC"}; // u umlaut, euro
    EXPECT_EQ(read("name;address;comment\nK\xC3\xBChlung;D5;5 \xE2\x82\xAC\n").symbols, wanted);
    EXPECT_EQ(read("\xEF\xBB\xBFname;address;comment\nK\xC3\xBChlung;D5;5 \xE2\x82\xAC\n").symbols, wanted);
    EXPECT_EQ(read("name;address;comment\nK\xFChlung;D5;5 \x80\n").symbols, wanted);
    EXPECT_EQ(read("name;address\nK\x81;D5\n").symbols, Lines{"no table"}); // 81 is no character of Windows-1252
    EXPECT_EQ(read(std::string("\xFF\xFEn\0a\0m\0e\0\t\0a\0t\0\n\0\xFC\0\t\0D\0005\0\n\0", 28)).symbols, (Lines{"2 \xC3\xBC||D5|"}));
}

TEST(SymbolTable, MalformedLinesAreProblems)
{
    const Read table = read("name;address;comment\nA;D1;5\" valve\nB;D2;bell\x07\nC;D3;a;b\nD;D4;;;\n\"E;D5;\n");
    EXPECT_EQ(table.symbols, (Lines{"5 D||D4|"}));
    EXPECT_EQ(table.problems,
              (Lines{"s.txt:2:7: a quote inside a field without quotes; quote the field and write \"\"",
                     "s.txt:3:6: U+0007 is a control character; remove it",
                     "s.txt:4: 'C': more cells than columns; quote the cell that has separators in it",
                     "s.txt:6:1: the quote is not closed; end the field with another \""}));
}

TEST(SymbolTable, SaysThatATextIsNoTable)
{
    for (const char *text : {"", "\n", "Level\n", "name;comment\nA;B\n", "a,b,c\n", "D1\nD2\n"})
        EXPECT_EQ(read(text).symbols, Lines{"no table"}) << text;
    EXPECT_EQ(read("a,b\"\n").problems, Lines());
    EXPECT_EQ(read(std::string(120000, ',') + "\n").symbols, Lines{"no table"});
}
