#ifndef HMI_ELEMENTS_CONTROLS_H
#define HMI_ELEMENTS_CONTROLS_H

#include "elements/element.h"

#include <functional>
#include <vector>

// The elements that can be touched. A touch never writes by itself: it opens what asks. Space and Enter are a touch.

class Control : public Element {
public:
    Control(const LiveValue *value, const std::string &label, QWidget *parent);

    /// Told of each touch while the control is not locked.
    std::function<void()> onTouch;

    /// Why it is locked, in words; "" if it is not.
    virtual std::string lock() const;

    void touch();

protected:
    /// What stands large in the control.
    virtual QString caption() const = 0;

    QString note() const override;
    QString describe() const override;
    bool isControl() const override { return lock().empty(); }
    void paintContent(QPainter &painter, const QRect &rect) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool isPressed_ = false;
};

/// A number that can be set.
class SetPoint : public Control {
public:
    using Control::Control;

protected:
    QString caption() const override;
};

/// One of several values.
class Choice : public Control {
public:
    Choice(const LiveValue *value, const std::string &label, std::vector<ValueText> choices, QWidget *parent)
        : Control(value, label, parent), choices_(std::move(choices))
    {
    }

    const std::vector<ValueText> &choices() const { return choices_; }

protected:
    QString caption() const override;

private:
    std::vector<ValueText> choices_;
};

/// A button that writes: its caption says what it will do.
class ActionButton : public Control {
public:
    ActionButton(const LiveValue *value, const ScreenElement &config, const std::string &label, QWidget *parent)
        : Control(value, label, parent), config_(config)
    {
    }

    ButtonMode mode() const { return config_.mode; }

    /// What a touch now asks to write: of a toggle the other value.
    double target() const;

    QString caption() const override;

private:
    ScreenElement config_;
};

/// A button that opens something of the panel itself, and writes nothing.
class OpenButton : public Control {
public:
    OpenButton(const std::string &label, const std::string &caption, QWidget *parent)
        : Control(nullptr, label, parent), caption_(QString::fromStdString(caption))
    {
    }

    std::string lock() const override { return ""; }

protected:
    QString caption() const override { return caption_; }

private:
    QString caption_;
};

#endif
