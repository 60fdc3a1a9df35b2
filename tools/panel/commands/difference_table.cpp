#include "commands/difference_table.h"

#include "terminal/text_width.h"

#include <algorithm>

std::string tableText(const std::vector<std::vector<std::string>> &rows, const std::vector<bool> &right)
{
    std::vector<std::size_t> widths(right.size(), 0);
    for (const std::vector<std::string> &row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], textWidth(row[i]));
    }
    std::string text;
    for (const std::vector<std::string> &row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - textWidth(row[i]), ' ');
            line += (i > 0 ? "  " : "") + (right[i] ? padding + row[i] : row[i] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

// What value number `index` of an entry is called.
static std::string valueName(const RecipeEntry &entry, std::size_t index, qint32 words)
{
    const std::string name = entryName(entry);
    if (name.find(':') == std::string::npos)
        return name + "[" + std::to_string(index) + "]";
    const Item one = {entry.item.regType, entry.item.address + static_cast<qint32>(index) * words, words, false,
                      entry.item.notation};
    return itemName(one, entry.format);
}

std::vector<std::vector<std::string>> differences(const RecipeEntry &entry, const std::vector<quint8> &held)
{
    std::vector<std::vector<std::string>> rows;
    const qint32 words = wordsPerValue(entry.format.type);
    const std::size_t size  = 2 * static_cast<std::size_t>(words);
    const std::size_t count = entry.format.type == DataType::STRING ? 1 : entry.values.size() / size;
    if (count == 1 && entry.values != held)
        rows.push_back({entryName(entry), decodeValues(entry.format, entry.values), decodeValues(entry.format, held),
                        entry.format.unit});
    for (std::size_t i = 0; count > 1 && i < count; ++i) {
        const auto wanted = entry.values.begin() + static_cast<std::ptrdiff_t>(i * size);
        if (std::equal(wanted, wanted + static_cast<std::ptrdiff_t>(size),
                       held.begin() + static_cast<std::ptrdiff_t>(i * size)))
            continue;
        rows.push_back({valueName(entry, i, words), decodeValue(entry.format, entry.values, i),
                        decodeValue(entry.format, held, i), entry.format.unit});
    }
    return rows;
}
