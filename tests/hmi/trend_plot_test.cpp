#include "elements/trend_plot.h"

#include "elements/trend_legend.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QTouchDevice>
#include <QWheelEvent>

#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_scale_div.h>

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace {

const TrendTime MINUTE = 60000;

// 2026-03-01 08:15:30 UTC, which the store calls NOW.
const auto UTC = std::chrono::system_clock::from_time_t(1772352930);
const double UTC_MS = 1772352930000.0;
const TrendTime NOW = 100 * MINUTE;

class Trend : public testing::Test {
protected:
    Trend()
    {
        store_.add(0, 90 * MINUTE, 20, true);
        store_.add(0, 94 * MINUTE, 60, true);
        store_.add(1, 92 * MINUTE, -5, true);
        store_.add(1, 93 * MINUTE, 0, false);
        store_.add(1, 97 * MINUTE, 5, true);
        store_.advance(NOW);
        plot_.setTouchSize(40);
        plot_.resize(800, 480);
        plot_.show();
        plot_.refresh(NOW, UTC);
        QCoreApplication::processEvents();
        plot_.refresh(NOW, UTC);
    }

    QwtPlot &inner() { return *plot_.findChild<QwtPlot *>(); }
    QWidget &canvas() { return *inner().canvas(); }

    QPoint at(double part) { return {static_cast<int>(std::lround(part * canvas().width())), canvas().height() / 2}; }

    void wheel(double part, int units)
    {
        const QPointF place = at(part);
        QWheelEvent event(place, canvas().mapToGlobal(place.toPoint()), QPoint(), QPoint(0, units), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&canvas(), &event);
    }

    void drag(double from, double to)
    {
        QTest::mousePress(&canvas(), Qt::LeftButton, Qt::NoModifier, at(from));
        for (const double part : {(from + to) / 2, to}) {
            QMouseEvent event(QEvent::MouseMove, at(part), canvas().mapToGlobal(at(part)), Qt::NoButton, Qt::LeftButton,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(&canvas(), &event);
        }
        QTest::mouseRelease(&canvas(), Qt::LeftButton, Qt::NoModifier, at(to));
    }

    TrendLegend &legend()
    {
        for (QWidget *one : plot_.findChildren<QWidget *>()) {
            if (auto *found = dynamic_cast<TrendLegend *>(one))
                return *found;
        }
        throw std::logic_error("no legend");
    }

    QPushButton &button(const char *text)
    {
        for (QPushButton *one : plot_.findChildren<QPushButton *>()) {
            if (one->text() == QString::fromUtf8(text))
                return *one;
        }
        throw std::invalid_argument(std::string("no button ") + text);
    }

    // What a pixel shows, in ms: places are whole pixels.
    double pixel() { return static_cast<double>(plot_.window().span()) / canvas().width(); }

    TrendStore store_{2};
    TrendPlot  plot_{store_, {{0, QStringLiteral("Level"), QStringLiteral("%"), 0, 100, 1},
                              {1, QStringLiteral("Flow"), QStringLiteral("l/s"), {}, {}, -1}}, 10 * MINUTE};
};

TEST_F(Trend, ShowsTheSpanBeforeNowInTheTimeOfDay)
{
    EXPECT_EQ(inner().axisScaleDiv(QwtPlot::xBottom).upperBound(), UTC_MS);
    EXPECT_EQ(inner().axisScaleDiv(QwtPlot::xBottom).lowerBound(), UTC_MS - 10.0 * MINUTE);
}

TEST_F(Trend, FollowsTheTimeOfDayWhenItIsSet)
{
    const double before = plot_.lines(0)[0].first().x();
    plot_.refresh(NOW, UTC + std::chrono::hours(1));
    EXPECT_EQ(inner().axisScaleDiv(QwtPlot::xBottom).upperBound(), UTC_MS + 3600000);
    EXPECT_EQ(plot_.lines(0)[0].first().x(), before + 3600000) << "what was stored moves with it";
}

TEST_F(Trend, GapGivesTwoLines)
{
    EXPECT_EQ(plot_.lines(0).size(), 1U);
    ASSERT_EQ(plot_.lines(1).size(), 2U);
    EXPECT_EQ(plot_.lines(1)[0].last().x(), UTC_MS - 7.0 * MINUTE) << "it ends where the value was lost";
    EXPECT_EQ(plot_.lines(1)[1].first().x(), UTC_MS - 3.0 * MINUTE) << "and begins where it came back";
}

TEST_F(Trend, EachCurveHasItsOwnScale)
{
    EXPECT_DOUBLE_EQ(plot_.lines(0)[0].first().y(), 0.2) << "20 of 0 to 100";
    EXPECT_DOUBLE_EQ(plot_.lines(0)[0].last().y(), 0.6);
    EXPECT_LE(plot_.scale(1).minimum, -5);
    EXPECT_GE(plot_.scale(1).maximum, 5);
    EXPECT_LT(plot_.lines(1)[0].first().y(), plot_.lines(1)[1].first().y());
}

// 60 % are as high in each of them, whatever the limits of their tags.
TEST(TrendOfOneUnit, HasOneScale)
{
    TrendStore store(3);
    for (const std::size_t tag : {0U, 1U, 2U})
        store.add(tag, 90 * MINUTE, 60, true);
    store.advance(NOW);
    const QString percent = QStringLiteral("%");
    TrendPlot plot(store, {{0, QStringLiteral("A"), percent, 0.0, 100.0}, {1, QStringLiteral("B"), percent, 10.0, 90.0},
                           {2, QStringLiteral("C"), QStringLiteral("bar"), 0.0, 120.0}}, 10 * MINUTE);
    plot.refresh(NOW, UTC);
    EXPECT_DOUBLE_EQ(plot.lines(0)[0].first().y(), 0.6);
    EXPECT_DOUBLE_EQ(plot.lines(1)[0].first().y(), 0.6);
    EXPECT_DOUBLE_EQ(plot.lines(2)[0].first().y(), 0.5);
}

TEST_F(Trend, ValueBeyondTheScaleWidensIt)
{
    store_.add(0, NOW, 140, true);
    plot_.refresh(NOW, UTC);
    EXPECT_LE(plot_.scale(0).minimum, 0);
    EXPECT_GE(plot_.scale(0).maximum, 140);
}

TEST_F(Trend, HugeValuesAreDrawnSomewhere)
{
    store_.add(1, NOW - 2000, 1.7e308, true);
    store_.add(1, NOW - 1000, -1.7e308, true);
    plot_.refresh(NOW, UTC);
    EXPECT_TRUE(std::isfinite(plot_.scale(1).maximum - plot_.scale(1).minimum));
    plot_.select(1);
    EXPECT_FALSE(plot_.image().isNull());
}

TEST_F(Trend, AxisShowsTheScaleOfTheSelectedTag)
{
    EXPECT_EQ(inner().axisScaleDiv(QwtPlot::yLeft).upperBound(), 100);
    EXPECT_EQ(inner().axisTitle(QwtPlot::yLeft).text(), QStringLiteral("1 Level [%]"));
    button("Scale\nof 2").click();
    EXPECT_EQ(plot_.selected(), 1);
    EXPECT_EQ(inner().axisScaleDiv(QwtPlot::yLeft).upperBound(), plot_.scale(1).maximum);
    EXPECT_EQ(inner().axisTitle(QwtPlot::yLeft).text(), QStringLiteral("2 Flow [l/s]"));
    button("Scale\nof 1").click();
    EXPECT_EQ(plot_.selected(), 0);
}

TEST_F(Trend, WheelZooms)
{
    wheel(0.5, 120);
    EXPECT_EQ(plot_.window().span(), 8 * MINUTE);
    EXPECT_EQ(inner().axisScaleDiv(QwtPlot::xBottom).lowerBound(), UTC_MS - 8.0 * MINUTE) << "live: the end stays";
    wheel(0.5, -120);
    EXPECT_EQ(plot_.window().span(), 10 * MINUTE);
}

TEST_F(Trend, WheelKeepsTheTimeUnderThePointerWhilePaused)
{
    plot_.setLive(false);
    wheel(0.25, 120);
    const double stays = static_cast<double>(NOW) - 7.5 * MINUTE;
    EXPECT_NEAR(static_cast<double>(plot_.window().begin()), stays - 2.0 * MINUTE, pixel());
}

TEST_F(Trend, DragPansAndPauses)
{
    drag(0.25, 0.75);
    EXPECT_FALSE(plot_.window().isLive());
    EXPECT_NEAR(static_cast<double>(plot_.window().end()), static_cast<double>(NOW - 5 * MINUTE), 2 * pixel());
    EXPECT_FALSE(plot_.cursor()) << "what was dragged is no touch";
    plot_.refresh(NOW + MINUTE, UTC + std::chrono::minutes(1));
    EXPECT_NEAR(static_cast<double>(plot_.window().end()), static_cast<double>(NOW - 5 * MINUTE), 2 * pixel());
}

TEST_F(Trend, TouchedPlaceTellsTheValuesThere)
{
    // 8:09:30 is four minutes after 8:05:30, the begin.
    QTest::mouseClick(&canvas(), Qt::LeftButton, Qt::NoModifier, at(0.4));
    ASSERT_TRUE(plot_.cursor());
    EXPECT_NEAR(static_cast<double>(*plot_.cursor()), 94.0 * MINUTE, pixel());
    plot_.setCursor(94 * MINUTE);
    EXPECT_EQ(plot_.cursorLines(), QStringList({QStringLiteral("08:09:30"), QStringLiteral("1 Level 60.0 %"),
                                                QStringLiteral("2 Flow no value")}));
    plot_.setCursor(94 * MINUTE - 1);
    EXPECT_EQ(plot_.cursorLines()[1], QStringLiteral("1 Level 20.0 %"));
    plot_.setCursor(92 * MINUTE);
    EXPECT_EQ(plot_.cursorLines()[2], QStringLiteral("2 Flow -5 l/s"));
}

TEST_F(Trend, CursorsTextStandsWhereItsLineDoesNot)
{
    const QRgb ground = qRgb(0xd8, 0xd8, 0xd8);
    const QRgb box    = qRgb(0xff, 0xff, 0xff);
    const int  right  = canvas().width() - 8;
    const auto colourAt = [&](int x) { return canvas().grab().toImage().pixel(x, 8); };
    plot_.setCursor(92 * MINUTE);
    EXPECT_EQ(colourAt(8), ground);
    EXPECT_EQ(colourAt(right), box);
    plot_.setCursor(98 * MINUTE);
    EXPECT_EQ(colourAt(8), box);
    EXPECT_EQ(colourAt(right), ground);
}

TEST_F(Trend, CursorTellsARangeWhereOnlyThatIsKept)
{
    TrendStore store(1);
    for (TrendTime time = 0; time < 20 * MINUTE; time += 500)
        store.add(0, time, time % 1000 == 0 ? 1 : 2.5, true);
    TrendPlot plot(store, {{0, QStringLiteral("Level"), QStringLiteral("%"), {}, {}, -1}}, 20 * MINUTE);
    plot.setCursor(100);
    EXPECT_EQ(plot.cursorLines()[1], QStringLiteral("1 Level 1 to 2.5 %"));
}

TEST_F(Trend, KeysDoWhatTheMouseDoes)
{
    QTest::keyClick(&canvas(), Qt::Key_Plus);
    EXPECT_EQ(plot_.window().span(), 5 * MINUTE);
    QTest::keyClick(&canvas(), Qt::Key_Minus);
    EXPECT_EQ(plot_.window().span(), 10 * MINUTE);
    QTest::keyClick(&canvas(), Qt::Key_Left);
    EXPECT_EQ(plot_.window().end(), NOW - MINUTE);
    EXPECT_FALSE(plot_.window().isLive());
    QTest::keyClick(&canvas(), Qt::Key_Right);
    EXPECT_EQ(plot_.window().end(), NOW);
    EXPECT_FALSE(plot_.window().isLive());
    QTest::keyClick(&canvas(), Qt::Key_Home);
    EXPECT_TRUE(plot_.window().isLive());
    QTest::keyClick(&canvas(), Qt::Key_Space);
    EXPECT_FALSE(plot_.window().isLive());
    QTest::keyClick(&canvas(), Qt::Key_Down);
    EXPECT_EQ(plot_.selected(), 1);
    QTest::keyClick(&canvas(), Qt::Key_Up);
    EXPECT_EQ(plot_.selected(), 0);
    QTest::keyClick(&canvas(), Qt::Key_Up);
    EXPECT_EQ(plot_.selected(), 1);
}

TEST_F(Trend, KeysMoveTheCursor)
{
    QTest::keyClick(&canvas(), Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(plot_.cursor(), 95 * MINUTE + 6000) << "from the middle, a hundredth of ten minutes";
    QTest::keyClick(&canvas(), Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(plot_.cursor(), 95 * MINUTE);
    QTest::keyClick(&canvas(), Qt::Key_Escape);
    EXPECT_FALSE(plot_.cursor());
}

TEST_F(Trend, ButtonsSayWhatTheyWillDo)
{
    button("+").click();
    EXPECT_EQ(plot_.window().span(), 5 * MINUTE);
    button("\xE2\x88\x92").click();
    EXPECT_EQ(plot_.window().span(), 10 * MINUTE);
    button("Pause").click();
    EXPECT_FALSE(plot_.window().isLive());
    button("Live").click();
    EXPECT_TRUE(plot_.window().isLive());
}

TEST_F(Trend, ButtonsHaveTouchSizeOnASmallScreenToo)
{
    plot_.setTouchSize(76);
    plot_.resize(480, 272);
    QCoreApplication::processEvents();
    for (QPushButton *one : plot_.findChildren<QPushButton *>()) {
        EXPECT_EQ(one->size(), QSize(76, 76));
        EXPECT_TRUE(plot_.rect().contains(QRect(one->mapTo(&plot_, QPoint()), one->size()))) << one->text().toStdString();
    }
    EXPECT_GE(canvas().width(), 100);
}

TEST_F(Trend, OneFingerPans)
{
    QTest::QTouchEventSequence touch = QTest::touchEvent(&canvas(), QTest::createTouchDevice(), false);
    touch.press(0, at(0.25), &canvas()).commit();
    touch.move(0, at(0.5), &canvas()).commit();
    touch.move(0, at(0.75), &canvas()).commit();
    touch.release(0, at(0.75), &canvas()).commit();
    EXPECT_NEAR(static_cast<double>(plot_.window().end()), static_cast<double>(NOW - 5 * MINUTE), 2 * pixel());
    EXPECT_FALSE(plot_.cursor());
}

TEST_F(Trend, FingerThatDoesNotMoveSetsTheCursor)
{
    QTest::QTouchEventSequence touch = QTest::touchEvent(&canvas(), QTest::createTouchDevice(), false);
    touch.press(0, at(0.5), &canvas()).commit();
    touch.release(0, at(0.5), &canvas()).commit();
    ASSERT_TRUE(plot_.cursor());
    EXPECT_NEAR(static_cast<double>(*plot_.cursor()), 95.0 * MINUTE, pixel());
    EXPECT_TRUE(plot_.window().isLive());
}

TEST_F(Trend, TwoFingersZoom)
{
    plot_.setLive(false);
    QTest::QTouchEventSequence touch = QTest::touchEvent(&canvas(), QTest::createTouchDevice(), false);
    touch.press(0, at(0.4), &canvas()).commit();
    touch.stationary(0).press(1, at(0.6), &canvas()).commit();
    touch.move(0, at(0.3), &canvas()).move(1, at(0.7), &canvas()).commit();
    EXPECT_NEAR(static_cast<double>(plot_.window().span()), 5.0 * MINUTE, 10 * pixel());
    touch.stationary(0).release(1, at(0.7), &canvas()).commit();
    touch.move(0, at(0.9), &canvas()).commit();
    touch.release(0, at(0.9), &canvas()).commit();
    EXPECT_NEAR(static_cast<double>(plot_.window().begin() + plot_.window().end()) / 2, 95.0 * MINUTE, 10 * pixel())
        << "the finger that is left does nothing";
    EXPECT_FALSE(plot_.cursor());
}

TEST_F(Trend, LegendTellsValueUnitAndQuality)
{
    plot_.setValue(0, QStringLiteral("60"), fins::Quality::GOOD);
    plot_.setValue(1, QStringLiteral("5"), fins::Quality::LAST_KNOWN);
    const auto &rows = legend().rows();
    EXPECT_EQ(rows[0].valueText(false), QStringLiteral("60 %"));
    EXPECT_EQ(rows[1].valueText(false), QStringLiteral("5 l/s, last known"));
    plot_.setValue(1, QString(), fins::Quality::NOT_CONNECTED);
    EXPECT_EQ(rows[1].valueText(false), QStringLiteral("-, not connected"));
}

TEST_F(Trend, TouchedLegendSelects)
{
    QTest::mouseClick(&legend(), Qt::LeftButton, Qt::NoModifier, QPoint(legend().width() - 20, 5));
    EXPECT_EQ(plot_.selected(), 1);
}

TEST_F(Trend, TellsTheBlindWhatItShows)
{
    plot_.setValue(0, QStringLiteral("60"), fins::Quality::GOOD);
    plot_.setValue(1, QStringLiteral("5"), fins::Quality::REFUSED);
    plot_.refresh(NOW, UTC);
    EXPECT_EQ(plot_.accessibleName(), QStringLiteral("Trend of Level, Flow"));
    EXPECT_EQ(plot_.accessibleDescription(),
              QStringLiteral("1 Level 60 %, good; 2 Flow 5 l/s, refused; the latest 10 min"));
    plot_.setLive(false);
    plot_.setCursor(92 * MINUTE);
    EXPECT_EQ(plot_.accessibleDescription(),
              QStringLiteral("1 Level 60 %, good; 2 Flow 5 l/s, refused; paused, from 08:05:30 to 08:15:30; 08:07:30; "
                             "1 Level 20.0 %; 2 Flow -5 l/s"));
}

TEST_F(Trend, IsExportedAsItIsShown)
{
    EXPECT_EQ(plot_.csv(), "time,Level [%],Flow [l/s]\r\n"
                           "2026-03-01T08:05:30.000Z,20,\r\n"
                           "2026-03-01T08:07:30.000Z,20,-5\r\n"
                           "2026-03-01T08:08:30.000Z,20,\r\n"
                           "2026-03-01T08:09:30.000Z,60,\r\n"
                           "2026-03-01T08:12:30.000Z,60,5\r\n");
    const QImage image = plot_.image();
    EXPECT_EQ(image.size(), QSize(800, 480));
    const QByteArray png = TrendPlot::pngOf(image);
    EXPECT_EQ(png.left(4), QByteArray("\x89PNG"));
    EXPECT_EQ(QImage::fromData(png).size(), QSize(800, 480));
}

TEST(TrendWithoutTags, IsEmpty)
{
    const TrendStore store(0);
    TrendPlot plot(store, {}, MINUTE);
    plot.refresh(NOW, UTC);
    plot.select(3);
    EXPECT_EQ(plot.selected(), 0);
    EXPECT_FALSE(plot.image().isNull());
}

} // namespace
