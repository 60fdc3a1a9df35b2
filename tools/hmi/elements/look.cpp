#include "elements/look.h"

#include <QtGui/QPainterPath>

#include <algorithm>

namespace look {

QPalette palette()
{
    QPalette colours(CONTROL, FACE);
    colours.setColor(QPalette::Base, FACE);
    colours.setColor(QPalette::AlternateBase, CONTROL);
    colours.setColor(QPalette::Highlight, FOCUS);
    colours.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colours.setColor(role, INK);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colours.setColor(QPalette::Disabled, role, EDGE);
    return colours;
}

QColor priorityColour(int priority)
{
    return priority == 1 ? QColor(0xC0, 0x10, 0x20) : priority == 2 ? QColor(0xF0, 0xA0, 0x00) : QColor(0x70, 0x40, 0x90);
}

const char *priorityWord(int priority)
{
    return priority == 1 ? "urgent" : priority == 2 ? "warning" : "notice";
}

static QPolygonF octagon(const QRectF &r)
{
    const double a = r.width() * 0.29, b = r.width() * 0.71;
    QPolygonF shape;
    for (const QPointF &p : {QPointF(a, 0), QPointF(b, 0), QPointF(r.width(), a), QPointF(r.width(), b), QPointF(b, r.width()),
                             QPointF(a, r.width()), QPointF(0, b), QPointF(0, a)})
        shape << r.topLeft() + p;
    return shape;
}

void drawPriority(QPainter &painter, const QRect &square, int priority)
{
    const QRectF r = QRectF(square).adjusted(1, 1, -1, -1);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(INK, 1));
    painter.setBrush(priorityColour(priority));
    QRectF number = r;
    if (priority == 1) {
        painter.drawPolygon(octagon(r));
    } else if (priority == 2) {
        painter.drawPolygon(QPolygonF({QPointF(r.center().x(), r.top()), r.bottomRight(), r.bottomLeft()}));
        number.setTop(r.top() + r.height() * 0.3);
    } else {
        painter.drawRect(r);
    }
    QFont font = painter.font();
    font.setPixelSize(std::max(6, static_cast<int>(number.height() * 0.7)));
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(priority == 2 ? INK : QColor(Qt::white));
    painter.drawText(number, Qt::AlignCenter, QString::number(priority));
    painter.restore();
}

void drawFrame(QPainter &painter, const QRect &frame, fins::Quality quality, const QColor &face)
{
    using fins::Quality;
    painter.fillRect(frame, face);
    if (quality == Quality::LAST_KNOWN || quality == Quality::REFUSED)
        painter.fillRect(frame, QBrush(HATCH, quality == Quality::REFUSED ? Qt::DiagCrossPattern : Qt::BDiagPattern));
    QPen pen(EDGE, 1);
    if (quality == Quality::WRITE_PENDING)
        pen = QPen(INK, 2, Qt::DotLine);
    else if (quality != Quality::GOOD)
        pen = QPen(INK, 2, Qt::DashLine);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const int half = pen.width() / 2;
    painter.drawRect(frame.adjusted(half, half, -pen.width(), -pen.width()));
}

void drawFocus(QPainter &painter, const QRect &frame)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(FOCUS, 3));
    painter.drawRect(frame.adjusted(1, 1, -2, -2));
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRect(frame.adjusted(3, 3, -4, -4));
}

void drawFitted(QPainter &painter, const QRect &rect, Qt::Alignment alignment, const QString &text, int largest)
{
    const QFont before = painter.font();
    const int smallest = QFontMetrics(before).height() * 2 / 3;
    QFont font = before;
    font.setPixelSize(std::max(smallest, std::min(largest, rect.height() * 4 / 5)));
    int width = QFontMetrics(font).horizontalAdvance(text);
    while (font.pixelSize() > smallest && width > rect.width()) {
        font.setPixelSize(std::max(smallest, std::min(font.pixelSize() - 1, font.pixelSize() * rect.width() / width)));
        width = QFontMetrics(font).horizontalAdvance(text);
    }
    painter.setFont(font);
    const bool fits = width <= rect.width();
    const QString fitted = fits ? text : QFontMetrics(font).elidedText(text, Qt::ElideRight, rect.width());
    painter.drawText(rect, static_cast<int>(alignment | Qt::AlignVCenter | Qt::TextSingleLine), fitted);
    painter.setFont(before);
}

void drawLines(QPainter &painter, const QRect &rect, Qt::Alignment alignment, const QString &text)
{
    const QFont before = painter.font();
    const int flags = static_cast<int>(alignment) | Qt::TextWordWrap;
    QFont font = before;
    font.setPixelSize(QFontInfo(before).pixelSize());
    const int smallest = font.pixelSize() * 2 / 3;
    while (font.pixelSize() > smallest && QFontMetrics(font).boundingRect(rect, flags, text).height() > rect.height())
        font.setPixelSize(font.pixelSize() - 1);
    painter.setFont(font);
    painter.drawText(rect, flags, text);
    painter.setFont(before);
}

} // namespace look
