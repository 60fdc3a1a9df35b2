#include "dialogs/table.h"

#include "elements/look.h"
#include "elements/touch_size.h"

#include <QtGui/QPainter>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScroller>

// Rows of a longer table have one line each: it takes long to find out how high they are.
static const int MOST_WRAPPED = 50;

Table::Table(const QStringList &heads, int stretched, QWidget *parent)
    : QTableWidget(0, heads.size(), parent), touch_(touchPixels(parent))
{
    setHorizontalHeaderLabels(heads);
    verticalHeader()->hide();
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setWordWrap(true);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(stretched, QHeaderView::Stretch);
    horizontalHeader()->setMinimumSectionSize(40);
    verticalHeader()->setDefaultSectionSize(touch_ * 2 / 3);
    verticalHeader()->setMinimumSectionSize(touch_ * 2 / 3);
    setIconSize(QSize(touch_ / 2, touch_ / 2));
    QScroller::grabGesture(viewport(), QScroller::TouchGesture);
}

void Table::fill(const std::vector<Row> &rows)
{
    const int before = currentRow();
    setRowCount(static_cast<int>(rows.size()));
    for (int r = 0; r < rowCount(); ++r) {
        const Row &row = rows[static_cast<std::size_t>(r)];
        for (int c = 0; c < columnCount(); ++c) {
            QTableWidgetItem *cell = item(r, c);
            if (!cell)
                setItem(r, c, cell = new QTableWidgetItem);
            cell->setText(row.cells.value(c));
            if (c == 0)
                cell->setIcon(row.mark);
            QFont cellFont = font();
            cellFont.setBold(row.isMarked);
            cell->setFont(cellFont);
        }
    }
    wrapRows();
    if (before >= 0 && before < rowCount())
        setCurrentCell(before, 0);
}

void Table::wrapRows()
{
    if (rowCount() <= MOST_WRAPPED)
        resizeRowsToContents();
}

void Table::resizeEvent(QResizeEvent *event)
{
    QTableWidget::resizeEvent(event);
    wrapRows();
}

QIcon priorityIcon(int priority, int size)
{
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    look::drawPriority(painter, picture.rect(), priority);
    return picture;
}
