#ifndef HMI_DIALOGS_QUESTION_H
#define HMI_DIALOGS_QUESTION_H

#include "dialogs/hold_button.h"
#include "dialogs/overlay.h"
#include "model/station.h"

class QLabel;

// The second touch of every write. It names the tag, the value as it is and as it will be, locks with the link, and closes
// by itself when nobody answers. What is held is written while its button is held: with a lost touch, focus or link 0 is.

class Question : public Overlay {
public:
    enum class Kind { WRITE, HOLD };

    /// `text` is what is written, as people write it; `shown` how it reads.
    Question(Kind kind, LiveValue &value, const std::string &text, const std::string &shown, QWidget *window);

    void refresh() override;

private:
    QPushButton *makeHoldButton();
    void write();
    void press();
    void release();

    LiveValue   &value_;
    std::string  text_;
    QString      shown_;
    QLabel      *change_;
    QLabel      *reason_;
    QPushButton *confirm_ = nullptr;
    HoldButton  *hold_ = nullptr; // is confirm_, where something is held
    std::chrono::steady_clock::time_point opened_ = std::chrono::steady_clock::now();
};

#endif
