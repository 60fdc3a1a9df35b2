#include "dialogs/overlay.h"

#include "elements/look.h"
#include "elements/touch_size.h"

#include <QtCore/QEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QLabel>

Overlay::Overlay(const QString &title, QWidget *window) : QWidget(window), frame_(new QWidget(this))
{
    setAccessibleName(title);
    setFocusPolicy(Qt::StrongFocus);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(4, 4, 4, 4);
    outer->addWidget(frame_, 1);
    frame_->setAutoFillBackground(true);
    auto *inner = new QVBoxLayout(frame_);
    inner->setContentsMargins(8, 4, 8, 8);
    auto *heading = new QLabel(title, frame_);
    QFont font = heading->font();
    font.setBold(true);
    heading->setFont(font);
    inner->addWidget(heading);
    body_ = new QVBoxLayout;
    inner->addLayout(body_, 1);
    buttons_ = new QHBoxLayout;
    inner->addLayout(buttons_);
    window->installEventFilter(this);
    hide();
}

void Overlay::appear()
{
    cover();
    show();
    raise();
    refresh();
    (first_ ? first_ : this)->setFocus();
}

void Overlay::cover()
{
    setGeometry(parentWidget()->rect());
}

QPushButton *Overlay::makeButton(const QString &text)
{
    auto *button = new QPushButton(text, frame_);
    const int size = touchPixels(this);
    button->setMinimumSize(size, size);
    button->setAutoDefault(true);
    return button;
}

QPushButton *Overlay::addButton(const QString &text, const std::function<void()> &onClick)
{
    QPushButton *button = makeButton(text);
    QObject::connect(button, &QPushButton::clicked, this, onClick);
    buttons_->addWidget(button, 1);
    first_ = first_ ? first_ : button;
    return button;
}

void Overlay::close()
{
    if (isHidden())
        return;
    hide();
    if (onClosed)
        onClosed();
    deleteLater();
}

bool Overlay::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        cover();
    return QWidget::eventFilter(watched, event);
}

void Overlay::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

// The keyboard stays in front of what is covered.
bool Overlay::focusNextPrevChild(bool next)
{
    QWidget *from = focusWidget() ? focusWidget() : this;
    for (QWidget *to = next ? from->nextInFocusChain() : from->previousInFocusChain(); to != from;
         to = next ? to->nextInFocusChain() : to->previousInFocusChain()) {
        if (to != this && isAncestorOf(to) && to->isEnabled() && to->isVisible() && (to->focusPolicy() & Qt::TabFocus)) {
            to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return true;
}

void Overlay::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), look::EDGE);
}
