#ifndef HMI_ELEMENTS_TREND_INPUT_H
#define HMI_ELEMENTS_TREND_INPUT_H

#include <QObject>
#include <QPointF>

#include <functional>
#include <optional>

class QKeyEvent;
class QMouseEvent;
class QTouchEvent;
class QWheelEvent;
class QWidget;

// What mouse, fingers and keys on a trend's canvas ask for. Places and distances are parts of its width, 0 to 1.

class TrendInput : public QObject {
public:
    struct Actions {
        std::function<void(double factor, double at)> zoom; // of the time shown: 0.5 shows half as long a stretch
        std::function<void(double part)> pan;               // positive: to later times
        std::function<void(double at)>   setCursor;
        std::function<void(double part)> moveCursor;
        std::function<void()>            endCursor;
        std::function<void()>            goLive;
        std::function<void()>            pause;             // or end the pause
        std::function<void(int step)>    selectOther;
    };

    /// The canvas owns it.
    TrendInput(QWidget *canvas, Actions actions);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool takeWheel(const QWheelEvent &event);
    bool takeMouse(const QMouseEvent &event);
    bool takeTouch(const QTouchEvent &event);
    bool takeKey(const QKeyEvent &event);
    void press(QPointF at);
    void moveTo(QPointF at);
    void release(QPointF at);
    double part(double pixels) const;

    QWidget *canvas_;
    Actions  actions_;
    std::optional<QPointF> last_;         // of the mouse or the one finger that is down
    QPointF  pressed_;
    bool     isDragged_ = false;
    double   fingersApart_  = 0;          // of two fingers; 0: there are none
    double   fingersCentre_ = 0;
};

#endif
