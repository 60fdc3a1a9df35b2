#ifndef HMI_ELEMENTS_TOUCH_SIZE_H
#define HMI_ELEMENTS_TOUCH_SIZE_H

class QWidget;

/// The resolution that the user gave, in dots per inch; 0: what the screen says of itself. For the whole program.
void setDotsPerInch(double dotsPerInch);

/// 15 mm in pixels of the screen that the widget is on: the least height and width of what is touched.
int touchPixels(const QWidget *widget);

#endif
