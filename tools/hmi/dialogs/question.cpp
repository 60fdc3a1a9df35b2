#include "dialogs/question.h"

#include "elements/look.h"
#include "elements/touch_size.h"

#include <QtWidgets/QLabel>

using look::toQt;

// After this time a question that nobody answers is no longer about what somebody wanted.
static const std::chrono::seconds ANSWER_TIME{60};

// A release that finds no link waits for it, for as long as a shift may last.
static const std::chrono::hours RELEASE_TIME{24};

Question::Question(Kind kind, LiveValue &value, const std::string &text, const std::string &shown, QWidget *window)
    : Overlay(toQt("Write " + value.label + "?"), window), value_(value), text_(text), shown_(toQt(shown)),
      change_(new QLabel), reason_(new QLabel)
{
    for (QLabel *label : {change_, reason_}) {
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignCenter);
        body()->addWidget(label);
    }
    change_->setFont([&] {
        QFont font = change_->font();
        font.setPointSizeF(font.pointSizeF() * 1.5);
        return font;
    }());
    addButton("Cancel", [this] { close(); });
    if (kind == Kind::HOLD)
        confirm_ = makeHoldButton();
    else
        confirm_ = addButton("Write " + shown_, [this] { write(); });
}

QPushButton *Question::makeHoldButton()
{
    hold_ = new HoldButton("Hold for " + shown_, this);
    const int size = touchPixels(this);
    hold_->setMinimumSize(2 * size, 2 * size);
    hold_->onHeld     = [this] { press(); };
    hold_->onReleased = [this] { release(); };
    body()->addWidget(hold_, 1);
    return hold_;
}

void Question::refresh()
{
    const QString tag = toQt(value_.sample.name);
    change_->setText(tag + ": " + toQt(shownText(value_.sample)) + " \u2192 " + shown_);
    const std::string lock = Station::lockOf(value_);
    reason_->setText(lock.empty() ? QString() : "locked: " + toQt(lock));
    reason_->setVisible(!lock.empty());
    confirm_->setEnabled(lock.empty());
    confirm_->setAccessibleName(confirm_->text());
    confirm_->setAccessibleDescription(change_->text());
    if (hold_ && hold_->isHeld())
        opened_ = std::chrono::steady_clock::now();
    if (std::chrono::steady_clock::now() - opened_ > ANSWER_TIME)
        close();
}

void Question::write()
{
    if (Station::lockOf(value_).empty())
        value_.station->write(value_, text_);
    close();
}

void Question::press()
{
    value_.station->write(value_, text_);
}

// What was not yet sent of the press never will be; 0 is written all the same, since nobody knows what the PLC holds.
void Question::release()
{
    value_.station->takeBack(value_);
    value_.station->write(value_, "0", RELEASE_TIME);
}
