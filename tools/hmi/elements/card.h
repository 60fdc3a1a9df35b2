#ifndef HMI_ELEMENTS_CARD_H
#define HMI_ELEMENTS_CARD_H

#include "elements/element.h"
#include "model/trend_store.h"

/// A card: a value with its unit, quality and age, and a small trend of its latest minute.
class Card : public Element {
public:
    /// `trends` have the value's course, and outlive the card.
    Card(const LiveValue *value, const TrendStore &trends, QWidget *parent)
        : Element(value, value->label, parent), trends_(trends) {}

    QSize sizeHint() const override;

protected:
    void paintContent(QPainter &painter, const QRect &rect) override;
    std::uint64_t stamp() const override;
    QString note() const override;

private:
    void drawTrend(QPainter &painter, const QRect &rect) const;

    const TrendStore &trends_;
};

#endif
