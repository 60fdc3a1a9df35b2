#include "values/recipe.h"

#include "common/usage_error.h"

#include <algorithm>
#include <tuple>

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

std::string entryName(const RecipeEntry &entry)
{
    return entry.name.empty() ? itemName(entry.item, entry.format) : entry.name;
}

std::size_t findOverlap(const std::vector<RecipeEntry> &entries, std::string &reason)
{
    const auto overlaps = [&](std::size_t count) { // of so many entries
        std::vector<Item> items;
        for (std::size_t i = 0; i < count; ++i)
            items.push_back(entries[i].item);
        try {
            refuseOverlaps(items);
            return false;
        } catch (const UsageError &error) {
            reason = error.what();
            return true;
        }
    };
    // The shortest beginning that overlaps, between `sound` items that do not and `broken` that do.
    std::size_t sound  = 0;
    std::size_t broken = entries.size();
    if (!overlaps(broken))
        return broken;
    while (broken - sound > 1) {
        const std::size_t middle = (sound + broken) / 2;
        (overlaps(middle) ? broken : sound) = middle;
    }
    return broken - 1;
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
