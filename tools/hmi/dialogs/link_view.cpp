#include "dialogs/link_view.h"

#include "elements/look.h"
#include "model/link_words.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScroller>

using look::toQt;

LinkView::LinkView(Panel &panel, QWidget *window) : Overlay("Links", window), panel_(panel), text_(new QLabel)
{
    text_->setWordWrap(true);
    text_->setTextFormat(Qt::PlainText);
    text_->setAlignment(Qt::AlignTop);
    text_->setMargin(4);
    auto *scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(text_);
    QScroller::grabGesture(scroll->viewport(), QScroller::TouchGesture);
    body()->addWidget(scroll, 1);
    addButton("Close", [this] { close(); });
}

void LinkView::refresh()
{
    QString text;
    for (const Station &station : panel_.stations()) {
        const fins::State &state = station.state();
        text += toQt(station.name()) + "\n" + toQt(linkWords(state, std::chrono::system_clock::now())) + "\n";
        if (state.plcNode != 0)
            text += QString("this panel is node %1, the PLC is node %2\n").arg(state.ownNode).arg(state.plcNode);
        text += QString("connections made: %1; lost or failed: %2\n").arg(state.connections).arg(state.losses);
        for (const std::string &remedy : state.remedies)
            text += "try: " + toQt(remedy) + "\n";
        text += "\n";
    }
    text_->setText(text.trimmed());
    setAccessibleDescription(text_->text());
}
