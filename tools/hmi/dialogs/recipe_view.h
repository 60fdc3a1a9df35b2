#ifndef HMI_DIALOGS_RECIPE_VIEW_H
#define HMI_DIALOGS_RECIPE_VIEW_H

#include "dialogs/overlay.h"
#include "dialogs/table.h"
#include "model/panel.h"
#include "model/recipe_rows.h"

#include <QtCore/QPointer>

#include <optional>

class QLabel;

/// A recipe beside what the PLC holds: differences are marked, it is written after a second touch, and what was read can
/// be saved as a file.
class RecipeView : public Overlay {
public:
    RecipeView(Panel &panel, Station &station, const fins::RecipeConfig &recipe, QWidget *window);
    ~RecipeView() override;

    void refresh() override;

    const std::vector<RecipeRow> &rows() const { return rows_; }
    QString status() const;

private:
    void read();
    void askToWrite();
    void write();
    void save();
    void show(const fins::RecipeValues *values);
    void say(const QString &text);
    fins::Plc::ProgressCall progressOf(const QString &what);

    Panel                    &panel_;
    Station                  &station_;
    const fins::RecipeConfig &recipe_;
    std::vector<RecipeRow>    rows_;
    std::optional<fins::RecipeValues> read_;
    fins::Operation           operation_; // of reading
    bool                      wasRead_ = false; // or is being read; by itself it is once
    bool                      isBusy_ = false;
    QString                   fate_; // of the latest write, with the end of its line
    Table                    *table_;
    QLabel                   *status_;
    QPushButton              *readButton_;
    QPushButton              *writeButton_;
    QPushButton              *saveButton_;
    QPointer<Overlay>         asking_;
};

#endif
