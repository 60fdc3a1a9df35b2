#include "elements/trend_legend.h"

#include "elements/trend_curve.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {

const int WIDE       = 30; // characters of a column
const int NARROW     = 22;
const int NAME_LEAST = 5;  // characters of the name that stay
const int LINE_WIDTH = 32; // of the sample of the curve's line
const int SPACE      = 4;

// Of a name that is too long the end is left out, and of the quality only where that is not enough.
QString fittingText(const TrendLegendRow &row, const QFontMetrics &font, int width)
{
    const QString value = QLatin1Char(' ') + row.valueText(false);
    const int nameWidth = std::max(width - font.horizontalAdvance(value), NAME_LEAST * font.averageCharWidth());
    return font.elidedText(font.elidedText(row.name, Qt::ElideRight, nameWidth) + value, Qt::ElideRight, width);
}

} // namespace

QString TrendLegendRow::valueText(bool isAlwaysWithQuality) const
{
    QString text = value.isEmpty() ? QStringLiteral("-") : value;
    if (!value.isEmpty() && !unit.isEmpty())
        text += QLatin1Char(' ') + unit;
    if (isAlwaysWithQuality || quality != fins::Quality::GOOD)
        text += QLatin1String(", ") + QLatin1String(fins::text(quality));
    return text;
}

TrendLegend::TrendLegend(std::function<void(int row)> touched, QWidget *parent)
    : QWidget(parent), touched_(std::move(touched))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void TrendLegend::setRows(std::vector<TrendLegendRow> rows)
{
    rows_ = std::move(rows);
    update();
}

void TrendLegend::setValue(int row, const QString &value, fins::Quality quality)
{
    TrendLegendRow &shown = rows_[static_cast<std::size_t>(row)];
    if (shown.value == value && shown.quality == quality)
        return;
    shown.value   = value;
    shown.quality = quality;
    update(rectOf(row));
}

void TrendLegend::setSelected(int row)
{
    selected_ = row;
    update();
}

void TrendLegend::fitTo(int width, int most)
{
    const int count  = std::max(1, static_cast<int>(rows_.size()));
    const int wide   = WIDE * fontMetrics().averageCharWidth() + LINE_WIDTH;
    const int narrow = NARROW * fontMetrics().averageCharWidth() + LINE_WIDTH;
    const auto heightIn = [&](int columns) { return (count + columns - 1) / columns * rowHeight(); };
    columns_ = std::clamp(width / wide, 1, count);
    while (columns_ < count && heightIn(columns_) > most && width / (columns_ + 1) >= narrow)
        ++columns_;
    setFixedHeight(heightIn(columns_));
    update();
}

int TrendLegend::rowHeight() const
{
    return fontMetrics().height() + SPACE;
}

QRect TrendLegend::rectOf(int row) const
{
    const int left  = row % columns_ * width() / columns_;
    const int right = (row % columns_ + 1) * width() / columns_;
    return {left, row / columns_ * rowHeight(), right - left - SPACE, rowHeight()};
}

// A value that is not good has a dashed frame and its quality in words; the selected tag has a solid bar at its left.
void TrendLegend::paintRow(QPainter &painter, int row) const
{
    const TrendLegendRow &shown = rows_[static_cast<std::size_t>(row)];
    const QRect rect = rectOf(row);
    if (shown.quality != fins::Quality::GOOD) {
        painter.setPen(QPen(palette().color(QPalette::WindowText), 1, Qt::DashLine));
        painter.drawRect(rect.adjusted(0, 0, -1, -1));
    }
    if (row == selected_)
        painter.fillRect(QRect(rect.left(), rect.top(), 3, rect.height()), palette().color(QPalette::WindowText));
    QFont font = painter.font();
    font.setBold(row == selected_);
    painter.setFont(font);
    painter.setPen(palette().color(QPalette::WindowText));
    const int numberWidth = QFontMetrics(font).horizontalAdvance(QLatin1Char('8')) + SPACE;
    const QRect number(rect.left() + SPACE, rect.top(), numberWidth, rect.height());
    painter.drawText(number, Qt::AlignCenter, QString::number(row + 1));
    const QRect words(number.right() + LINE_WIDTH + SPACE, rect.top(), rect.right() - number.right() - LINE_WIDTH - 2 * SPACE,
                      rect.height());
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter, fittingText(shown, QFontMetrics(font), words.width()));
    painter.setPen(trendPen(row, row == selected_));
    painter.drawLine(number.right() + SPACE, rect.center().y(), number.right() + LINE_WIDTH, rect.center().y());
}

void TrendLegend::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    for (int row = 0; row < static_cast<int>(rows_.size()); ++row)
        paintRow(painter, row);
}

void TrendLegend::mouseReleaseEvent(QMouseEvent *event)
{
    for (int row = 0; row < static_cast<int>(rows_.size()); ++row) {
        if (rectOf(row).contains(event->pos()))
            touched_(row);
    }
}
