#include "project/recipe_file.h"

#include "common/usage_error.h"

#include <algorithm>
#include <istream>
#include <sstream>

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

std::string recipeLine(const RecipeEntry &entry)
{
    return entryName(entry) + " = " + decodeValues(entry.format, entry.values);
}
