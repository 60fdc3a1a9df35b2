#include "dialogs/recipe_view.h"

#include "dialogs/confirm.h"
#include "elements/look.h"

#include <QtWidgets/QLabel>

using look::toQt;

RecipeView::RecipeView(Panel &panel, Station &station, const fins::RecipeConfig &recipe, QWidget *window)
    : Overlay("Recipe " + toQt(recipe.name), window), panel_(panel), station_(station), recipe_(recipe),
      table_(new Table({"Variable", "Recipe", "PLC", "Unit", ""}, 4, this)), status_(new QLabel)
{
    status_->setWordWrap(true);
    status_->setAccessibleName("Status");
    body()->addWidget(table_, 1);
    body()->addWidget(status_);
    addButton("Close", [this] { close(); });
    readButton_  = addButton("Read", [this] {
        fate_.clear();
        read();
    });
    saveButton_  = addButton("Save", [this] { save(); });
    writeButton_ = addButton("Write", [this] { askToWrite(); });
    show(nullptr);
}

RecipeView::~RecipeView()
{
    if (asking_)
        asking_->close();
}

QString RecipeView::status() const
{
    return status_->text();
}

void RecipeView::say(const QString &text)
{
    status_->setText(text);
    status_->setAccessibleDescription(text);
}

void RecipeView::refresh()
{
    const QString lock = toQt(station_.lock());
    if (lock.isEmpty() && !wasRead_)
        read();
    const bool hasValues = !recipe_.variables.empty() && !recipe_.variables.front().values.empty();
    readButton_->setEnabled(lock.isEmpty() && !isBusy_);
    writeButton_->setEnabled(lock.isEmpty() && !isBusy_ && hasValues);
    saveButton_->setEnabled(read_.has_value() && !isBusy_);
    writeButton_->setAccessibleDescription(hasValues ? lock : "the recipe has no values: it is only read");
    if (!lock.isEmpty() && !isBusy_)
        say(fate_ + "locked: " + lock);
}

void RecipeView::show(const fins::RecipeValues *values)
{
    static const char *const MATCHES[] = {"", "same", "\u2260 differs", "only read"};
    rows_ = recipeRows(recipe_, values);
    std::vector<Table::Row> lines;
    for (const RecipeRow &row : rows_) {
        const QString match = row.note.empty() ? QString::fromUtf8(MATCHES[static_cast<int>(row.match)]) : toQt(row.note);
        lines.push_back({{toQt(row.name), toQt(row.wanted), toQt(row.held.empty() ? "\u2014" : row.held), toQt(row.unit), match},
                         {}, row.match == RecipeRow::Match::DIFFERS});
    }
    table_->fill(lines);
}

fins::Plc::ProgressCall RecipeView::progressOf(const QString &what)
{
    return [view = QPointer<RecipeView>(this), what](std::size_t done, std::size_t all) {
        if (view)
            view->say(QString("%1: %2 of %3 words").arg(what).arg(done).arg(all));
    };
}

void RecipeView::read()
{
    wasRead_ = true;
    isBusy_  = true;
    say(fate_ + "reading");
    operation_ = station_.plc().readRecipe(recipe_.name, [this](const fins::RecipeValues &values) {
        using End = fins::RecipeValues::End;
        isBusy_ = false;
        read_   = values;
        show(&values);
        const QString end = values.end == End::DONE ? "" : values.end == End::REFUSED ? "the PLC refused a part; " : "no answer in time; ";
        say(fate_ + end + toQt(summaryOf(rows_)));
        refresh();
    }, {}, progressOf("reading"));
    refresh();
}

void RecipeView::askToWrite()
{
    const QString text = QString("%1 values go to %2. %3.")
                             .arg(rows_.size()).arg(toQt(station_.name()), read_ ? toQt(summaryOf(rows_)) : "What the PLC holds is not known");
    asking_ = new Confirm("Write recipe " + toQt(recipe_.name) + "?", text, "Write", [this] { write(); }, parentWidget());
    asking_->appear();
}

// The write goes on when this view is closed, and its end is in the journal.
void RecipeView::write()
{
    if (!station_.lock().empty())
        return;
    isBusy_ = true;
    say("writing");
    station_.writeRecipe(recipe_.name, progressOf("writing"), [view = QPointer<RecipeView>(this)](const RecipeEnd &end) {
        if (!view)
            return;
        QStringList failed;
        for (const fins::Outcome &outcome : end.outcomes) {
            if (!fins::isDone({outcome}))
                failed << toQt(outcome.text);
        }
        const QString fate = failed.isEmpty() ? QString("done: %1 written and read back").arg(end.outcomes.size()) : failed.join("\n");
        view->isBusy_ = false;
        view->fate_   = fate + "\n";
        view->say(fate);
        if (view->station_.lock().empty())
            view->read();
    });
    refresh();
}

void RecipeView::save()
{
    panel_.saver().save(recipe_.name, ".toml",
                        [recipe = recipe_, values = *read_, tags = station_.tags()] { return recipeFile(recipe, values, tags); },
                        [view = QPointer<RecipeView>(this)](const std::string &line) {
                            if (view)
                                view->say(toQt(line));
                        });
}
