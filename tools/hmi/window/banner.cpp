#include "window/banner.h"

#include "elements/look.h"
#include "model/link_words.h"

#include <QtGui/QPainter>

#include <algorithm>

using look::toQt;

LinkBanner::LinkBanner(Panel &panel, QWidget *parent) : Control(nullptr, "Link", parent), panel_(panel) {}

const Station &LinkBanner::worst() const
{
    const auto isDown = [](const Station &station) { return station.state().phase != fins::Phase::ONLINE; };
    const auto down = std::find_if(panel_.stations().begin(), panel_.stations().end(), isDown);
    return down == panel_.stations().end() ? panel_.stations().front() : *down;
}

QString LinkBanner::caption() const
{
    const Station &station = worst();
    if (panel_.stations().size() > 1 && station.state().phase == fins::Phase::ONLINE)
        return QString("%1 PLCs online").arg(panel_.stations().size());
    return toQt(station.name() + ": " + linkWords(station.state(), std::chrono::system_clock::now()));
}

std::uint64_t LinkBanner::stamp() const
{
    return qHash(caption());
}

// Without a link the line has the mark of an urgent alarm and a heavy frame.
void LinkBanner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool isUp = worst().state().phase == fins::Phase::ONLINE;
    painter.fillRect(rect(), isUp ? look::GROUND : look::FACE);
    QRect inner = rect().adjusted(6, 2, -6, -2);
    if (!isUp) {
        painter.setPen(QPen(look::INK, 3));
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
        const int size = std::min(inner.height() - 6, 40);
        const QRect mark(inner.left() + 2, inner.center().y() - size / 2, size, size);
        look::drawPriority(painter, QStyle::visualRect(layoutDirection(), inner, mark), 1);
        inner = QStyle::visualRect(layoutDirection(), inner, inner.adjusted(size + 8, 0, 0, 0));
    }
    painter.setPen(look::INK);
    look::drawLines(painter, inner, start() | Qt::AlignVCenter, caption());
    if (hasFocus())
        look::drawFocus(painter, rect());
}
