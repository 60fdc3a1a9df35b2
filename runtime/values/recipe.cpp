#include "values/recipe.h"

#include "base/usage_error.h"

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
