// A window with a value, how far it can be trusted, and a button that writes: qt_widget HOST ITEM VALUE
// The button alone writes, and it is locked while the value is not good. For tests: --once presses it when it can be
// pressed and ends with what became of the write, 0 done, 1 refused or different, 3 unknown or not sent; --for SECONDS
// ends then, with 0 if the value is good and 3 if not.

#include <fins_runtime/plc.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include <iostream>

static int run(const std::string &host, const std::string &item, const std::string &wanted, bool once, int seconds)
{
    QWidget window;
    QVBoxLayout layout(&window);
    QLabel value, fate;
    QPushButton button(QString::fromStdString("Write " + wanted));
    button.setEnabled(false);
    for (QWidget *part : std::initializer_list<QWidget *>{&value, &button, &fate})
        layout.addWidget(part);
    const auto say = [](QLabel &label, const std::string &line) {
        label.setText(QString::fromStdString(line));
        std::cout << line << std::endl;
    };

    fins::Plc plc = fins::Plc::open({host});
    fins::Operation write;
    QObject::connect(&button, &QPushButton::clicked, [&] {
        write = plc.write({{item, wanted}}, [&](const fins::Outcomes &outcomes) {
            say(fate, outcomes.front().text);
            const fins::Fate known = outcomes.front().fate;
            if (once)
                QApplication::exit(isDone(outcomes) ? 0 : known == fins::Fate::REFUSED || known == fins::Fate::DIFFERS ? 1 : 3);
        });
    });
    bool pressed = false;
    const fins::Watch watch = plc.watch({item}, [&](const fins::Samples &samples) {
        const fins::Sample &sample = samples.back();
        const bool good = sample.quality == fins::Quality::GOOD;
        say(value, sample.name + " = " + sample.text + " (" + text(sample.quality) + ")");
        value.setStyleSheet(good ? "" : "border: 2px dashed"); // a word and a frame, not a colour alone
        button.setEnabled(good);
        if (good && once && !std::exchange(pressed, true))
            button.click();
    });
    QSocketNotifier ready(plc.readyFd(), QSocketNotifier::Read);
    QObject::connect(&ready, &QSocketNotifier::activated, [&] { plc.dispatch(); });
    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, [&] { QApplication::exit(button.isEnabled() ? 0 : 3); });
    window.show();
    return QApplication::exec();
}

int main(int argc, char **argv)
try {
    const QApplication application(argc, argv);
    const QCommandLineOption once("once"), seconds("for", "", "SECONDS");
    QCommandLineParser parser;
    parser.addOptions({once, seconds});
    const bool understood = parser.parse(QApplication::arguments());
    const QStringList words = parser.positionalArguments();
    if (!understood || words.size() != 3) {
        std::cerr << "usage: qt_widget HOST ITEM VALUE [--once] [--for SECONDS]\n";
        return 2;
    }
    return run(words[0].toStdString(), words[1].toStdString(), words[2].toStdString(), parser.isSet(once),
               parser.value(seconds).toInt());
} catch (const std::exception &error) {
    std::cerr << "qt_widget: " << error.what() << '\n';
    return 2;
}
