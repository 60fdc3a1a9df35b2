#ifndef HMI_DIALOGS_KEYPAD_H
#define HMI_DIALOGS_KEYPAD_H

#include "dialogs/overlay.h"
#include "model/live_value.h"

#include <functional>

class QLabel;

/// Takes a number within the limits of a value, by touch or keyboard, and gives it as it was typed.
class Keypad : public Overlay {
public:
    Keypad(const LiveValue &value, std::function<void(const std::string &)> onNumber, QWidget *window);

    void refresh() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void buildKeys();
    void type(QChar key);
    void accept();
    QString problem() const;

    const LiveValue &value_;
    std::function<void(const std::string &)> onNumber_;
    QString  typed_;
    QLabel  *now_;
    QLabel  *entry_;
    QLabel  *hint_;
    QPushButton *accept_ = nullptr;
};

/// The limits in words: "0 to 100 %"; "" where there are none.
std::string limitsText(const LiveValue &value);

#endif
