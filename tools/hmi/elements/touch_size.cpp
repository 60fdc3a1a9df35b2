#include "elements/touch_size.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QWidget>

#include <cmath>

static double givenDotsPerInch = 0;

void setDotsPerInch(double dotsPerInch)
{
    givenDotsPerInch = dotsPerInch;
}

int touchPixels(const QWidget *widget)
{
    const QWindow *window = widget->window()->windowHandle();
    const QScreen *screen = window ? window->screen() : QGuiApplication::primaryScreen();
    double dotsPerInch = givenDotsPerInch;
    if (dotsPerInch <= 0 && screen)
        dotsPerInch = screen->physicalDotsPerInch();
    if (!(dotsPerInch >= 20 && dotsPerInch <= 2000)) // a screen that does not know its size
        dotsPerInch = 96;
    return static_cast<int>(std::lround(15 / 25.4 * dotsPerInch));
}
