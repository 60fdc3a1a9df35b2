#include "cli/sources.h"
#include "window/main_window.h"

#include <QtTest/QTest>
#include <QtWidgets/QApplication>

#include <iostream>

// Pictures of the panel from a real run: pictures PROJECT HOST FOLDER, where HOST is a simulator with its tank.

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    Options options;
    options.projects = {argv[1]};
    options.host     = argv[2];
    const QString folder = argv[3];
    Panel panel(readSources(options));
    MainWindow window(panel);
    window.resize(800, 480);
    window.show();
    QTest::qWait(3000);
    window.grab().save(folder + "/tank.png");
    window.resize(480, 272);
    QTest::qWait(200);
    window.grab().save(folder + "/small.png");
    window.resize(800, 480);
    window.actions().showRecipe(panel.stations().front(), "Lemonade");
    QTest::qWait(1000);
    window.grab().save(folder + "/recipe.png");
    window.actions().showAlarms();
    QTest::qWait(300);
    window.grab().save(folder + "/alarms.png");
    window.actions().showJournal();
    QTest::qWait(300);
    window.grab().save(folder + "/journal.png");
    for (Station &station : panel.stations()) {
        if (LiveValue *value = station.find({"SetPoint", 0})) {
            window.actions().setNumber(*value);
            QTest::qWait(300);
            window.grab().save(folder + "/keypad.png");
            window.actions().open()->close();
        }
    }
    for (Element *element : window.view().elements()) {
        if (element->accessibleName() == "Outlet") {
            QTest::mouseClick(element, Qt::LeftButton);
            QTest::qWait(300);
            window.grab().save(folder + "/question.png");
            window.actions().open()->close();
        }
    }
    window.showScreen(1);
    QTest::qWait(300);
    window.grab().save(folder + "/counters.png");
}
