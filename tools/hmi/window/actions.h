#ifndef HMI_WINDOW_ACTIONS_H
#define HMI_WINDOW_ACTIONS_H

#include "dialogs/overlay.h"
#include "elements/controls.h"
#include "model/panel.h"

#include <QtCore/QPointer>

// What a touch of a control opens. One thing is open at a time.

class Actions {
public:
    Actions(Panel &panel, QWidget *window, std::function<void(std::size_t)> showScreen)
        : panel_(panel), window_(window), showScreen_(std::move(showScreen))
    {
    }

    void press(LiveValue &value, const ActionButton &button);
    void setNumber(LiveValue &value);
    void choose(LiveValue &value, const std::vector<ValueText> &choices);
    void openScreen(const PanelScreen &from, const std::string &name);
    void showMenu(std::size_t currentScreen);
    void showLink();
    void showAlarms();
    void showJournal();

    /// The recipe of that name of one of the PLCs; "": one of all, which is chosen first.
    void showRecipe(const std::vector<Station *> &stations, const std::string &name);

    /// What is open, or null.
    Overlay *open() const { return open_ && open_->isVisible() ? open_.data() : nullptr; }

private:
    void chooseScreen(std::size_t current);
    void chooseRecipe();
    void chooseTrend(std::size_t currentScreen);
    void ask(LiveValue &value, const std::string &text, const std::string &shown);
    template <typename Dialog, typename... Arguments>
    Dialog *show(Arguments &&...arguments);

    Panel                           &panel_;
    QWidget                         *window_;
    std::function<void(std::size_t)> showScreen_;
    QPointer<Overlay>                open_;
};

#endif
