#include "dialogs/alarm_view.h"

#include "common/numbers.h"
#include "elements/look.h"
#include "model/alarm_words.h"
#include "model/link_words.h"

#include <QtWidgets/QLabel>

using look::toQt;

AlarmView::AlarmView(Panel &panel, QWidget *window)
    : Overlay("Alarms", window), panel_(panel),
      table_(new Table({"", "Alarm", "State", "First", "Last", "Times"}, 1, this)), status_(new QLabel)
{
    status_->setWordWrap(true);
    body()->addWidget(table_, 1);
    body()->addWidget(status_);
    addButton("Close", [this] { close(); });
    one_ = addButton("Acknowledge", [this] {
        const int row = table_->currentRow();
        if (row >= 0 && row < static_cast<int>(alarms_.size()))
            panel_.acknowledge(alarms_[static_cast<std::size_t>(row)]);
        refresh();
    });
    all_ = addButton("Acknowledge all", [this] {
        panel_.acknowledgeAll();
        refresh();
    });
}

void AlarmView::refresh()
{
    if (shown_ == panel_.alarmRevision())
        return;
    shown_  = panel_.alarmRevision();
    alarms_ = panel_.alarms();
    std::vector<Table::Row> rows;
    for (const Panel::AlarmPlace &place : alarms_) {
        const AlarmRule &rule     = place.rule();
        const AlarmStatus &status = place.status();
        rows.push_back({{look::priorityWord(rule.priority), toQt(rule.text), toQt(alarmWords(status)), toQt(clockText(status.first)),
                         toQt(clockText(status.last)), QString::number(status.comings)},
                        priorityIcon(rule.priority, 32), !status.isAcknowledged});
    }
    table_->fill(rows);
    one_->setEnabled(!rows.empty());
    all_->setEnabled(!rows.empty());
    const std::size_t unknown = panel_.unknownAlarms();
    QString text = rows.empty() ? QString("no alarm is known to be active") : toQt(counted(rows.size(), "alarm"));
    if (unknown > 0)
        text += QString("; %1 cannot be judged, since their values are not good").arg(unknown);
    status_->setText(text);
}
