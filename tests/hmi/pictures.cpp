#include "cli/sources.h"
#include "support/process.h"
#include "support/temporary_folder.h"
#include "window/main_window.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtGui/QPainter>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>

#include <algorithm>
#include <functional>
#include <iostream>
#include <stdexcept>

// Makes the pictures of the guide: hmi_pictures FOLDER. Each is what the panel shows of a running simulator.

namespace {

const int STEP_MS  = 20;     // between two looks at what is awaited
const int DEADLINE = 120000; // ms for anything awaited

const char TANK_PLC[] = R"([plc]
plant = "tank"
plant-period = 500

[memory]
"DM:200"   = 1150
"DM:201"   = 85
"DM:300:8" = "LEMONADE"
"DM:100"   = { f32 = 21.5 }
)";

const char ELEMENTS_PLC[] = R"([plc]
plant = "tank"
plant-period = 250

[memory]
"DM:200:5" = [1, 2, 1, 1, 1]
"DM:300:8" = "LEMONADE"
)";

// One element of each type, and lamps in a normal and an abnormal state.
const char ELEMENTS[] = R"(
[tags]
Level    = { type = "DM", address = 0, scale = 0.1, decimals = 1, unit = "%", comment = "Level" }
SetPoint = { type = "DM", address = 3, scale = 0.1, decimals = 1, unit = "%", min = 10, max = 90, comment = "Set-point" }
Mixer    = { type = "DM", address = 200, comment = "Mixer" }
Heater   = { type = "DM", address = 201, comment = "Heater" }
Mode     = { type = "DM", address = 202, comment = "Mode" }
Guard    = { type = "DM", address = 203 }
Motor    = { type = "DM", address = 204 }
Start    = { type = "CIO_bit", address = "100.3", comment = "Counters" }
ByHand   = { type = "CIO_bit", address = "100.1", comment = "Pump by hand" }
Outlet   = { type = "CIO_bit", address = "100.2", comment = "Outlet" }
Product  = { type = "DM", address = 300, count = 8, data = "string", comment = "Product" }

[recipes.Lemonade.values]
Mixer = 1

[alarms.Motor]
tag      = "Motor"
value    = 1
text     = "Motor too hot"
priority = 1

[alarms.Guard]
tag      = "Guard"
value    = 1
text     = "Guard open"
priority = 3

[screens.elements]
columns  = 6
rows     = 5
elements = [
  { type = "text", text = "Mixing plant", at = [1, 1], size = [2, 1] },
  { type = "number", tag = "Level", at = [3, 1] },
  { type = "lamp", tag = "Mixer", at = [4, 1], states = [{ value = 0, text = "stopped" }, { value = 1, text = "running" }] },
  { type = "lamp", tag = "Heater", at = [5, 1], states = [{ value = 1, text = "on" }, { value = 2, text = "fault", priority = 1 }] },
  { type = "bar", tag = "Level", at = [6, 1], size = [1, 3], min = 0, max = 100, label = "Tank" },
  { type = "button", tag = "Start", at = [1, 2], text = "Reset", label = "Set" },
  { type = "button", tag = "ByHand", at = [2, 2], mode = "momentary", text = "Run pump", label = "Momentary" },
  { type = "button", tag = "Outlet", at = [3, 2], mode = "toggle", text = "Open", text_on = "Close", label = "Toggle" },
  { type = "set-point", tag = "SetPoint", at = [4, 2] },
  { type = "choice", tag = "Mode", at = [5, 2], choices = [{ value = 0, text = "off" }, { value = 1, text = "automatic" }] },
  { type = "trend", tags = ["Level", "SetPoint"], at = [1, 3], size = [4, 2], minutes = 1, label = "Trend" },
  { type = "recipe", at = [5, 3], label = "Recipes" },
  { type = "alarms", at = [5, 4], size = [2, 1], label = "Alarm list" },
  { type = "text", tag = "Product", at = [4, 5], size = [2, 1] },
  { type = "screen", screen = "elements", at = [6, 5], label = "Tank 2" },
  { type = "group", label = "Pump", at = [1, 5], size = [3, 1] },
  { type = "number", tag = "SetPoint", at = [1, 5], label = "Speed" },
  { type = "lamp", tag = "Mode", at = [2, 5], label = "State", states = [{ value = 1, text = "automatic" }] },
]
)";

// A number whose quality changes.
const char QUALITIES[] = R"(
[tags]
Level = { type = "DM", address = 200, scale = 0.1, decimals = 1, unit = "%", comment = "Level" }

[screens.qualities]
columns  = 6
rows     = 5
elements = [ { type = "number", tag = "Level", at = [1, 1] } ]
)";

// The picture with its 256 most frequent colours: panels have few, and edges of letters that no eye tells apart.
QImage withPalette(const QImage &picture)
{
    const QImage plain = picture.convertToFormat(QImage::Format_RGB32);
    QHash<QRgb, int> counts;
    for (int y = 0; y < plain.height(); ++y) {
        for (int x = 0; x < plain.width(); ++x)
            ++counts[plain.pixel(x, y)];
    }
    QVector<QRgb> colours = counts.keys().toVector();
    std::sort(colours.begin(), colours.end(),
              [&](QRgb a, QRgb b) { return std::make_pair(counts[a], a) > std::make_pair(counts[b], b); });
    return plain.convertToFormat(QImage::Format_Indexed8, colours.mid(0, 256), Qt::AvoidDither | Qt::ThresholdDither);
}

class Pictures {
public:
    explicit Pictures(QString folder) : folder_(std::move(folder)) {}

    void save(const QString &name, const QImage &picture) const
    {
        const QString file = folder_ + "/" + name + ".png";
        if (!withPalette(picture).save(file, "PNG", 0))
            throw std::runtime_error("cannot write " + file.toStdString());
        std::cout << file.toStdString() << std::endl;
    }

private:
    QString folder_;
};

void await(const std::string &what, const std::function<bool()> &holds)
{
    QElapsedTimer since;
    since.start();
    while (!holds()) {
        if (since.elapsed() > DEADLINE)
            throw std::runtime_error(what + " does not come");
        QTest::qWait(STEP_MS);
    }
}

// A simulator, and the panel's window on it.
class Scene {
public:
    explicit Scene(const std::string &memory)
        : plc_({FINS_PLC_PATH, "--port", "0", "--project", folder_.put("plc.toml", memory)})
    {
        host_ = plc_.readLine().substr(std::string("listening on ").size());
    }

    void open(const Options &options)
    {
        panel_  = std::make_unique<Panel>(readSources(options), folder_.path());
        window_ = std::make_unique<MainWindow>(*panel_);
        window_->resize(800, 480);
        window_->show();
    }

    void openProject(const std::string &file)
    {
        Options options;
        options.projects = {file};
        options.host     = host_;
        open(options);
    }

    void openText(const std::string &text) { openProject(folder_.put("panel.toml", text)); }

    void tell(const std::string &command)
    {
        plc_.writeLine(command);
        const std::string answer = plc_.readLine();
        if (answer.compare(0, 2, "ok") != 0)
            throw std::runtime_error(command + ": " + answer);
    }

    void end() { plc_.sendSignal(SIGTERM); }

    const std::string &host() const { return host_; }
    Panel &panel() { return *panel_; }
    MainWindow &window() { return *window_; }
    Station &station() { return panel_->stations().front(); }

    LiveValue &value(const std::string &tag) { return *station().find({tag, 0}); }

    void awaitOnline()
    {
        await("the link", [this] { return station().state().phase == fins::Phase::ONLINE; });
        await("a value", [this] { return station().values().front().isGood(); });
    }

    void awaitQuality(fins::Quality quality)
    {
        await(fins::text(quality), [&] { return station().values().front().sample.quality == quality; });
    }

    // What is drawn with a pause has been drawn.
    QImage picture()
    {
        QTest::qWait(1200);
        return window_->grab().toImage();
    }

    // The part of the screen with the element of that label.
    QImage pictureOf(const QString &label)
    {
        for (Element *element : window_->view().elements()) {
            if (element->accessibleName() == label)
                return window_->view().grab(element->geometry()).toImage();
        }
        throw std::runtime_error("no element " + label.toStdString());
    }

    Overlay &open() { return *window_->actions().open(); }

    // Presses the button of what is open whose text begins so.
    void press(const QString &text)
    {
        for (QPushButton *button : open().findChildren<QPushButton *>()) {
            if (button->text().startsWith(text)) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        throw std::runtime_error("no button " + text.toStdString());
    }

private:
    TemporaryFolder             folder_;
    Process                     plc_;
    std::string                 host_;
    std::unique_ptr<Panel>      panel_;
    std::unique_ptr<MainWindow> window_;
};

// A new set-point as its user writes it.
void writeSetPoint(Scene &scene, const Pictures &pictures)
{
    scene.window().actions().setNumber(scene.value("SetPoint"));
    QTest::keyClicks(&scene.open(), "85");
    pictures.save("keypad", scene.picture());
    scene.press("Set");
    pictures.save("question", scene.picture());
    scene.press("Write");
    await("the write", [&] { return scene.value("SetPoint").fate.has_value(); });
}

void takeAlarm(Scene &scene, const Pictures &pictures)
{
    await("the alarm", [&] { return !scene.panel().alarms().empty(); });
    await("the level", [&] { return scene.value("Level").number() > 82; });
    pictures.save("alarm", scene.picture());
    scene.window().actions().showAlarms();
    pictures.save("alarms", scene.picture());
    scene.press("Acknowledge all");
    scene.open().close();
}

void takeRecipe(Scene &scene, const Pictures &pictures)
{
    scene.window().actions().showRecipe({&scene.station()}, "Lemonade");
    await("the comparison", [&] {
        for (const QLabel *label : scene.open().findChildren<QLabel *>()) {
            if (label->text().contains("differs"))
                return true;
        }
        return false;
    });
    pictures.save("recipe", scene.picture());
    scene.open().close();
}

void takeTrend(Scene &scene, const Pictures &pictures)
{
    scene.window().actions().showMenu(0);
    scene.press("Trends");
    scene.press("Level and set-point");
    pictures.save("trend", scene.picture());
    scene.open().close();
}

void takeLoss(Scene &scene, const Pictures &pictures)
{
    scene.end();
    await("the loss", [&] {
        const fins::State &state = scene.station().state();
        return state.phase == fins::Phase::WAITING && state.nextAttempt - std::chrono::system_clock::now() > std::chrono::seconds(2);
    });
    pictures.save("lost", scene.picture());
    scene.window().actions().showJournal();
    pictures.save("journal", scene.picture());
}

// The tank of the guide's example, for two and a half minutes.
void takeTank(const Pictures &pictures)
{
    const qint64 course = 150000;
    Scene scene(TANK_PLC);
    scene.openProject(TANK_PROJECT);
    QElapsedTimer since;
    since.start();
    scene.awaitOnline();
    await("the set-point's level", [&] { return scene.value("Level").number() >= 50; });
    writeSetPoint(scene, pictures);
    takeAlarm(scene, pictures);
    scene.station().write(scene.value("SetPoint"), "60");
    await("the level", [&] { return scene.value("Level").number() <= 60; });
    takeRecipe(scene, pictures);
    QTest::qWait(static_cast<int>(std::max<qint64>(0, course - since.elapsed())));
    pictures.save("tank", scene.picture());
    takeTrend(scene, pictures);
    takeLoss(scene, pictures);
}

void takeCards(const Pictures &pictures)
{
    Scene scene(TANK_PLC);
    Options options;
    options.words = {scene.host(), "DM:0", "CIO_bit:0.0:3", "DM:100/f32"};
    scene.open(options);
    scene.awaitOnline();
    QTest::qWait(30000); // of their courses
    pictures.save("cards", scene.picture());
}

void takeElements(const Pictures &pictures)
{
    static const char *const NAMES[][2] = {
        {"text", "Mixing plant"}, {"text-tag", "Product"}, {"number", "Level"}, {"bar", "Tank"}, {"lamp", "Mixer"},
        {"lamp-abnormal", "Heater"}, {"trend", "Trend"}, {"button-set", "Set"}, {"button-momentary", "Momentary"},
        {"button-toggle", "Toggle"}, {"set-point", "Set-point"}, {"choice", "Mode"}, {"recipe", "Recipe"},
        {"alarms", "Alarm list"}, {"group", "Pump"}, {"screen", "Screen"}};
    Scene scene(ELEMENTS_PLC);
    scene.openText(ELEMENTS);
    scene.awaitOnline();
    QTest::qWait(50000); // of the trend
    for (const auto &name : NAMES)
        pictures.save(QString("element-") + name[0], scene.pictureOf(name[1]));
}

// One number in each quality, side by side.
void takeQualities(const Pictures &pictures)
{
    using fins::Quality;
    Scene scene("[memory]\n\"DM:200\" = 452\n");
    scene.openText(QUALITIES);
    std::vector<QImage> row(5);
    const auto take = [&](Quality quality) {
        scene.awaitQuality(quality);
        QTest::qWait(quality == Quality::WRITE_PENDING ? 200 : 1200);
        if (scene.value("Level").sample.quality != quality)
            throw std::runtime_error(std::string(fins::text(quality)) + " does not last");
        row[static_cast<std::size_t>(quality)] = scene.pictureOf("Level");
    };
    row[static_cast<std::size_t>(Quality::NOT_CONNECTED)] = scene.pictureOf("Level"); // nothing was received yet
    take(Quality::GOOD);
    scene.tell("fault delay=700");
    scene.station().write(scene.value("Level"), "45.2");
    take(Quality::WRITE_PENDING);
    scene.tell("faults off");
    await("the write", [&] { return scene.value("Level").fate.has_value(); });
    QTest::qWait(9000); // until its fate is told no more
    scene.tell("fault refuse");
    scene.tell("disconnect");
    take(Quality::LAST_KNOWN);
    scene.tell("faults off");
    scene.awaitQuality(Quality::GOOD);
    scene.tell("fault end-code=1103");
    take(Quality::REFUSED);
    const int gap = 8, width = row[0].width(), height = row[0].height();
    QImage all(5 * width + 4 * gap, height, QImage::Format_RGB32);
    all.fill(Qt::white);
    QPainter painter(&all);
    for (int i = 0; i < 5; ++i)
        painter.drawImage(i * (width + gap), 0, row[static_cast<std::size_t>(i)]);
    painter.end();
    pictures.save("qualities", all);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "usage: hmi_pictures FOLDER\n";
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::NoSubpixelAntialias); // its colours would be most of those in a picture
    QApplication::setFont(font);
    try {
        const Pictures pictures(argv[1]);
        takeQualities(pictures);
        takeElements(pictures);
        takeCards(pictures);
        takeTank(pictures);
    } catch (const std::exception &error) {
        std::cerr << "hmi_pictures: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
