#include "table/columns.h"

#include "terminal/text_width.h"

#include <algorithm>

namespace {

const std::size_t AGE_WIDTH     = 7;
const std::size_t QUALITY_WIDTH = 13;
const std::size_t FATE_WIDTH    = 11;
const std::size_t EXTREME_LEAST = 7;
const std::size_t EXTREME_MOST  = 12;
const std::size_t NARROWEST     = 8;  // a course with fewer characters is left out
const std::size_t WIDEST        = 60; // one minute

template <typename Field>
std::size_t widest(const std::vector<TableRow> &rows, Field field, std::size_t least, std::size_t most)
{
    std::size_t width = least;
    for (const TableRow &row : rows)
        width = std::max(width, textWidth(showable(field(row))));
    return std::min(width, most);
}

// Takes from `width`, down to `least`, what is used more than `columns`.
void shrink(std::size_t &width, std::size_t least, const Columns &plan, std::size_t columns)
{
    const std::size_t used = usedColumns(plan);
    if (used > columns && width > least)
        width -= std::min(used - columns, width - least);
}

// Gives to `width`, up to `most`, what is left of `columns`.
void grow(std::size_t &width, std::size_t most, const Columns &plan, std::size_t columns)
{
    const std::size_t used = usedColumns(plan);
    if (used < columns && width < most)
        width += std::min(columns - used, most - width);
}

// What is left goes to the minimum and the maximum, if both have room, and then to the course.
void planRest(Columns &plan, const std::vector<TableRow> &rows, std::size_t columns)
{
    const std::size_t minimum = widest(rows, [](const TableRow &row) { return row.minimum; }, 0, EXTREME_MOST);
    const std::size_t maximum = widest(rows, [](const TableRow &row) { return row.maximum; }, 0, EXTREME_MOST);
    if (minimum + maximum > 0)
        plan.extreme = std::max({minimum, maximum, EXTREME_LEAST});
    if (usedColumns(plan) > columns)
        plan.extreme = 0;
    const std::size_t used = usedColumns(plan) + 2;
    plan.course = used + NARROWEST <= columns ? std::min(columns - used, WIDEST) : 0;
}

} // namespace

std::string fit(const std::string &text, std::size_t width, bool right)
{
    const std::string clean = showable(text);
    const std::size_t size = textWidth(clean);
    if (size > width && width == 0)
        return "";
    const std::string shown = size > width ? textStart(clean, width - 1) + "~" : clean;
    const std::string filling(width - textWidth(shown), ' ');
    return right ? filling + shown : shown + filling;
}

std::string trimmed(std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::size_t usedColumns(const Columns &plan)
{
    const std::size_t unit = plan.unit > 0 ? plan.unit + 1 : 0;
    const std::size_t ends = plan.extreme > 0 ? 2 * plan.extreme + 3 : 0;
    const std::size_t age  = plan.age > 0 ? plan.age + 2 : 0;
    const std::size_t fate = plan.fate > 0 ? plan.fate + 2 : 0;
    return plan.name + 1 + plan.value + 2 + unit + ends + age + plan.quality + fate;
}

Columns planColumns(const TableContent &content, std::size_t columns)
{
    const std::size_t name  = widest(content.rows, [](const TableRow &row) { return row.name; }, 3, columns);
    const std::size_t value = widest(content.rows, [](const TableRow &row) { return row.value; }, 7, 60);
    const std::size_t unit  = widest(content.rows, [](const TableRow &row) { return row.unit; }, 0, 12);
    const std::size_t fate  = widest(content.rows, [](const TableRow &row) { return row.fate; }, 0, FATE_WIDTH);
    Columns plan = {std::min<std::size_t>(name, 20), std::min<std::size_t>(value, 19),
                    unit > 0 ? std::clamp<std::size_t>(unit, 4, 6) : 0, 0, AGE_WIDTH, QUALITY_WIDTH,
                    fate > 0 ? FATE_WIDTH : 0, 0};
    if (usedColumns(plan) > columns)
        plan.unit = 0;
    if (usedColumns(plan) > columns)
        plan.age = 0;
    shrink(plan.name, 8, plan, columns);
    shrink(plan.value, 7, plan, columns);
    shrink(plan.name, 3, plan, columns);
    shrink(plan.quality, 4, plan, columns);
    grow(plan.name, name, plan, columns);
    if (plan.unit > 0)
        grow(plan.unit, unit, plan, columns);
    grow(plan.value, value, plan, columns);
    planRest(plan, content.rows, columns);
    return plan;
}
