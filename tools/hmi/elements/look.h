#ifndef HMI_ELEMENTS_LOOK_H
#define HMI_ELEMENTS_LOOK_H

#include <fins_runtime/values.h>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QPainter>
#include <QtGui/QPalette>

// How things look, said once. Grey is normal; colour is for what is abnormal, and a shape, a number or a word always goes
// with it.

namespace look {

const QColor GROUND(0xC6, 0xC6, 0xC6);  // of the screen
const QColor FACE(0xD9, 0xD9, 0xD9);    // of what shows
const QColor CONTROL(0xEE, 0xEE, 0xEE); // of what can be touched
const QColor EDGE(0x7A, 0x7A, 0x7A);
const QColor INK(0x18, 0x18, 0x18);
const QColor DIM(0x50, 0x50, 0x50);     // of what is said beside a value
const QColor HATCH(0xA0, 0xA0, 0xA0);
const QColor FILL(0x5F, 0x6F, 0x7F);    // of a bar
const QColor FOCUS(0x00, 0x3C, 0x8C);

/// The same colours for the toolkit's own widgets.
QPalette palette();

/// The colour of a priority from 1, the most urgent, to 3.
QColor priorityColour(int priority);

/// "urgent", "warning" or "notice".
const char *priorityWord(int priority);

/// The shape of a priority with its number in it: an octagon, a triangle, a square.
void drawPriority(QPainter &painter, const QRect &square, int priority);

/// The ground and frame of an element whose value has this quality: a plain frame for a good value; dots for a write
/// under way; dashes and hatching for one that is not to be trusted now; dashes alone where none was ever received.
void drawFrame(QPainter &painter, const QRect &frame, fins::Quality quality, const QColor &face);

/// The frame of what has the keyboard.
void drawFocus(QPainter &painter, const QRect &frame);

/// A text in one line, as large as it fits and no larger than `largest` pixels; where it does not fit in the smallest
/// legible size, its end is left out and an ellipsis says so.
void drawFitted(QPainter &painter, const QRect &rect, Qt::Alignment alignment, const QString &text, int largest);

/// A text in several lines, smaller where they do not fit.
void drawLines(QPainter &painter, const QRect &rect, Qt::Alignment alignment, const QString &text);

inline QString toQt(const std::string &text) { return QString::fromStdString(text); }

} // namespace look

#endif
