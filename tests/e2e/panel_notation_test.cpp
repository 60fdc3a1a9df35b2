#include "panel_files.h"

// Addresses and type names as the PLC's manuals write them, in every command.

class PanelNotationTest : public PanelTest {
protected:
    PanelFiles files;
};

TEST_F(PanelNotationTest, ReadsShowItemsAsTheyWereGiven)
{
    start();
    ASSERT_EQ(tell("write DM:100 0 16320"), "ok"); // 1.5 is 3FC00000
    ASSERT_EQ(tell("write WR_bit:3.5 1"), "ok");
    ASSERT_EQ(tell("write CIO:100 32"), "ok"); // bit 5
    ASSERT_EQ(tell("write DM:5 7"), "ok");
    const PanelRun read = run("read", {"D100/REAL", "W3.05", "W3.5", "100.05", "100", "DM:5", "D5:2", "D100/DWORD"});
    EXPECT_EQ(read.code, 0) << read.err;
    EXPECT_EQ(read.out, "D100/REAL = 1.5\nW3.05 = 1\nW3.05 = 1\n100.05 = 1\n100 = 32\nDM:5 = 7\nD5:2 = 7 0\n"
                        "D100/DWORD = 0x3FC00000\n");
    EXPECT_EQ(run("read", {"D100", "--as", "REAL"}).out, "D100/REAL = 1.5\n");
}

TEST_F(PanelNotationTest, WritesReachTheAddress)
{
    start();
    const PanelRun write = run("write", {"D100/REAL=1.5", "W3.05=ON", "100.10=true", "100.01:2=on,OFF", "H10=5",
                                         "D200:2/INT=-1,2", "T5=9"});
    EXPECT_EQ(write.code, 0) << write.err;
    EXPECT_EQ(write.out, "D100/REAL = 1.5\nW3.05 = 1\n100.10 = 1\n100.01:2 = 1 0\nH10 = 5\nD200:2/INT = -1 2\nT5 = 9\n");
    EXPECT_EQ(tell("read DM:100:2"), "ok 0 16320");
    EXPECT_EQ(tell("read WR:3"), "ok 32");
    EXPECT_EQ(tell("read CIO:100"), "ok 1026"); // bits 1 and 10
    EXPECT_EQ(tell("read HR:10"), "ok 5");
    EXPECT_EQ(tell("read DM:200:2"), "ok 65535 2");
    EXPECT_EQ(tell("read T:5"), "ok 9");
}

TEST_F(PanelNotationTest, ARefusedWriteIsNamedAsItWasGiven)
{
    start({"--refuse-writes-in-run=2101"});
    const PanelRun write = run("write", {"D3=5"});
    EXPECT_EQ(write.code, 1);
    EXPECT_NE(write.err.find("refused: D3: 2101"), std::string::npos) << write.err;
}

TEST_F(PanelNotationTest, WatchNamesValuesByTheirAddresses)
{
    start();
    ASSERT_EQ(tell("write DM:100 1 2"), "ok");
    const auto panel = watch({"D100:2", "W3.05", "--interval", "5"});
    EXPECT_EQ(nextChange(*panel), "D100 - 1");
    EXPECT_EQ(nextChange(*panel), "D101 - 2");
    EXPECT_EQ(nextChange(*panel), "W3.05 - 0");
    ASSERT_EQ(tell("write DM:101 3"), "ok");
    EXPECT_EQ(nextChange(*panel), "D101 2 3");
    ASSERT_EQ(tell("write WR_bit:3.5 1"), "ok");
    EXPECT_EQ(nextChange(*panel), "W3.05 0 1");
    EXPECT_EQ(interrupt(*panel), 0);
}

TEST_F(PanelNotationTest, ChecksWithoutAPlc)
{
    const PanelRun valid = runPanel({"check", "D32767", "A448.00", "D0:3/LREAL", "DM:5/INT"});
    EXPECT_EQ(valid.out, "D32767 valid\nA448.00 valid\nD0:3/LREAL valid\nDM:5/INT valid\n");
    EXPECT_EQ(valid.code, 0);
    expectRefused({"check", "D32768"}, "fins_panel: 'D32768' lies outside the range D0 to D32767");
    expectRefused({"check", "d5"},
                  "fins_panel: 'd5' is not an item; write TYPE:ADDRESS or TYPE:ADDRESS:COUNT, such as DM:100:2");
    EXPECT_EQ(runPanel({"copies", "W3.14", "3"}).out, "W3.14\nW3.15\nW4.00\n");
}

TEST_F(PanelNotationTest, ATagGoesBeforeAnAddress)
{
    start();
    ASSERT_EQ(tell("write DM:5 7"), "ok");
    ASSERT_EQ(tell("write DM:100 8"), "ok");
    const std::string file = files.put("plant.toml", "[connection]\nhost = \"" + host() + "\"\n"
                                                     "[tags]\nD100 = { address = \"D5\" }\n"
                                                     "Level = { address = \"D100\" }\n");
    EXPECT_EQ(runPanel({"read", "--project", file, "D100", "Level", "DM:100", "D5"}).out,
              "D100 = 7\nLevel = 8\nDM:100 = 8\nD5 = 7\n");
    expectRefused({"read", "--project", file, "D100:2"},
                  "fins_panel: 'D100:2': D100 is a tag of its own; write DM:100:2 for the address");
}

// ---- Tables of symbols -------------------------------------------------------------------------------------------

TEST_F(PanelNotationTest, SymbolsBecomeTags)
{
    const std::string table = files.put("symbols.txt", "Symbol\tAddress / Value\tData Type\tComment\r\n"
                                                       "Level\tD100\tREAL\tupper, left\r\n"
                                                       "Pump\t100.05\tBOOL\t\r\n"
                                                       "Card\tW3\tCHANNEL\t\r\n"
                                                       "Flags\tH5\tword\t\r\n"
                                                       "Sums\tD200\tDINT[3]\t\r\n"
                                                       "Five\tD300\tARRAY[1..5] OF INT\t\r\n"
                                                       "Product\tD400\tSTRING[15]\t\r\n"
                                                       "Delay\tT5\t\t\r\n");
    const PanelRun import = runPanel({"import-tags", table});
    EXPECT_EQ(import.code, 0);
    EXPECT_EQ(import.err, "");
    EXPECT_EQ(import.out, "[tags]\n"
                          "Level = { type = \"DM\", address = 100, data = \"f32\", comment = \"upper, left\" }\n"
                          "Pump = { type = \"CIO_bit\", address = \"100.5\" }\n"
                          "Card = { type = \"WR\", address = 3 }\n"
                          "Flags = { type = \"HR\", address = 5, data = \"hex\" }\n"
                          "Sums = { type = \"DM\", address = 200, count = 3, data = \"s32\" }\n"
                          "Five = { type = \"DM\", address = 300, count = 5, data = \"s16\" }\n"
                          "Product = { type = \"DM\", address = 400, count = 8, data = \"string\" }\n"
                          "Delay = { type = \"T\", address = 5 }\n");
}

TEST_F(PanelNotationTest, WhatIsNotTakenIsListedAndTheRestWritten)
{
    const std::string table = files.put("symbols.csv", "A,D1,INT\n"
                                                       "B,,INT\n"
                                                       "C,0.1,BOOL\n"
                                                       "D,D40000,INT\n"
                                                       "E,T5,BOOL\n"
                                                       "F,D5,TIMER\n"
                                                       "G,D5,STRING\n"
                                                       "H 1,D6,INT\n"
                                                       "H_1,D7,INT\n"
                                                       "2nd,D8,INT\n"
                                                       ",D9,INT\n"
                                                       "I,100.10,BOOL\n"
                                                       "J,D5,ARRAY[2..1] OF INT\n"
                                                       "K,D5,ARRAY[0..1] OF STRING\n"
                                                       "L,E5,INT\n");
    const std::string types = "is no type of words or bits; there are CHANNEL, BOOL, INT, UINT, DINT, UDINT, LINT, ULINT, "
                              "REAL, LREAL, WORD, DWORD, UINT_BCD, UDINT_BCD, STRING\n";
    const PanelRun import = runPanel({"import-tags", table, "--output", files.path("out.toml")});
    EXPECT_EQ(import.code, 1);
    EXPECT_EQ(import.out, "");
    EXPECT_EQ(import.err, table + ":8: 'H 1' is named H_1\n" +
                              table + ":10: '2nd' is named _2nd\n" +
                              table + ":2: 'B': it has no address\n" +
                              table + ":3: 'C': '0.1' may be bit 1, or bit 10 without its last digit; write 0.01 or 0.10\n" +
                              table + ":4: 'D': 'D40000' lies outside the range D0 to D32767\n" +
                              table + ":5: 'E': 'T5/BOOL': words are no bit; name a bit, such as D100.05, or another data type\n" +
                              table + ":6: 'F': 'TIMER' " + types +
                              table + ":7: 'G': nothing tells how long it is; write the type with its characters, such as STRING[20]\n" +
                              table + ":9: 'H_1': there is another tag 'H_1'; give each a name of its own\n" +
                              table + ":11: '': it has no name\n" +
                              table + ":13: 'J': 'D5:0': the count '0' is not a number from 1 up\n" +
                              table + ":14: 'K': 'ARRAY[0..1] OF STRING' " + types +
                              table + ":15: 'L': 'E5' is no address such as D100, W3.05 or 100.05\n");
    EXPECT_EQ(files.content("out.toml"), "[tags]\n"
                                         "A = { type = \"DM\", address = 1, data = \"s16\" }\n"
                                         "H_1 = { type = \"DM\", address = 6, data = \"s16\" }\n"
                                         "_2nd = { type = \"DM\", address = 8, data = \"s16\" }\n"
                                         "I = { type = \"CIO_bit\", address = \"100.10\" }\n");
}

TEST_F(PanelNotationTest, AListOfTagsIsNoTableOfSymbols)
{
    const auto importOf = [&](const std::string &text) { return runPanel({"import-tags", files.put("t.csv", text)}); };
    EXPECT_EQ(importOf("name,type,address,comment\nA,DM,5,INT\n").out,
              "[tags]\nA = { type = \"DM\", address = 5, comment = \"INT\" }\n");
    EXPECT_EQ(importOf("name,address,data,unit\nA,D5,REAL,%\n").out,
              "[tags]\nA = { type = \"DM\", address = 5, data = \"f32\", unit = \"%\" }\n");
    EXPECT_EQ(importOf("name,type,address,comment\nA,INT,D5,x\n").out,
              "[tags]\nA = { type = \"DM\", address = 5, data = \"s16\", comment = \"x\" }\n");
    EXPECT_EQ(importOf("name,address\nA,100\n").out, "[tags]\nA = { type = \"CIO\", address = 100 }\n");
    const PanelRun wrong = importOf("name,type,address\nA,D,5\n");
    EXPECT_EQ(wrong.code, 2);
    EXPECT_NE(wrong.err.find("t.csv:2:3: 'D:5': there is no register type 'D'"), std::string::npos) << wrong.err;
}
