#include "elements/trend_curve.h"

#include <QFontMetricsF>
#include <QPainter>

#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>

#include <algorithm>
#include <cmath>

QPen trendPen(int index, bool isSelected)
{
    // Muted tones: full colours are kept for what is abnormal. Dashes count in widths of the line.
    static const QRgb TONES[TREND_STYLES] = {0x1a1a1a, 0x1f4e8c, 0x7a4a12, 0x24603a, 0x5d3a87, 0x14666c, 0x5a5a5a, 0x6a6a1a};
    static const QVector<qreal> DASHES[TREND_STYLES] = {
        {}, {6, 3}, {1.5, 2}, {8, 2, 1.5, 2}, {12, 3}, {8, 2, 1.5, 2, 1.5, 2}, {3, 3}, {12, 2, 4, 2}};
    QPen pen(QColor(TONES[index % TREND_STYLES]), isSelected ? 2.5 : 1.5);
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::BevelJoin);
    if (!DASHES[index % TREND_STYLES].isEmpty())
        pen.setDashPattern(DASHES[index % TREND_STYLES]);
    return pen;
}

TrendScale trendScale(const std::vector<TrendBucket> &buckets, std::optional<double> minimum, std::optional<double> maximum)
{
    const double farthest = 1e300; // so that the length of a scale is still a number
    double least    = minimum.value_or(INFINITY);
    double greatest = maximum.value_or(-INFINITY);
    const bool isFixed = minimum && maximum && *minimum < *maximum;
    const double fixedLeast = least, fixedGreatest = greatest;
    for (const TrendBucket &bucket : buckets) {
        least    = std::min(least, bucket.minimum);
        greatest = std::max(greatest, bucket.maximum);
    }
    if (isFixed && least == fixedLeast && greatest == fixedGreatest)
        return {0, least, greatest};
    if (least > greatest) { // nothing is known
        least    = minimum.value_or(maximum.value_or(0));
        greatest = least;
    }
    double step = 0;
    least    = std::clamp(least, -farthest, farthest);
    greatest = std::clamp(greatest, -farthest, farthest);
    QwtLinearScaleEngine().autoScale(TREND_SCALE_STEPS, least, greatest, step);
    return {0, least, least < greatest ? greatest : least + std::max(1.0, std::abs(least))};
}

std::vector<QPolygonF> trendLines(const std::vector<TrendBucket> &buckets, const TrendScale &scale)
{
    std::vector<QPolygonF> lines;
    bool isBroken = true;
    for (const TrendBucket &bucket : buckets) {
        const auto begin  = static_cast<double>(bucket.begin);
        const auto end    = static_cast<double>(bucket.end);
        const double mid  = begin + (end - begin) / 2;
        if (isBroken || !bucket.isJoined || bucket.hasGap)
            lines.emplace_back();
        QPolygonF &line = lines.back();
        if (bucket.minimum == bucket.maximum && !bucket.hasGap)
            line << scale.point(begin, bucket.last) << scale.point(end, bucket.last);
        else
            line << scale.point(mid, bucket.minimum) << scale.point(mid, bucket.maximum);
        if (bucket.minimum < bucket.maximum && !bucket.hasGap)
            line << scale.point(end, bucket.last);
        isBroken = bucket.hasGap;
    }
    return lines;
}

void TrendCurve::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &) const
{
    painter->save();
    painter->setPen(pen_);
    for (const QPolygonF &line : lines_) {
        QPolygonF drawn;
        drawn.reserve(line.size());
        for (const QPointF &point : line)
            drawn << QPointF(xMap.transform(point.x()), yMap.transform(point.y()));
        const QRectF extent = drawn.boundingRect();
        if (extent.width() < 1 && extent.height() < 1)
            painter->drawPoint(extent.center()); // what is shorter than a dash shows, too
        else
            painter->drawPolyline(drawn);
    }
    painter->restore();
}

// From top to bottom, each at its curve's end or as near below the one above it as there is room, and then upwards from
// the lower edge.
static std::vector<double> marksApart(const std::vector<double> &wanted, double height, const QRectF &canvas)
{
    std::vector<double> tops = wanted;
    double least = canvas.top();
    for (double &top : tops) {
        top   = std::max(top, least);
        least = top + height;
    }
    double most = canvas.bottom() - height;
    for (auto top = tops.rbegin(); top != tops.rend(); ++top) {
        *top = std::min(*top, most);
        most = *top - height;
    }
    return tops;
}

void TrendMarks::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const
{
    const QFontMetricsF font(painter->font());
    const double fitting = canvas.height() / static_cast<double>(std::max<std::size_t>(1, marks_.size()));
    const QSizeF size(font.horizontalAdvance(QLatin1String("8")) + 6, std::min(font.height(), std::floor(fitting)));
    std::vector<Mark> marks = marks_;
    for (Mark &mark : marks)
        mark.at = {xMap.transform(mark.at.x()), yMap.transform(mark.at.y())};
    std::stable_sort(marks.begin(), marks.end(), [](const Mark &a, const Mark &b) { return a.at.y() < b.at.y(); });
    std::vector<double> tops;
    tops.reserve(marks.size());
    for (const Mark &mark : marks)
        tops.push_back(mark.at.y() - size.height() / 2);
    tops = marksApart(tops, size.height(), canvas);
    painter->save();
    QFont fittingFont = painter->font();
    if (size.height() < font.height())
        fittingFont.setPixelSize(std::max(1, static_cast<int>(size.height()) - 2));
    painter->setFont(fittingFont);
    painter->setPen(Qt::black);
    painter->setBrush(Qt::white);
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const double left = std::clamp(marks[i].at.x(), canvas.left(), canvas.right() - size.width() - 1);
        const QRectF box(QPointF(left, tops[i]), size);
        painter->drawRect(box);
        painter->drawText(box, Qt::AlignCenter, marks[i].text);
    }
    painter->restore();
}

QRectF TrendCursorText::textRect(const QRectF &canvas, const QSizeF &size) const
{
    return {QPointF(isAtRight_ ? canvas.right() - size.width() : canvas.left(), canvas.top()), size};
}
