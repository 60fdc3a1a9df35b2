#ifndef HMI_DIALOGS_TREND_VIEW_H
#define HMI_DIALOGS_TREND_VIEW_H

#include "dialogs/overlay.h"
#include "elements/trend_element.h"
#include "model/panel.h"

class QLabel;

/// A trend as large as the window, which can be saved as values and as a picture.
class TrendView : public Overlay {
public:
    TrendView(Panel &panel, const std::vector<const LiveValue *> &values, std::chrono::minutes span, const QString &title,
              QWidget *window);

    void refresh() override { trend_->refresh(); }

    TrendPlot &plot() { return trend_->plot(); }

private:
    void save(const std::string &ending, std::function<std::string()> make);

    Panel        &panel_;
    TrendElement *trend_;
    QLabel       *status_;
};

#endif
