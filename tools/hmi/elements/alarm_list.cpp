#include "elements/alarm_list.h"

#include "common/numbers.h"
#include "elements/look.h"
#include "model/alarm_words.h"

#include <QtGui/QPainter>

#include <algorithm>

using look::toQt;

AlarmList::AlarmList(Panel &panel, const std::string &label, QWidget *parent) : Control(nullptr, label, parent), panel_(panel)
{
}

// What is said below, or instead of, those that are shown.
QString AlarmList::rest(std::size_t shown) const
{
    const std::size_t more    = panel_.alarms().size() - shown;
    const std::size_t unknown = panel_.unknownAlarms();
    QString text = shown == 0 && more == 0 ? QString("no alarm") : more > 0 ? QString("%1 more").arg(more) : QString();
    if (unknown > 0)
        text = (text == "no alarm" || text.isEmpty() ? QString() : text + "; ") + toQt(counted(unknown, "alarm")) + " unknown";
    return text;
}

QString AlarmList::caption() const
{
    QStringList lines;
    for (const Panel::AlarmPlace &place : panel_.alarms())
        lines << QString("priority %1, %2: %3, %4").arg(place.rule().priority).arg(look::priorityWord(place.rule().priority))
                     .arg(toQt(place.rule().text), toQt(alarmWords(place.status())));
    const QString said = rest(static_cast<std::size_t>(lines.size()));
    if (!said.isEmpty())
        lines << said;
    return lines.join("; ");
}

void AlarmList::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const std::vector<Panel::AlarmPlace> alarms = panel_.alarms();
    painter.fillRect(rect(), look::FACE);
    painter.setPen(look::EDGE);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const QRect inner = rect().adjusted(4, 3, -4, -3);
    const int line = fontMetrics().height() + 3;
    const int room = std::max(1, inner.height() / line);
    const int count = static_cast<int>(alarms.size());
    const int shown = count <= room && rest(alarms.size()).isEmpty() ? count : std::min(count, std::max(1, room - 1));
    QRect row(inner.left(), inner.top(), inner.width(), line);
    for (int i = 0; i < shown; ++i, row.translate(0, line)) {
        const AlarmRule &rule     = alarms[static_cast<std::size_t>(i)].rule();
        const AlarmStatus &status = alarms[static_cast<std::size_t>(i)].status();
        const QRect mark(row.left(), row.top(), line, line);
        look::drawPriority(painter, QStyle::visualRect(layoutDirection(), row, mark), rule.priority);
        QFont bold = font();
        bold.setBold(!status.isAcknowledged);
        painter.setFont(bold);
        painter.setPen(look::INK);
        const QRect words = QStyle::visualRect(layoutDirection(), row, row.adjusted(line + 4, 0, 0, 0));
        const QString state = toQt(alarmWords(status));
        QString text = toQt(rule.text) + " (" + state + ")";
        if (painter.fontMetrics().horizontalAdvance(text) > words.width()) // what nobody has seen is bold, too
            text = toQt(rule.text) + " (" + state.left(state.lastIndexOf(',')) + ")";
        look::drawFitted(painter, words, start(), text, line);
    }
    painter.setFont(font());
    painter.setPen(look::DIM);
    if (row.bottom() <= inner.bottom() + 1)
        look::drawFitted(painter, row, start(), rest(static_cast<std::size_t>(shown)), line);
    if (hasFocus())
        look::drawFocus(painter, rect());
}
