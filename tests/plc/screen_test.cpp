#include "view/screen.h"

#include "plant_fixture.h"

#include <algorithm>

// The live view, drawn for screens of several sizes.

class ScreenTest : public PlantTest {
protected:
    ScreenTest()
    {
        state.address = "127.0.0.1:9600";
        state.profile = "cj2";
        state.mode = "run";
        state.clientLimit = 16;
        state.faults = "none";
        state.answer = "ok";
    }

    void showPlant(const std::string &name)
    {
        start(name);
        state.plant = name;
        state.values = plant->values();
    }

    void addClients(unsigned count)
    {
        for (unsigned id = 1; id <= count; ++id)
            state.clients.push_back({{id, 238 + id, "127.0.0.1:50000", 10}, 2.5});
    }

    void addWrites(unsigned count)
    {
        for (unsigned i = 0; i < count; ++i)
            state.writes.push_back({"DM:" + std::to_string(i), i, i});
    }

    std::vector<std::string> draw(std::size_t columns, std::size_t rows, bool hasColour = false) const
    {
        return plc::drawScreen(state, {columns, rows}, hasColour);
    }

    // The rows below the heading, up to an empty one, without spaces at their ends.
    std::vector<std::string> rowsBelow(const std::string &heading, const std::vector<std::string> &screen) const
    {
        const auto starts = [&heading](const std::string &row) { return row.rfind(heading, 0) == 0; };
        auto row = std::find_if(screen.begin(), screen.end(), starts);
        std::vector<std::string> rows;
        while (row != screen.end() && ++row != screen.end() && !row->empty())
            rows.push_back(row->substr(0, row->find_last_not_of(' ') + 1));
        return rows;
    }

    plc::ScreenState state;
};

using Rows = std::vector<std::string>;

TEST_F(ScreenTest, TheHeadHasModeAndError)
{
    EXPECT_EQ(draw(80, 24)[0], "fins_plc 127.0.0.1:9600  node 1  profile cj2  mode RUN  up 00:00:00");
    state.error = "80C2+1";
    EXPECT_EQ(draw(90, 24)[0], "fins_plc 127.0.0.1:9600  node 1  profile cj2  mode RUN  error 80C2+1  up 00:00:00");
    EXPECT_EQ(draw(66, 24)[0], "fins_plc 127.0.0.1:9600  node 1  profile cj2  mode RUN  error 80C~");
}

TEST_F(ScreenTest, TankIn80Columns)
{
    showPlant("tank");
    EXPECT_EQ(rowsBelow("PLANT tank", draw(80, 24)),
              (Rows{"level        DM:0        30.0 %         pump         CIO_bit:0.0 off",
                    "set-point    DM:3        50.0 %         high alarm   CIO_bit:0.3 off",
                    "inflow       DM:1        0.0 % a step   low alarm    CIO_bit:0.4 off",
                    "outflow      DM:2        0.0 % a step   starts       C:0         0"}));
}

TEST_F(ScreenTest, ConveyorIn80Columns)
{
    showPlant("conveyor");
    EXPECT_EQ(rowsBelow("PLANT conveyor", draw(80, 24)),
              (Rows{"belt speed   DM:0        0.0 m/min      good parts   C:0         0",
                    "set speed    DM:2        30.0 m/min     thrown out   C:1         0",
                    "position     DM:1        0 mm           jam          CIO_bit:0.3 off",
                    "last part    DM:3        0 g            next part    T:0         10 steps"}));
}

TEST_F(ScreenTest, OvenZonesStandInColumns)
{
    showPlant("oven");
    EXPECT_EQ(rowsBelow("PLANT oven", draw(80, 24)),
              (Rows{"zone 1       DM:0        20.0 C         heater 1     DM:20       0 %",
                    "zone 2       DM:1        20.0 C         heater 2     DM:21       0 %",
                    "zone 3       DM:2        20.0 C         heater 3     DM:22       0 %",
                    "set-point 1  DM:10       150.0 C        ready        CIO_bit:0.3 off",
                    "set-point 2  DM:11       180.0 C        too hot      CIO_bit:0.4 off",
                    "set-point 3  DM:12       165.0 C        door open    CIO_bit:0.6 off"}));
    const Rows wide = rowsBelow("PLANT oven", draw(200, 50));
    ASSERT_EQ(wide.size(), 3u);
    EXPECT_EQ(wide[1], "zone 2       DM:1        20.0 C         set-point 2  DM:11       180.0 C        "
                       "heater 2     DM:21       0 %            too hot      CIO_bit:0.4 off");
}

TEST_F(ScreenTest, ThreeWrittenPlacesIn80Columns)
{
    state.writes = {{"CIO_bit:6143.15", 1, 0}, {"DM:32767", 65535, 59}, {"T:4095", 9999, 3599}, {"HR:0", 7, 7200}};
    EXPECT_EQ(rowsBelow("WRITTEN LAST", draw(80, 24)),
              (Rows{"CIO_bit:6143.15 = 1 0 s    DM:32767 = 65535    59 s   T:4095 = 9999       59 min",
                    "HR:0 = 7            2 h"}));
}

TEST_F(ScreenTest, AnEmptyRowStandsAboveTheAnswer)
{
    addWrites(64);
    addClients(3);
    for (const char *name : {"tank", "conveyor", "oven"}) {
        showPlant(name);
        const Rows screen = draw(80, 24);
        EXPECT_FALSE(rowsBelow("WRITTEN LAST", screen).empty()) << name;
        EXPECT_EQ(screen[21], "") << name;
        EXPECT_EQ(screen[22], "ok") << name;
        EXPECT_EQ(screen[23], "> _") << name;
    }
}

TEST_F(ScreenTest, ClientsBeyondTheRoomAreCounted)
{
    showPlant("oven");
    addClients(9);
    addWrites(64);
    EXPECT_EQ(rowsBelow("CLIENTS 9 OF 16", draw(80, 24)),
              (Rows{"#1                 239   127.0.0.1:50000              10          2.5",
                    "#2                 240   127.0.0.1:50000              10          2.5", "and 7 more"}));
    EXPECT_EQ(rowsBelow("CLIENTS 9 OF 16", draw(80, 50)).size(), 9u);
}

TEST_F(ScreenTest, ClientsTakeTheRoomThatWritesLeave)
{
    showPlant("conveyor");
    addClients(9);
    addWrites(1);
    EXPECT_EQ(rowsBelow("CLIENTS 9 OF 16", draw(80, 24)).back(), "and 3 more");
    EXPECT_EQ(rowsBelow("WRITTEN LAST", draw(80, 24)), (Rows{"DM:0 = 0            0 s"}));
    EXPECT_EQ(rowsBelow("CLIENTS 9 OF 16", draw(80, 26)).size(), 9u);
}

TEST_F(ScreenTest, ALongAnswerTakesSeveralRows)
{
    state.answer = "help: ok read write mode fault faults tcp-error clients disconnect stats help quit";
    const Rows screen = draw(80, 24);
    EXPECT_EQ(screen[20], "");
    EXPECT_EQ(screen[21], "help: ok read write mode fault faults tcp-error clients disconnect stats help");
    EXPECT_EQ(screen[22], "quit");
}

TEST_F(ScreenTest, WhatIsClippedEndsWithATilde)
{
    state.answer = "one two three four five six seven eight nine ten";
    state.faults = "delay=20@0.1 drop@0.1";
    const Rows screen = draw(12, 24);
    EXPECT_EQ(screen[2], "faults dela~");
    EXPECT_EQ(screen[20], "one two");
    EXPECT_EQ(screen[21], "three four");
    EXPECT_EQ(screen[22], "five six se~");
}

TEST_F(ScreenTest, TheEndOfALongCommandIsShown)
{
    state.typed = "write DM:0 1 2 3 4";
    EXPECT_EQ(draw(21, 24).back(), "> write DM:0 1 2 3 4_");
    EXPECT_EQ(draw(20, 24).back(), "> ~ite DM:0 1 2 3 4_");
}

TEST_F(ScreenTest, FitsEveryScreen)
{
    addWrites(64);
    addClients(16);
    state.answer = std::string(300, 'x');
    state.typed = std::string(90, 'y');
    for (const char *name : {"tank", "conveyor", "oven"}) {
        showPlant(name);
        for (std::size_t columns = 1; columns <= 210; columns += 1 + columns / 20) {
            for (std::size_t rows = 1; rows <= 60; ++rows) {
                const Rows screen = draw(columns, rows);
                ASSERT_EQ(screen.size(), rows) << name << " " << columns << "x" << rows;
                for (const std::string &row : screen)
                    ASSERT_LE(row.size(), columns) << name << " " << columns << "x" << rows;
            }
        }
    }
}

TEST_F(ScreenTest, ColoursChangeNothingButTheColour)
{
    showPlant("conveyor");
    addWrites(3);
    addClients(2);
    state.mode = "program";
    Rows screen = draw(80, 24, true);
    EXPECT_NE(screen[0].find("mode \033[31mPROGRAM\033[0m"), std::string::npos);
    for (std::string &row : screen)
        for (std::size_t at = row.find('\033'); at != std::string::npos; at = row.find('\033'))
            row.erase(at, row.find('m', at) - at + 1);
    EXPECT_EQ(screen, draw(80, 24));
}
