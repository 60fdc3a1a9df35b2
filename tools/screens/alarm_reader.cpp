#include "screens/alarm_reader.h"

#include "screens/element_reader.h"

#include <cmath>

namespace {

const double MOST_DELAY_SECONDS = 86400;

struct ConditionKey {
    const char          *key;
    AlarmRule::Condition condition;
};

constexpr ConditionKey CONDITIONS[] = {{"high", AlarmRule::Condition::HIGH},
                                       {"low", AlarmRule::Condition::LOW},
                                       {"value", AlarmRule::Condition::VALUE}};

class AlarmReader {
public:
    AlarmReader(const DataNode &table, Names &names)
        : table_(table), names_(names), reader_(table, names.file(), names.problems())
    {
    }

    AlarmRule read();

private:
    const DataNode *readCondition();
    void readTag(const DataNode *limit);
    void readHysteresis();
    void readDelay();

    const DataNode &table_;
    Names          &names_;
    TableReader     reader_;
    AlarmRule       rule_;
};

// Gives the one limit of the alarm, or null.
const DataNode *AlarmReader::readCondition()
{
    const DataNode *limit = nullptr;
    bool isSound = true;
    for (const ConditionKey &row : CONDITIONS) {
        const DataNode *node = reader_.take(row.key);
        if (node && limit) {
            isSound = reader_.report(*node, "'" + std::string(row.key) + "' is a second condition; make an alarm of its own "
                                                                       "of it");
        } else if (node) {
            limit = node;
            rule_.condition = row.condition;
            isSound = reader_.number(row.key, rule_.limit);
        }
    }
    if (!limit)
        reader_.report(table_, "the condition is missing; add one of high, low and value, such as high = 90");
    return isSound ? limit : nullptr;
}

void AlarmReader::readTag(const DataNode *limit)
{
    const bool isValue = rule_.condition == AlarmRule::Condition::VALUE;
    const DataNode *node = reader_.need("tag", "tag = \"Level\"");
    if (!node)
        return;
    const std::optional<NamedValue> named = names_.value(*node, isValue || !limit ? BITS_AND_NUMBERS : NUMBERS,
                                                         isValue || !limit ? "an alarm" : "an alarm with a limit");
    if (!named)
        return;
    rule_.value = named->value;
    if (isValue && limit)
        names_.checkNumber(*limit, *named, rule_.limit);
}

void AlarmReader::readHysteresis()
{
    const DataNode *node = reader_.take("hysteresis");
    if (!reader_.number("hysteresis", rule_.hysteresis) || !node)
        return;
    if (rule_.hysteresis < 0)
        reader_.report(*node, "'hysteresis' is below 0; write how far the value goes back before the alarm goes");
    else if (rule_.condition == AlarmRule::Condition::VALUE)
        reader_.report(*node, "only an alarm of high or low has 'hysteresis'; remove it");
}

void AlarmReader::readDelay()
{
    double seconds = 0;
    const DataNode *node = reader_.take("delay_s");
    if (!reader_.number("delay_s", seconds) || !node)
        return;
    if (seconds < 0 || seconds > MOST_DELAY_SECONDS)
        reader_.report(*node, "'delay_s' is not a number of seconds from 0 to 86400");
    else
        rule_.delay = std::chrono::milliseconds(std::lround(seconds * 1000));
}

AlarmRule AlarmReader::read()
{
    const DataNode *limit = readCondition();
    readTag(limit);
    readHysteresis();
    readDelay();
    reader_.need("text", "text = \"Level is high\"");
    rule_.text = readFilledText(reader_, "text");
    long priority = rule_.priority;
    reader_.whole("priority", 1, 3, priority);
    rule_.priority = static_cast<int>(priority);
    reader_.refuseOthers();
    return rule_;
}

} // namespace

AlarmRule readAlarm(const std::string &name, const DataNode &table, Names &names)
{
    AlarmRule rule = AlarmReader(table, names).read();
    rule.name = name;
    return rule;
}
