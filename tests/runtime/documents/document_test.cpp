#include "documents/document.h"

#include "support/built_driver.h"

namespace {

using Lines = std::vector<std::string>;

DataNode csv(const std::string &text, Lines &problems)
{
    Problems found;
    const DataNode rows = parseCsv(text, "tags.csv", found);
    problems = found.lines();
    return rows;
}

Lines csvProblems(const std::string &text)
{
    Lines problems;
    csv(text, problems);
    return problems;
}

// "key=text@LINE:COL" for every field of every record.
std::string csvText(const std::string &text)
{
    Lines problems;
    std::string shown;
    for (const DataNode &row : csv(text, problems).children) {
        for (std::size_t i = 0; i < row.keys.size(); ++i) {
            const DataNode &cell = row.children[i];
            shown += row.keys[i] + "=" + cell.text + "@" + std::to_string(cell.place.line) + ":"
                     + std::to_string(cell.place.column) + " ";
        }
        shown += "| ";
    }
    EXPECT_EQ(problems, Lines());
    return shown;
}

} // namespace

TEST(CsvTree, ReadsRecordsWithPlaces)
{
    EXPECT_EQ(csvText("a,b\n1,two\n,\n"), "a=1@2:1 b=two@2:3 | a=@3:1 b=@3:2 | ");
    EXPECT_EQ(csvText("a,b\r\n1,2\r\n"), "a=1@2:1 b=2@2:3 | ");
    EXPECT_EQ(csvText("a,b\n1,2"), "a=1@2:1 b=2@2:3 | ");
    EXPECT_EQ(csvText("\xEF\xBB\xBF" "a\n1\n"), "a=1@2:1 | ");
    EXPECT_EQ(csvText("\n\na\n\r\n\n1\n\n"), "a=1@6:1 | ");
}

TEST(CsvTree, ReadsQuotedFields)
{
    EXPECT_EQ(csvText("a,b\n\"1,2\",\"say \"\"hi\"\"\"\n"), "a=1,2@2:1 b=say \"hi\"@2:7 | ");
    EXPECT_EQ(csvText("\"a\"\n\"\"\n"), "a=@2:1 | ");
    EXPECT_EQ(csvText("a\n\"x\""), "a=x@2:1 | ");
}

TEST(CsvTree, CountsCharactersNotBytes)
{
    EXPECT_EQ(csvText("a,b\n\xC3\xBC\xE2\x82\xAC,x\n"), "a=\xC3\xBC\xE2\x82\xAC@2:1 b=x@2:4 | ");
}

TEST(CsvTree, ReportsEveryMalformedRecord)
{
    EXPECT_EQ(csvProblems("a,b\n1\n1,2\n1,2,3\n"),
              (Lines{"tags.csv:2:1: the record has 1 fields, and the header 2; write one field for each column",
                     "tags.csv:4:1: the record has 3 fields, and the header 2; write one field for each column"}));
    EXPECT_EQ(csvProblems("a,b\n\"1\"x,2\n1,\"2\n"),
              (Lines{"tags.csv:2:4: text behind a closing quote; write a quote inside a quoted field as \"\"",
                     "tags.csv:3:3: the quote is not closed; end the field with another \""}));
    EXPECT_EQ(csvProblems("a\nx\"y\"\n"),
              (Lines{"tags.csv:2:2: a quote inside a field without quotes; quote the field and write \"\""}));
    EXPECT_EQ(csvProblems(""),
              (Lines{"tags.csv:1:1: the file is empty; begin it with a line that names the columns"}));
    EXPECT_EQ(csvProblems("a,b,a\n1,2,3\n"), (Lines{"tags.csv:1:5: the column 'a' is there twice; remove one"}));
}

TEST(CsvTree, LeavesMalformedRecordsOut)
{
    Lines problems;
    EXPECT_EQ(csv("a,b\n1\n1,2\n\"1\"x,2\n", problems).children.size(), 1u);
    EXPECT_EQ(csv("\"a\"x\n1\n", problems).children.size(), 0u);
}

// More than 64 columns are none of ours, and are not kept.
TEST(CsvTree, LimitsItsColumns)
{
    std::string many = "c0";
    for (int i = 1; i < 64; ++i)
        many += ",c" + std::to_string(i);
    EXPECT_EQ(csvProblems(many + "\n"), Lines());
    // 10 names of two characters, 54 of three, and a comma behind each: the next begins at column 3 * 10 + 4 * 54 + 1.
    EXPECT_EQ(csvProblems(many + ",d\n"),
              (Lines{"tags.csv:1:247: the header has more than 64 columns; name each that is needed once"}));
    EXPECT_EQ(csvProblems(std::string(120000, ',') + "\n"),
              (Lines{"tags.csv:1:65: the header has more than 64 columns; name each that is needed once"}));
    EXPECT_EQ(csvProblems("a,b\n" + std::string(99, ',') + "\n"),
              (Lines{"tags.csv:2:1: the record has 100 fields, and the header 2; write one field for each column"}));
}

TEST(CsvTree, RefusesControlCharacters)
{
    EXPECT_EQ(csvProblems("a,b\n1,\xC3\xBC\x1B[2J\n\"\n"),
              (Lines{"tags.csv:2:4: U+001B is a control character; remove it"}));
    EXPECT_EQ(csvProblems("a,b\n1,2\n3,\xFF\n"), (Lines{"tags.csv:3:3: this is not UTF-8; save the file as UTF-8"}));
    EXPECT_EQ(csvProblems("a,b\n\"1\n2\",3\n4,\"5\t\"\n"),
              (Lines{"tags.csv:2:1: U+000A is a control character; remove it",
                     "tags.csv:4:3: U+0009 is a control character; remove it"}));
    EXPECT_EQ(csvProblems("\"a\nb\"\n1\n"), (Lines{"tags.csv:1:1: U+000A is a control character; remove it"}));
}

TEST(TomlTree, KeepsKindsOrderAndPlaces)
{
    Problems problems;
    const DataNode root = parseToml("z = 1\na = \"x\"\n[t]\nf = 1.5\nb = true\n  l = [1, \"2\"]\nd = 2020-01-01\n",
                                    "p.toml", problems);
    ASSERT_FALSE(problems.any());
    EXPECT_EQ(root.keys, (Lines{"z", "a", "t"}));
    EXPECT_EQ(root.find("z")->kind, NodeKind::INTEGER);
    EXPECT_EQ(root.find("z")->text, "1");
    EXPECT_EQ(root.find("a")->kind, NodeKind::TEXT);
    EXPECT_EQ(root.find("a")->text, "x");
    EXPECT_EQ(root.find("none"), nullptr);
    const DataNode &table = *root.find("t");
    EXPECT_EQ(table.kind, NodeKind::TABLE);
    EXPECT_EQ(table.keys, (Lines{"f", "b", "l", "d"}));
    EXPECT_EQ(table.find("f")->kind, NodeKind::NUMBER);
    EXPECT_EQ(table.find("f")->text, "1.5");
    EXPECT_EQ(table.find("b")->kind, NodeKind::BOOLEAN);
    EXPECT_EQ(table.find("b")->text, "true");
    EXPECT_EQ(table.find("d")->kind, NodeKind::OTHER);
    const DataNode &list = *table.find("l");
    EXPECT_EQ(list.kind, NodeKind::ARRAY);
    ASSERT_EQ(list.children.size(), 2u);
    EXPECT_EQ(list.children[1].text, "2");
    EXPECT_EQ(list.children[1].place.line, 6);
    EXPECT_EQ(list.children[1].place.column, 11);
    EXPECT_EQ(table.keyPlaces[2].line, 6);
    EXPECT_EQ(table.keyPlaces[2].column, 3);
}

TEST(TomlTree, ReportsASyntaxErrorAtItsPlace)
{
    Problems problems;
    EXPECT_TRUE(parseToml("a = 1\nb = = 2\n", "p.toml", problems).keys.empty());
    ASSERT_EQ(problems.lines().size(), 1u);
    EXPECT_EQ(problems.lines()[0].find("p.toml:2:5: this is not TOML: "), 0u) << problems.lines()[0];
}

// As such, and as an escape.
TEST(TomlTree, RefusesControlCharacters)
{
    const auto problemsOf = [](const std::string &text) {
        Problems problems;
        EXPECT_TRUE(parseToml(text, "p.toml", problems).keys.empty());
        return problems.lines();
    };
    EXPECT_EQ(problemsOf("a = 1\nb = \"\xC2\x9B\"\n"), (Lines{"p.toml:2:6: U+009B is a control character; remove it"}));
    EXPECT_EQ(problemsOf("a = 1\nb = { c = \"\\u001b[2J\" }\n\"d\\n\" = [\"\\u202e\"]\n"),
              (Lines{"p.toml:2:11: U+001B is a control character; remove it",
                     "p.toml:3:1: U+000A is a control character; remove it",
                     "p.toml:3:10: U+202E is a control character; remove it"}));
    EXPECT_EQ(problemsOf("a = \"\xC0\x80\"\n"), (Lines{"p.toml:1:6: this is not UTF-8; save the file as UTF-8"}));
    // The parser names the key, and what it names reaches the terminal.
    const Lines twice = problemsOf("\"\\u001b\" = 1\n\"\\u001b\" = 2\n");
    ASSERT_EQ(twice.size(), 1u);
    EXPECT_EQ(twice[0].find("p.toml:2:"), 0u) << twice[0];
    EXPECT_EQ(twice[0].find('\x1B'), std::string::npos);
}

// The parser asks of each of these whether it is white space.
TEST(TomlTree, TakesCharactersBeyondAsciiForWhatTheyAre)
{
    const struct {
        const char *text;
        const char *place;
    } rows[] = {{"gr\xC3\xB6sse = 1\n", "1:3"}, {"a = 1\nb = \xD2\x90\n", "2:5"}, {"\xE3\x81\x82 = 1\n", "1:1"}};
    for (const auto &row : rows) {
        Problems problems;
        parseToml(row.text, "p.toml", problems);
        ASSERT_EQ(problems.lines().size(), 1u) << row.text;
        EXPECT_EQ(problems.lines()[0].find(std::string("p.toml:") + row.place + ": this is not TOML: "), 0u)
            << problems.lines()[0];
    }
    Problems problems;
    const DataNode root = parseToml("a = \"\"\"b \\\n  \xC3\xBC\"\"\"\n", "p.toml", problems);
    EXPECT_EQ(problems.lines(), Lines());
    ASSERT_EQ(root.keys.size(), 1u);
    EXPECT_EQ(root.children[0].text, "b \xC3\xBC");
}

// What the parser would overflow the stack with is not handed to it.
TEST(TomlTree, RefusesKeysOfManyParts)
{
    std::string key = "a";
    for (int i = 0; i < 15156; ++i)
        key += ".a";
    Problems problems;
    parseToml("b = 1\n" + key + " = 1\n", "p.toml", problems);
    EXPECT_EQ(problems.lines(), (Lines{"p.toml:2:64: a key of more than 32 parts; use fewer points"}));
}

// These make the parser itself give up.
TEST(TomlTree, ReportsBrokenSyntaxInItsLine)
{
    for (const char *broken : {"[v]\na = 1\n\"b\" = [20,} 3=0, 40]\nc = 2\n", "[v]\na = 1\n\"b\" = [20,} 3=0, 40]"}) {
        Problems problems;
        parseToml(broken, "p.toml", problems);
        EXPECT_EQ(problems.lines(), (Lines{"p.toml:3:1: this is not TOML: its syntax is broken"}));
    }
    Problems problems;
    parseToml("a = 1\n[/b]\n", "p.toml", problems);
    EXPECT_EQ(problems.lines(), (Lines{"p.toml:2:1: this is not TOML: its syntax is broken"}));
}

TEST(TomlTree, WritesTextsAndKeysAsTheyAreRead)
{
    EXPECT_EQ(tomlString("a \"b\" \\ \n\x7F"), "\"a \\\"b\\\" \\\\ \\u000A\\u007F\"");
    EXPECT_EQ(tomlString("\xC3\xBC"), "\"\xC3\xBC\"");
    EXPECT_EQ(tomlKey("Level_1-a"), "Level_1-a");
    EXPECT_EQ(tomlKey("DM:100:2"), "\"DM:100:2\"");
    EXPECT_EQ(tomlKey("a.b"), "\"a.b\"");
    EXPECT_EQ(tomlKey(""), "\"\"");
    for (const std::string &text : {std::string(" \"\\\xC3\xBC"), std::string()}) {
        Problems problems;
        const DataNode root = parseToml("a = " + tomlString(text) + "\n", "p.toml", problems);
        ASSERT_FALSE(problems.any());
        EXPECT_EQ(root.find("a")->text, text);
    }
}

TEST(Problems, AreSortedByPlace)
{
    Problems problems;
    EXPECT_FALSE(problems.any());
    EXPECT_EQ(usageError([&] { problems.refuse(); }), "");
    problems.add("p.toml", {12, 3}, "later");
    problems.add("p.toml", {2, 10}, "second");
    problems.add("p.toml", {2, 9}, "first");
    problems.add("p.toml", {0, 0}, "the whole file");
    problems.add("p.toml", {1, 0}, "a whole line");
    EXPECT_EQ(problems.lines(), (Lines{"p.toml: the whole file", "p.toml:1: a whole line", "p.toml:2:9: first",
                                       "p.toml:2:10: second", "p.toml:12:3: later"}));
    EXPECT_EQ(usageError([&] { problems.refuse("; look"); }), "p.toml: the whole file (and 4 more; look)");
    Problems one;
    one.add("p.toml", {1, 1}, "only");
    EXPECT_EQ(usageError([&] { one.refuse("; look"); }), "p.toml:1:1: only");
}

TEST(Problems, AFileThatCannotBeReadIsNamed)
{
    EXPECT_EQ(usageError([] { readFile("/no/such/file"); }), "/no/such/file: No such file or directory");
    EXPECT_EQ(usageError([] { readFile("/"); }), "/: is not a regular file; name a file of text");
}
