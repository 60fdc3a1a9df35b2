#include "screens_fixture.h"

namespace {

class AlarmReading : public ScreensFixture {
protected:
    // What is wrong with an alarm, whose keys begin in line 2.
    Lines readAlarm(const std::string &keys) { return read("[alarms.A]\n" + keys); }

    const AlarmRule &alarm(std::size_t index = 0) const { return book.alarms.at(index); }
};

} // namespace

TEST_F(AlarmReading, EveryKey)
{
    EXPECT_EQ(read("[alarms.LevelHigh]\ntag = \"Level\"\nhigh = 90.5\nhysteresis = 2\ndelay_s = 1.5\n"
                   "text = \"Level is high\"\npriority = 1\n"
                   "[alarms.SpeedLow]\ntag = \"Speeds[2]\"\nlow = -3\ntext = \"slow\"\n"
                   "[alarms.\"Pump off\"]\ntag = \"Pump\"\nvalue = 0\ntext = \"off\"\npriority = 3\n"),
              Lines());
    ASSERT_EQ(book.alarms.size(), 3u);
    EXPECT_EQ(alarm().name, "LevelHigh");
    EXPECT_EQ(alarm().value.tag, "Level");
    EXPECT_EQ(alarm().condition, AlarmRule::Condition::HIGH);
    EXPECT_EQ(alarm().limit, 90.5);
    EXPECT_EQ(alarm().hysteresis, 2);
    EXPECT_EQ(alarm().delay, std::chrono::milliseconds(1500));
    EXPECT_EQ(alarm().text, "Level is high");
    EXPECT_EQ(alarm().priority, 1);
    EXPECT_EQ(alarm(1).value.tag, "Speeds");
    EXPECT_EQ(alarm(1).value.index, 2u);
    EXPECT_EQ(alarm(1).condition, AlarmRule::Condition::LOW);
    EXPECT_EQ(alarm(1).limit, -3);
    EXPECT_EQ(alarm(1).hysteresis, 0);
    EXPECT_EQ(alarm(1).delay, std::chrono::milliseconds(0));
    EXPECT_EQ(alarm(1).priority, 2);
    EXPECT_EQ(alarm(2).name, "Pump off");
    EXPECT_EQ(alarm(2).condition, AlarmRule::Condition::VALUE);
    EXPECT_EQ(alarm(2).limit, 0);
    EXPECT_EQ(alarm(2).priority, 3);
}

TEST_F(AlarmReading, TheEndsOfTheRanges)
{
    EXPECT_EQ(readAlarm("tag = \"Mode\"\nvalue = 7\ndelay_s = 86400\ntext = \"t\"\n"), Lines());
    EXPECT_EQ(alarm().delay, std::chrono::hours(24));
    EXPECT_EQ(readAlarm("tag = \"Mode\"\nlow = 0\nhysteresis = 0\ndelay_s = 0\ntext = \"t\"\n"), Lines());
}

TEST_F(AlarmReading, NeedsATagAConditionAndAText)
{
    EXPECT_EQ(readAlarm(""), (Lines{"p.toml:1:1: the condition is missing; add one of high, low and value, such as high = 90",
                                    "p.toml:1:1: 'tag' is missing; add it, such as tag = \"Level\"",
                                    "p.toml:1:1: 'text' is missing; add it, such as text = \"Level is high\""}));
    EXPECT_EQ(readAlarm("tag = \"Level\"\nhigh = 1\ntext = \"\"\n"), (Lines{"p.toml:4:8: 'text' is empty; write a text"}));
}

TEST_F(AlarmReading, HasOneCondition)
{
    EXPECT_EQ(readAlarm("tag = \"Level\"\nhigh = 1\nlow = 0\nvalue = 3\ntext = \"t\"\n"),
              (Lines{"p.toml:4:7: 'low' is a second condition; make an alarm of its own of it",
                     "p.toml:5:9: 'value' is a second condition; make an alarm of its own of it"}));
}

TEST_F(AlarmReading, ALimitNeedsANumberAndAValueABitToo)
{
    EXPECT_EQ(readAlarm("tag = \"Pump\"\nhigh = 1\ntext = \"t\"\n"),
              (Lines{"p.toml:2:7: 'Pump' is a bit, and an alarm with a limit needs a number; name another tag"}));
    EXPECT_EQ(readAlarm("tag = \"Product\"\nvalue = 1\ntext = \"t\"\n"),
              (Lines{"p.toml:2:7: 'Product' is a text, and an alarm needs a bit or a number; name another tag"}));
    EXPECT_EQ(readAlarm("tag = \"Pump\"\nvalue = 2\ntext = \"t\"\n"),
              (Lines{"p.toml:3:9: 'Pump' is a bit, and never 2; write 0 or 1"}));
    EXPECT_EQ(readAlarm("tag = \"Level\"\nlow = \"0\"\ntext = \"t\"\n"),
              (Lines{"p.toml:3:7: 'low' is not a number; write one such as 0.1, without quotes"}));
}

TEST_F(AlarmReading, KeepsTheRangesOfItsNumbers)
{
    EXPECT_EQ(readAlarm("tag = \"Level\"\nhigh = 1\nhysteresis = -0.1\ntext = \"t\"\n"),
              (Lines{"p.toml:4:14: 'hysteresis' is below 0; write how far the value goes back before the alarm goes"}));
    EXPECT_EQ(readAlarm("tag = \"Level\"\nvalue = 1\nhysteresis = 1\ntext = \"t\"\n"),
              (Lines{"p.toml:4:14: only an alarm of high or low has 'hysteresis'; remove it"}));
    for (const char *delay : {"-0.001", "86400.001", "1e300"})
        EXPECT_EQ(readAlarm(std::string("tag = \"Level\"\nhigh = 1\ntext = \"t\"\ndelay_s = ") + delay + "\n"),
                  (Lines{"p.toml:5:11: 'delay_s' is not a number of seconds from 0 to 86400"}));
    for (const char *priority : {"0", "4", "1.0", "9223372036854775807"})
        EXPECT_EQ(readAlarm(std::string("tag = \"Level\"\nhigh = 1\ntext = \"t\"\npriority = ") + priority + "\n"),
                  (Lines{"p.toml:5:12: 'priority' is not a whole number from 1 to 3"}));
}

TEST_F(AlarmReading, RefusesOtherKeysAndWhatIsNoTable)
{
    EXPECT_EQ(readAlarm("tag = \"Level\"\nhigh = 1\ntext = \"t\"\nhihg = 2\n"),
              (Lines{"p.toml:5:1: 'hihg' is not known here; known are high, low, value, tag, hysteresis, delay_s, text, "
                     "priority"}));
    EXPECT_EQ(read("[alarms]\nLevel = 5\n"),
              (Lines{"p.toml:2:1: the alarm 'Level' is not a table; begin it with a line [alarms.Level]"}));
}
