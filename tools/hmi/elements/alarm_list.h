#ifndef HMI_ELEMENTS_ALARM_LIST_H
#define HMI_ELEMENTS_ALARM_LIST_H

#include "elements/controls.h"
#include "model/panel.h"

/// The most urgent alarms, as many as there is room for, with shape, number and word; alarms that cannot be judged are
/// said to be unknown. A touch opens them all.
class AlarmList : public Control {
public:
    AlarmList(Panel &panel, const std::string &label, QWidget *parent);

    std::string lock() const override { return ""; }

protected:
    QString caption() const override;
    std::uint64_t stamp() const override { return panel_.alarmRevision() + 1; }
    void paintEvent(QPaintEvent *event) override;

private:
    QString rest(std::size_t shown) const;

    Panel &panel_;
};

#endif
