#ifndef HMI_DIALOGS_LINK_VIEW_H
#define HMI_DIALOGS_LINK_VIEW_H

#include "dialogs/overlay.h"
#include "model/panel.h"

class QLabel;

/// The links to all PLCs: their state in words, and where there is none, why and what to try.
class LinkView : public Overlay {
public:
    LinkView(Panel &panel, QWidget *window);

    void refresh() override;

private:
    Panel  &panel_;
    QLabel *text_;
};

#endif
