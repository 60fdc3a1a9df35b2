#include "model/recipe_rows.h"

#include "common/numbers.h"
#include "documents/document.h"
#include "screens/screen.h"

#include <algorithm>
#include <charconv>

using Match = RecipeRow::Match;

namespace {

template <typename Number>
bool isNumber(const std::string &text, Number expected)
{
    Number number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && number == expected;
}

std::string quoted(const std::string &text)
{
    return "\"" + text + "\"";
}

// Whether the PLC holds what the recipe has. What is shown may be rounded, so that numbers are compared, not their texts;
// hex and bits have one text each.
bool isSame(const std::string &wanted, const fins::Sample &held)
{
    if (const auto *whole = std::get_if<std::int64_t>(&held.value); whole && isNumber(wanted, *whole))
        return true;
    if (const auto *whole = std::get_if<std::uint64_t>(&held.value); whole && isNumber(wanted, *whole))
        return true;
    if (const auto *real = std::get_if<double>(&held.value))
        return isNumber(wanted, *real);
    if (std::holds_alternative<std::string>(held.value))
        return quoted(wanted) == held.text;
    const bool isDigits = wanted.compare(0, 2, "0x") == 0 || wanted.find('_') != std::string::npos;
    return isDigits && wanted == held.text;
}

// The value with all its digits.
std::string exactText(const fins::Sample &held)
{
    const auto *real = std::get_if<double>(&held.value);
    return real ? shortestText(*real) : held.text;
}

std::string reasonOf(const fins::RecipeValues *read, const fins::Sample &held)
{
    if (!read)
        return "not read yet";
    if (held.quality == fins::Quality::REFUSED)
        return "refused by the PLC";
    return "no answer";
}

// How many samples a variable has.
std::size_t countOf(const fins::RecipeConfig::Variable &variable, const std::vector<fins::TagConfig> &tags)
{
    const std::string name = variable.item.substr(0, variable.item.find('/'));
    for (fins::TagConfig tag : tags) {
        if (tag.name == name && name != variable.item)
            tag.item = tag.item.substr(0, tag.item.find('/')) + variable.item.substr(name.size());
        if (tag.name == name)
            return valueCountOf(tag);
    }
    fins::TagConfig item;
    item.item = variable.item;
    return valueCountOf(item);
}

std::string tomlValue(const fins::Sample &held)
{
    if (const auto *text = std::get_if<std::string>(&held.value))
        return tomlString(*text);
    const bool isDigits = held.text.compare(0, 2, "0x") == 0 || held.text.find('_') != std::string::npos;
    return isDigits ? tomlString(held.text) : exactText(held);
}

} // namespace

std::vector<RecipeRow> recipeRows(const fins::RecipeConfig &recipe, const fins::RecipeValues *read)
{
    std::vector<std::string> wanted;
    std::vector<std::string> names;
    for (const fins::RecipeConfig::Variable &variable : recipe.variables) {
        for (std::size_t i = 0; i < std::max<std::size_t>(1, variable.values.size()); ++i) {
            names.push_back(variable.values.size() > 1 ? variable.item + "[" + std::to_string(i) + "]" : variable.item);
            wanted.push_back(variable.values.empty() ? "" : variable.values[i]);
        }
    }
    std::vector<RecipeRow> rows;
    const std::size_t count = read && !read->values.empty() ? read->values.size() : names.size();
    for (std::size_t i = 0; i < count; ++i) {
        const fins::Sample held = read && i < read->values.size() ? read->values[i] : fins::Sample();
        RecipeRow row;
        row.name   = held.name.empty() ? names[i] : held.name;
        row.wanted = count == names.size() ? wanted[i] : "";
        row.unit   = held.unit;
        if (std::holds_alternative<std::string>(held.value) && !row.wanted.empty())
            row.wanted = quoted(row.wanted);
        if (held.quality != fins::Quality::GOOD)
            row.note = reasonOf(read, held);
        else
            row.held = exactText(held);
        if (!row.note.empty())
            row.match = Match::UNREAD;
        else if (row.wanted.empty())
            row.match = Match::NO_VALUE;
        else
            row.match = isSame(wanted[i], held) ? Match::SAME : Match::DIFFERS;
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string summaryOf(const std::vector<RecipeRow> &rows)
{
    const auto count = [&](Match match) {
        return std::count_if(rows.begin(), rows.end(), [&](const RecipeRow &row) { return row.match == match; });
    };
    const std::string all = std::to_string(rows.size());
    const auto unread = count(Match::UNREAD);
    const auto differ = count(Match::DIFFERS);
    std::string text = unread == 0 ? "" : std::to_string(unread) + " of " + all + " not known";
    if (differ > 0)
        text += (text.empty() ? "" : "; ") + std::to_string(differ) + " of " + all + (differ == 1 ? " differs" : " differ");
    return text.empty() ? "no difference" : text;
}

std::string recipeFile(const fins::RecipeConfig &recipe, const fins::RecipeValues &read,
                       const std::vector<fins::TagConfig> &tags)
{
    std::string values = "[values]\n";
    std::string missing;
    std::size_t next = 0;
    for (const fins::RecipeConfig::Variable &variable : recipe.variables) {
        const std::size_t count = std::min(countOf(variable, tags), read.values.size() - next);
        std::string texts;
        bool isKnown = count > 0;
        for (std::size_t i = 0; i < count; ++i) {
            const fins::Sample &held = read.values[next + i];
            isKnown = isKnown && held.quality == fins::Quality::GOOD;
            texts += (i > 0 ? ", " : "") + tomlValue(held);
        }
        next += count;
        if (isKnown)
            values += tomlKey(variable.item) + " = " + (count > 1 ? "[" + texts + "]" : texts) + "\n";
        else
            missing += "# not read: " + variable.item + "\n";
    }
    return missing + "comment = " + tomlString("read from the PLC as " + recipe.name) + "\n" + values;
}
