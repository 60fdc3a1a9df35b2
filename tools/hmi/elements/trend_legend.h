#ifndef HMI_ELEMENTS_TREND_LEGEND_H
#define HMI_ELEMENTS_TREND_LEGEND_H

#include <fins_runtime/values.h>

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

// The tags of a trend: number, line style, name, value, unit and quality of each, in as many columns as fit.

struct TrendLegendRow {
    QString name;
    QString unit;
    QString value;  // as people read it; "" if it was never received
    fins::Quality quality = fins::Quality::NOT_CONNECTED;

    /// "45.2 %"; with the quality behind it where it is not good, or always.
    QString valueText(bool isAlwaysWithQuality) const;
};

class TrendLegend : public QWidget {
public:
    /// `touched` gets the row that a mouse or finger touched.
    TrendLegend(std::function<void(int row)> touched, QWidget *parent);

    void setRows(std::vector<TrendLegendRow> rows);
    void setValue(int row, const QString &value, fins::Quality quality);
    void setSelected(int row);
    const std::vector<TrendLegendRow> &rows() const { return rows_; }

    /// Sets the columns for that width, and its own height. Columns are narrow only where it would else be higher than
    /// `most`.
    void fitTo(int width, int most);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    int   rowHeight() const;
    QRect rectOf(int row) const;
    void  paintRow(QPainter &painter, int row) const;

    std::function<void(int row)> touched_;
    std::vector<TrendLegendRow> rows_;
    int selected_ = 0;
    int columns_  = 1;
};

#endif
