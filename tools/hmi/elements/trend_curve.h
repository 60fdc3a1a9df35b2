#ifndef HMI_ELEMENTS_TREND_CURVE_H
#define HMI_ELEMENTS_TREND_CURVE_H

#include "model/trend_store.h"

#include <QPen>
#include <QPolygonF>
#include <QString>

#include <qwt_plot_item.h>
#include <qwt_plot_textlabel.h>

#include <optional>
#include <vector>

// What a trend draws of its tags: each a curve of its own line style, and its number at the curve's end.

/// How many tags can be told apart by line style alone.
constexpr int TREND_STYLES = 8;

/// Into how many steps a scale is divided, about.
constexpr int TREND_SCALE_STEPS = 5;

/// The line of the tag that is the `index`th of a trend: style and tone.
QPen trendPen(int index, bool isSelected);

/// Moves what is drawn from the store's times and values to those of the axes.
struct TrendScale {
    double offset  = 0; // of the times
    double minimum = 0; // what is drawn at 0
    double maximum = 1; // what is drawn at 1

    QPointF point(double time, double value) const
    {
        return {time + offset, (value - minimum) / (maximum - minimum)};
    }
};

/// From `minimum` to `maximum`, or between round numbers where the buckets need more or these are not known; never empty.
TrendScale trendScale(const std::vector<TrendBucket> &buckets, std::optional<double> minimum, std::optional<double> maximum);

/// One line for every stretch without a gap, through the minimum and maximum of each bucket. A bucket with a gap in it
/// is a line of its own, upright in its middle.
std::vector<QPolygonF> trendLines(const std::vector<TrendBucket> &buckets, const TrendScale &scale);

class TrendCurve : public QwtPlotItem {
public:
    void setLines(std::vector<QPolygonF> lines) { lines_ = std::move(lines); }
    void setPen(const QPen &pen) { pen_ = pen; }
    const std::vector<QPolygonF> &lines() const { return lines_; }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const override;

private:
    std::vector<QPolygonF> lines_;
    QPen pen_;
};

/// The numbers of all curves, so that none hides another.
class TrendMarks : public QwtPlotItem {
public:
    struct Mark {
        QString text;
        QPointF at;
    };

    void setMarks(std::vector<Mark> marks) { marks_ = std::move(marks); }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const override;

private:
    std::vector<Mark> marks_;
};

/// What is told at the line of the cursor, at the upper edge, left or right.
class TrendCursorText : public QwtPlotTextLabel {
public:
    void setAtRight(bool isAtRight) { isAtRight_ = isAtRight; }

protected:
    QRectF textRect(const QRectF &canvas, const QSizeF &size) const override;

private:
    bool isAtRight_ = false;
};

#endif
