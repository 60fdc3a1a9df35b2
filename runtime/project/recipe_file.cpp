#include "project/recipe_file.h"

#include "base/usage_error.h"

#include <algorithm>
#include <istream>
#include <sstream>
#include <tuple>

// One past the end of what stands at `at`: of a quoted text, or of what is no space.
static std::size_t tokenEnd(const std::string &line, std::size_t at)
{
    if (line[at] != '"')
        return std::min(line.find_first_of(" \t\r", at), line.size());
    for (std::size_t i = at + 1; i < line.size(); ++i) {
        if (line[i] == '\\')
            ++i;
        else if (line[i] == '"')
            return i + 1;
    }
    throw UsageError("the quote is not closed; end the text with another \"");
}

// The values of a line, quoted texts without their quotes.
static std::vector<std::string> valueTexts(const std::string &line)
{
    std::vector<std::string> texts;
    for (std::size_t at = line.find_first_not_of(" \t\r"); at != std::string::npos;) {
        const std::size_t end = tokenEnd(line, at);
        const std::string token = line.substr(at, end - at);
        texts.push_back(token[0] == '"' ? token.substr(1, token.size() - 2) : token);
        at = line.find_first_not_of(" \t\r", end);
    }
    return texts;
}

static std::string withoutComment(const std::string &line)
{
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && quoted)
            ++i;
        else if (line[i] == '"')
            quoted = !quoted;
        else if (line[i] == '#' && !quoted)
            return line.substr(0, i);
    }
    return line;
}

RecipeEntry makeEntry(const TagBook &tags, const std::string &name, const std::vector<std::string> &texts)
{
    RecipeEntry entry;
    const Tag tag = texts.empty() ? tags.resolve(name, Access::WRITE)
                                  : tags.resolveWithValues(name, Access::WRITE, texts, entry.values);
    if (tag.item.isBit)
        throw UsageError("'" + name + "' is a bit; recipes hold words");
    entry.item   = tag.item;
    entry.name   = tag.name;
    entry.format = tag.format;
    return entry;
}

static RecipeEntry parseEntry(const TagBook &tags, const std::string &line, bool needValues)
{
    const std::size_t equals = line.find('=');
    std::string name;
    std::string surplus;
    std::istringstream nameText(line.substr(0, equals));
    nameText >> name >> surplus;
    if (!surplus.empty())
        throw UsageError("'" + surplus + "' is not expected here; write TYPE:ADDRESS[:COUNT] = VALUE ...");
    const bool hasValues = equals != std::string::npos;
    const std::vector<std::string> texts = hasValues ? valueTexts(line.substr(equals + 1)) : std::vector<std::string>();
    RecipeEntry entry = makeEntry(tags, name, texts);
    if (texts.empty() && (needValues || hasValues))
        throw UsageError("'" + name + "' has no values; write them behind '='");
    return entry;
}

std::size_t findOverlap(const std::vector<RecipeEntry> &entries, std::string &reason)
{
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const RecipeEntry &entry : entries)
        items.push_back(entry.item);
    try {
        refuseOverlaps(items);
        return entries.size();
    } catch (const UsageError &error) {
        reason = error.what();
    }
    // The shortest beginning that overlaps, between `sound` items that do not and `broken` that do.
    std::size_t sound  = 0;
    std::size_t broken = items.size();
    while (broken - sound > 1) {
        const std::size_t middle = (sound + broken) / 2;
        try {
            refuseOverlaps(std::vector<Item>(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(middle)));
            sound = middle;
        } catch (const UsageError &error) {
            reason = error.what();
            broken = middle;
        }
    }
    return broken - 1;
}

std::vector<RecipeEntry> readRecipe(const TagBook &tags, std::istream &input, const std::string &name, bool needValues)
{
    std::vector<RecipeEntry> entries;
    std::vector<int> lineOf;
    int number = 0;
    try {
        for (std::string line; std::getline(input, line);) {
            ++number;
            line = withoutComment(line);
            if (line.find_first_not_of(" \t\r") == std::string::npos)
                continue;
            entries.push_back(parseEntry(tags, line, needValues));
            lineOf.push_back(number);
        }
    } catch (const UsageError &error) {
        throw UsageError(name + ":" + std::to_string(number) + ": " + error.what());
    }
    if (input.bad())
        throw UsageError(name + ": cannot be read");
    if (entries.empty())
        throw UsageError(name + ": holds no variable; write lines such as DM:100 = 1 2 3");
    std::string reason;
    const std::size_t overlap = findOverlap(entries, reason);
    if (overlap < entries.size())
        throw UsageError(name + ":" + std::to_string(lineOf[overlap]) + ": " + reason);
    return entries;
}

std::string entryName(const RecipeEntry &entry)
{
    return entry.name.empty() ? itemName(entry.item, entry.format) : entry.name;
}

std::string recipeLine(const RecipeEntry &entry)
{
    return entryName(entry) + " = " + decodeValues(entry.format, entry.values);
}

std::vector<RecipeEntry> layOutRecipe(const std::vector<RecipeEntry> &entries, qint32 wordsPerFrame)
{
    std::vector<RecipeEntry> pieces;
    for (const RecipeEntry &entry : entries) {
        std::size_t from = 0;
        for (const Item &item : cutItem(entry.item, wordsPerFrame)) {
            RecipeEntry piece = {item, {}};
            const std::size_t to = std::min(from + item.byteSize(), entry.values.size());
            for (; from < to; ++from)
                piece.values.push_back(entry.values[from]);
            pieces.push_back(piece);
        }
    }
    std::sort(pieces.begin(), pieces.end(), [](const RecipeEntry &a, const RecipeEntry &b) {
        return std::make_tuple(a.item.regType, a.item.address) < std::make_tuple(b.item.regType, b.item.address);
    });
    return pieces;
}
