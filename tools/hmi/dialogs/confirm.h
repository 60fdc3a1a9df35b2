#ifndef HMI_DIALOGS_CONFIRM_H
#define HMI_DIALOGS_CONFIRM_H

#include "dialogs/overlay.h"

/// Asks before something is done: `text` says what, the button does it.
class Confirm : public Overlay {
public:
    Confirm(const QString &title, const QString &text, const QString &button, const std::function<void()> &onYes,
            QWidget *window);
};

#endif
