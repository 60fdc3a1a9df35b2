#include "hmi_fixture.h"

// Writes as a user makes them: two touches, limits, rights, locks, and what is said of their fate.

static const char PROJECT[] = R"([tags]
SetPoint = { type = "DM", address = 3, scale = 0.1, decimals = 1, unit = "%", min = 10, max = 90 }
Mode     = { type = "DM", address = 5 }
Valve    = { type = "CIO_bit", address = "0.1" }
Jog      = { type = "CIO_bit", address = "0.2" }
Start    = { type = "DM", address = 6 }
[screens.main]
elements = [
  { type = "set-point", tag = "SetPoint", at = [1, 1] },
  { type = "choice", tag = "Mode", at = [2, 1], choices = [{ value = 0, text = "off" }, { value = 2, text = "auto" }] },
  { type = "button", tag = "Valve", at = [3, 1], mode = "toggle", text = "Open", text_on = "Close" },
  { type = "button", tag = "Jog", at = [4, 1], mode = "momentary", text = "Jog" },
  { type = "button", tag = "Start", at = [5, 1], value = 7, text = "Start" },
]
)";

class Writes : public HmiTest {
protected:
    Writes() : HmiTest({"--refuse-writes-in-run=2101"}) {}

    void SetUp() override
    {
        plc.tell("mode monitor");
        plc.write("DM:3", "500");
        openPanel();
    }

    void openPanel()
    {
        openProject(PROJECT);
        ASSERT_TRUE(untilOnline());
        ASSERT_TRUE(untilSpoken("SetPoint", "50.0 %, good"));
    }

    void typeSetPoint(const std::string &digits)
    {
        click("SetPoint");
        ASSERT_NE(overlay(), nullptr);
        QTest::keyClicks(overlay(), QString::fromStdString(digits));
    }

    bool untilPlcHolds(const std::string &item, const std::string &value)
    {
        return until([&] { return plc.read(item) == value; });
    }
};

TEST_F(Writes, SetPointTakesTwoTouchesAndTheQuestionNamesBothValues)
{
    click("SetPoint");
    for (const char *key : {"7", "2", ".", "5"})
        press(key);
    press("Set");
    EXPECT_EQ(plc.read("DM:3"), "500");
    EXPECT_TRUE(untilWritten("SetPoint: 50.0 % \u2192 72.5 %"));
    press("Write 72.5 %");
    EXPECT_TRUE(untilPlcHolds("DM:3", "725"));
    EXPECT_TRUE(untilSpoken("SetPoint", "72.5 %, good"));
    EXPECT_TRUE(untilSpoken("SetPoint", "done: SetPoint = 72.5 %"));
    const JournalEvent written = event("done: SetPoint");
    EXPECT_EQ(written.oldText, "50.0 %");
    EXPECT_EQ(written.newText, "72.5 %");
    EXPECT_EQ(written.tag, "SetPoint");
}

TEST_F(Writes, CancelWritesNothing)
{
    typeSetPoint("72.5");
    press("Set");
    press("Cancel");
    EXPECT_EQ(overlay(), nullptr);
    QTest::qWait(100);
    EXPECT_EQ(plc.read("DM:3"), "500");
}

TEST_F(Writes, KeyboardAloneSetsASetPoint)
{
    element("SetPoint")->setFocus();
    QTest::keyClick(element("SetPoint"), Qt::Key_Return);
    QTest::keyClicks(overlay(), "12");
    QTest::keyClick(overlay(), Qt::Key_Return);
    ASSERT_TRUE(untilWritten("\u2192 12 %"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), button("Write"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(untilPlcHolds("DM:3", "120"));
    EXPECT_EQ(QApplication::focusWidget(), element("SetPoint")); // where the keyboard was
}

TEST_F(Writes, NumberOutsideOfTheLimitsCannotBeSet)
{
    typeSetPoint("90.1");
    EXPECT_FALSE(button("Set")->isEnabled());
    EXPECT_TRUE(untilWritten("90.1 is outside of the limits: use 10 to 90 %"));
    QTest::keyClick(overlay(), Qt::Key_Return);
    EXPECT_NE(written().find("outside"), std::string::npos); // still open
    QTest::keyClick(overlay(), Qt::Key_Backspace);
    QTest::keyClick(overlay(), Qt::Key_Backspace);
    EXPECT_TRUE(button("Set")->isEnabled()); // 90
}

TEST_F(Writes, ChoiceAsksForTheChosenValue)
{
    click("Mode");
    press("auto");
    EXPECT_TRUE(untilWritten("Mode: 0 \u2192 auto (2)"));
    press("Write");
    EXPECT_TRUE(untilPlcHolds("DM:5", "2"));
    EXPECT_TRUE(untilSpoken("Mode", "auto: 2, good"));
}

TEST_F(Writes, ToggleWritesTheOtherValueAndItsCaptionSaysWhatItWillDo)
{
    EXPECT_TRUE(untilSpoken("Valve", "Open: 0, good"));
    click("Valve");
    press("Write 1");
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.1", "1"));
    EXPECT_TRUE(untilSpoken("Valve", "Close: 1, good"));
    click("Valve");
    press("Write 0");
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.1", "0"));
}

TEST_F(Writes, SetButtonWritesItsValue)
{
    click("Start");
    EXPECT_TRUE(untilWritten("Start: 0 \u2192 7"));
    press("Write 7");
    EXPECT_TRUE(untilPlcHolds("DM:6", "7"));
}

TEST_F(Writes, MomentaryButtonIsOneWhileItIsHeldAndItsReleaseIsReported)
{
    click("Jog");
    EXPECT_EQ(plc.read("CIO_bit:0.2"), "0"); // the first touch only asks
    QTest::mousePress(button("Hold"), Qt::LeftButton);
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.2", "1"));
    ASSERT_TRUE(untilEvent("done: Jog = 1"));
    QTest::mouseRelease(button("Hold"), Qt::LeftButton);
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.2", "0"));
    EXPECT_TRUE(untilEvent("done: Jog = 0"));
}

// The same by fingers, of which the window system makes what a mouse would do.
TEST_F(Writes, FingersTouchControlsAndHoldButtons)
{
    QTouchDevice *fingers = QTest::createTouchDevice();
    const auto down = [&](QWidget *widget) { QTest::touchEvent(window.get(), fingers).press(0, widget->rect().center(), widget); };
    const auto up   = [&](QWidget *widget) { QTest::touchEvent(window.get(), fingers).release(0, widget->rect().center(), widget); };
    Element *jog = element("Jog");
    down(jog);
    up(jog);
    ASSERT_TRUE(until([&] { return overlay() != nullptr; }));
    QPushButton *hold = button("Hold");
    down(hold);
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.2", "1"));
    up(hold);
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.2", "0"));
    press("Cancel");
    down(element("SetPoint"));
    up(element("SetPoint"));
    EXPECT_TRUE(until([&] { return overlay() != nullptr; }));
}

TEST_F(Writes, MomentaryButtonIsReleasedWhereTheFingerSlidesAway)
{
    click("Jog");
    QTest::mousePress(button("Hold"), Qt::LeftButton);
    ASSERT_TRUE(untilPlcHolds("CIO_bit:0.2", "1"));
    QMouseEvent away(QEvent::MouseMove, QPointF(-50, 5), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(button("Hold"), &away);
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.2", "0"));
}

TEST_F(Writes, MomentaryButtonIsReleasedWithItsWindowItsFocusAndItsQuestion)
{
    const std::function<void()> ends[] = {
        [&] { button("Cancel")->setFocus(); },
        [&] {
            QEvent gone(QEvent::WindowDeactivate);
            QApplication::sendEvent(button("Hold"), &gone);
        },
        [&] { overlay()->close(); },
        [&] {
            QEvent cancelled(QEvent::TouchCancel);
            QApplication::sendEvent(button("Hold"), &cancelled);
        },
    };
    for (const auto &end : ends) {
        click("Jog");
        button("Hold")->setFocus();
        QTest::keyPress(button("Hold"), Qt::Key_Space);
        ASSERT_TRUE(untilPlcHolds("CIO_bit:0.2", "1"));
        end();
        ASSERT_TRUE(untilPlcHolds("CIO_bit:0.2", "0"));
        if (overlay())
            overlay()->close();
        QTest::qWait(1); // what was closed is deleted
    }
}

TEST_F(Writes, MomentaryButtonIsReleasedWithTheLinkAndTheReleaseComesWithTheNextOne)
{
    click("Jog");
    QTest::mousePress(button("Hold"), Qt::LeftButton);
    ASSERT_TRUE(untilEvent("done: Jog = 1"));
    plc.tell("fault refuse");
    plc.tell("disconnect");
    ASSERT_TRUE(until([&] { return !button("Hold")->isEnabled(); }));
    EXPECT_EQ(plc.read("CIO_bit:0.2"), "1"); // nobody can change that now, and nothing says so
    EXPECT_TRUE(untilSpoken("Jog", "write under way"));
    plc.tell("fault refuse off");
    EXPECT_TRUE(untilPlcHolds("CIO_bit:0.2", "0"));
    EXPECT_TRUE(untilEvent("done: Jog = 0"));
}

TEST_F(Writes, RefusedWriteIsToldAtTheElementAndInTheJournal)
{
    typeSetPoint("60");
    press("Set");
    plc.tell("mode run"); // in which this PLC refuses writes
    press("Write 60 %");
    EXPECT_TRUE(untilSpoken("SetPoint", "refused: SetPoint"));
    EXPECT_NE(event("refused: SetPoint").newText, "");
    EXPECT_EQ(plc.read("DM:3"), "500");
}

TEST_F(Writes, WriteOfUnknownFateIsCalledSo)
{
    intervalMs = 5000; // so that the write is what comes next
    openPanel();
    typeSetPoint("60");
    press("Set");
    plc.tell("fault refuse"); // no link comes back
    plc.tell("fault close");  // carried out, and no reply
    press("Write 60 %");
    EXPECT_TRUE(untilSpoken("SetPoint", "write under way"));
    ASSERT_TRUE(untilPlcHolds("DM:3", "600"));
    const std::vector<std::string> lines = panel->close();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines.front().substr(0, 22), "unconfirmed: SetPoint:") << lines.front();
    EXPECT_EQ(event("unconfirmed: SetPoint").newText, "60.0 %");
}

TEST_F(Writes, WithoutALinkAllControlsAreLockedAndSayWhy)
{
    typeSetPoint("60");
    press("Set"); // the question is open when the link goes
    plc.tell("fault refuse");
    plc.tell("disconnect");
    ASSERT_TRUE(until([&] { return !button("Write")->isEnabled(); }));
    EXPECT_TRUE(untilWritten("locked: no link"));
    press("Cancel");
    for (const char *label : {"SetPoint", "Mode", "Valve", "Jog", "Start"}) {
        EXPECT_TRUE(untilSpoken(label, "locked: no link"));
        click(label);
        EXPECT_EQ(overlay(), nullptr) << label;
    }
    for (const char *part : {"waiting since ", "nothing listens on TCP port", "next attempt in "})
        EXPECT_TRUE(until([&] { return window->banner().spoken().contains(part); })) << window->banner().spoken().toStdString();
    plc.tell("fault refuse off");
    EXPECT_TRUE(until([&] { return spoken("SetPoint").find("locked") == std::string::npos; }));
}
