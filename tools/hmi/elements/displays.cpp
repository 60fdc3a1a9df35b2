#include "elements/displays.h"

#include "elements/look.h"

#include <algorithm>
#include <cmath>

using look::toQt;

static const int LARGEST_TEXT = 64; // pixels
static const int TITLE_TEXT   = 40;

void ValueElement::paintContent(QPainter &painter, const QRect &rect)
{
    const bool isText = value()->kind == ValueKind::TEXT;
    look::drawFitted(painter, rect, isText ? start() : Qt::AlignHCenter, toQt(shownText(value()->sample)), LARGEST_TEXT);
}

void FixedText::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), look::GROUND);
    painter.setPen(look::INK);
    look::drawFitted(painter, rect().adjusted(4, 0, -4, 0), start(), accessibleName(), TITLE_TEXT);
}

void GroupFrame::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), look::GROUND);
    painter.setPen(QPen(look::EDGE, 2));
    painter.drawRect(rect().adjusted(1, 1, -2, -2));
    painter.setPen(look::DIM);
    const QRect head = rect().adjusted(6, 2, -6, 0);
    look::drawFitted(painter, QRect(head.left(), head.top(), head.width(), fontMetrics().height()), start(),
                     accessibleName(), fontMetrics().height());
}

double BarElement::filled() const
{
    const double number = value()->number();
    if (!std::isfinite(number) || value()->sample.text.empty())
        return 0;
    return std::clamp((number - minimum_) / (maximum_ - minimum_), 0.0, 1.0);
}

QString BarElement::describe() const
{
    return Element::describe() + QString(", from %1 to %2").arg(minimum_).arg(maximum_);
}

void BarElement::paintContent(QPainter &painter, const QRect &rect)
{
    const int line = std::min(painter.fontMetrics().height() + 4, rect.height() / 2);
    const QRect number(rect.left(), rect.bottom() - line + 1, rect.width(), line);
    QRect bar = rect.adjusted(2, 2, -2, -line - 2);
    painter.fillRect(bar, look::GROUND);
    QRect fill = bar;
    if (bar.height() > bar.width())
        fill.setTop(bar.bottom() + 1 - static_cast<int>(std::lround(bar.height() * filled())));
    else
        fill.setWidth(static_cast<int>(std::lround(bar.width() * filled())));
    fill = QStyle::visualRect(layoutDirection(), bar, fill);
    painter.fillRect(fill, value()->isGood() ? QBrush(look::FILL) : QBrush(look::FILL, Qt::BDiagPattern));
    painter.setPen(look::EDGE);
    painter.drawRect(bar.adjusted(0, 0, -1, -1));
    painter.setPen(look::INK);
    look::drawFitted(painter, number, Qt::AlignHCenter, toQt(shownText(value()->sample)), line);
}

const ValueText *stateOf(const std::vector<ValueText> &states, double value)
{
    const auto found = std::find_if(states.begin(), states.end(), [&](const ValueText &state) { return state.value == value; });
    return found == states.end() ? nullptr : &*found;
}

const ValueText *LampElement::state() const
{
    return value()->sample.text.empty() ? nullptr : stateOf(states_, value()->number());
}

QString LampElement::describe() const
{
    const ValueText *now = state();
    QString text = now ? toQt(now->text) : value()->sample.text.empty() ? QString() : QString("no state of this lamp");
    if (now && now->priority > 0)
        text += QString(", abnormal: %1").arg(look::priorityWord(now->priority));
    return text + (text.isEmpty() ? "" : ": ") + Element::describe();
}

void LampElement::paintContent(QPainter &painter, const QRect &rect)
{
    const ValueText *now = state();
    const int size = std::min({rect.height() - 4, rect.width() / 4, 48});
    const QRect lamp = QStyle::visualRect(layoutDirection(), rect,
                                          QRect(rect.left() + 2, rect.center().y() - size / 2, size, size));
    if (now && now->priority > 0 && value()->isGood()) {
        look::drawPriority(painter, lamp, now->priority);
    } else {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(look::INK, 2));
        const bool isOn = now && now->value != 0 && value()->isGood();
        painter.setBrush(isOn ? QBrush(Qt::white) : now ? QBrush(look::EDGE) : QBrush(Qt::NoBrush));
        painter.drawEllipse(lamp.adjusted(2, 2, -2, -2));
        painter.restore();
    }
    const QRect words = QStyle::visualRect(layoutDirection(), rect, rect.adjusted(size + 8, 0, 0, 0));
    const QString text = now ? toQt(now->text) : toQt(shownText(value()->sample)) + (value()->sample.text.empty() ? "" : " ?");
    look::drawFitted(painter, words, start(), text, 28);
}
