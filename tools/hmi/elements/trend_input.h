#ifndef HMI_ELEMENTS_TREND_INPUT_H
#define HMI_ELEMENTS_TREND_INPUT_H

#include <QObject>
#include <QPointF>

#include <optional>

class QKeyEvent;
class QMouseEvent;
class QTouchEvent;
class QWheelEvent;
class QWidget;

// What mouse, fingers and keys on a trend's canvas ask for. Places and distances are parts of its width, 0 to 1.

class TrendInput : public QObject {
    Q_OBJECT

public:
    /// The canvas owns it.
    explicit TrendInput(QWidget *canvas);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void zoomWanted(double factor, double at); // of the time shown: 0.5 shows half as long a stretch
    void panWanted(double part);               // positive: to later times
    void cursorWanted(double at);
    void cursorMoveWanted(double part);
    void cursorEndWanted();
    void liveWanted(bool isLive);
    void pauseWanted();                        // or the end of a pause
    void otherTagWanted(int step);

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
    std::optional<QPointF> last_;         // of the mouse or the one finger that is down
    QPointF  pressed_;
    bool     isDragged_ = false;
    double   fingersApart_  = 0;          // of two fingers; 0: there are none
    double   fingersCentre_ = 0;
};

#endif
