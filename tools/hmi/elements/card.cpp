#include "elements/card.h"

#include "common/time_text.h"
#include "elements/look.h"
#include "elements/trend_curve.h"

#include <qwt_scale_map.h>

using look::toQt;

static const TrendTime SPAN = 60000;

// The age is always shown, and the trend moves each second.
std::uint64_t Card::stamp() const
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return Element::stamp() * 31 + static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

QString Card::note() const
{
    QString said = Element::note();
    if (!said.isEmpty())
        return said;
    return QString(fins::text(value()->sample.quality)) + ", "
           + toQt(ageText(std::chrono::steady_clock::now() - value()->sample.steady));
}

QSize Card::sizeHint() const
{
    const int line = fontMetrics().height();
    return {line * 11, line * 7};
}

void Card::drawTrend(QPainter &painter, const QRect &rect) const
{
    const TrendTime end   = trendTimeOf(std::chrono::steady_clock::now());
    const TrendTime begin = end - SPAN;
    const auto buckets    = trends_.points(*value()->trend, begin, end + 1, static_cast<std::size_t>(rect.width()));
    QwtScaleMap times, values;
    times.setScaleInterval(static_cast<double>(begin), static_cast<double>(end));
    times.setPaintInterval(rect.left(), rect.right());
    values.setPaintInterval(rect.bottom(), rect.top() + 1); // a line of two pixels is not cut
    TrendCurve curve;
    curve.setPen(QPen(look::FILL, 2));
    curve.setLines(trendLines(buckets, trendScale(buckets, std::nullopt, std::nullopt)));
    painter.setClipRect(rect);
    curve.draw(&painter, times, values, rect);
    painter.setClipping(false);
}

void Card::paintContent(QPainter &painter, const QRect &rect)
{
    const int trend = !value()->trend ? 0 : rect.height() * 2 / 5;
    look::drawFitted(painter, rect.adjusted(0, 0, 0, -trend), Qt::AlignHCenter, toQt(shownText(value()->sample)), 48);
    if (trend > 6)
        drawTrend(painter, QRect(rect.left() + 2, rect.bottom() - trend + 3, rect.width() - 4, trend - 6));
}
