#include "window/main_window.h"

#include "elements/look.h"
#include "elements/touch_size.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QPaintEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QLabel>
#include <QtWidgets/QScroller>

static const int REFRESH_MS = 100;

MainWindow::MainWindow(Panel &panel)
    : panel_(panel), actions_(panel, this, [this](std::size_t index) { showScreen(index); }),
      banner_(new LinkBanner(panel, this)), alarms_(new AlarmList(panel, "Alarms", this)),
      menu_(new OpenButton("", "Menu", this)), scroll_(new QScrollArea(this)),
      tooSmall_(new QLabel(this))
{
    setPalette(look::palette());
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    auto *top = new QHBoxLayout;
    const int touch = touchPixels(this);
    banner_->setFixedHeight(touch);
    alarms_->setFixedHeight(touch);
    menu_->setFixedSize(touch * 3 / 2, touch);
    menu_->setAccessibleName("Menu");
    top->setSpacing(0);
    top->addWidget(banner_, 3);
    top->addWidget(alarms_, 2);
    top->addWidget(menu_);
    rows->addLayout(top);
    rows->addWidget(scroll_, 1);
    rows->addWidget(tooSmall_, 1);
    tooSmall_->setWordWrap(true);
    tooSmall_->setAlignment(Qt::AlignCenter);
    setMinimumSize(1, 1); // a panel's screen is as large as it is
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setFocusPolicy(Qt::NoFocus);
    QScroller::grabGesture(scroll_->viewport(), QScroller::TouchGesture);
    banner_->onTouch = [this] { actions_.showLink(); };
    alarms_->onTouch = [this] { actions_.showAlarms(); };
    menu_->onTouch   = [this] { actions_.showMenu(current_); };
    setFocusPolicy(Qt::StrongFocus); // so that nothing else has the keyboard until somebody uses it
    setFocus();
    showScreen(0);
    listen();
    QObject::connect(&timer_, &QTimer::timeout, this, [this] { refresh(); });
    timer_.start(REFRESH_MS);
}

void MainWindow::listen()
{
    for (Station &station : panel_.stations()) {
        notifiers_.push_back(std::make_unique<QSocketNotifier>(station.plc().readyFd(), QSocketNotifier::Read));
        QObject::connect(notifiers_.back().get(), &QSocketNotifier::activated, this, [&station] { station.dispatch(); });
    }
}

void MainWindow::showScreen(std::size_t index)
{
    if (index >= panel_.screens().size())
        return;
    current_ = index;
    if (QWidget *before = scroll_->takeWidget())
        before->deleteLater(); // a touch of it may have brought us here
    view_ = new ScreenView(panel_, panel_.screens()[index], actions_, this);
    scroll_->setWidget(view_);
    setWindowTitle(look::toQt(panel_.screens()[index].title));
    refresh();
}

void MainWindow::refresh()
{
    panel_.tick();
    banner_->refresh();
    alarms_->refresh();
    menu_->refresh();
    view_->refresh();
    if (Overlay *open = actions_.open())
        open->refresh();
}

// Two targets side by side and one below the banner is the least that can be used.
QString MainWindow::complaint() const
{
    const int touch = touchPixels(this);
    if (width() >= 4 * touch && height() >= 3 * touch)
        return QString();
    return QString("%1 x %2 pixels are too few for touch targets of 15 mm: %3 x %4 are needed. If the screen is larger than "
                   "that, it tells a wrong resolution: give the right one with --dpi.")
        .arg(width()).arg(height()).arg(4 * touch).arg(3 * touch);
}

void MainWindow::resizeEvent(QResizeEvent *)
{
    const QString text = complaint();
    tooSmall_->setText(text);
    tooSmall_->setVisible(!text.isEmpty());
    scroll_->setVisible(text.isEmpty());
}

void MainWindow::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), look::GROUND);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Menu || event->key() == Qt::Key_F10)
        menu_->touch();
    else if (event->key() == Qt::Key_F11)
        setWindowState(windowState() ^ Qt::WindowFullScreen);
    else
        QWidget::keyPressEvent(event);
}
