#ifndef HMI_ELEMENTS_CARD_H
#define HMI_ELEMENTS_CARD_H

#include "elements/element.h"

#include <chrono>
#include <deque>

/// A card: a value with its unit, quality and age, and a small trend of its latest minute.
class Card : public Element {
public:
    Card(const LiveValue *value, QWidget *parent) : Element(value, value->label, parent) {}

    /// The value as it is now becomes the next point of the trend, where a second has passed since the last; called with
    /// each refresh.
    void sample(std::chrono::steady_clock::time_point now);

    QSize sizeHint() const override;

protected:
    void paintContent(QPainter &painter, const QRect &rect) override;
    std::uint64_t stamp() const override;
    QString note() const override;

private:
    std::deque<double> course_; // a second each; NaN: not known, or no number
    std::chrono::steady_clock::time_point last_;
};

#endif
