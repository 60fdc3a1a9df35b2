#include "window/screen_view.h"

#include "elements/alarm_list.h"
#include "elements/card.h"
#include "elements/displays.h"
#include "elements/look.h"
#include "elements/touch_size.h"
#include "elements/trend_element.h"

#include <QtGui/QPaintEvent>
#include <QtGui/QPainter>

#include <algorithm>

ScreenView::ScreenView(Panel &panel, const PanelScreen &screen, Actions &actions, QWidget *parent)
    : QWidget(parent), panel_(panel), screen_(screen), actions_(actions)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(look::toQt(screen.title));
    addElements();
    const int cell = touchPixels(this);
    if (screen_.screen)
        setMinimumSize(screen_.screen->columns * cell, screen_.screen->rows * cell);
}

void ScreenView::addElements()
{
    for (const TagValue &tag : screen_.cards)
        elements_.push_back(new Card(screen_.find(tag), panel_.trends(), this));
    if (!screen_.screen)
        return;
    for (const ScreenElement &config : screen_.screen->elements)
        elements_.push_back(makeElement(config));
    lowerGroups();
}

// Frames lie below what is in them, the largest one at the bottom.
void ScreenView::lowerGroups()
{
    const std::vector<ScreenElement> &configs = screen_.screen->elements;
    std::vector<std::size_t> groups;
    for (std::size_t i = 0; i < configs.size(); ++i) {
        if (configs[i].kind == ElementKind::GROUP)
            groups.push_back(i);
    }
    std::sort(groups.begin(), groups.end(), [&](std::size_t a, std::size_t b) {
        return configs[a].columns * configs[a].rows < configs[b].columns * configs[b].rows;
    });
    for (const std::size_t group : groups)
        elements_[group]->lower();
}

static bool isControl(ElementKind kind)
{
    return kind == ElementKind::BUTTON || kind == ElementKind::SET_POINT || kind == ElementKind::CHOICE;
}

Element *ScreenView::makeElement(const ScreenElement &config)
{
    LiveValue *value = config.tags.empty() ? nullptr : screen_.find(config.tags.front());
    const std::string label = !config.label.empty() || !value ? config.label : value->label;
    if (value && isControl(config.kind))
        return makeControl(config, *value, label);
    switch (config.kind) {
    case ElementKind::NUMBER: return new ValueElement(value, label, this);
    case ElementKind::BAR:    return new BarElement(value, label, *config.minimum, *config.maximum, this);
    case ElementKind::LAMP:   return new LampElement(value, label, config.states, this);
    case ElementKind::TREND:
        return new TrendElement(panel_.trends(), screen_.trendValues(config.tags), config.span, label, this);
    case ElementKind::GROUP:  return new GroupFrame(label, this);
    case ElementKind::SCREEN:
    case ElementKind::RECIPE:
    case ElementKind::ALARMS: return makeOpener(config, label);
    default: return value ? static_cast<Element *>(new ValueElement(value, label, this)) : new FixedText(config.text, this);
    }
}

// What opens something of the panel itself.
Element *ScreenView::makeOpener(const ScreenElement &config, const std::string &label)
{
    if (config.kind == ElementKind::ALARMS) {
        auto *list = new AlarmList(panel_, label.empty() ? "Alarms" : label, this);
        list->onTouch = [this] { actions_.showAlarms(); };
        return list;
    }
    if (config.kind == ElementKind::SCREEN) {
        auto *button = new OpenButton("Screen", label.empty() ? config.screen : label, this);
        button->onTouch = [this, name = config.screen] { actions_.openScreen(screen_, name); };
        return button;
    }
    const std::string caption = !label.empty() ? label : config.recipe.empty() ? "Recipes" : config.recipe;
    auto *button = new OpenButton("Recipe", caption, this);
    button->onTouch = [this, name = config.recipe] { actions_.showRecipe(screen_.stations, name); };
    return button;
}

Element *ScreenView::makeControl(const ScreenElement &config, LiveValue &value, const std::string &label)
{
    if (config.kind == ElementKind::SET_POINT) {
        auto *setPoint = new SetPoint(&value, label, this);
        setPoint->onTouch = [this, &value] { actions_.setNumber(value); };
        return setPoint;
    }
    if (config.kind == ElementKind::CHOICE) {
        auto *choice = new Choice(&value, label, config.states, this);
        choice->onTouch = [this, &value, choice] { actions_.choose(value, choice->choices()); };
        return choice;
    }
    auto *button = new ActionButton(&value, config, label, this);
    button->onTouch = [this, &value, button] { actions_.press(value, *button); };
    return button;
}

void ScreenView::refresh()
{
    for (Element *element : elements_)
        element->refresh();
}

QRect ScreenView::cellsOf(const ScreenElement &config) const
{
    const auto x = [&](int column) { return width() * column / screen_.screen->columns; };
    const auto y = [&](int row) { return height() * row / screen_.screen->rows; };
    return {QPoint(x(config.column), y(config.row)),
            QPoint(x(config.column + config.columns) - 1, y(config.row + config.rows) - 1)};
}

static bool isWithin(const ScreenElement &inner, const ScreenElement &outer)
{
    return &inner != &outer && inner.column >= outer.column && inner.row >= outer.row
           && inner.column + inner.columns <= outer.column + outer.columns && inner.row + inner.rows <= outer.row + outer.rows;
}

// The innermost group that the element lies in, or null.
static const ScreenElement *groupOf(const ScreenElement &config, const std::vector<ScreenElement> &elements)
{
    const ScreenElement *innermost = nullptr;
    for (const ScreenElement &group : elements) {
        if (group.kind == ElementKind::GROUP && isWithin(config, group) && (!innermost || isWithin(group, *innermost)))
            innermost = &group;
    }
    return innermost;
}

// What lies in a group leaves room for its title and frame.
QRect ScreenView::placeOf(const ScreenElement &config) const
{
    const QRect cells = cellsOf(config);
    const ScreenElement *group = groupOf(config, screen_.screen->elements);
    if (!group)
        return cells;
    const QRect outer = cellsOf(*group);
    const QRect room  = placeOf(*group).adjusted(4, fontMetrics().height() + 4, -4, -4);
    const auto x = [&](int at) { return room.left() + (at - outer.left()) * room.width() / outer.width(); };
    const auto y = [&](int at) { return room.top() + (at - outer.top()) * room.height() / outer.height(); };
    return {QPoint(x(cells.left()), y(cells.top())), QPoint(x(cells.right() + 1) - 1, y(cells.bottom() + 1) - 1)};
}

void ScreenView::place()
{
    if (screen_.screen) {
        for (std::size_t i = 0; i < elements_.size(); ++i)
            elements_[i]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), placeOf(screen_.screen->elements[i])));
        return;
    }
    const QSize least = elements_.empty() ? QSize(1, 1) : elements_.front()->sizeHint();
    const int count   = static_cast<int>(elements_.size());
    const int columns = std::clamp(width() / least.width(), 1, std::max(1, count));
    const int rows    = (count + columns - 1) / columns;
    const int high    = std::clamp(height() / std::max(1, rows), least.height(), 2 * least.height());
    setMinimumHeight(rows * least.height());
    for (int i = 0; i < count; ++i) {
        const QRect cell(width() * (i % columns) / columns, i / columns * high, width() / columns, high);
        elements_[static_cast<std::size_t>(i)]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), cell));
    }
}

void ScreenView::resizeEvent(QResizeEvent *)
{
    place();
}

void ScreenView::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), look::GROUND);
}
