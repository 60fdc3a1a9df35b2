#include "dialogs/trend_view.h"

#include "elements/look.h"

#include <QtCore/QPointer>
#include <QtWidgets/QLabel>

TrendView::TrendView(Panel &panel, const std::vector<const LiveValue *> &values, std::chrono::minutes span,
                     const QString &title, QWidget *window)
    : Overlay(title, window), panel_(panel),
      trend_(new TrendElement(panel.trends(), values, span, "", this)), status_(new QLabel)
{
    body()->addWidget(trend_, 1);
    body()->addWidget(status_);
    addButton("Close", [this] { close(); });
    addButton("Save as CSV", [this] { save(".csv", [csv = plot().csv()] { return csv.toStdString(); }); });
    addButton("Save as PNG", [this] { save(".png", [image = plot().image()] { return TrendPlot::pngOf(image).toStdString(); }); });
}

void TrendView::save(const std::string &ending, std::function<std::string()> make)
{
    panel_.saver().save("trend", ending, std::move(make), [label = QPointer<QLabel>(status_)](const std::string &line) {
        if (label)
            label->setText(look::toQt(line));
    });
}
