#include "elements/trend_plot.h"

#include "elements/trend_input.h"
#include "elements/trend_legend.h"
#include "model/trend_csv.h"

#include <fmt/format.h>

#include <QBuffer>
#include <QDateTime>
#include <QGridLayout>
#include <QPushButton>
#include <QResizeEvent>

#include <qwt_date_scale_draw.h>
#include <qwt_date_scale_engine.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_engine.h>
#include <qwt_text.h>

#include <algorithm>
#include <cmath>

namespace {

enum Button : std::size_t { CLOSER, WIDER, LIVE, SCALE };

const double BUTTON_ZOOM    = 0.5;
const double TOUCH_INCHES   = 15 / 25.4;
const int    LEGEND_PART    = 3;   // of the height, at most
const int    SPACE          = 2;   // around and between the parts
const TrendTime MINUTE      = 60000;
const int    NARROW_CANVAS  = 100; // the fewest pixels that a canvas is taken to be wide

// "Level [%]"
QString titleOf(const TrendTag &tag)
{
    return tag.unit.isEmpty() ? tag.name : tag.name + QStringLiteral(" [%1]").arg(tag.unit);
}

QwtDateScaleDraw *makeTimeAxis()
{
    auto *axis = new QwtDateScaleDraw(Qt::LocalTime);
    axis->setDateFormat(QwtDate::Millisecond, QStringLiteral("hh:mm:ss"));
    axis->setDateFormat(QwtDate::Second, QStringLiteral("hh:mm:ss"));
    axis->setDateFormat(QwtDate::Minute, QStringLiteral("hh:mm"));
    axis->setDateFormat(QwtDate::Hour, QStringLiteral("hh:mm"));
    axis->setDateFormat(QwtDate::Day, QStringLiteral("d MMM"));
    return axis;
}

} // namespace

TrendPlot::TrendPlot(const TrendStore &store, const std::vector<TrendTag> &tags, TrendTime span, QWidget *parent)
    : QWidget(parent), store_(store), tags_(tags), scales_(tags.size()), window_(span), plot_(new QwtPlot(this)),
      legend_(new TrendLegend([this](int row) { select(row); }, this)), buttonArea_(new QWidget(this)),
      touchSize_(static_cast<int>(std::lround(TOUCH_INCHES * logicalDpiX())))
{
    makePlot();
    makeCurves();
    makeButtons();
    takeInput();
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(SPACE, SPACE, SPACE, SPACE);
    grid->setSpacing(SPACE);
    grid->addWidget(legend_, 0, 0, 1, 2);
    grid->addWidget(plot_, 1, 0);
    grid->addWidget(buttonArea_, 1, 1);
    grid->setRowStretch(1, 1);
    grid->setColumnStretch(0, 1);
    setFocusProxy(plot_->canvas());
    tellAccessibly();
}

TrendPlot::~TrendPlot()
{
    // What is drawn leaves the plot before it is destroyed, which would else destroy it, too.
    for (const auto &curve : curves_)
        curve->detach();
    marks_->detach();
    cursorLine_->detach();
    cursorText_->detach();
}

void TrendPlot::makePlot()
{
    auto *canvas = new QwtPlotCanvas(plot_);
    canvas->setFrameShape(QFrame::Box);
    canvas->setFrameShadow(QFrame::Plain);
    canvas->setLineWidth(1);
    canvas->setBorderRadius(0);
    canvas->setFocusIndicator(QwtPlotCanvas::CanvasFocusIndicator);
    plot_->setCanvas(canvas);
    plot_->setCanvasBackground(QColor(0xd8, 0xd8, 0xd8));
    plot_->setAutoReplot(false);
    plot_->setMinimumSize(NARROW_CANVAS, NARROW_CANVAS);
    plot_->setAxisScaleDraw(QwtPlot::xBottom, makeTimeAxis());
    plot_->setAxisScaleEngine(QwtPlot::xBottom, new QwtDateScaleEngine(Qt::LocalTime));
    plot_->setAxisMaxMinor(QwtPlot::xBottom, 0);
    plot_->plotLayout()->setAlignCanvasToScales(true);
    plot_->setAxisMaxMajor(QwtPlot::yLeft, TREND_SCALE_STEPS);
    plot_->setAxisScale(QwtPlot::yRight, 0, 1); // of all curves, not shown
    QFont font = plot_->axisFont(QwtPlot::xBottom);
    font.setPointSize(this->font().pointSize());
    plot_->setAxisFont(QwtPlot::xBottom, font);
    plot_->setAxisFont(QwtPlot::yLeft, font);
    auto *grid = new QwtPlotGrid;
    grid->setPen(QColor(0xb0, 0xb0, 0xb0), 0, Qt::SolidLine);
    grid->attach(plot_);
}

void TrendPlot::makeCurves()
{
    std::vector<TrendLegendRow> rows;
    for (const TrendTag &tag : tags_) {
        curves_.push_back(std::make_unique<TrendCurve>());
        curves_.back()->setYAxis(QwtPlot::yRight);
        curves_.back()->attach(plot_);
        rows.push_back({tag.name, tag.unit, {}, fins::Quality::NOT_CONNECTED});
    }
    legend_->setRows(std::move(rows));
    marks_ = std::make_unique<TrendMarks>();
    marks_->setYAxis(QwtPlot::yRight);
    marks_->setZ(30);
    marks_->attach(plot_);
    cursorLine_ = std::make_unique<QwtPlotMarker>();
    cursorLine_->setLineStyle(QwtPlotMarker::VLine);
    cursorLine_->setLinePen(Qt::black, 1);
    cursorLine_->setZ(40);
    cursorText_ = std::make_unique<TrendCursorText>();
    cursorText_->setZ(50);
}

void TrendPlot::makeButtons()
{
    const char *const names[] = {"Show a shorter time", "Show a longer time", "", ""};
    for (const char *name : names) {
        auto *button = new QPushButton(buttonArea_);
        button->setFocusPolicy(Qt::NoFocus); // the canvas has the keys for all of them
        button->setAccessibleName(QLatin1String(name));
        buttons_.push_back(button);
    }
    buttons_[CLOSER]->setText(QStringLiteral("+"));
    buttons_[WIDER]->setText(QStringLiteral("\u2212"));
    buttons_[SCALE]->setVisible(tags_.size() > 1);
    connect(buttons_[CLOSER], &QPushButton::clicked, this, [this] { zoom(BUTTON_ZOOM, 0.5); });
    connect(buttons_[WIDER], &QPushButton::clicked, this, [this] { zoom(1 / BUTTON_ZOOM, 0.5); });
    connect(buttons_[LIVE], &QPushButton::clicked, this, [this] { setLive(!window_.isLive()); });
    connect(buttons_[SCALE], &QPushButton::clicked, this, [this] { select(selected_ + 1); });
    placeButtons();
    redrawButtons();
}

void TrendPlot::takeInput()
{
    const auto timeAt = [this](double at) {
        return window_.begin() + TrendTime(std::llround(at * static_cast<double>(window_.span())));
    };
    TrendInput::Actions actions;
    actions.zoom = [this](double factor, double at) { zoom(factor, at); };
    actions.pan  = [this](double part) {
        window_.pan(part);
        redraw();
    };
    actions.setCursor  = [this, timeAt](double at) { setCursor(timeAt(at)); };
    actions.moveCursor = [this, timeAt](double part) {
        const TrendTime from = cursor_.value_or(timeAt(0.5));
        setCursor(std::clamp(from + timeAt(part) - timeAt(0), window_.begin(), window_.end()));
    };
    actions.endCursor   = [this] { setCursor(std::nullopt); };
    actions.goLive      = [this] { setLive(true); };
    actions.pause       = [this] { setLive(!window_.isLive()); };
    actions.selectOther = [this](int step) { select(selected_ + step); };
    new TrendInput(plot_->canvas(), std::move(actions));
}

void TrendPlot::refresh(TrendTime now, Utc utc)
{
    using std::chrono::milliseconds;
    const auto epoch = std::chrono::duration_cast<milliseconds>(utc.time_since_epoch()).count();
    offset_ = static_cast<double>(epoch - now);
    window_.setNow(now);
    redraw();
}

void TrendPlot::setValue(int index, const QString &text, fins::Quality quality)
{
    legend_->setValue(index, text, quality);
}

void TrendPlot::setTouchSize(int pixels)
{
    touchSize_ = pixels;
    placeButtons();
}

void TrendPlot::setButtonsVisible(bool areVisible)
{
    buttonArea_->setVisible(areVisible);
}

void TrendPlot::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    legend_->fitTo(width() - 2 * SPACE, height() / LEGEND_PART);
    placeButtons();
    redraw();
}

// One below the other, in as many columns as the height needs. A layout would ask for the height of all of them.
void TrendPlot::placeButtons()
{
    const int count = static_cast<int>(buttons_.size());
    const int step  = touchSize_ + SPACE;
    const int rows  = std::clamp((height() - legend_->height() - 2 * SPACE) / step, 1, count);
    for (int i = 0; i < count; ++i)
        buttons_[static_cast<std::size_t>(i)]->setGeometry(i / rows * step, i % rows * step, touchSize_, touchSize_);
    buttonArea_->setFixedWidth((count + rows - 1) / rows * step - SPACE);
}

void TrendPlot::select(int index)
{
    const int count = static_cast<int>(tags_.size());
    selected_ = count > 0 ? (index % count + count) % count : 0;
    redraw();
}

void TrendPlot::setLive(bool isLive)
{
    window_.setLive(isLive);
    redraw();
}

void TrendPlot::zoom(double factor, double at)
{
    window_.zoom(factor, at);
    redraw();
}

void TrendPlot::setCursor(std::optional<TrendTime> time)
{
    cursor_ = time;
    redraw();
}

// Values of one unit are compared by their height, so that they share a scale.
void TrendPlot::shareScales()
{
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        for (std::size_t j = 0; j < tags_.size(); ++j) {
            if (tags_[i].unit != tags_[j].unit || tags_[i].unit.isEmpty())
                continue;
            scales_[i].minimum = std::min(scales_[i].minimum, scales_[j].minimum);
            scales_[i].maximum = std::max(scales_[i].maximum, scales_[j].maximum);
        }
    }
}

void TrendPlot::redrawCurves()
{
    const auto width = static_cast<std::size_t>(std::max(plot_->canvas()->width(), NARROW_CANVAS));
    std::vector<std::vector<TrendBucket>> buckets;
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        buckets.push_back(store_.points(tags_[i].tag, window_.begin(), window_.end() + 1, width));
        scales_[i] = trendScale(buckets[i], tags_[i].minimum, tags_[i].maximum);
        scales_[i].offset = offset_;
    }
    shareScales();
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        const int number = static_cast<int>(i);
        curves_[i]->setPen(trendPen(number, number == selected_));
        curves_[i]->setZ(number == selected_ ? 21 : 20);
        curves_[i]->setLines(trendLines(buckets[i], scales_[i]));
    }
}

void TrendPlot::redraw()
{
    redrawCurves();
    redrawAxes();
    std::vector<TrendMarks::Mark> marks;
    for (std::size_t i = 0; i < curves_.size(); ++i) {
        if (!curves_[i]->lines().empty())
            marks.push_back({QString::number(i + 1), curves_[i]->lines().back().back()});
    }
    marks_->setMarks(std::move(marks));
    legend_->setSelected(selected_);
    redrawCursor();
    redrawButtons();
    plot_->replot();
    tellAccessibly();
}

// How many fit side by side: those without seconds, if they are a minute apart at least.
int TrendPlot::timeLabels() const
{
    const auto fitting = [this](const char *label) {
        return std::max(2, plot_->canvas()->width() / fontMetrics().horizontalAdvance(QLatin1String(label)));
    };
    const int shortOnes = fitting(" 00:00 ");
    return window_.span() / shortOnes >= MINUTE ? shortOnes : fitting(" 00:00:00 ");
}

void TrendPlot::redrawAxes()
{
    plot_->setAxisMaxMajor(QwtPlot::xBottom, timeLabels());
    plot_->setAxisScale(QwtPlot::xBottom, utcOf(window_.begin()), utcOf(window_.end()));
    if (tags_.empty())
        return;
    const TrendScale shown = scale(selected_);
    plot_->setAxisScale(QwtPlot::yLeft, shown.minimum, shown.maximum);
    const QString text = QString::number(selected_ + 1) + QLatin1Char(' ') + titleOf(tags_[static_cast<std::size_t>(selected_)]);
    QwtText title(fontMetrics().elidedText(text, Qt::ElideRight, plot_->canvas()->height()), QwtText::PlainText);
    title.setFont(font());
    plot_->setAxisTitle(QwtPlot::yLeft, title);
}

// The text stands where the line does not.
void TrendPlot::redrawCursor()
{
    cursorLine_->attach(cursor_ ? plot_ : nullptr);
    cursorText_->attach(cursor_ ? plot_ : nullptr);
    if (!cursor_)
        return;
    cursorLine_->setXValue(utcOf(*cursor_));
    const bool isLeft = *cursor_ < window_.begin() + window_.span() / 2;
    QwtText text(cursorLines().join(QLatin1Char('\n')), QwtText::PlainText);
    text.setRenderFlags(int(Qt::AlignLeft) | int(Qt::AlignTop));
    text.setBackgroundBrush(Qt::white);
    text.setBorderPen(QPen(Qt::black));
    text.setFont(font());
    cursorText_->setAtRight(isLeft);
    cursorText_->setText(text);
}

void TrendPlot::redrawButtons()
{
    const bool isLive = window_.isLive();
    buttons_[LIVE]->setText(isLive ? tr("Pause") : tr("Live"));
    buttons_[LIVE]->setAccessibleName(isLive ? tr("Stop following the time") : tr("Follow the time"));
    const int next = tags_.empty() ? 0 : (selected_ + 1) % static_cast<int>(tags_.size());
    buttons_[SCALE]->setText(tr("Scale\nof %1").arg(next + 1));
    buttons_[SCALE]->setAccessibleName(tr("Show the scale of tag %1").arg(next + 1));
}

void TrendPlot::tellAccessibly()
{
    QStringList names;
    QStringList values;
    int number = 0;
    for (const TrendLegendRow &row : legend_->rows()) {
        names << row.name;
        values << QString::number(++number) + QLatin1Char(' ') + row.name + QLatin1Char(' ') + row.valueText(true);
    }
    const double minutes = static_cast<double>(window_.span()) / MINUTE;
    values << (window_.isLive() ? tr("the latest %1 min").arg(minutes, 0, 'g', 3)
                                : tr("paused, from %1 to %2").arg(timeOf(window_.begin()), timeOf(window_.end())));
    const QString description = (values + cursorLines()).join(QLatin1String("; "));
    if (description == accessibleDescription())
        return; // every call is told to who listens
    for (QWidget *widget : {static_cast<QWidget *>(this), plot_->canvas()}) {
        widget->setAccessibleName(tr("Trend of %1").arg(names.join(QLatin1String(", "))));
        widget->setAccessibleDescription(description);
    }
}

QString TrendPlot::valueText(std::size_t index, double value) const
{
    const int decimals = tags_[index].decimals;
    return QString::fromStdString(decimals < 0 ? fmt::format("{}", value) : fmt::format("{:.{}f}", value, decimals));
}

QString TrendPlot::timeOf(TrendTime time) const
{
    return QDateTime::fromMSecsSinceEpoch(std::llround(utcOf(time))).toString(QStringLiteral("hh:mm:ss"));
}

QStringList TrendPlot::cursorLines() const
{
    if (!cursor_)
        return {};
    QStringList lines(timeOf(*cursor_));
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        const std::optional<TrendBucket> bucket = store_.at(tags_[i].tag, *cursor_);
        QString line = QString::number(i + 1) + QLatin1Char(' ') + tags_[i].name + QLatin1Char(' ');
        if (!bucket)
            line += tr("no value");
        else if (bucket->minimum == bucket->maximum)
            line += valueText(i, bucket->last);
        else
            line += tr("%1 to %2").arg(valueText(i, bucket->minimum), valueText(i, bucket->maximum));
        if (bucket && !tags_[i].unit.isEmpty())
            line += QLatin1Char(' ') + tags_[i].unit;
        lines << line;
    }
    return lines;
}

const std::vector<QPolygonF> &TrendPlot::lines(int index) const
{
    return curves_[static_cast<std::size_t>(index)]->lines();
}

QByteArray TrendPlot::csv() const
{
    std::vector<TrendColumn> columns;
    for (const TrendTag &tag : tags_)
        columns.push_back({tag.tag, titleOf(tag).toStdString()});
    const Utc zero = Utc(std::chrono::milliseconds(std::llround(offset_)));
    return QByteArray::fromStdString(trendCsv(store_, columns, window_.begin(), window_.end() + 1, zero));
}

QImage TrendPlot::image()
{
    return grab().toImage();
}

QByteArray TrendPlot::pngOf(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}
