#ifndef HMI_WINDOW_MAIN_WINDOW_H
#define HMI_WINDOW_MAIN_WINDOW_H

#include "elements/alarm_list.h"
#include "model/panel.h"
#include "window/actions.h"
#include "window/banner.h"
#include "window/screen_view.h"

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>
#include <QtWidgets/QScrollArea>

#include <memory>
#include <vector>

// The window: the banner, one screen, and what is open before it. Values come as the library has them; what has changed is
// painted ten times a second at most.

class QLabel;

class MainWindow : public QWidget {
public:
    explicit MainWindow(Panel &panel);

    void showScreen(std::size_t index);
    std::size_t currentScreen() const { return current_; }

    ScreenView &view() { return *view_; }
    /// What is said in place of a screen where the window has no room for one; "" where it has.
    QString complaint() const;

    Actions &actions() { return actions_; }
    LinkBanner &banner() { return *banner_; }
    AlarmList &alarmBanner() { return *alarms_; }
    OpenButton &menu() { return *menu_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void listen();
    void refresh();

    Panel       &panel_;
    Actions      actions_;
    LinkBanner  *banner_;
    AlarmList   *alarms_;
    OpenButton  *menu_;
    QScrollArea *scroll_;
    QLabel      *tooSmall_; // in place of the screen
    ScreenView  *view_ = nullptr;
    std::size_t  current_ = 0;
    QTimer       timer_;
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers_;
};

#endif
