#include "hmi_fixture.h"

#include "elements/card.h"
#include "elements/controls.h"
#include "elements/displays.h"
#include "elements/look.h"

#include <map>

// Every element in every quality: what it says, and that it looks otherwise than with a good value.

namespace {

using fins::Quality;

struct Case {
    std::string kind;
    Quality     quality;
};

const std::vector<std::string> KINDS = {"number", "text", "bar", "lamp", "card", "set-point", "choice", "set", "momentary", "toggle"};
const Quality QUALITIES[] = {Quality::GOOD, Quality::WRITE_PENDING, Quality::LAST_KNOWN, Quality::NOT_CONNECTED, Quality::REFUSED};

std::vector<Case> allCases()
{
    std::vector<Case> cases;
    for (const std::string &kind : KINDS) {
        for (const Quality quality : QUALITIES)
            cases.push_back({kind, quality});
    }
    return cases;
}

std::string nameOf(const testing::TestParamInfo<Case> &info)
{
    std::string name = info.param.kind + "_" + fins::text(info.param.quality);
    std::replace_if(name.begin(), name.end(), [](char c) { return c == ' ' || c == '-'; }, '_');
    return name;
}

class QualityTest : public HmiTest {
protected:
    // A value of 1, as a sample of that quality has it.
    LiveValue valueIn(Quality quality)
    {
        LiveValue value;
        value.station = &panel->stations().front();
        value.tag     = {"Level", 0};
        value.label   = "Level";
        value.sample.name    = "Level";
        value.sample.quality = quality;
        value.sample.unit    = "%";
        value.sample.steady  = std::chrono::steady_clock::now();
        if (quality == Quality::NOT_CONNECTED)
            return value;
        value.sample.value = std::int64_t(1);
        value.sample.text  = "1";
        return value;
    }

    std::unique_ptr<Element> make(const std::string &kind, const LiveValue *value)
    {
        const std::vector<ValueText> states = {{0, "off", 0}, {1, "on", 0}};
        ScreenElement config;
        config.text   = "Start";
        config.textOn = "Stop";
        config.mode   = kind == "momentary" ? ButtonMode::MOMENTARY : kind == "toggle" ? ButtonMode::TOGGLE : ButtonMode::SET;
        if (kind == "bar")
            return std::make_unique<BarElement>(value, "Level", 0, 2, nullptr);
        if (kind == "lamp")
            return std::make_unique<LampElement>(value, "Level", states, nullptr);
        if (kind == "card")
            return std::make_unique<Card>(value, panel->trends(), nullptr);
        if (kind == "set-point")
            return std::make_unique<SetPoint>(value, "Level", nullptr);
        if (kind == "choice")
            return std::make_unique<Choice>(value, "Level", states, nullptr);
        if (kind == "number" || kind == "text")
            return std::make_unique<ValueElement>(value, "Level", nullptr);
        return std::make_unique<ActionButton>(value, config, "Level", nullptr);
    }

    static QImage pictureOf(Element &element)
    {
        element.resize(160, 120);
        element.refresh();
        return element.grab().toImage();
    }
};

class InQuality : public QualityTest, public testing::WithParamInterface<Case> {};

} // namespace

TEST_P(InQuality, SaysValueAndQualityAndLooksSo)
{
    openItems({"DM:0"});
    ASSERT_TRUE(untilOnline());
    const auto [kind, quality] = GetParam();
    const LiveValue value = valueIn(quality);
    const std::unique_ptr<Element> element = make(kind, &value);
    const QImage picture = pictureOf(*element);
    const std::string said = element->spoken().toStdString();

    EXPECT_EQ(element->accessibleName(), "Level");
    const std::string shown = quality == Quality::NOT_CONNECTED ? "\u2014, not connected" : "1 %, " + std::string(fins::text(quality));
    EXPECT_NE(said.find(shown), std::string::npos) << said;
    EXPECT_EQ(said.find("0 %"), std::string::npos) << said; // what is not known is never shown as 0
    const bool isControl = element->focusPolicy() != Qt::NoFocus;
    const bool isGood    = quality == Quality::GOOD || quality == Quality::WRITE_PENDING;
    EXPECT_EQ(said.find("locked: the value is " + std::string(fins::text(quality))) != std::string::npos, isControl && !isGood) << said;

    const LiveValue good = valueIn(Quality::GOOD);
    const bool isSame = pictureOf(*make(kind, &good)) == picture;
    EXPECT_EQ(isSame, quality == Quality::GOOD);
}

INSTANTIATE_TEST_SUITE_P(Elements, InQuality, testing::ValuesIn(allCases()), nameOf);

// It says how long ago it was good, which is not when it changed.
TEST_F(QualityTest, LastKnownValueSaysHowLongAgoItWasGood)
{
    openItems({"DM:0"});
    LiveValue value = valueIn(Quality::LAST_KNOWN);
    value.sample.steady = std::chrono::steady_clock::now() - std::chrono::hours(2);
    value.goodUntil     = std::chrono::steady_clock::now() - std::chrono::minutes(5);
    const std::unique_ptr<Element> element = make("number", &value);
    element->refresh();
    EXPECT_EQ(element->spoken().toStdString(), "1 %, last known, changed 2 h ago; last known, 5 min");
}

// The line is 2 pixels wide, low up to its middle and high behind it.
TEST_F(QualityTest, CardDrawsTheLatestMinute)
{
    openItems({"DM:0"});
    LiveValue value = valueIn(Quality::GOOD);
    value.trend     = 0;
    TrendStore trends(1);
    Card card(&value, trends, nullptr);
    card.resize(200, 160);
    const auto inkOf = [&](int quarter) {
        const QImage picture = card.grab().toImage();
        QRect ink;
        for (int y = picture.height() / 2; y < picture.height(); ++y) {
            for (int x = 50 * quarter; x < 50 * quarter + 50; ++x) {
                if (picture.pixelColor(x, y) == look::FILL)
                    ink |= QRect(x, y, 1, 1);
            }
        }
        return ink;
    };
    EXPECT_TRUE(inkOf(2).isEmpty()) << "nothing is known yet";

    const TrendTime now = trendTimeOf(std::chrono::steady_clock::now());
    trends.add(0, now - 90000, 0, true);
    trends.add(0, now - 30000, 10, true);
    trends.advance(now + 60000); // known to hold while the picture is made
    EXPECT_GT(inkOf(0).top(), inkOf(3).bottom());
    EXPECT_EQ(inkOf(0).height(), 2);
    EXPECT_EQ(inkOf(3).height(), 2);
}

// A mark of every priority has its own shape: none is another one in another colour.
TEST(Priorities, HaveShapesOfTheirOwn)
{
    std::map<int, QImage> shapes;
    for (const int priority : {1, 2, 3}) {
        QImage picture(40, 40, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        look::drawPriority(painter, picture.rect(), priority);
        painter.end();
        shapes[priority] = picture.createAlphaMask();
    }
    EXPECT_NE(shapes[1], shapes[2]);
    EXPECT_NE(shapes[2], shapes[3]);
    EXPECT_NE(shapes[1], shapes[3]);
}
