#include "recipe_file.h"

#include "exit_codes.h"
#include "values.h"

#include <algorithm>
#include <istream>
#include <sstream>
#include <tuple>

static RecipeEntry parseEntry(const DriverLibrary &library, const std::string &line, bool needValues)
{
    const std::size_t equals = line.find('=');
    std::string name;
    std::string surplus;
    std::istringstream nameText(line.substr(0, equals));
    nameText >> name >> surplus;
    if (!surplus.empty())
        throw UsageError("'" + surplus + "' is not expected here; write TYPE:ADDRESS[:COUNT] = VALUE ...");
    RecipeEntry entry = {{QString(), 0, 0, false}, {}};
    std::istringstream valueTexts(equals == std::string::npos ? "" : line.substr(equals + 1));
    for (std::string text; valueTexts >> text;)
        appendValue(text, false, entry.values);
    const std::size_t valueCount = entry.values.size() / 2;
    const bool hasCount = name.find(':') != name.rfind(':');
    if (valueCount > 0 && !hasCount)
        name += ":" + std::to_string(valueCount);
    entry.item = parseItem(library, name, Access::WRITE);
    if (entry.item.isBit)
        throw UsageError("'" + name + "' is a bit; recipes hold words");
    if (valueCount == 0 && (needValues || equals != std::string::npos))
        throw UsageError("'" + name + "' has no values; write them behind '='");
    if (valueCount > 0 && valueCount != static_cast<std::size_t>(entry.item.count))
        throw UsageError("'" + name + "' has " + std::to_string(valueCount) + " values for "
                         + std::to_string(entry.item.count) + " words");
    return entry;
}

std::vector<RecipeEntry> readRecipe(const DriverLibrary &library, std::istream &input, const std::string &name,
                                    bool needValues)
{
    std::vector<RecipeEntry> entries;
    std::vector<Item> items;
    int number = 0;
    try {
        for (std::string line; std::getline(input, line);) {
            ++number;
            line = line.substr(0, line.find('#'));
            if (line.find_first_not_of(" \t\r") == std::string::npos)
                continue;
            entries.push_back(parseEntry(library, line, needValues));
            items.push_back(entries.back().item);
            refuseOverlaps(items);
        }
    } catch (const UsageError &error) {
        throw UsageError(name + ":" + std::to_string(number) + ": " + error.what());
    }
    if (input.bad())
        throw UsageError(name + ": cannot be read");
    if (entries.empty())
        throw UsageError(name + ": holds no variable; write lines such as DM:100 = 1 2 3");
    return entries;
}

std::string recipeLine(const RecipeEntry &entry)
{
    return itemText(entry.item) + " = " + valuesText(entry.values, false);
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
