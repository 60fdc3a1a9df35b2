#ifndef HMI_ELEMENTS_ELEMENT_H
#define HMI_ELEMENTS_ELEMENT_H

#include "model/live_value.h"

#include <QtGui/QPixmap>
#include <QtWidgets/QStyle>
#include <QtWidgets/QWidget>

// What all elements of a screen share: a label, the frame that tells the quality of the value, the fate of the latest
// write, what a screen reader says, and that nothing is painted more often than refresh() is called.

class Element : public QWidget {
public:
    /// `value` may be null, for what shows no value of a PLC; else it outlives the element.
    Element(const LiveValue *value, const std::string &label, QWidget *parent);

    /// Paints anew if anything has changed since the last call.
    virtual void refresh();

    /// What it shows now, in words: what a screen reader says.
    QString spoken() const { return accessibleDescription(); }

    const LiveValue *value() const { return value_; }

protected:
    /// The content within the frame; the label has its own line above.
    virtual void paintContent(QPainter &painter, const QRect &rect) = 0;

    /// Grows with everything that the picture depends on.
    virtual std::uint64_t stamp() const;

    /// What the element shows, without its label.
    virtual QString describe() const;

    /// True for what can be touched: it has another ground and takes the keyboard.
    virtual bool isControl() const { return false; }

    /// The small line below: quality and age where the value is not good, the fate of a write, a lock.
    virtual QString note() const;

    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

    /// Alignment at the side where the language begins.
    Qt::Alignment start() const { return layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft; }

    fins::Quality quality() const { return value_ ? value_->sample.quality : fins::Quality::GOOD; }
    int priority() const { return value_ ? value_->alarmPriority : 0; }

private:
    struct GroundKey {
        QSize           size;
        fins::Quality   quality;
        int             priority;
        bool            isControl;
        Qt::LayoutDirection direction;
        QString         note;

        bool operator==(const GroundKey &other) const
        {
            return size == other.size && quality == other.quality && priority == other.priority
                   && isControl == other.isControl && direction == other.direction && note == other.note;
        }
    };

    void describeAnew();
    QPixmap makeGround(const QString &said) const;

    const LiveValue *value_;
    QString          label_;
    QPixmap          ground_; // what is painted below the content, for groundKey_
    GroundKey        groundKey_ = {};
    std::uint64_t    painted_ = 0;
    bool             wasPainted_ = false;
};

#endif
