#ifndef HMI_ELEMENTS_DISPLAYS_H
#define HMI_ELEMENTS_DISPLAYS_H

#include "elements/element.h"

#include <vector>

// The elements that only show: a value, a fixed text, a bar, a lamp, a frame around others.

/// A number or text with its unit.
class ValueElement : public Element {
public:
    using Element::Element;

protected:
    void paintContent(QPainter &painter, const QRect &rect) override;
};

/// A text that never changes.
class FixedText : public Element {
public:
    FixedText(const std::string &text, QWidget *parent) : Element(nullptr, text, parent) {}

protected:
    void paintEvent(QPaintEvent *event) override;
    void paintContent(QPainter &, const QRect &) override {}
};

/// A frame around elements, with a title.
class GroupFrame : public Element {
public:
    GroupFrame(const std::string &title, QWidget *parent) : Element(nullptr, title, parent) {}

protected:
    void paintEvent(QPaintEvent *event) override;
    void paintContent(QPainter &, const QRect &) override {}
};

/// A number between two ends, filled from the lower one; upright where it is higher than wide.
class BarElement : public Element {
public:
    BarElement(const LiveValue *value, const std::string &label, double minimum, double maximum, QWidget *parent)
        : Element(value, label, parent), minimum_(minimum), maximum_(maximum)
    {
    }

    /// The filled part, 0 to 1; 0 for what is no number.
    double filled() const;

protected:
    void paintContent(QPainter &painter, const QRect &rect) override;
    QString describe() const override;

private:
    double minimum_;
    double maximum_;
};

/// One of several states, each a value with a text; an abnormal one has the mark of its priority.
class LampElement : public Element {
public:
    LampElement(const LiveValue *value, const std::string &label, std::vector<ValueText> states, QWidget *parent)
        : Element(value, label, parent), states_(std::move(states))
    {
    }

    /// The state that the value stands for, or null.
    const ValueText *state() const;

protected:
    void paintContent(QPainter &painter, const QRect &rect) override;
    QString describe() const override;

private:
    std::vector<ValueText> states_;
};

/// The state that is called so in a list, or null.
const ValueText *stateOf(const std::vector<ValueText> &states, double value);

#endif
