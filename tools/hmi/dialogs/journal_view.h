#ifndef HMI_DIALOGS_JOURNAL_VIEW_H
#define HMI_DIALOGS_JOURNAL_VIEW_H

#include "dialogs/overlay.h"
#include "dialogs/table.h"
#include "model/panel.h"

class QLabel;

/// The latest events of the panel, the newest first, and their file.
class JournalView : public Overlay {
public:
    JournalView(Panel &panel, QWidget *window);

    void refresh() override;

private:
    void save();

    Panel        &panel_;
    Table        *table_;
    QLabel       *status_;
    std::uint64_t shown_ = ~0ULL;
    std::chrono::steady_clock::time_point filled_;
};

#endif
