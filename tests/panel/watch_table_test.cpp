#include "table/course_text.h"
#include "table/watch_table.h"
#include "terminal/text_width.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const double UNKNOWN   = std::numeric_limits<double>::quiet_NaN();
const double NO_NUMBER = std::numeric_limits<double>::infinity();

const ScreenStyle PLAIN  = {false, true};
const ScreenStyle COLOUR = {true, true};
const ScreenStyle ASCII  = {false, false};

TableContent content()
{
    TableContent content = {};
    content.peer   = "192.168.250.1:9600";
    content.link   = "online";
    content.isUp   = true;
    content.cycle  = "12.5 ms";
    content.requestsPerSecond = 80.4;
    content.errors = 0;
    content.clock  = "08:15:30";
    content.rows = {
        {"level", "512", "mm", "0 s", Quality::GOOD, true, {0, 1, 2, 3, 4, 5, 6, 7}},
        {"set_point", "500.0", "mm", "3 min", Quality::WRITE_PENDING, false, {500, 500}},
        {"pump", "1", "", "-", Quality::GOOD, false, {UNKNOWN, 0, 1}},
        {"serial", "", "", "-", Quality::NOT_CONNECTED, false, {}},
    };
    return content;
}

TableContent lostContent()
{
    TableContent lost = content();
    lost.link    = "no link, retry in 3 s";
    lost.isUp    = false;
    lost.cycle   = "";
    lost.requestsPerSecond = 0;
    lost.errors  = 1;
    lost.messages = {"link to 192.168.250.1:9600 lost: no reply in time, 3 times in a row, retrying in 100 ms"};
    lost.rows[0].isNew   = false;
    lost.rows[0].age     = "12 s";
    lost.rows[0].quality = Quality::LAST_KNOWN;
    lost.rows[0].course  = {0, 7, UNKNOWN};
    lost.rows[1].quality = Quality::LAST_KNOWN;
    lost.rows[2].quality = Quality::REFUSED;
    return lost;
}

TableContent manyRows(std::size_t count)
{
    TableContent many = content();
    many.rows.clear();
    for (std::size_t i = 0; i < count; ++i)
        many.rows.push_back({"t" + std::to_string(i), "1", "", "-", Quality::GOOD, false, {}});
    return many;
}

using Lines = std::vector<std::string>;

const std::string KEYS = "/ filter  s sort  p pause  r new min, max  Enter edit";

TEST(WatchTable, ScreenOf80By24)
{
    Lines expected(24);
    expected[0] = " 192.168.250.1:9600  online  cycle 12.5 ms  80 requests/s  0 errors    08:15:30 ";
    expected[1] = "TAG         VALUE  UNIT CHANGED  QUALITY        COURSE";
    expected[2] = "level         512* mm       0 s  good           ▁▂▃▄▅▆▇█";
    expected[3] = "set_point   500.0  mm     3 min  write pending  ▁▁";
    expected[4] = "pump            1             -  good           ·▁█";
    expected[5] = "serial          -             -  not connected";
    expected[23] = "q quit  " + KEYS;
    EXPECT_EQ(renderTable(content(), {80, 24}, PLAIN), expected);
}

TEST(WatchTable, ScreenOf200By50)
{
    Lines expected(50);
    expected[0] = " 192.168.250.1:9600  online  cycle 12.5 ms  80 requests/s  0 errors" + std::string(124, ' ')
                  + "08:15:30 ";
    expected[1] = "TAG         VALUE  UNIT CHANGED  QUALITY        COURSE";
    expected[2] = "level         512* mm       0 s  good           ▁▂▃▄▅▆▇█";
    expected[3] = "set_point   500.0  mm     3 min  write pending  ▁▁";
    expected[4] = "pump            1             -  good           ·▁█";
    expected[5] = "serial          -             -  not connected";
    expected[49] = "q quit  " + KEYS;
    EXPECT_EQ(renderTable(content(), {200, 50}, PLAIN), expected);
}

TEST(WatchTable, ScreenWithTheLinkLost)
{
    Lines expected(24);
    expected[0] = " 192.168.250.1:9600  no link, retry in 3 s  cycle -  0 requests/s  1 error      ";
    expected[1] = "TAG         VALUE  UNIT CHANGED  QUALITY        COURSE";
    expected[2] = "level         512  mm      12 s  last known     ▁█·";
    expected[3] = "set_point   500.0  mm     3 min  last known     ▁▁";
    expected[4] = "pump            1             -  refused        ·▁█";
    expected[5] = "serial          -             -  not connected";
    expected[22] = "link to 192.168.250.1:9600 lost: no reply in time, 3 times in a row, retrying i~";
    expected[23] = "q quit  " + KEYS;
    EXPECT_EQ(renderTable(lostContent(), {80, 24}, PLAIN), expected);
}

TEST(WatchTable, ColoursOfAGoodLink)
{
    const Lines lines = renderTable(content(), {80, 24}, COLOUR);
    EXPECT_EQ(lines[0],
              "\033[7m 192.168.250.1:9600  online  cycle 12.5 ms  80 requests/s  0 errors    08:15:30 \033[0m");
    EXPECT_EQ(lines[1], "\033[1mTAG         VALUE  UNIT CHANGED  QUALITY        COURSE\033[0m");
    EXPECT_EQ(lines[2], "level         \033[1;7m512*\033[0m mm       0 s  \033[32mgood         \033[0m  ▁▂▃▄▅▆▇█");
    EXPECT_EQ(lines[3], "set_point   \033[2m500.0 \033[0m mm     3 min  \033[36mwrite pending\033[0m  ▁▁");
    EXPECT_EQ(lines[4], "pump            1             -  \033[32mgood         \033[0m  ·▁█");
    EXPECT_EQ(lines[5], "serial          \033[2m- \033[0m            -  \033[31mnot connected\033[0m  ");
}

TEST(WatchTable, ColoursOfALostLink)
{
    const Lines lines = renderTable(lostContent(), {80, 24}, COLOUR);
    EXPECT_EQ(lines[0].substr(0, 11), "\033[1;37;41m ");
    EXPECT_EQ(lines[2], "level         \033[2m512 \033[0m mm      12 s  \033[33mlast known   \033[0m  ▁█·");
    EXPECT_EQ(lines[4], "pump            \033[2m1 \033[0m            -  \033[31mrefused      \033[0m  ·▁█");
}

TEST(WatchTable, ARestoredLinkLooksAsBefore)
{
    EXPECT_NE(renderTable(lostContent(), {80, 24}, COLOUR), renderTable(content(), {80, 24}, COLOUR));
    TableContent restored = lostContent();
    restored.link   = "online";
    restored.isUp   = true;
    restored.rows[0].quality = Quality::GOOD;
    const Lines lines = renderTable(restored, {80, 24}, COLOUR);
    EXPECT_EQ(lines[0].substr(0, 5), "\033[7m ");
    EXPECT_EQ(lines[2], "level         512  mm      12 s  \033[32mgood         \033[0m  ▁█·");
}

TEST(WatchTable, NoLineIsWiderThanTheScreen)
{
    TableContent wide = content();
    wide.rows[0].name  = std::string(100, 'n');
    wide.rows[1].name  = "水位水位水位水位水位水位水位水位";
    wide.rows[0].value = std::string(100, '7');
    wide.rows[0].unit  = std::string(100, 'u');
    wide.rows[2].fate  = "unconfirmed";
    wide.rows[2].isSelected = true;
    wide.rows[3].heading = std::string(100, 'h');
    wide.rows[0].minimum = wide.rows[0].maximum = "-1234567890123";
    wide.messages      = {std::string(300, 'm'), "水" + std::string(300, 'm')};
    wide.mode = wide.remark = wide.input = "水" + std::string(300, 'm') + "位";
    for (std::size_t columns = 1; columns <= 210; ++columns) {
        for (const ScreenStyle style : {PLAIN, COLOUR, ASCII}) {
            const Lines lines = renderTable(wide, {columns, 24}, style);
            ASSERT_EQ(lines.size(), 24u);
            for (const std::string &line : lines)
                ASSERT_LE(screenWidth(line), columns) << columns << ": " << line;
        }
    }
}

TEST(WatchTable, NoMoreLinesThanTheScreenHas)
{
    for (std::size_t rows = 1; rows <= 10; ++rows)
        EXPECT_EQ(renderTable(manyRows(30), {80, rows}, PLAIN).size(), rows);
}

// Behind a name there are 37 columns: 1 + 7 + 2 of the value, 5 of the unit, 9 of the age and 13 of the quality.
TEST(WatchTable, LongNamesTakeTheRoomThatThereIs)
{
    TableContent named = content();
    named.rows[0].name = std::string(43, 'n');
    EXPECT_EQ(renderTable(named, {80, 24}, PLAIN)[2], std::string(43, 'n') + "     512* mm       0 s  good");
    EXPECT_EQ(renderTable(named, {79, 24}, PLAIN)[2], std::string(41, 'n') + "~     512* mm       0 s  good");
    EXPECT_EQ(renderTable(named, {90, 24}, PLAIN)[2],
              std::string(43, 'n') + "     512* mm       0 s  good           ▁▂▃▄▅▆▇█");
}

TEST(WatchTable, On40ColumnsTheQualityStays)
{
    Lines expected(10);
    expected[0] = " 192.168.2~  no link, retry in 3 s  cyc~";
    expected[1] = "TAG         VALUE  QUALITY";
    expected[2] = "level         512  last known";
    expected[3] = "set_point   500.0  last known";
    expected[4] = "pump            1  refused";
    expected[5] = "serial          -  not connected";
    expected[8] = "link to 192.168.250.1:9600 lost: no rep~";
    expected[9] = "q quit  / filter  s sort  p pause  r ne~";
    EXPECT_EQ(renderTable(lostContent(), {40, 10}, PLAIN), expected);
}

TableContent withExtremes()
{
    TableContent known = content();
    known.rows[0].minimum = "-3";
    known.rows[0].maximum = "1024";
    return known;
}

// 46 columns without, 17 for both: 2 * 7, a space between and two behind.
TEST(WatchTable, MinimumAndMaximumWhereThereIsRoom)
{
    Lines lines = renderTable(withExtremes(), {80, 24}, PLAIN);
    EXPECT_EQ(lines[1], "TAG         VALUE  UNIT     MIN     MAX  CHANGED  QUALITY        COURSE");
    EXPECT_EQ(lines[2], "level         512* mm        -3    1024      0 s  good           ▁▂▃▄▅▆▇█");
    EXPECT_EQ(lines[4], "pump            1                              -  good           ·▁█");
    lines = renderTable(withExtremes(), {63, 24}, PLAIN);
    EXPECT_EQ(lines[1], "TAG         VALUE  UNIT     MIN     MAX  CHANGED  QUALITY");
    lines = renderTable(withExtremes(), {62, 24}, PLAIN);
    EXPECT_EQ(lines[1], "TAG         VALUE  UNIT CHANGED  QUALITY        COURSE");
}

TEST(WatchTable, TheFateOfAnEditHasAColumn)
{
    TableContent edited = content();
    edited.rows[1].fate = "unconfirmed";
    const Lines lines = renderTable(edited, {80, 24}, PLAIN);
    EXPECT_EQ(lines[1], "TAG         VALUE  UNIT CHANGED  QUALITY        WRITE        COURSE");
    EXPECT_EQ(lines[3], "set_point   500.0  mm     3 min  write pending  unconfirmed  ▁▁");
    EXPECT_EQ(renderTable(edited, {45, 24}, PLAIN)[3], "set_point   500.0  write pending  unconfirmed");
}

TEST(WatchTable, TheSelectedRowHasAMarkAndIsInReverse)
{
    TableContent selected = content();
    selected.rows[2].isSelected = true;
    EXPECT_EQ(renderTable(selected, {80, 24}, PLAIN)[4], "pump     >      1             -  good           ·▁█");
    EXPECT_EQ(renderTable(selected, {80, 24}, PLAIN)[2].substr(0, 10), "level     ");
    EXPECT_EQ(renderTable(selected, {80, 24}, COLOUR)[4].substr(0, 22), "\033[7mpump     \033[0m>    ");
}

TEST(WatchTable, WhatIsPausedHasNoneOfTheLooksOfWhatIsLive)
{
    TableContent paused = content();
    paused.isPaused = true;
    paused.mode     = "PAUSED: 12 s old, polling goes on";
    paused.rows[0].isNew = false;
    Lines lines = renderTable(paused, {80, 24}, PLAIN);
    EXPECT_EQ(lines[1], " PAUSED: 12 s old, polling goes on");
    EXPECT_EQ(lines[2], "TAG         VALUE  UNIT CHANGED  QUALITY THEN   COURSE");
    EXPECT_EQ(lines[3], "level         512  mm       0 s  good           ▁▂▃▄▅▆▇█");
    EXPECT_EQ(lines.size(), 24u);
    lines = renderTable(paused, {80, 24}, COLOUR);
    EXPECT_EQ(lines[1], "\033[1;7m PAUSED: 12 s old, polling goes on\033[0m");
    EXPECT_EQ(lines[3], "\033[2mlevel         512  mm       0 s  good           ▁▂▃▄▅▆▇█\033[0m");
}

TEST(WatchTable, ALineThatIsTypedShowsItsEnd)
{
    TableContent typed = content();
    typed.messages = {"the first", "the second"};
    typed.input    = "level: 512 mm -> 75_";
    typed.remark   = "a value from 0 to 100";
    Lines lines = renderTable(typed, {80, 24}, PLAIN);
    EXPECT_EQ(Lines(lines.begin() + 20, lines.end()), (Lines{"", "the first", typed.remark, typed.input}));
    EXPECT_EQ(renderTable(typed, {20, 24}, PLAIN)[23], "level: 512 mm -> 75_");
    EXPECT_EQ(renderTable(typed, {19, 24}, PLAIN)[23], "~vel: 512 mm -> 75_");
    typed.input = "/水位水位_";
    EXPECT_EQ(renderTable(typed, {9, 24}, PLAIN)[23], "~位水位_");
    EXPECT_EQ(renderTable(typed, {8, 24}, PLAIN)[23], "~位水位_");
    EXPECT_EQ(renderTable(typed, {7, 24}, PLAIN)[23], "~水位_");
}

TEST(WatchTable, ANoticeIsInPlaceOfTheKeys)
{
    TableContent noted = content();
    noted.notice = "nothing was written: not confirmed";
    EXPECT_EQ(renderTable(noted, {80, 24}, PLAIN)[23], "nothing was written: not confirmed");
}

// The course goes first, then the unit, then the age; then names and values are cut, and then the quality.
TEST(WatchTable, ColumnsGoOneByOne)
{
    const auto title = [](std::size_t columns) { return renderTable(content(), {columns, 24}, PLAIN)[1]; };
    EXPECT_EQ(title(56), "TAG         VALUE  UNIT CHANGED  QUALITY        COURSE");
    EXPECT_EQ(title(55), "TAG         VALUE  UNIT CHANGED  QUALITY");
    EXPECT_EQ(title(46), "TAG         VALUE  UNIT CHANGED  QUALITY");
    EXPECT_EQ(title(45), "TAG         VALUE  CHANGED  QUALITY");
    EXPECT_EQ(title(41), "TAG         VALUE  CHANGED  QUALITY");
    EXPECT_EQ(title(40), "TAG         VALUE  QUALITY");
    const auto row = [](std::size_t columns) { return renderTable(content(), {columns, 24}, PLAIN)[3]; };
    EXPECT_EQ(row(32), "set_point   500.0  write pending");
    EXPECT_EQ(row(31), "set_poi~   500.0  write pending");
    EXPECT_EQ(row(26), "se~   500.0  write pending");
    EXPECT_EQ(row(25), "se~   500.0  write pendi~");
    EXPECT_EQ(row(17), "se~   500.0  wri~");
}

TEST(WatchTable, TheBitsOfAWordHaveRoom)
{
    TableContent bits = content();
    bits.rows[0].value = "0000_0000_0000_0001";
    EXPECT_EQ(renderTable(bits, {80, 24}, PLAIN)[2].substr(0, 30), "level     0000_0000_0000_0001*");
    bits.rows[0].value = "\"of twenty letters..\"";
    EXPECT_EQ(renderTable(bits, {80, 24}, PLAIN)[2].substr(0, 33), "level     \"of twenty letters..\"* ");
    EXPECT_EQ(renderTable(bits, {58, 24}, PLAIN)[2].substr(0, 31), "level     \"of twenty letters~* ");
}

TEST(WatchTable, NamesInOtherAlphabetsKeepTheColumns)
{
    TableContent named = content();
    named.rows[2].name = "Füllst";
    EXPECT_EQ(renderTable(named, {80, 24}, PLAIN)[4], "Füllst          1             -  good           ·▁█");
    named.rows[2].name = "水位";
    EXPECT_EQ(renderTable(named, {80, 24}, PLAIN)[4], "水位            1             -  good           ·▁█");
}

// The fourth character, of two columns, would not leave room for the ~.
TEST(WatchTable, WideCharactersAreClippedBetweenColumns)
{
    TableContent named = content();
    named.rows[2].name = "水位水位水";
    EXPECT_EQ(renderTable(named, {31, 24}, PLAIN)[4], "水位水~        1  good");
}

TEST(WatchTable, BytesThatAreNoTextKeepTheColumns)
{
    TableContent named = content();
    named.rows[2].name = "a\xFFz";
    EXPECT_EQ(renderTable(named, {80, 24}, PLAIN)[4], "a?z             1             -  good           ·▁█");
}

TEST(WatchTable, TheLatestMessagesAreAtTheBottom)
{
    TableContent said = content();
    said.messages = {"the first", "the second"};
    const Lines lines = renderTable(said, {80, 24}, PLAIN);
    EXPECT_EQ(Lines(lines.begin() + 19, lines.end()), (Lines{"", "", "the first", "the second", "q quit  " + KEYS}));
    said.messages = {"the first", "the second", "the third", "the fourth"};
    const Lines more = renderTable(said, {80, 16}, PLAIN);
    EXPECT_EQ(Lines(more.begin() + 11, more.end()), (Lines{"", "the second", "the third", "the fourth", "q quit  " + KEYS}));
    const Lines low = renderTable(said, {80, 15}, PLAIN);
    EXPECT_EQ(Lines(low.begin() + 12, low.end()), (Lines{"", "the fourth", "q quit  " + KEYS}));
}

TEST(WatchTable, ControlCharactersDoNotReachTheTerminal)
{
    TableContent bad = content();
    bad.messages = {"a\033[2Jb\x7f"};
    EXPECT_EQ(renderTable(bad, {80, 24}, PLAIN)[22], "a?[2Jb?");
}

TEST(WatchTable, Scrolls)
{
    TableContent many = manyRows(25);
    EXPECT_EQ(visibleRows({80, 24}), 18u);
    many.first = 7;
    const Lines lines = renderTable(many, {80, 24}, PLAIN);
    EXPECT_EQ(lines[2].substr(0, 3), "t7 ");
    EXPECT_EQ(lines[19].substr(0, 4), "t24 ");
    EXPECT_EQ(lines[20], "");
    EXPECT_EQ(lines[23], "q quit  8-25 of 25  " + KEYS);
}

TEST(WatchTable, SaysNothingOfScrollingIfAllFits)
{
    EXPECT_EQ(renderTable(manyRows(18), {80, 24}, PLAIN)[23], "q quit  " + KEYS);
    EXPECT_EQ(renderTable(manyRows(19), {80, 24}, PLAIN)[23], "q quit  1-18 of 19  " + KEYS);
}

// Of 18 lines two are headings.
TEST(WatchTable, HeadingsAreNotCounted)
{
    TableContent many = manyRows(19);
    for (const std::ptrdiff_t at : {12, 0}) {
        TableRow heading = {};
        heading.heading = "Press";
        many.rows.insert(many.rows.begin() + at, heading);
    }
    const Lines lines = renderTable(many, {80, 24}, PLAIN);
    EXPECT_EQ(lines[2], "-- Press --");
    EXPECT_EQ(lines[15], "-- Press --");
    EXPECT_EQ(lines[23].substr(0, 20), "q quit  1-16 of 19  ");
    EXPECT_EQ(renderTable(many, {80, 24}, COLOUR)[2], "\033[1m-- Press --\033[0m");
}

TEST(WatchTable, RowsThatFit)
{
    EXPECT_EQ(visibleRows({80, 16}), 10u);
    EXPECT_EQ(visibleRows({80, 15}), 11u);
    EXPECT_EQ(visibleRows({80, 5}), 1u);
    EXPECT_EQ(visibleRows({80, 4}), 0u);
    EXPECT_EQ(visibleRows({80, 1}), 0u);
    EXPECT_EQ(visibleRows({80, 24}, true), 17u);
    EXPECT_EQ(visibleRows({80, 5}, true), 0u);
}

TEST(WatchTable, TheLastRowStaysAtTheBottom)
{
    EXPECT_EQ(lastTop(30, 18), 12u);
    EXPECT_EQ(lastTop(18, 18), 0u);
    EXPECT_EQ(lastTop(5, 18), 0u);
    EXPECT_EQ(lastTop(30, 0), 30u);
}

TEST(CourseText, SpansFromTheLeastToTheGreatest)
{
    EXPECT_EQ(courseText({-4, 4}, 8, true), "▁█");
    EXPECT_EQ(courseText({0, 50, 100}, 8, true), "▁▅█");
    EXPECT_EQ(courseText({0, 12, 13, 100}, 8, true), "▁▁▂█");
}

TEST(CourseText, AConstantIsALine)
{
    EXPECT_EQ(courseText({7, 7, 7}, 8, true), "▁▁▁");
}

TEST(CourseText, ShowsTheLatestAndScalesByThem)
{
    EXPECT_EQ(courseText({1000, 1, 2}, 2, true), "▁█");
    EXPECT_EQ(courseText({1000, 1, 2}, 3, true), "█▁▁");
    EXPECT_EQ(courseText({}, 8, true), "");
}

TEST(CourseText, MarksWhatIsNotKnown)
{
    EXPECT_EQ(courseText({UNKNOWN, 1, NO_NUMBER}, 8, true), "·▁ ");
    EXPECT_EQ(courseText({UNKNOWN, 1, NO_NUMBER}, 8, false), "?_ ");
}

TEST(CourseText, AsciiLevels)
{
    EXPECT_EQ(courseText({0, 1, 2, 3, 4, 5, 6, 7}, 8, false), "_.,-~=^#");
}

TEST(CourseText, TheLargestNumbersDoNotOverflow)
{
    const double huge = std::numeric_limits<double>::max();
    EXPECT_EQ(courseText({-huge, 0, huge}, 8, true), "▁▅█");
}

TEST(ScreenWidth, CountsCharactersAndNoAttributes)
{
    EXPECT_EQ(screenWidth(""), 0u);
    EXPECT_EQ(screenWidth("ab"), 2u);
    EXPECT_EQ(screenWidth("▁█"), 2u);
    EXPECT_EQ(screenWidth("\033[1;7mab\033[0m c"), 4u);
}

} // namespace
