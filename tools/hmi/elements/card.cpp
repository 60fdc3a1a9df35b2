#include "elements/card.h"

#include "elements/look.h"

#include <algorithm>
#include <cmath>
#include <limits>

using look::toQt;

static const std::size_t COURSE_POINTS = 60;

void Card::sample(std::chrono::steady_clock::time_point now)
{
    if (!course_.empty() && now - last_ < std::chrono::seconds(1))
        return;
    last_ = now;
    course_.push_back(value()->isGood() ? value()->number() : std::nan(""));
    if (course_.size() > COURSE_POINTS)
        course_.pop_front();
}

// The age is always shown, and the trend moves each second.
std::uint64_t Card::stamp() const
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(last_.time_since_epoch()).count();
    return Element::stamp() * 31 + static_cast<std::uint64_t>(seconds);
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

static void drawCourse(QPainter &painter, const QRect &rect, const std::deque<double> &course)
{
    double low  = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const double value : course) {
        if (std::isfinite(value)) {
            low  = std::min(low, value);
            high = std::max(high, value);
        }
    }
    if (!(low <= high))
        return;
    painter.setPen(QPen(look::FILL, 2));
    const double step = static_cast<double>(rect.width()) / (COURSE_POINTS - 1);
    QPolygonF line;
    const auto end = [&] {
        if (line.size() == 1)
            painter.drawPoint(line.front());
        painter.drawPolyline(line);
        line.clear();
    };
    for (std::size_t i = 0; i < course.size(); ++i) {
        if (!std::isfinite(course[i])) {
            end();
            continue;
        }
        const double x = rect.right() - step * static_cast<double>(course.size() - 1 - i);
        const double y = high > low ? rect.bottom() - (course[i] - low) / (high - low) * rect.height() : rect.center().y();
        line << QPointF(x, y);
    }
    end();
}

void Card::paintContent(QPainter &painter, const QRect &rect)
{
    const int trend = value()->kind == ValueKind::TEXT ? 0 : rect.height() * 2 / 5;
    look::drawFitted(painter, rect.adjusted(0, 0, 0, -trend), Qt::AlignHCenter, toQt(shownText(value()->sample)), 48);
    if (trend > 6)
        drawCourse(painter, QRect(rect.left() + 2, rect.bottom() - trend + 3, rect.width() - 4, trend - 6), course_);
}
