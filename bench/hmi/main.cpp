#include "cli/sources.h"
#include "link/answerer.h"
#include "link/meters.h"
#include "window/main_window.h"

#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

// What the graphical panel costs: bench_hmi SECONDS. It is shown on no screen, and paints as on one: 500 tags that all
// change some twenty times a second, of which a screen shows 60. The PLC is a process of its own.

namespace {

constexpr int TAGS     = 500;
constexpr int ELEMENTS = 60;
constexpr int COLUMNS  = 10;

/// Between two requests: eight of them, for all words, then take less than 50 ms.
constexpr std::chrono::milliseconds INTERVAL{4};

/// Counts what is painted of one element.
class PaintCount : public QObject {
public:
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

std::string project(int port)
{
    std::string text = "[connection]\nhost = \"127.0.0.1:" + std::to_string(port) + "\"\n[driver]\ninterval_ms = "
                       + std::to_string(INTERVAL.count()) + "\n[tags]\n";
    for (int i = 0; i < TAGS; ++i)
        text += "T" + std::to_string(i) + " = { type = \"DM\", address = " + std::to_string(i)
                + ", scale = 0.1, decimals = 1, unit = \"bar\" }\n";
    text += "[screens.main]\ncolumns = 10\nrows = 6\nelements = [\n";
    for (int i = 0; i < ELEMENTS; ++i) {
        const std::string place = ", at = [" + std::to_string(i % COLUMNS + 1) + ", " + std::to_string(i / COLUMNS + 1) + "]";
        const bool isBar = i % 3 == 0;
        text += "{ type = \"" + std::string(isBar ? "bar" : "number") + "\", tag = \"T" + std::to_string(i * 8) + "\"" + place
                + (isBar ? ", min = 0, max = 7000" : "") + " },\n";
    }
    return text + "]\n";
}

double residentMiB()
{
    std::ifstream file("/proc/self/smaps_rollup");
    std::string word;
    double resident = 0;
    while (file >> word) {
        if (word == "Rss:")
            file >> resident;
    }
    return resident / 1024;
}

void runFor(int milliseconds)
{
    QTimer::singleShot(milliseconds, qApp, [] { QApplication::quit(); });
    QApplication::exec();
}

void measure(const std::string &file, int seconds)
{
    Options options;
    options.projects = {file};
    Panel panel(readSources(options));
    MainWindow window(panel);
    window.resize(1024, 600);
    window.show();
    runFor(3000);
    Element &element = *window.view().elements()[1];
    LiveValue &value = panel.stations().front().values()[8];
    PaintCount paints;
    element.installEventFilter(&paints);
    const std::uint64_t before = value.revision;
    const Meter meter;
    runFor(seconds * 1000);
    const double elapsed = meter.elapsed();
    std::printf("hmi %.1f %.1f %.2f %.1f\n", 100 * meter.cpu() / elapsed, static_cast<double>(value.revision - before) / elapsed,
                paints.count / elapsed, residentMiB());
}

} // namespace

int main(int argc, char **argv)
try {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const AnswererProcess plc(answerFins(64));
    const QApplication application(argc, argv);
    const int seconds = argc == 2 ? std::atoi(argv[1]) : 0;
    if (seconds < 1) {
        std::fprintf(stderr, "usage: bench_hmi SECONDS\nprints: CPU in percent of a core, changes of a tag and paintings of an "
                             "element a second, MiB resident\n");
        return 2;
    }
    char file[] = "/tmp/bench_hmi_XXXXXX";
    const int fd = mkstemp(file);
    if (fd < 0)
        throw std::runtime_error("no temporary file");
    close(fd);
    std::ofstream(file) << project(plc.port());
    measure(file, seconds);
    unlink(file);
    return 0;
} catch (const std::exception &error) {
    std::fprintf(stderr, "bench_hmi: %s\n", error.what());
    return 1;
}
