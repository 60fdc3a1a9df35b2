#ifndef HMI_DIALOGS_LIST_DIALOG_H
#define HMI_DIALOGS_LIST_DIALOG_H

#include "dialogs/overlay.h"

#include <vector>

/// A list of entries of touch size, of which one is chosen; the list scrolls where it does not fit.
class ListDialog : public Overlay {
public:
    struct Entry {
        QString               text;
        std::function<void()> onChosen; // after the list is closed
        bool                  isCurrent = false;
    };

    ListDialog(const QString &title, const std::vector<Entry> &entries, QWidget *window);
};

#endif
