#include "commands/condition.h"

#include "common/numbers.h"

#include <cmath>
#include <cstdint>
#include <optional>

namespace {

const char EXAMPLE[] = "ITEM=VALUE, ITEM!=VALUE, or with >, >=, < or <=, such as 'Level>=50'";

struct Operator {
    const char *text;
    Relation    relation;
};

// The longer ones first, since they begin like others.
const Operator OPERATORS[] = {
    {"!=", Relation::UNEQUAL}, {">=", Relation::NOT_LESS}, {"<=", Relation::NOT_GREATER},
    {"=", Relation::EQUAL},    {">", Relation::GREATER},   {"<", Relation::LESS},
};

const Operator &operatorAt(const std::string &text, std::size_t at)
{
    for (const Operator &known : OPERATORS) {
        if (text.compare(at, std::char_traits<char>::length(known.text), known.text) == 0)
            return known;
    }
    throw UsageError("'" + text + "' is not a condition; use " + EXAMPLE);
}

bool isOrder(Relation relation)
{
    return relation != Relation::EQUAL && relation != Relation::UNEQUAL;
}

bool isCompared(const ValueFormat &format)
{
    return isNumeric(format.type) || format.type == DataType::BIT;
}

template <typename Number>
int sideOf(Number a, Number b)
{
    return a < b ? -1 : a > b ? 1 : 0;
}

// Below, at or above 0 as `a` is below, at or above `b`; none if one is no number. Whole numbers keep all their digits.
std::optional<int> compareNumbers(const std::string &a, const std::string &b)
{
    std::int64_t  wholeA = 0, wholeB = 0;
    std::uint64_t positiveA = 0, positiveB = 0;
    double        realA = 0, realB = 0;
    if (readNumber(a, wholeA) && readNumber(b, wholeB))
        return sideOf(wholeA, wholeB);
    if (readNumber(a, positiveA) && readNumber(b, positiveB))
        return sideOf(positiveA, positiveB);
    if (!readNumber(a, realA) || !readNumber(b, realB) || std::isnan(realA) || std::isnan(realB))
        return std::nullopt;
    return sideOf(realA, realB);
}

bool fits(Relation relation, int side)
{
    switch (relation) {
    case Relation::EQUAL:       return side == 0;
    case Relation::UNEQUAL:     return side != 0;
    case Relation::GREATER:     return side > 0;
    case Relation::NOT_LESS:    return side >= 0;
    case Relation::LESS:        return side < 0;
    case Relation::NOT_GREATER: return side <= 0;
    }
    return false;
}

std::string numberOf(const Condition &condition, const std::string &value)
{
    long whole = 0;
    if (value.compare(0, 2, "0x") == 0 && parseNumber(value, 0, 0xFFFFFFFFL, whole))
        return std::to_string(whole);
    double real = 0;
    if (!readNumber(value, real) || !std::isfinite(real))
        throw UsageError("'" + condition.text + "': '" + value + "' is not a number; " + condition.tag.name
                         + " is compared with one, such as 12 or 0.5");
    if (real < 0 && condition.tag.format.type == DataType::WORD && condition.tag.format.scale == 1
        && condition.tag.format.offset == 0)
        throw UsageError("'" + condition.text + "': " + condition.tag.name + " is shown as a number from 0 to 65535; "
                         + "write " + condition.tag.name + "/s16 for one that can be negative");
    return value;
}

// As the value would be shown.
std::string textOf(const Condition &condition, const std::string &name, const std::string &value)
{
    const ValueFormat &format = condition.tag.format;
    if (format.type == DataType::STRING && isOrder(condition.relation))
        throw UsageError("'" + condition.text + "': a text is equal or not; use = or !=");
    try {
        return decodeValues(format, encodeValues(format, {value}, condition.tag.item.count));
    } catch (const ValueError &error) {
        throw error.of(name);
    }
}

} // namespace

Condition parseCondition(const TagBook &book, const std::string &text)
{
    const std::size_t at = text.find_first_of("=!<>");
    if (at == std::string::npos)
        throw UsageError("'" + text + "' is not a condition; use " + EXAMPLE);
    const Operator &found    = operatorAt(text, at);
    const std::string name   = text.substr(0, at);
    const std::string value  = text.substr(at + std::char_traits<char>::length(found.text));
    Condition condition = {text, book.resolve(name, Access::READ), found.relation, ""};
    const Tag &tag = condition.tag;
    if (tag.format.type != DataType::STRING && tag.valueCount() != 1)
        throw UsageError("'" + text + "': " + tag.name + " holds "
                         + counted(static_cast<std::size_t>(tag.valueCount()), "value") + ", and one is compared; name it by its address");
    condition.wanted = isCompared(tag.format) ? numberOf(condition, value) : textOf(condition, name, value);
    return condition;
}

bool holds(const Condition &condition, const std::string &shown)
{
    // Words in hex and in bits all have as many digits: their texts are in the order of their numbers.
    if (!isCompared(condition.tag.format))
        return fits(condition.relation, shown.compare(condition.wanted));
    const std::optional<int> side = compareNumbers(shown, condition.wanted);
    return side && fits(condition.relation, *side);
}
