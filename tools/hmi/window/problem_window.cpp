#include "window/problem_window.h"

#include "elements/look.h"
#include "elements/touch_size.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

ProblemWindow::ProblemWindow(const std::vector<std::string> &lines)
{
    setPalette(look::palette());
    setWindowTitle("fins_hmi");
    auto *rows = new QVBoxLayout(this);
    auto *head = new QLabel("The panel cannot start. Mend this and start it again:");
    head->setWordWrap(true);
    rows->addWidget(head);
    auto *list = new QPlainTextEdit;
    list->setReadOnly(true);
    list->setAccessibleName("Problems");
    QStringList texts;
    for (const std::string &line : lines)
        texts << look::toQt(line);
    list->setPlainText(texts.join("\n\n"));
    rows->addWidget(list, 1);
    auto *button = new QPushButton("Close");
    button->setMinimumHeight(touchPixels(this));
    QObject::connect(button, &QPushButton::clicked, this, &QWidget::close);
    rows->addWidget(button);
    resize(800, 480);
}
