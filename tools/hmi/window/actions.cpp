#include "window/actions.h"

#include "common/numbers.h"
#include "dialogs/alarm_view.h"
#include "dialogs/journal_view.h"
#include "dialogs/keypad.h"
#include "dialogs/link_view.h"
#include "dialogs/list_dialog.h"
#include "dialogs/question.h"
#include "dialogs/recipe_view.h"
#include "dialogs/trend_view.h"
#include "elements/look.h"

#include <QtWidgets/QApplication>

#include <algorithm>

using look::toQt;

static const std::chrono::minutes TREND_SPAN{10};

static std::string withUnit(const std::string &text, const LiveValue &value)
{
    return value.sample.unit.empty() ? text : text + " " + value.sample.unit;
}

// The keyboard goes back to where it was.
template <typename Dialog, typename... Arguments>
Dialog *Actions::show(Arguments &&...arguments)
{
    if (open_)
        open_->close();
    const QPointer<QWidget> before = QApplication::focusWidget();
    auto *dialog = new Dialog(std::forward<Arguments>(arguments)..., window_);
    dialog->onClosed = [before] {
        if (before)
            before->setFocus();
    };
    open_ = dialog;
    dialog->appear();
    return dialog;
}

void Actions::ask(LiveValue &value, const std::string &text, const std::string &shown)
{
    show<Question>(Question::Kind::WRITE, value, text, shown);
}

void Actions::press(LiveValue &value, const ActionButton &button)
{
    const std::string text = shortestText(button.target());
    const auto kind = button.mode() == ButtonMode::MOMENTARY ? Question::Kind::HOLD : Question::Kind::WRITE;
    show<Question>(kind, value, text, withUnit(text, value));
}

void Actions::setNumber(LiveValue &value)
{
    show<Keypad>(value, [this, &value](const std::string &number) { ask(value, number, withUnit(number, value)); });
}

void Actions::choose(LiveValue &value, const std::vector<ValueText> &choices)
{
    std::vector<ListDialog::Entry> entries;
    for (const ValueText &choice : choices) {
        const std::string text = shortestText(choice.value);
        entries.push_back({toQt(choice.text),
                           [this, &value, text, shown = choice.text + " (" + text + ")"] { ask(value, text, shown); },
                           value.number() == choice.value});
    }
    show<ListDialog>(toQt(value.label) + ": now " + toQt(shownText(value.sample)), entries);
}

void Actions::openScreen(const PanelScreen &from, const std::string &name)
{
    showScreen_(panel_.findScreen(from, name));
}

void Actions::chooseScreen(std::size_t current)
{
    std::vector<ListDialog::Entry> entries;
    for (std::size_t i = 0; i < panel_.screens().size(); ++i)
        entries.push_back({toQt(panel_.screens()[i].title), [this, i] { showScreen_(i); }, i == current});
    show<ListDialog>("Screens", entries);
}

void Actions::showMenu(std::size_t currentScreen)
{
    std::vector<ListDialog::Entry> entries;
    if (panel_.screens().size() > 1)
        entries.push_back({"Screens", [this, currentScreen] { chooseScreen(currentScreen); }});
    entries.push_back({"Alarms", [this] { showAlarms(); }});
    entries.push_back({"Trends", [this, currentScreen] { chooseTrend(currentScreen); }});
    const auto hasRecipes = [](const Station &station) { return !station.recipes().empty(); };
    if (std::any_of(panel_.stations().begin(), panel_.stations().end(), hasRecipes))
        entries.push_back({"Recipes", [this] { chooseRecipe(); }});
    entries.push_back({"Journal", [this] { showJournal(); }});
    entries.push_back({"Links", [this] { showLink(); }});
    show<ListDialog>("Menu", entries);
}

void Actions::showLink()
{
    show<LinkView>(panel_);
}

void Actions::showAlarms()
{
    show<AlarmView>(panel_);
}

void Actions::showJournal()
{
    show<JournalView>(panel_);
}

// The trends of the screen, and one of each value on it.
void Actions::chooseTrend(std::size_t currentScreen)
{
    const PanelScreen &screen = panel_.screens()[currentScreen];
    std::vector<ListDialog::Entry> entries;
    const auto add = [&](const std::string &title, const std::vector<TagValue> &tags, std::chrono::minutes span) {
        const auto isThere = [&](const ListDialog::Entry &entry) { return entry.text == toQt(title); };
        const std::vector<const LiveValue *> values = screen.trendValues(tags);
        if (!values.empty() && std::none_of(entries.begin(), entries.end(), isThere))
            entries.push_back({toQt(title), [this, values, span, title] { show<TrendView>(panel_, values, span, toQt(title)); }});
    };
    const auto labelOf = [&](const TagValue &tag) { return screen.find(tag)->label; };
    if (screen.screen) {
        for (const ScreenElement &element : screen.screen->elements) {
            if (element.kind == ElementKind::TREND)
                add(element.label.empty() ? labelOf(element.tags.front()) : element.label, element.tags, element.span);
        }
        for (const ScreenElement &element : screen.screen->elements) {
            if (!element.tags.empty())
                add(labelOf(element.tags.front()), {element.tags.front()}, TREND_SPAN);
        }
    }
    for (const TagValue &tag : screen.cards)
        add(labelOf(tag), {tag}, TREND_SPAN);
    show<ListDialog>("Trends", entries);
}

void Actions::chooseRecipe()
{
    std::vector<ListDialog::Entry> entries;
    for (Station &station : panel_.stations()) {
        const QString plc = panel_.stations().size() > 1 ? toQt(station.name()) + ": " : QString();
        for (const fins::RecipeConfig &recipe : station.recipes())
            entries.push_back({plc + toQt(recipe.name), [this, &station, &recipe] { show<RecipeView>(panel_, station, recipe); }});
    }
    show<ListDialog>("Recipes", entries);
}

void Actions::showRecipe(const std::vector<Station *> &stations, const std::string &name)
{
    for (Station *station : stations) {
        for (const fins::RecipeConfig &recipe : station->recipes()) {
            if (recipe.name == name) {
                show<RecipeView>(panel_, *station, recipe);
                return;
            }
        }
    }
    chooseRecipe();
}
