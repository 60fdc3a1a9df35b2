#ifndef HMI_DIALOGS_ALARM_VIEW_H
#define HMI_DIALOGS_ALARM_VIEW_H

#include "dialogs/overlay.h"
#include "dialogs/table.h"
#include "model/panel.h"

class QLabel;

/// The alarms that are active or that nobody has seen, and their acknowledgement.
class AlarmView : public Overlay {
public:
    AlarmView(Panel &panel, QWidget *window);

    void refresh() override;

private:
    Panel        &panel_;
    Table        *table_;
    QLabel       *status_;
    QPushButton  *one_;
    QPushButton  *all_;
    std::uint64_t shown_ = ~0ULL;
    std::vector<Panel::AlarmPlace> alarms_; // as shown
};

#endif
