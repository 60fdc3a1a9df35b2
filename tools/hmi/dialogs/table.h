#ifndef HMI_DIALOGS_TABLE_H
#define HMI_DIALOGS_TABLE_H

#include <QtWidgets/QTableWidget>

#include <QtGui/QIcon>

#include <vector>

/// A table of texts for reading, with rows of touch size; it keeps its place and selection when it is filled anew.
class Table : public QTableWidget {
public:
    struct Row {
        QStringList cells;
        QIcon       mark;          // before the first cell
        bool        isMarked = false; // bold, beside what its cells say
    };

    Table(const QStringList &heads, int stretched, QWidget *parent);

    void fill(const std::vector<Row> &rows);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void wrapRows();

    int touch_;
};

/// The mark of a priority, for a table.
QIcon priorityIcon(int priority, int size);

#endif
