#ifndef HMI_ELEMENTS_TREND_PLOT_H
#define HMI_ELEMENTS_TREND_PLOT_H

#include "elements/trend_curve.h"
#include "model/trend_store.h"
#include "model/trend_window.h"

#include <fins_runtime/values.h>

#include <QByteArray>
#include <QImage>
#include <QStringList>
#include <QWidget>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

class QPushButton;
class QwtPlot;
class QwtPlotMarker;
class TrendLegend;

/// A tag of a trend.
struct TrendTag {
    std::size_t tag = 0;          // of the store
    QString     name;
    QString     unit;
    std::optional<double> minimum; // of its scale; empty: by the values shown. A value beyond them widens it
    std::optional<double> maximum;
    int         decimals = -1;    // digits behind the point; -1: as many as are needed
};

/// Up to TREND_STYLES tags over time, each by a scale of its own, or that of all with its unit: the axis shows that of the
/// selected tag. The widget has
/// no clock: whoever owns it calls refresh().
class TrendPlot : public QWidget {
public:
    using Utc = std::chrono::system_clock::time_point;

    /// The store must live as long. `span` in ms.
    TrendPlot(const TrendStore &store, const std::vector<TrendTag> &tags, TrendTime span, QWidget *parent = nullptr);
    ~TrendPlot() override;

    /// Draws what the store has; `now` is the store's time, `utc` the time of day at it.
    void refresh(TrendTime now, Utc utc);

    /// The latest sample of the tag that is the `index`th here: its text without the unit, and its quality.
    void setValue(int index, const QString &text, fins::Quality quality);

    /// In pixels, of the buttons.
    void setTouchSize(int pixels);

    /// Without the buttons, for a small place on a screen.
    void setButtonsVisible(bool areVisible);

    void select(int index); // whose scale the axis shows
    int  selected() const { return selected_; }

    const TrendWindow &window() const { return window_; }
    void setLive(bool isLive);

    /// The line at which all values are told; none: there is no line.
    void setCursor(std::optional<TrendTime> time);
    std::optional<TrendTime> cursor() const { return cursor_; }

    /// The local time of the cursor and then "NUMBER NAME VALUE UNIT" for each tag; "1 to 5" where only the least and the
    /// greatest value are still known, "no value" in a gap.
    QStringList cursorLines() const;

    const std::vector<QPolygonF> &lines(int index) const; // in ms since the epoch, and 0 to 1
    TrendScale scale(int index) const { return scales_[static_cast<std::size_t>(index)]; }

    /// What is shown, for a file. pngOf may be called on any thread.
    QByteArray csv() const;
    QImage     image();
    static QByteArray pngOf(const QImage &image);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void makePlot();
    void makeCurves();
    void makeButtons();
    void takeInput();
    void placeButtons();
    void redraw();
    void redrawAxes();
    int  timeLabels() const;
    void redrawCurves();
    void shareScales();
    void redrawCursor();
    void redrawButtons();
    void tellAccessibly();
    void zoom(double factor, double at);
    QString valueText(std::size_t index, double value) const;
    QString timeOf(TrendTime time) const;
    double  utcOf(TrendTime time) const { return static_cast<double>(time) + offset_; }

    const TrendStore     &store_;
    std::vector<TrendTag> tags_;
    std::vector<TrendScale> scales_;
    TrendWindow           window_;
    double                offset_ = 0; // from the store's time to ms since the epoch
    int                   selected_ = 0;
    std::optional<TrendTime> cursor_;

    QwtPlot     *plot_;
    TrendLegend *legend_;
    QWidget     *buttonArea_;
    std::vector<QPushButton *> buttons_; // closer, wider, live or pause, scale
    int          touchSize_ = 0;
    std::vector<std::unique_ptr<TrendCurve>> curves_;
    std::unique_ptr<TrendMarks>      marks_;
    std::unique_ptr<QwtPlotMarker>   cursorLine_;
    std::unique_ptr<TrendCursorText> cursorText_;
};

#endif
