#include "panel_files.h"

#include <algorithm>

// `recipe read` and `recipe write`: files, blocks, refusals, cuts.

class PanelRecipeTest : public PanelTest {
protected:
    std::string recipe() const { return files.path("recipe.txt"); }
    std::string output() const { return files.path("output.txt"); }

    void writeRecipe(const std::string &text) const { files.put("recipe.txt", text); }

    // The writes among the frames of one connection.
    static Words writesOf(const Words &frames)
    {
        Words writes;
        for (const std::string &frame : frames)
            if (commandOf(frame).substr(0, 4) == "0102")
                writes.push_back(commandOf(frame));
        return writes;
    }

    // A recipe file with this text is refused in line `number` (0: as a whole) before anything is sent.
    void expectBad(const std::string &text, int number, const std::string &reason, const std::string &command)
    {
        writeRecipe(text);
        const std::string place = recipe() + (number > 0 ? ":" + std::to_string(number) : "");
        expectRefused(arguments(command, {recipe()}), "fins_panel: " + place + ": " + reason);
    }

    PanelFiles files;
};

TEST_F(PanelRecipeTest, WriteReadsBack)
{
    start();
    writeRecipe("DM:0:5 = 471 0 4 500 447\n");
    const PanelRun write = run("recipe write", {recipe()});
    EXPECT_EQ(write.code, 0);
    EXPECT_EQ(write.out, "DM:0:5 = 471 0 4 500 447\n");
    EXPECT_EQ(write.err, connectedLine());
    EXPECT_EQ(tell("read DM:0:6"), "ok 471 0 4 500 447 0");
}

TEST_F(PanelRecipeTest, CommentsEmptyLinesAndLineEnds)
{
    start();
    writeRecipe("# a recipe\r\n\r\n  DM:0:3 = 1 0x10 -1 # three\r\n\t\nHR:5=7\n   # the end");
    const PanelRun write = run("recipe write", {recipe()});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "DM:0:3 = 1 16 65535\nHR:5 = 7\n");
    EXPECT_EQ(tell("read DM:0:3"), "ok 1 16 65535");
    EXPECT_EQ(tell("read HR:5"), "ok 7");
}

// Unsorted lines with gaps: the transfer goes by addresses, the answer by lines. Neighbours share a frame.
TEST_F(PanelRecipeTest, UnsortedLinesWithGaps)
{
    start({"--trace"});
    ASSERT_EQ(tell("write DM:99 9 9 9 9 9 9 9 9"), "ok");
    writeRecipe("DM:104 = 5\nHR:7 = 70\nDM:100:2 = 1 2\nDM:102 = 3\nWR:511 = 511\nC:5 = 55\nT:5 = 50\n");
    const PanelRun write = run("recipe write", {recipe()});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "DM:104 = 5\nHR:7 = 70\nDM:100:2 = 1 2\nDM:102 = 3\nWR:511 = 511\nC:5 = 55\nT:5 = 50\n");
    EXPECT_EQ(tell("read DM:99:8"), "ok 9 1 2 3 9 5 9 9");
    EXPECT_EQ(tell("read HR:6:3"), "ok 0 70 0");
    EXPECT_EQ(tell("read WR:511"), "ok 511");
    EXPECT_EQ(tell("read C:5"), "ok 55");
    EXPECT_EQ(tell("read T:5"), "ok 50");
    const std::map<int, Words> received = endAndCollect();
    EXPECT_EQ(received.size(), 1u);
    expectReadsFirst(received);
    Words writes = writesOf(received.at(1));
    EXPECT_EQ(writes.size(), 6u);
    EXPECT_NE(std::find(writes.begin(), writes.end(), plainHex("0102 82 0064 00 0003 0001 0002 0003")), writes.end());
    EXPECT_NE(std::find(writes.begin(), writes.end(), plainHex("0102 82 0068 00 0001 0005")), writes.end());
}

TEST_F(PanelRecipeTest, SeveralBlocks)
{
    start({"--trace"});
    writeRecipe("DM:10:7 = 1 2 3 4 5 6 7\n");
    const PanelRun write = run("recipe write", {recipe(), "--words-per-frame", "3"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "DM:10:7 = 1 2 3 4 5 6 7\n");
    EXPECT_EQ(tell("read DM:9:9"), "ok 0 1 2 3 4 5 6 7 0");
    const PanelRun read = run("recipe read", {recipe(), "--words-per-frame", "3"});
    EXPECT_EQ(read.out, "DM:10:7 = 1 2 3 4 5 6 7\n");
    const Words expected = {plainHex("0102 82 000A 00 0003 0001 0002 0003"),
                            plainHex("0102 82 000D 00 0003 0004 0005 0006"), plainHex("0102 82 0010 00 0001 0007")};
    EXPECT_EQ(writesOf(endAndCollect()[1]), expected);
}

TEST_F(PanelRecipeTest, ThousandWords)
{
    start();
    std::string line = "DM:1000:1000 =";
    for (int i = 0; i < 1000; ++i)
        line += " " + std::to_string(65535 - i);
    writeRecipe(line + "\n");
    const PanelRun write = run("recipe write", {recipe(), "--words-per-frame", "114"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, line + "\n");
    EXPECT_EQ(tell("read DM:1999:2"), "ok 64536 0");
}

TEST_F(PanelRecipeTest, ReadNeedsNoValues)
{
    start();
    ASSERT_EQ(tell("write DM:100 1 2 3 4 5"), "ok");
    ASSERT_EQ(tell("write HR:0 65535"), "ok");
    writeRecipe("DM:103:2\nHR:0\nDM:100:2 = 7 7\n");
    const PanelRun read = run("recipe read", {recipe()});
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, "DM:103:2 = 4 5\nHR:0 = 65535\nDM:100:2 = 1 2\n");
    EXPECT_EQ(tell("read DM:100:5"), "ok 1 2 3 4 5");
}

// What was read can be written again.
TEST_F(PanelRecipeTest, OutputIsARecipe)
{
    start();
    ASSERT_EQ(tell("write DM:100 1 2 3"), "ok");
    writeRecipe("DM:100:3\nHR:0\n");
    const PanelRun read = run("recipe read", {recipe(), "--output", output()});
    EXPECT_EQ(read.code, 0);
    EXPECT_EQ(read.out, "");
    EXPECT_EQ(files.content("output.txt"), "DM:100:3 = 1 2 3\nHR:0 = 0\n");
    ASSERT_EQ(tell("write DM:100 0 0 0"), "ok");
    EXPECT_EQ(run("recipe write", {output()}).code, 0);
    EXPECT_EQ(tell("read DM:100:3"), "ok 1 2 3");
}

TEST_F(PanelRecipeTest, OutputThatCannotBeWritten)
{
    start();
    writeRecipe("DM:100:3\n");
    const PanelRun read = run("recipe read", {recipe(), "--output", files.path("none/output.txt")});
    EXPECT_EQ(read.code, 2);
    EXPECT_EQ(read.out, "");
    EXPECT_EQ(linesOf(read.err).back(), "fins_panel: " + files.path() + "none/output.txt: cannot be written: No such file or directory");
}

TEST_F(PanelRecipeTest, FileThatCannotBeRead)
{
    start();
    for (const char *command : {"recipe read", "recipe write"}) {
        expectRefused(arguments(command, {files.path("none.txt")}),
                      "fins_panel: " + files.path() + "none.txt: No such file or directory");
        expectRefused(arguments(command, {files.path()}), "fins_panel: " + files.path() + ": is not a regular file; name a file of text");
    }
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelRecipeTest, BadLinesAreNamed)
{
    start();
    const std::string noItem = " is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2";
    for (const char *command : {"recipe read", "recipe write"}) {
        expectBad("DM:0 = 1\n\nDM:32768 = 1\n", 3, "'DM:32768' lies outside the range 0 to 32767, written ddddd",
                  command);
        expectBad("DM:32767:2 = 1 2\n", 1, "'DM:32767:2' lies outside the range 0 to 32767, written ddddd", command);
        expectBad("# one\nDM:0:2 = 1 65536\n", 2,
                  "'DM:0:2=65536' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF", command);
        expectBad("DM:0 = x\n", 1, "'DM:0=x' is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF", command);
        expectBad("DM:0:3 = 1 2\n", 1, "'DM:0:3' holds 3 values, and 2 are given; write as many as it holds", command);
        expectBad("DM:0 =\n", 1, "'DM:0' has no values; write them behind '='", command);
        expectBad("DM_bit:0.0 = 1\n", 1, "'DM_bit:0.0' is a bit; recipes hold words", command);
        expectBad("DM:0 1 2 3\n", 1, "'1' is not expected here; write TYPE:ADDRESS[:COUNT] = VALUE ...", command);
        expectBad("EM:0 = 1\n", 1,
                  "'EM:0': there is no register type 'EM'; the types are CIO, WR, HR, AR, T, C, DM, CIO_bit, WR_bit, "
                  "HR_bit, AR_bit, DM_bit", command);
        expectBad("DM:0:0 = 1\n", 1, "'DM:0:0': the count '0' is not a number from 1 up", command);
        expectBad("nonsense\n", 1, "'nonsense'" + noItem, command);
        expectBad("DM:0:3 = 1 2 3\nHR:0 = 1\nDM:2 = 1\n", 3, "DM:0:3 and DM:2 overlap; name every word and bit once",
                  command);
        expectBad("", 0, "holds no variable; write lines such as DM:100 = 1 2 3", command);
        expectBad("# nothing\n", 0, "holds no variable; write lines such as DM:100 = 1 2 3", command);
    }
    expectBad("DM:0 = 1\nDM:1\n", 2, "'DM:1' has no values; write them behind '='", "recipe write");
    EXPECT_EQ(tell("stats"), "ok connections=0 requests=0 replies=0");
}

TEST_F(PanelRecipeTest, EveryWordOfThePlc)
{
    start();
    writeRecipe("DM:0:32768\nCIO:0:6144\nHR:0:1536\nWR:0:512\nAR:0:960\nT:0:4096\nC:0:4096\n");
    const PanelRun read = run("recipe read", {recipe(), "--words-per-frame", "499", "--output", output()});
    EXPECT_EQ(read.code, 0) << read.err;
    const Words lines = linesOf(files.content("output.txt"));
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[0].size(), std::string("DM:0:32768 =").size() + 2 * 32768);
}

TEST_F(PanelRecipeTest, RefusedBlock)
{
    start({"--fault", "end-code=1104"});
    writeRecipe("DM:100:2 = 1 2\n");
    for (const char *command : {"recipe read", "recipe write"}) {
        const PanelRun ended = run(command, {recipe()});
        EXPECT_EQ(ended.code, command == std::string("recipe read") ? 1 : 3) << command;
        EXPECT_EQ(ended.out, "");
        EXPECT_NE(ended.err.find("the PLC refuses to read DM:100: 1104 (the last address is out of range)\n"),
                  std::string::npos) << ended.err;
    }
}

// The small profile's DM ends at 2047.
TEST_F(PanelRecipeTest, WhatIsNotRefusedIsRead)
{
    start({"--profile", "small"});
    ASSERT_EQ(tell("write DM:2040 1 2"), "ok");
    ASSERT_EQ(tell("write HR:0 7"), "ok");
    writeRecipe("DM:2040:2 = 1 2\nDM:2046:4 = 1 2 3 4\nHR:0 = 7\n");
    const std::string refusal = "the PLC refuses to read DM:2048:2: 1103 (the first address is out of range)\n"
                                "refused (1 of 3 variables): DM:2046:4\n";
    const PanelRun read = run("recipe read", {recipe()});
    EXPECT_EQ(read.code, 1);
    EXPECT_EQ(read.out, "DM:2040:2 = 1 2\nHR:0 = 7\n");
    EXPECT_EQ(read.err, connectedLine() + refusal);
    EXPECT_EQ(tell("stats").find("ok connections=1 "), 0u);
    const PanelRun toFile = run("recipe read", {recipe(), "--output", output()});
    EXPECT_EQ(toFile.code, 1);
    EXPECT_EQ(files.content("output.txt"), "DM:2040:2 = 1 2\nHR:0 = 7\n");
    const PanelRun compared = run("recipe compare", {recipe()});
    EXPECT_EQ(compared.code, 1);
    EXPECT_EQ(compared.out, "no difference: 2 variables as in the recipe\n");
    EXPECT_NE(compared.err.find(refusal), std::string::npos) << compared.err;
}

// The word by which the link is proved.
TEST_F(PanelRecipeTest, TheFirstWordIsRefused)
{
    start({"--profile", "small"});
    ASSERT_EQ(tell("write DM:0 7"), "ok");
    writeRecipe("CIO:290\nDM:0\n");
    const PanelRun read = run("recipe read", {recipe()});
    EXPECT_EQ(read.code, 1);
    EXPECT_EQ(read.out, "DM:0 = 7\n");
    EXPECT_EQ(read.err, connectedLine() + "the PLC refuses to read CIO:290: 1103 (the first address is out of range)\n"
                                          "refused (1 of 2 variables): CIO:290\n");
}

TEST_F(PanelRecipeTest, RefusedWriteShowsWhatThePlcHolds)
{
    start({"--refuse-writes-in-run=2102"});
    ASSERT_EQ(tell("write DM:100 8"), "ok");
    writeRecipe("DM:100:2 = 1 2\n");
    const PanelRun write = run("recipe write", {recipe()});
    EXPECT_EQ(write.code, 1);
    EXPECT_EQ(write.out, "DM:100:2 = 8 0\n");
    EXPECT_EQ(write.err,
              connectedLine() + "refused: DM:100:2: 2102 (the area is protected against writing)\n");
}

TEST_F(PanelRecipeTest, WithoutAPlc)
{
    start({"--fault", "refuse"});
    writeRecipe("DM:100:2 = 1 2\n");
    expectNoLink(run("recipe read", {recipe(), "--give-up", "0.1"}), noAnswer(100));
    expectNoLink(run("recipe write", {recipe(), "--give-up", "0.1"}),
                 "not sent: DM:100:2: no answer in time\n" + noAnswer(100));
}

// ---- A link that is cut in the middle of a transfer --------------------------------------------------------------

class PanelRecipeCutTest : public PanelRecipeTest {
protected:
    void begin(const std::string &command)
    {
        writeRecipe("DM:0:4 = 1 2 3 4\n");
        Words all = {"recipe", command, played.host(), recipe(), "--words-per-frame", "2"};
        panel = startPanel(all);
        connect();
    }

    // A new link, and the read that proves it.
    void connect()
    {
        link = nullptr;
        link = played.accept();
        link->exchangeNodes();
        EXPECT_EQ(link->command(), plainHex("0101 82 0000 00 0001"));
        link->answer("0101 0000 0000");
    }

    void expect(const std::string &command, const std::string &response)
    {
        EXPECT_EQ(link->command(), plainHex(command));
        link->answer(response);
    }

    PlayedPlc                   played;
    std::unique_ptr<Process>    panel;
    std::unique_ptr<PlayedLink> link;
};

// The second block's write is lost: nothing is written again, and the values are read back.
TEST_F(PanelRecipeCutTest, WriteIsReadBackAndDiffers)
{
    begin("write");
    expect("0102 82 0000 00 0002 0001 0002", "0102 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0002 00 0002 0003 0004"));
    connect();
    expect("0101 82 0000 00 0002", "0101 0000 0001 0002");
    expect("0101 82 0002 00 0002", "0101 0000 0000 0009");
    EXPECT_EQ(panel->wait(), 3);
    EXPECT_EQ(panel->output(), "DM:0:4 = 1 2 0 9\n");
    const Words lines = linesOf(withoutHints(panel->errors()));
    ASSERT_EQ(lines.size(), 5u) << panel->errors();
    EXPECT_EQ(lines[1], played.linkLost("the PLC closed the connection"));
    EXPECT_EQ(lines[2], "no reply to the write of DM:0:4; it will be read back");
    EXPECT_EQ(lines[4], "unconfirmed: DM:0:4: the PLC holds 1 2 0 9 so far; the write may still arrive");
}

TEST_F(PanelRecipeCutTest, WriteIsReadBackAndAgrees)
{
    begin("write");
    expect("0102 82 0000 00 0002 0001 0002", "0102 0000");
    EXPECT_EQ(link->command(), plainHex("0102 82 0002 00 0002 0003 0004"));
    connect();
    expect("0101 82 0000 00 0002", "0101 0000 0001 0002");
    expect("0101 82 0002 00 0002", "0101 0000 0003 0004");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0:4 = 1 2 3 4\n");
}

// A read begins anew, with all of its blocks.
TEST_F(PanelRecipeCutTest, ReadBeginsAnew)
{
    begin("read");
    expect("0101 82 0000 00 0002", "0101 0000 0001 0002");
    EXPECT_EQ(link->command(), plainHex("0101 82 0002 00 0002"));
    connect();
    expect("0101 82 0000 00 0002", "0101 0000 0005 0006");
    expect("0101 82 0002 00 0002", "0101 0000 0007 0008");
    EXPECT_EQ(panel->wait(), 0);
    EXPECT_EQ(panel->output(), "DM:0:4 = 5 6 7 8\n");
}
