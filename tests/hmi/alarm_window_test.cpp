#include "hmi_fixture.h"

#include "dialogs/table.h"

// Alarms as an operator sees them: at the value, in the banner, in the list, and acknowledged by a touch.

static const char PROJECT[] = R"([tags]
Level = { type = "DM", address = 0 }
Door  = { type = "CIO_bit", address = "0.0" }
[alarms.LevelHigh]
tag = "Level"
high = 90
hysteresis = 10
text = "Level is high"
priority = 1
[alarms.DoorOpen]
tag = "Door"
value = 1
text = "Door is open"
priority = 3
[screens.main]
elements = [
  { type = "number", tag = "Level", at = [1, 1] },
  { type = "alarms", at = [2, 1], size = [4, 3] },
]
)";

class Alarms : public HmiTest {
protected:
    void SetUp() override
    {
        openProject(PROJECT);
        ASSERT_TRUE(untilOnline());
        ASSERT_TRUE(untilSpoken("Level", "0, good"));
    }

    bool untilBanner(const std::string &part)
    {
        const auto said = [&] { return window->alarmBanner().spoken().toStdString(); };
        const bool is = until([&] { return said().find(part) != std::string::npos; });
        EXPECT_TRUE(is) << said();
        return is;
    }

    // A row of the open list: its cells with | between them, without the two of times of day.
    std::string row(int index) const
    {
        const auto *table = overlay()->findChild<Table *>();
        std::string text;
        for (const int column : {0, 1, 2, 5})
            text += (text.empty() ? "" : "|") + (table->item(index, column) ? table->item(index, column)->text().toStdString() : "-");
        return text;
    }

    int rows() const { return overlay()->findChild<Table *>()->rowCount(); }
};

TEST_F(Alarms, ComesAtTheValueInTheBannerAndInTheList)
{
    EXPECT_TRUE(untilBanner("no alarm"));
    plc.write("DM:0", "90");
    EXPECT_TRUE(untilBanner("priority 1, urgent: Level is high, active, not acknowledged"));
    EXPECT_TRUE(untilSpoken("Level", "alarm of priority 1, urgent"));
    EXPECT_TRUE(untilSpoken("Alarms", "Level is high"));
    EXPECT_EQ(event("came: Level is high").tag, "LevelHigh");
}

TEST_F(Alarms, GoesBehindItsHysteresisAndStaysUntilItIsAcknowledged)
{
    plc.write("DM:0", "95");
    ASSERT_TRUE(untilBanner("active"));
    plc.write("DM:0", "80");
    ASSERT_TRUE(untilSpoken("Level", "80, good"));
    EXPECT_TRUE(untilBanner("active")); // 80 is not below 90 - 10
    plc.write("DM:0", "79");
    EXPECT_TRUE(untilBanner("Level is high, gone, not acknowledged"));
    QTest::mouseClick(&window->alarmBanner(), Qt::LeftButton);
    EXPECT_EQ(row(0), "urgent|Level is high|gone, not acknowledged|1");
    press("Acknowledge all");
    EXPECT_EQ(rows(), 0);
    EXPECT_TRUE(untilWritten("no alarm is known to be active"));
    EXPECT_TRUE(untilBanner("no alarm"));
    EXPECT_TRUE(untilEvent("acknowledged: Level is high"));
}

TEST_F(Alarms, OneIsAcknowledgedByItsRow)
{
    plc.write("DM:0", "95");
    plc.write("CIO_bit:0.0", "1");
    ASSERT_TRUE(untilBanner("Door is open"));
    ASSERT_TRUE(untilBanner("Level is high"));
    click("Alarms");
    EXPECT_EQ(row(0), "urgent|Level is high|active, not acknowledged|1"); // the most urgent first
    EXPECT_EQ(row(1), "notice|Door is open|active, not acknowledged|1");
    overlay()->findChild<Table *>()->setCurrentCell(0, 0);
    QTest::mouseClick(button("Acknowledge"), Qt::LeftButton);
    EXPECT_EQ(row(0), "notice|Door is open|active, not acknowledged|1"); // what nobody has seen comes first
    EXPECT_EQ(row(1), "urgent|Level is high|active, acknowledged|1");
}

TEST_F(Alarms, IsUnknownWithoutTheLinkAndNeverGone)
{
    plc.write("DM:0", "95");
    ASSERT_TRUE(untilBanner("active"));
    plc.tell("fault refuse");
    plc.tell("disconnect");
    EXPECT_TRUE(untilBanner("Level is high, unknown, was active, not acknowledged"));
    EXPECT_TRUE(untilBanner("2 alarms unknown")); // the door, too
    QTest::mouseClick(&window->alarmBanner(), Qt::LeftButton);
    EXPECT_TRUE(untilWritten("2 cannot be judged, since their values are not good"));
    plc.tell("fault refuse off");
    EXPECT_TRUE(untilBanner("Level is high, active, not acknowledged"));
}
