#include "dialogs/journal_view.h"

#include "common/numbers.h"
#include "elements/look.h"
#include "model/link_words.h"

#include <QtCore/QPointer>
#include <QtWidgets/QLabel>

using look::toQt;

// A journal that is looked at is filled anew no more often than this.
static const std::chrono::milliseconds FILL_PAUSE{500};

JournalView::JournalView(Panel &panel, QWidget *window)
    : Overlay("Journal", window), panel_(panel), table_(new Table({"Time", "What", "Tag", "Old", "New", "Words"}, 5, this)),
      status_(new QLabel)
{
    body()->addWidget(table_, 1);
    body()->addWidget(status_);
    status_->setWordWrap(true);
    QObject::connect(table_, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (row >= 0 && table_->item(row, 5))
            status_->setText(table_->item(row, 5)->text()); // the column may be too narrow for all of it
    });
    addButton("Close", [this] { close(); });
    addButton("Save as CSV", [this] { save(); });
}

void JournalView::refresh()
{
    const auto now = std::chrono::steady_clock::now();
    if (shown_ == panel_.journalRevision() || now - filled_ < FILL_PAUSE)
        return;
    shown_  = panel_.journalRevision();
    filled_ = now;
    const Journal &journal = panel_.journal();
    std::vector<Table::Row> rows;
    for (std::size_t i = 0; i < journal.size(); ++i) {
        const JournalEvent &event = journal.at(i);
        rows.push_back({{toQt(clockText(event.utc)), text(event.kind), toQt(event.tag), toQt(event.oldText), toQt(event.newText),
                         toQt(event.words)}, {}, false});
    }
    table_->fill(rows);
    const std::uint64_t dropped = journal.dropped();
    status_->setText(toQt(counted(journal.size(), "event"))
                     + (dropped > 0 ? QString("; %1 earlier ones are no longer kept").arg(dropped) : QString()));
}

void JournalView::save()
{
    panel_.saver().save("journal", ".csv", [csv = panel_.journal().csv()] { return csv; },
                        [label = QPointer<QLabel>(status_)](const std::string &line) {
                            if (label)
                                label->setText(toQt(line));
                        });
}
