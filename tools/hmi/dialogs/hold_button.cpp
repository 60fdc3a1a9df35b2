#include "dialogs/hold_button.h"

#include <QtCore/QEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>

#include <utility>

HoldButton::HoldButton(const QString &text, QWidget *parent) : QPushButton(text, parent) {}

HoldButton::~HoldButton()
{
    letGo();
}

void HoldButton::hold()
{
    if (!isEnabled() || std::exchange(isHeld_, true))
        return;
    setDown(true);
    if (onHeld)
        onHeld();
}

void HoldButton::letGo()
{
    if (!std::exchange(isHeld_, false))
        return;
    setDown(false);
    if (onReleased)
        onReleased();
}

bool HoldButton::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::TouchCancel:
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowDeactivate:
    case QEvent::UngrabMouse:
        letGo();
        break;
    default:
        break;
    }
    return QPushButton::event(event);
}

void HoldButton::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        letGo();
    QPushButton::changeEvent(event);
}

void HoldButton::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        hold();
}

void HoldButton::mouseMoveEvent(QMouseEvent *event)
{
    if (!rect().contains(event->pos()))
        letGo();
}

void HoldButton::mouseReleaseEvent(QMouseEvent *)
{
    letGo();
}

void HoldButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space)
        QPushButton::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        hold();
}

void HoldButton::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        letGo();
    else
        QPushButton::keyReleaseEvent(event);
}
