#include "documents/table_reader.h"

#include "common/numbers.h"

#include <algorithm>
#include <cmath>

const DataNode *TableReader::take(const std::string &key)
{
    if (std::find(known_.begin(), known_.end(), key) == known_.end())
        known_.push_back(key);
    const DataNode *node = table_.find(key);
    return node && node->kind == NodeKind::CELL && node->text.empty() ? nullptr : node;
}

const DataNode *TableReader::need(const std::string &key, const std::string &example)
{
    const DataNode *node = take(key);
    if (!node)
        report(table_, "'" + key + "' is missing; add it, such as " + example);
    return node;
}

bool TableReader::text(const std::string &key, std::string &value)
{
    const DataNode *node = take(key);
    if (!node)
        return true;
    if (node->kind != NodeKind::TEXT && node->kind != NodeKind::CELL)
        return report(*node, "'" + key + "' is not a text; write it between quotes");
    value = node->text;
    return true;
}

bool TableReader::whole(const std::string &key, long minimum, long maximum, long &value)
{
    const DataNode *node = take(key);
    if (!node)
        return true;
    const bool isWhole = node->kind == NodeKind::INTEGER || node->kind == NodeKind::CELL;
    if (isWhole && parseNumber(node->text, minimum, maximum, value))
        return true;
    return report(*node, "'" + key + "' is not a whole number from " + std::to_string(minimum) + " to "
                             + std::to_string(maximum));
}

bool TableReader::yesOrNo(const std::string &key, bool &value)
{
    const DataNode *node = take(key);
    if (!node)
        return true;
    if (node->kind != NodeKind::BOOLEAN)
        return report(*node, "'" + key + "' is neither true nor false, without quotes");
    value = node->text == "true";
    return true;
}

bool TableReader::number(const std::string &key, double &value)
{
    const DataNode *node = take(key);
    if (!node)
        return true;
    const bool fits = node->kind == NodeKind::INTEGER || node->kind == NodeKind::NUMBER || node->kind == NodeKind::CELL;
    double parsed = 0;
    if (!fits || !readNumber(node->text, parsed) || !std::isfinite(parsed))
        return report(*node, "'" + key + "' is not a number; write one such as 0.1, without quotes");
    value = parsed;
    return true;
}

bool TableReader::report(const DataNode &node, const std::string &text)
{
    problems_.add(file_, node.place, text);
    sound_ = false;
    return false;
}

void TableReader::refuseOthers()
{
    for (std::size_t i = 0; i < table_.keys.size(); ++i) {
        if (std::find(known_.begin(), known_.end(), table_.keys[i]) != known_.end())
            continue;
        std::string names;
        for (const std::string &name : known_)
            names += (names.empty() ? "" : ", ") + name;
        problems_.add(file_, table_.keyPlaces[i], "'" + table_.keys[i] + "' is not known here; known are " + names);
    }
}
