#include "elements/controls.h"

#include "elements/displays.h"
#include "elements/look.h"
#include "model/station.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>

using look::toQt;

Control::Control(const LiveValue *value, const std::string &label, QWidget *parent) : Element(value, label, parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

std::string Control::lock() const
{
    return Station::lockOf(*value());
}

void Control::touch()
{
    if (lock().empty() && onTouch)
        onTouch();
}

QString Control::note() const
{
    const QString locked = toQt(lock());
    if (locked.isEmpty())
        return Element::note();
    const bool hasFate = value() && (value()->writesUnderWay > 0 || (value()->fate && !fins::isDone({*value()->fate})));
    return (hasFate ? Element::note() + "; " : QString()) + "locked: " + locked;
}

QString Control::describe() const
{
    return caption() + (value() ? ": " + Element::describe() : QString());
}

void Control::paintContent(QPainter &painter, const QRect &rect)
{
    if (!lock().empty())
        painter.setPen(look::DIM);
    const QRect inner = isPressed_ ? rect.adjusted(2, 2, 2, 2) : rect;
    if (isControl()) {
        painter.setPen(QPen(isPressed_ ? look::INK : look::EDGE, isPressed_ ? 3 : 2));
        painter.drawRoundedRect(rect.adjusted(1, 1, -2, -2), 6, 6);
        painter.setPen(look::INK);
    }
    look::drawFitted(painter, inner.adjusted(4, 2, -4, -2), Qt::AlignHCenter, caption(), 32);
}

void Control::mousePressEvent(QMouseEvent *event)
{
    isPressed_ = event->button() == Qt::LeftButton;
    update();
}

void Control::mouseReleaseEvent(QMouseEvent *event)
{
    const bool wasPressed = std::exchange(isPressed_, false);
    update();
    if (wasPressed && rect().contains(event->pos()))
        touch();
}

void Control::keyPressEvent(QKeyEvent *event)
{
    const bool isTouch = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isTouch)
        QWidget::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        touch();
}

QString SetPoint::caption() const
{
    return toQt(shownText(value()->sample));
}

QString Choice::caption() const
{
    const ValueText *now = value()->sample.text.empty() ? nullptr : stateOf(choices_, value()->number());
    return now ? toQt(now->text) : toQt(shownText(value()->sample));
}

double ActionButton::target() const
{
    if (config_.mode != ButtonMode::TOGGLE)
        return config_.value;
    return value()->number() == 0 ? 1 : 0;
}

QString ActionButton::caption() const
{
    const bool isOn = config_.mode == ButtonMode::TOGGLE && !value()->sample.text.empty() && value()->number() != 0;
    return toQt(isOn ? config_.textOn : config_.text);
}
