#include "common/numbers.h"
#include "screens/screen.h"

namespace {

// The parts of TYPE:ADDRESS[:COUNT][/DATA].
struct ItemParts {
    std::string type;
    std::string count; // "": one
    std::string data;  // without an order; "": a word or a bit
};

ItemParts partsOf(const std::string &item)
{
    const std::size_t slash = item.find('/');
    const std::string words = item.substr(0, slash);
    const std::size_t first = words.find(':');
    const std::size_t last  = words.rfind(':');
    ItemParts parts;
    parts.type = words.substr(0, first);
    if (last != first)
        parts.count = words.substr(last + 1);
    if (slash != std::string::npos)
        parts.data = item.substr(slash + 1, item.find('-', slash) - slash - 1);
    return parts;
}

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

ValueKind kindOf(const fins::TagConfig &tag)
{
    const ItemParts parts = partsOf(tag.item);
    if (endsWith(parts.type, "_bit"))
        return ValueKind::BIT;
    const bool isText = parts.data == "string" || parts.data == "hex" || parts.data == "bits";
    return isText ? ValueKind::TEXT : ValueKind::NUMBER;
}

std::size_t valueCountOf(const fins::TagConfig &tag)
{
    const ItemParts parts = partsOf(tag.item);
    std::size_t count = 1;
    if (parts.data != "string")
        readNumber(parts.count, count);
    return count;
}
