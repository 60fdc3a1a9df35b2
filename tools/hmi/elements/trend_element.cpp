#include "elements/trend_element.h"

#include "elements/look.h"
#include "elements/touch_size.h"

using look::toQt;

// A curve of minutes moves less than a pixel in this time.
static const std::chrono::milliseconds DRAW_PAUSE{1000};

// From so many touch targets of width on there is room for two of buttons; the same trend alone has them always.
static const int BUTTON_COLUMNS = 7;

static std::vector<TrendTag> tagsOf(const std::vector<const LiveValue *> &values)
{
    std::vector<TrendTag> tags;
    tags.reserve(values.size());
    for (const LiveValue *value : values)
        tags.push_back({*value->trend, toQt(value->label), toQt(value->sample.unit), value->minimum, value->maximum,
                        value->decimals});
    return tags;
}

TrendElement::TrendElement(const TrendStore &store, std::vector<const LiveValue *> values, std::chrono::minutes span,
                           const std::string &label, QWidget *parent)
    : Element(nullptr, label, parent), values_(std::move(values)), told_(values_.size(), ~0ULL),
      plot_(new TrendPlot(store, tagsOf(values_), std::chrono::milliseconds(span).count(), this))
{
    plot_->setTouchSize(touchPixels(this));
}

void TrendElement::refresh()
{
    const auto now = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < values_.size(); ++i) {
        if (told_[i] == values_[i]->revision)
            continue;
        told_[i] = values_[i]->revision;
        plot_->setValue(static_cast<int>(i), toQt(values_[i]->sample.text), values_[i]->sample.quality);
    }
    if (now - drawn_ < DRAW_PAUSE)
        return;
    drawn_ = now;
    plot_->refresh(trendTimeOf(now), std::chrono::system_clock::now());
    setAccessibleDescription(plot_->accessibleDescription());
}

void TrendElement::resizeEvent(QResizeEvent *)
{
    const int line = accessibleName().isEmpty() ? 0 : fontMetrics().height();
    plot_->setButtonsVisible(width() > BUTTON_COLUMNS * touchPixels(this));
    plot_->setGeometry(rect().adjusted(3, 3 + line, -3, -3));
}
