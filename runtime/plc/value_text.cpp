#include "plc/value_text.h"

#include "common/numbers.h"

#include <algorithm>
#include <charconv>

namespace fins {

// The whole text as a number, or monostate.
template <typename Number>
static Value parsed(const std::string &text, int base)
{
    Number number = 0;
    const char *const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base);
    if (result.ptr != end || result.ec != std::errc())
        return Value();
    return Value(number);
}

static Value wholeNumber(const std::string &text, int base = 10)
{
    const Value number = parsed<std::int64_t>(text, base);
    return number.index() != 0 ? number : parsed<std::uint64_t>(text, base);
}

static Value realNumber(const std::string &text)
{
    double number = 0;
    const char *const end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end ? Value(number) : Value();
}

// The first of the two characters of a word lies in its high byte, unless the format says otherwise; the driver's words
// have their low byte first.
static std::string characters(const ValueFormat &format, const std::vector<quint8> &bytes)
{
    std::string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const bool isHighFirst = format.order == Order::HIGH;
        text += static_cast<char>(bytes[i + (isHighFirst ? 1 : 0)]);
        text += static_cast<char>(bytes[i + (isHighFirst ? 0 : 1)]);
    }
    text.erase(text.find_last_not_of('\0') + 1);
    return text;
}

Value valueOf(const ValueFormat &format, const std::vector<quint8> &bytes)
{
    if (format.type == DataType::BIT)
        return Value(!bytes.empty() && bytes[0] != 0);
    if (format.type == DataType::STRING)
        return Value(characters(format, bytes));
    ValueFormat exact = format;
    exact.decimals = -1;
    std::string text = decodeValue(exact, bytes, 0);
    if (isHex(format.type))
        return wholeNumber(text.substr(std::min<std::size_t>(2, text.size())), 16);
    if (format.type == DataType::BITS) {
        text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c != '0' && c != '1'; }), text.end());
        return wholeNumber(text, 2);
    }
    const bool isWhole = format.type != DataType::F32 && format.type != DataType::F64 && format.scale == 1
                         && format.offset == 0;
    return isWhole ? wholeNumber(text) : realNumber(text);
}

std::string textOf(const Value &value)
{
    struct Text {
        std::string operator()(std::monostate) const { return ""; }
        std::string operator()(bool on) const { return on ? "1" : "0"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(std::uint64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return shortestText(number); }
        std::string operator()(const std::string &text) const { return text; }
    };
    return std::visit(Text(), value);
}

} // namespace fins
