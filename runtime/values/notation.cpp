#include "values/notation.h"

#include <algorithm>
#include <cctype>

namespace {

struct Area {
    const char *letter; // "" where the manuals write none
    const char *type;
};

const Area AREAS[] = {
    {"", "CIO"}, {"W", "WR"}, {"H", "HR"}, {"A", "AR"}, {"T", "T"}, {"C", "C"}, {"D", "DM"},
};

struct TypeName {
    const char *manual;
    const char *driver;
};

const TypeName TYPE_NAMES[] = {
    {"INT", "s16"},    {"UINT", "u16"},  {"DINT", "s32"},       {"UDINT", "u32"},       {"LINT", "s64"},
    {"ULINT", "u64"},  {"REAL", "f32"},  {"LREAL", "f64"},      {"WORD", "hex"},        {"DWORD", "hex32"},
    {"UINT_BCD", "bcd16"}, {"UDINT_BCD", "bcd32"}, {"STRING", "string"},
};

const char BIT_SUFFIX[] = "_bit";

bool isDigits(const std::string &text)
{
    return !text.empty()
        && std::all_of(text.begin(), text.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
}

std::string withoutZeros(const std::string &digits)
{
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
}

const Area *areaOf(const std::string &letter)
{
    const auto *area = std::find_if(std::begin(AREAS), std::end(AREAS), [&](const Area &a) { return letter == a.letter; });
    return area == std::end(AREAS) ? nullptr : area;
}

} // namespace

std::optional<std::string> driverItem(const std::string &text)
{
    const std::size_t colon = std::min(text.find(':'), text.size());
    const std::size_t point = std::min(text.find('.'), colon);
    const std::size_t first = std::min(text.find_first_of("0123456789"), point);
    const Area *area = areaOf(text.substr(0, first));
    const std::string word = text.substr(first, point - first);
    if (!area || !isDigits(word))
        return std::nullopt;
    const std::string item = area->type;
    if (point == colon)
        return item + ":" + withoutZeros(word) + text.substr(colon);
    const std::string bit = text.substr(point + 1, colon - point - 1);
    if (!isDigits(bit) || bit.size() > 2)
        return std::nullopt;
    return item + BIT_SUFFIX + ":" + withoutZeros(word) + "." + withoutZeros(bit) + text.substr(colon);
}

std::string manualItem(const std::string &item)
{
    const std::size_t colon = item.find(':');
    const std::string type = item.substr(0, std::min(item.find(BIT_SUFFIX), colon));
    const auto *area = std::find_if(std::begin(AREAS), std::end(AREAS), [&](const Area &a) { return type == a.type; });
    if (colon == std::string::npos || area == std::end(AREAS))
        return item;
    std::string address = item.substr(colon + 1);
    const std::size_t point = address.find('.');
    const bool hasOneDigit  = point != std::string::npos && std::min(address.find(':'), address.size()) == point + 2;
    if (hasOneDigit)
        address.insert(point + 1, "0");
    return area->letter + address;
}

std::optional<std::string> driverType(const std::string &name)
{
    for (const TypeName &type : TYPE_NAMES) {
        if (name == type.manual)
            return type.driver;
    }
    return std::nullopt;
}

std::string manualTypes()
{
    std::string names = BIT_TYPE;
    for (const TypeName &type : TYPE_NAMES)
        names += std::string(", ") + type.manual;
    return names;
}
