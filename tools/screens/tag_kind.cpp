#include "common/numbers.h"
#include "screens/screen.h"

#include <algorithm>

namespace {

// The parts of TYPE:ADDRESS[:COUNT][/DATA], or of an item as the PLC's manuals write it, such as D100:2/REAL.
struct ItemParts {
    bool        isBit = false;
    std::string count; // "": one
    std::string data;  // without an order; "": a word or a bit
};

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

ItemParts partsOf(const std::string &item)
{
    const std::size_t slash = item.find('/');
    const std::string words = item.substr(0, slash);
    std::size_t colon       = words.find(':');
    const std::string begin = words.substr(0, colon);
    const bool isManual     = begin.find_first_of("0123456789") != std::string::npos; // no type's name has a digit
    ItemParts parts;
    parts.isBit = isManual ? begin.find('.') != std::string::npos : endsWith(begin, "_bit");
    if (!isManual && colon != std::string::npos)
        colon = words.find(':', colon + 1);
    if (colon != std::string::npos)
        parts.count = words.substr(colon + 1);
    if (slash != std::string::npos)
        parts.data = item.substr(slash + 1, item.find('-', slash) - slash - 1);
    return parts;
}

bool isString(const ItemParts &parts)
{
    return parts.data == "string" || parts.data == "STRING";
}

// Beside strings.
const char *const TEXT_TYPES[] = {"hex", "hex32", "bits", "WORD", "DWORD"};

} // namespace

ValueKind kindOf(const fins::TagConfig &tag)
{
    const ItemParts parts = partsOf(tag.item);
    if (parts.isBit)
        return ValueKind::BIT;
    const bool isText = std::find(std::begin(TEXT_TYPES), std::end(TEXT_TYPES), parts.data) != std::end(TEXT_TYPES);
    return isText || isString(parts) ? ValueKind::TEXT : ValueKind::NUMBER;
}

std::size_t valueCountOf(const fins::TagConfig &tag)
{
    const ItemParts parts = partsOf(tag.item);
    std::size_t count = 1;
    if (!isString(parts))
        readNumber(parts.count, count);
    return count;
}
