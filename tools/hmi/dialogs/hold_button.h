#ifndef HMI_DIALOGS_HOLD_BUTTON_H
#define HMI_DIALOGS_HOLD_BUTTON_H

#include <QtWidgets/QPushButton>

#include <functional>

/// A button that is held: it tells when it begins to be and, once for each beginning, when it ends, whatever the end is:
/// the finger or key goes up or slides away, the touch is taken back, the focus or the window's turn goes elsewhere, the
/// button is hidden, locked or destroyed.
class HoldButton : public QPushButton {
public:
    HoldButton(const QString &text, QWidget *parent);
    ~HoldButton() override;

    std::function<void()> onHeld;
    std::function<void()> onReleased;

    bool isHeld() const { return isHeld_; }

    void letGo();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    void hold();

    bool isHeld_ = false;
};

#endif
