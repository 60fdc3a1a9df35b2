#include "dialogs/confirm.h"

#include <QtWidgets/QLabel>

Confirm::Confirm(const QString &title, const QString &text, const QString &button, const std::function<void()> &onYes,
                 QWidget *window)
    : Overlay(title, window)
{
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    body()->addWidget(label, 1);
    setAccessibleDescription(text);
    addButton("Cancel", [this] { close(); });
    addButton(button, [this, onYes] {
        close();
        onYes();
    });
}
