#include "project/recipe_table.h"

#include "common/csv_text.h"
#include "common/numbers.h"
#include "common/usage_error.h"
#include "documents/table_reader.h"
#include "documents/text_check.h"
#include "project/recipe_file.h"

#include <charconv>
#include <sstream>

namespace {

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// A whole number of TOML for a type whose texts have another base.
std::string wholeText(const std::string &number, const ValueFormat &format)
{
    if (!isHex(format.type) && format.type != DataType::BITS)
        return number;
    ValueFormat whole;
    whole.type  = wordsPerValue(format.type) == 1 ? DataType::U16 : DataType::U32;
    whole.order = format.order;
    return decodeValue(format, encodeValues(whole, {number}), 0);
}

// Reads the variables of one recipe and reports what is wrong at their places.
class EntryReader {
public:
    EntryReader(const std::string &file, const TagBook &tags, const std::set<std::string> &broken, Problems &problems)
        : file_(file), tags_(tags), broken_(broken), problems_(problems)
    {
    }

    // `node` holds the values, or is null.
    void add(const std::string &name, Place place, const DataNode *node);

    // Reports what is wrong with the recipe as a whole, and gives the entries.
    std::vector<RecipeEntry> finish(Place place);

private:
    bool readTexts(const std::string &name, const DataNode &node, std::vector<std::string> &texts);
    bool readText(const DataNode &node, const ValueFormat &format, std::string &text);

    const std::string           &file_;
    const TagBook               &tags_;
    const std::set<std::string> &broken_;
    Problems                    &problems_;
    std::vector<RecipeEntry>     entries_;
    std::vector<Place>           places_;
    bool                         sound_ = true;
};

bool EntryReader::readText(const DataNode &node, const ValueFormat &format, std::string &text)
{
    text = node.text;
    if (node.kind == NodeKind::INTEGER)
        text = wholeText(node.text, format);
    if (node.kind == NodeKind::INTEGER || node.kind == NodeKind::NUMBER || node.kind == NodeKind::TEXT)
        return true;
    problems_.add(file_, node.place, "this is not a value; write a number, or a text between quotes");
    return false;
}

bool EntryReader::readTexts(const std::string &name, const DataNode &node, std::vector<std::string> &texts)
{
    const ValueFormat format = tags_.formatFor(name);
    if (node.kind == NodeKind::CELL && format.type != DataType::STRING) {
        std::istringstream words(node.text);
        for (std::string word; words >> word;)
            texts.push_back(word);
        return true;
    }
    if (node.kind == NodeKind::CELL) {
        texts.push_back(textOfCell(node.text));
        return true;
    }
    bool sound = true;
    std::string text;
    if (node.kind != NodeKind::ARRAY) {
        sound = readText(node, format, text);
        texts.push_back(text);
        return sound;
    }
    for (const DataNode &item : node.children) {
        sound = readText(item, format, text) && sound;
        texts.push_back(text);
    }
    if (node.children.empty())
        problems_.add(file_, node.place, "there is no value here; write one");
    return sound && !node.children.empty();
}

void EntryReader::add(const std::string &name, Place place, const DataNode *node)
{
    if (broken_.count(name.substr(0, name.find('/'))) > 0) {
        sound_ = false;
        return;
    }
    Place at = place;
    try {
        std::vector<std::string> texts;
        tags_.resolve(name, Access::WRITE);
        if (node && !readTexts(name, *node, texts)) {
            sound_ = false;
            return;
        }
        at = node ? node->place : place;
        entries_.push_back(makeEntry(tags_, name, texts));
        places_.push_back(place);
    } catch (const UsageError &error) {
        problems_.add(file_, at, error.what());
        sound_ = false;
    }
}

std::vector<RecipeEntry> EntryReader::finish(Place place)
{
    std::string reason;
    const std::size_t overlap = findOverlap(entries_, reason);
    if (overlap < entries_.size())
        problems_.add(file_, places_[overlap], reason);
    if (entries_.empty() && sound_)
        problems_.add(file_, place, "the recipe holds no variable; add one, such as \"DM:100\" = 1");
    return entries_;
}

Recipe readRows(const DataNode &rows, const std::string &file, const TagBook &tags, Problems &problems)
{
    const std::set<std::string> none;
    EntryReader entries(file, tags, none, problems);
    for (std::size_t i = 0; i < rows.children.size(); ++i) {
        TableReader reader(rows.children[i], file, problems);
        const DataNode *variable = reader.need("variable", "DM:100");
        const DataNode *value    = reader.take("value");
        if (variable)
            entries.add(variable->text, variable->place, value);
        if (i == 0)
            reader.refuseOthers();
    }
    Recipe recipe;
    recipe.entries = problems.any() ? std::vector<RecipeEntry>() : entries.finish({1, 1});
    return recipe;
}

Recipe readText(const TagBook &tags, const std::string &text, const std::string &file, bool needValues)
{
    std::istringstream input(text);
    Recipe recipe;
    recipe.entries = readRecipe(tags, input, file, needValues);
    return recipe;
}

// A number that stands for itself in TOML, or a text.
std::string tomlValue(const std::string &text, DataType type)
{
    const char *end = text.data() + text.size();
    qint64 whole = 0;
    double number = 0;
    const bool isWhole = text.find_first_not_of("-0123456789") == std::string::npos;
    const bool fits = isWhole ? readNumber(text, whole)
                              : std::from_chars(text.data(), end, number).ptr == end
                                    && text.find_first_of("0123456789") != std::string::npos;
    const bool isBare = isHex(type) || (isNumeric(type) && fits);
    return isBare ? text : tomlString(text);
}

std::string tomlLines(const std::vector<RecipeEntry> &entries)
{
    std::string text = "[values]\n";
    for (const RecipeEntry &entry : entries) {
        std::string values;
        const std::vector<std::string> texts = valueTexts(entry);
        for (const std::string &value : texts)
            values += (values.empty() ? "" : ", ") + tomlValue(value, entry.format.type);
        text += tomlKey(entryName(entry)) + " = " + (texts.size() > 1 ? "[" + values + "]" : values) + "\n";
    }
    return text;
}

std::string csvLines(const std::vector<RecipeEntry> &entries)
{
    std::string text = "variable,value\n";
    for (const RecipeEntry &entry : entries) {
        std::string values;
        for (const std::string &value : valueTexts(entry))
            values += (values.empty() ? "" : " ") + value;
        text += csvField(entryName(entry)) + ","
                + (entry.format.type == DataType::STRING ? csvText(values) : csvField(values)) + "\n";
    }
    return text;
}

} // namespace

std::size_t Recipe::wordCount() const
{
    std::size_t words = 0;
    for (const RecipeEntry &entry : entries)
        words += static_cast<std::size_t>(entry.item.count);
    return words;
}

std::vector<std::string> valueTexts(const RecipeEntry &entry)
{
    if (entry.values.empty())
        return {};
    if (entry.format.type == DataType::STRING) {
        const std::string quoted = decodeValues(entry.format, entry.values);
        return {quoted.substr(1, quoted.size() - 2)};
    }
    std::vector<std::string> texts;
    const std::size_t count = entry.values.size() / 2 / static_cast<std::size_t>(wordsPerValue(entry.format.type));
    for (std::size_t i = 0; i < count; ++i)
        texts.push_back(decodeValue(entry.format, entry.values, i));
    return texts;
}

Recipe readRecipeTable(const DataNode &table, const std::string &file, const TagBook &tags,
                       const std::set<std::string> &broken, Problems &problems)
{
    Recipe recipe;
    TableReader reader(table, file, problems);
    reader.text("comment", recipe.comment);
    EntryReader entries(file, tags, broken, problems);
    const DataNode *variables = reader.take("variables");
    const DataNode *values    = reader.take("values");
    if (variables && variables->kind != NodeKind::ARRAY)
        reader.report(*variables, "'variables' is not a list; write names between brackets, such as [\"DM:100\"]");
    if (values && values->kind != NodeKind::TABLE)
        reader.report(*values, "'values' is not a table; write a line \"DM:100\" = 1 for each variable");
    reader.refuseOthers();
    if (variables && variables->kind == NodeKind::ARRAY) {
        for (const DataNode &variable : variables->children) {
            if (variable.kind == NodeKind::TEXT)
                entries.add(variable.text, variable.place, nullptr);
            else
                reader.report(variable, "this is not a variable; write its name between quotes");
        }
    }
    if (values && values->kind == NodeKind::TABLE) {
        for (std::size_t i = 0; i < values->keys.size(); ++i)
            entries.add(values->keys[i], values->keyPlaces[i], &values->children[i]);
    }
    recipe.entries = entries.finish(table.place);
    return recipe;
}

Recipe loadRecipeFile(const TagBook &tags, const std::string &file, bool needValues)
{
    const std::string text = readFile(file);
    Problems problems;
    Recipe recipe;
    if (endsWith(file, ".toml")) {
        const DataNode table = parseToml(text, file, problems);
        problems.refuse();
        recipe = readRecipeTable(table, file, tags, {}, problems);
    } else if (endsWith(file, ".csv")) {
        recipe = readRows(parseCsv(text, file, problems), file, tags, problems);
    } else if (checkCharacters(text, file, problems)) {
        recipe = readText(tags, text, file, needValues);
    }
    problems.refuse();
    recipe.name = file;
    if (needValues)
        requireValues(recipe);
    return recipe;
}

void requireValues(const Recipe &recipe)
{
    for (const RecipeEntry &entry : recipe.entries) {
        if (entry.values.empty())
            throw UsageError(recipe.name + ": '" + entryName(entry) + "' has no value; give it one");
    }
}

std::string recipeFileText(const std::string &file, const std::vector<RecipeEntry> &entries)
{
    if (endsWith(file, ".toml"))
        return tomlLines(entries);
    if (endsWith(file, ".csv"))
        return csvLines(entries);
    std::string text;
    for (const RecipeEntry &entry : entries)
        text += recipeLine(entry) + '\n';
    return text;
}
