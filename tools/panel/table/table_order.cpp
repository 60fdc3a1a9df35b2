#include "table/table_order.h"

#include "table/shown_number.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <tuple>

namespace {

// Sorts by a key that is found once for each row.
template <typename KeyOf>
void sortBy(std::vector<std::size_t> &indexes, KeyOf keyOf)
{
    using Key = decltype(keyOf(std::size_t(0)));
    std::vector<std::pair<Key, std::size_t>> keyed;
    keyed.reserve(indexes.size());
    for (const std::size_t index : indexes)
        keyed.emplace_back(keyOf(index), index);
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::transform(keyed.begin(), keyed.end(), indexes.begin(), [](const auto &entry) { return entry.second; });
}

// Of the names as they come first; "" goes before all.
class Ranks {
public:
    std::size_t of(const std::string &name)
    {
        return name.empty() ? 0 : ranks_.emplace(name, ranks_.size() + 1).first->second;
    }

private:
    std::map<std::string, std::size_t> ranks_;
};

void gather(std::vector<std::size_t> &indexes, const std::vector<ValueRow> &rows)
{
    Ranks plcs;
    Ranks groups;
    sortBy(indexes, [&](std::size_t i) { return std::make_pair(plcs.of(rows[i].plc), groups.of(rows[i].group)); });
}

void sortByName(std::vector<std::size_t> &indexes, const std::vector<ValueRow> &rows)
{
    std::stable_sort(indexes.begin(), indexes.end(), [&rows](std::size_t a, std::size_t b) {
        return strverscmp(rows[a].name.c_str(), rows[b].name.c_str()) < 0;
    });
}

std::tuple<int, double, std::string> valueKey(const std::string &value)
{
    if (value.empty())
        return {2, 0, ""};
    const std::optional<double> number = shownNumber(value);
    return number ? std::make_tuple(0, *number, std::string()) : std::make_tuple(1, 0.0, value);
}

} // namespace

RowOrder nextOrder(RowOrder order)
{
    return order == RowOrder::QUALITY ? RowOrder::GIVEN : static_cast<RowOrder>(static_cast<int>(order) + 1);
}

const char *orderText(RowOrder order)
{
    switch (order) {
    case RowOrder::GIVEN:   return "as given";
    case RowOrder::NAME:    return "name";
    case RowOrder::VALUE:   return "value";
    case RowOrder::CHANGE:  return "latest change";
    case RowOrder::QUALITY: return "quality";
    }
    return "";
}

void sortRows(std::vector<std::size_t> &indexes, const std::vector<ValueRow> &rows, RowOrder order)
{
    switch (order) {
    case RowOrder::GIVEN:
        gather(indexes, rows);
        break;
    case RowOrder::NAME:
        sortByName(indexes, rows);
        break;
    case RowOrder::VALUE:
        sortBy(indexes, [&](std::size_t i) { return valueKey(rows[i].value); });
        break;
    case RowOrder::CHANGE:
        sortBy(indexes, [&](std::size_t i) {
            const std::optional<TimePoint> &at = rows[i].changedAt;
            return std::make_pair(!at, -at.value_or(TimePoint()).time_since_epoch());
        });
        break;
    case RowOrder::QUALITY:
        sortBy(indexes, [&](std::size_t i) { return -static_cast<int>(rows[i].quality); });
        break;
    }
}
