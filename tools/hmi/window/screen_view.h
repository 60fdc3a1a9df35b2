#ifndef HMI_WINDOW_SCREEN_VIEW_H
#define HMI_WINDOW_SCREEN_VIEW_H

#include "elements/element.h"
#include "model/panel.h"
#include "window/actions.h"

#include <vector>

// A screen: its elements in their grid, or cards in rows. Where the window is too small for touch targets it is larger
// than the window, which scrolls.

class ScreenView : public QWidget {
public:
    ScreenView(Panel &panel, const PanelScreen &screen, Actions &actions, QWidget *parent);

    /// Paints what has changed.
    void refresh();

    const std::vector<Element *> &elements() const { return elements_; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void addElements();
    void lowerGroups();
    Element *makeElement(const ScreenElement &config);
    Element *makeOpener(const ScreenElement &config, const std::string &label);
    Element *makeControl(const ScreenElement &config, LiveValue &value, const std::string &label);
    void place();
    QRect placeOf(const ScreenElement &config) const;
    QRect cellsOf(const ScreenElement &config) const;

    Panel                 &panel_;
    const PanelScreen     &screen_;
    Actions               &actions_;
    std::vector<Element *> elements_; // in the order of the screen's list, or of the cards
};

#endif
