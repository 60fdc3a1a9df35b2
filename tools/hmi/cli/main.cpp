#include "cli/options.h"
#include "cli/qt_options.h"
#include "cli/sources.h"
#include "elements/touch_size.h"
#include "window/main_window.h"
#include "window/problem_window.h"

#include <QtCore/QSocketNotifier>
#include <QtWidgets/QApplication>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

// fins_hmi, the graphical panel.

namespace {

enum { EXIT_DONE = 0, EXIT_BAD_USAGE = 2, EXIT_UNCERTAIN = 3 };

// Without a screen Qt ends the program by force.
void onQtMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtCriticalMsg)
        std::fprintf(stderr, "fins_hmi: %s\n", qPrintable(text));
    if (type != QtFatalMsg)
        return;
    std::fprintf(stderr, "fins_hmi: there is no screen to show the panel on; start it on an X or Wayland desktop, or with "
                         "-platform linuxfb on a frame buffer\n");
    std::_Exit(EXIT_BAD_USAGE);
}

// All that is wrong, as FILE:LINE:COLUMN: TEXT.
std::vector<std::string> linesOf(const fins::ConfigError &error)
{
    std::vector<std::string> lines;
    for (const fins::Problem &problem : error.problems()) {
        const fins::ConfigError alone({problem});
        lines.push_back(problem.file.empty() ? std::string("fins_hmi: ") + alone.what() : alone.what());
    }
    return lines;
}

std::unique_ptr<Panel> makePanel(const Options &options, std::vector<std::string> &problems)
{
    try {
        return std::make_unique<Panel>(readSources(options), options.folder);
    } catch (const fins::ConfigError &error) {
        problems = linesOf(error);
    } catch (const std::exception &error) {
        problems = {std::string("fins_hmi: ") + error.what()};
    }
    for (const std::string &line : problems)
        std::cerr << line << std::endl;
    return nullptr;
}

int run(QWidget &window, bool isFullScreen)
{
    if (isFullScreen)
        window.showFullScreen();
    else
        window.show();
    return QApplication::exec();
}

int runPanel(Panel &panel, const Options &options)
{
    MainWindow window(panel);
    window.resize(800, 480);
    const std::size_t first = panel.findScreen(options.screen);
    if (first == panel.screens().size() && !options.screen.empty())
        std::cerr << "fins_hmi: there is no screen '" << options.screen << "'; the first one is shown" << std::endl;
    window.showScreen(first);
    run(window, options.isFullScreen);
    const std::vector<std::string> ends = panel.close();
    for (const std::string &line : ends)
        std::cerr << "fins_hmi: " << line << std::endl;
    return ends.empty() ? EXIT_DONE : EXIT_UNCERTAIN;
}

// The end that a signal asks for: the window closes as if its user had closed it, so that no write ends unreported.
class SignalledEnd {
public:
    SignalledEnd()
    {
        if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0)
            return;
        for (const int number : {SIGINT, SIGTERM, SIGHUP})
            std::signal(number, [](int) {
                if (write(pipe_[1], "", 1) < 0)
                    return; // it is full of what says the same
            });
    }

    // Begins to listen; the signals that came before are heard, too.
    static void quit(QApplication &application)
    {
        auto *notifier = new QSocketNotifier(pipe_[0], QSocketNotifier::Read, &application);
        QObject::connect(notifier, &QSocketNotifier::activated, &application, [] { QApplication::quit(); });
    }

private:
    static int pipe_[2];
};
int SignalledEnd::pipe_[2] = {-1, -1};

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(onQtMessage);
    const SignalledEnd end;
    std::vector<char *> words(argv, argv + argc);
    std::vector<char *> qtWords = takeQtOptions(words);
    Options options;
    const int code = parseOptions(static_cast<int>(words.size()), words.data(), options);
    if (code >= 0)
        return code;
    std::vector<std::string> problems;
    const std::unique_ptr<Panel> panel = makePanel(options, problems);

    int qtCount = static_cast<int>(qtWords.size());
    QApplication application(qtCount, qtWords.data());
    SignalledEnd::quit(application);
    setDotsPerInch(options.dotsPerInch);
    QApplication::setStyle("Fusion"); // it takes the panel's colours
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * options.fontPercent / 100);
    QApplication::setFont(font);
    if (panel)
        return runPanel(*panel, options);
    ProblemWindow window(problems);
    run(window, options.isFullScreen);
    return EXIT_BAD_USAGE;
}
