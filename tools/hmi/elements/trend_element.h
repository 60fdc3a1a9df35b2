#ifndef HMI_ELEMENTS_TREND_ELEMENT_H
#define HMI_ELEMENTS_TREND_ELEMENT_H

#include "elements/element.h"
#include "elements/trend_plot.h"

/// A trend of values of one PLC, with its label above.
class TrendElement : public Element {
public:
    /// All values have a place in the store; they and the store outlive the element.
    TrendElement(const TrendStore &store, std::vector<const LiveValue *> values, std::chrono::minutes span,
                 const std::string &label, QWidget *parent);

    void refresh() override;

    TrendPlot &plot() { return *plot_; }

protected:
    void paintContent(QPainter &, const QRect &) override {}
    void resizeEvent(QResizeEvent *event) override;
    QString describe() const override { return plot_->accessibleDescription(); }

private:
    std::vector<const LiveValue *> values_;
    std::vector<std::uint64_t>     told_; // revisions of the values as the legend has them
    TrendPlot                     *plot_;
    std::chrono::steady_clock::time_point drawn_;
};

#endif
