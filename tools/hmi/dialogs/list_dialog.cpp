#include "dialogs/list_dialog.h"

#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScroller>

ListDialog::ListDialog(const QString &title, const std::vector<Entry> &entries, QWidget *window) : Overlay(title, window)
{
    auto *scroll = new QScrollArea;
    auto *list   = new QWidget;
    auto *rows   = new QVBoxLayout(list);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    QScroller::grabGesture(scroll->viewport(), QScroller::TouchGesture);
    body()->addWidget(scroll, 1);
    QPushButton *first = nullptr;
    for (const Entry &entry : entries) {
        QPushButton *button = makeButton(entry.isCurrent ? "\u2022 " + entry.text : entry.text);
        if (entry.isCurrent)
            button->setAccessibleDescription("as it is now");
        QObject::connect(button, &QPushButton::clicked, this, [this, onChosen = entry.onChosen] {
            close();
            onChosen();
        });
        rows->addWidget(button);
        first = !first || entry.isCurrent ? button : first;
    }
    rows->addStretch(1);
    scroll->setWidget(list);
    addButton("Cancel", [this] { close(); });
    if (first)
        setFirst(first);
}
