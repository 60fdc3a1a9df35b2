#include "elements/trend_input.h"

#include <QKeyEvent>
#include <QLineF>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

const double NOTCH        = 0.8;  // by which a notch of the wheel, 120 units, shortens what is shown
const double KEY_ZOOM     = 0.5;
const double KEY_PAN      = 0.1;  // of the span
const double KEY_CURSOR   = 0.01;
const double DRAG_PIXELS  = 8;    // a finger that trembles less touches one place
const double LEAST_APART  = 8;    // two fingers that are nearer do not tell how far to zoom

} // namespace

TrendInput::TrendInput(QWidget *canvas, Actions actions)
    : QObject(canvas), canvas_(canvas), actions_(std::move(actions))
{
    canvas->setAttribute(Qt::WA_AcceptTouchEvents);
    canvas->setFocusPolicy(Qt::StrongFocus);
    canvas->installEventFilter(this);
}

bool TrendInput::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != canvas_)
        return false;
    switch (event->type()) {
    case QEvent::Wheel:
        return takeWheel(*static_cast<QWheelEvent *>(event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return takeMouse(*static_cast<QMouseEvent *>(event));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return takeTouch(*static_cast<QTouchEvent *>(event));
    case QEvent::KeyPress:
        return takeKey(*static_cast<QKeyEvent *>(event));
    default:
        return false;
    }
}

double TrendInput::part(double pixels) const
{
    return pixels / std::max(1, canvas_->width());
}

bool TrendInput::takeWheel(const QWheelEvent &event)
{
    const double notches = event.angleDelta().y() / 120.0;
    if (notches != 0)
        actions_.zoom(std::pow(NOTCH, notches), part(event.position().x()));
    return true;
}

bool TrendInput::takeMouse(const QMouseEvent &event)
{
    if (event.type() == QEvent::MouseMove) {
        if (event.buttons() & Qt::LeftButton)
            moveTo(event.localPos());
        return true;
    }
    if (event.button() != Qt::LeftButton)
        return false;
    if (event.type() == QEvent::MouseButtonPress)
        press(event.localPos());
    else
        release(event.localPos());
    return false; // the canvas may take the focus
}

void TrendInput::press(QPointF at)
{
    last_ = pressed_ = at;
    isDragged_ = false;
}

void TrendInput::moveTo(QPointF at)
{
    if (!last_)
        return;
    isDragged_ = isDragged_ || QLineF(pressed_, at).length() >= DRAG_PIXELS;
    if (!isDragged_)
        return;
    const double moved = at.x() - last_->x();
    last_ = at;
    if (moved != 0)
        actions_.pan(-part(moved)); // what is shown follows the finger
}

void TrendInput::release(QPointF at)
{
    if (last_ && !isDragged_)
        actions_.setCursor(part(at.x()));
    last_.reset();
}

// One finger does what the mouse does; two zoom and move. Lifting one of two ends it all: the other sets no cursor.
bool TrendInput::takeTouch(const QTouchEvent &event)
{
    const QList<QTouchEvent::TouchPoint> &points = event.touchPoints();
    if (event.type() == QEvent::TouchCancel || points.isEmpty()) {
        last_.reset();
        fingersApart_ = 0;
        return true;
    }
    if (points.size() >= 2) {
        last_.reset();
        const QLineF now(points.at(0).pos(), points.at(1).pos());
        const double apart = std::max(now.length(), LEAST_APART);
        if (fingersApart_ > 0) {
            actions_.pan(-part(now.center().x() - fingersCentre_));
            actions_.zoom(fingersApart_ / apart, part(now.center().x()));
        }
        fingersApart_  = event.type() == QEvent::TouchEnd ? 0 : apart;
        fingersCentre_ = now.center().x();
        return true;
    }
    const QPointF at = points.at(0).pos();
    if (event.type() == QEvent::TouchBegin) {
        fingersApart_ = 0;
        canvas_->setFocus(Qt::MouseFocusReason);
        press(at);
    } else if (event.type() == QEvent::TouchEnd) {
        release(at);
        fingersApart_ = 0;
    } else {
        moveTo(at);
    }
    return true;
}

bool TrendInput::takeKey(const QKeyEvent &event)
{
    const bool isCursor = event.modifiers() & Qt::ShiftModifier;
    const auto move = [&](double direction) {
        if (isCursor)
            actions_.moveCursor(direction * KEY_CURSOR);
        else
            actions_.pan(direction * KEY_PAN);
    };
    switch (event.key()) {
    case Qt::Key_Left:   move(-1); return true;
    case Qt::Key_Right:  move(+1); return true;
    case Qt::Key_Up:     actions_.selectOther(-1); return true;
    case Qt::Key_Down:   actions_.selectOther(+1); return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal:  actions_.zoom(KEY_ZOOM, 0.5); return true;
    case Qt::Key_Minus:  actions_.zoom(1 / KEY_ZOOM, 0.5); return true;
    case Qt::Key_Home:   actions_.goLive(); return true;
    case Qt::Key_Space:  actions_.pause(); return true;
    case Qt::Key_Escape: actions_.endCursor(); return true;
    default:             return false;
    }
}
