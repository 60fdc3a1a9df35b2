#include "values/codec.h"

#include "common/numbers.h"
#include "values/notation.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

enum class Kind { UNSIGNED, SIGNED, FLOATING, BCD, TEXT };

struct TypeRow {
    DataType    type;
    const char *name;
    qint32      words;
    Kind        kind;
};

const TypeRow TYPES[] = {
    {DataType::U16,    "u16",    1, Kind::UNSIGNED},
    {DataType::S16,    "s16",    1, Kind::SIGNED},
    {DataType::U32,    "u32",    2, Kind::UNSIGNED},
    {DataType::S32,    "s32",    2, Kind::SIGNED},
    {DataType::U64,    "u64",    4, Kind::UNSIGNED},
    {DataType::S64,    "s64",    4, Kind::SIGNED},
    {DataType::F32,    "f32",    2, Kind::FLOATING},
    {DataType::F64,    "f64",    4, Kind::FLOATING},
    {DataType::BCD16,  "bcd16",  1, Kind::BCD},
    {DataType::BCD32,  "bcd32",  2, Kind::BCD},
    {DataType::HEX,    "hex",    1, Kind::TEXT},
    {DataType::HEX32,  "hex32",  2, Kind::TEXT},
    {DataType::BITS,   "bits",   1, Kind::TEXT},
    {DataType::STRING, "string", 1, Kind::TEXT},
};

// The types without a name of their own: a bit is no number, and a word without a type is one of 16 bits.
const TypeRow BIT_ROW  = {DataType::BIT,  "bit",  1, Kind::TEXT};
const TypeRow WORD_ROW = {DataType::WORD, "word", 1, Kind::UNSIGNED};

const int BITS_PER_WORD = 16;

const TypeRow &rowOf(DataType type)
{
    for (const TypeRow &row : TYPES) {
        if (row.type == type)
            return row;
    }
    return type == DataType::BIT ? BIT_ROW : WORD_ROW;
}

Order usualOrder(DataType type)
{
    const OrderDefaults usual;
    return type == DataType::STRING ? usual.characters : usual.words;
}

bool hasOrder(const TypeRow &row)
{
    return row.words > 1 || row.type == DataType::STRING;
}

// Scaled, or shown with a fixed number of decimals: then the value goes through a floating-point number.
bool isConverted(const ValueFormat &format)
{
    return format.scale != 1 || format.offset != 0 || format.decimals >= 0;
}

quint64 powerOfTen(qint32 exponent)
{
    quint64 power = 1;
    for (qint32 i = 0; i < exponent; ++i)
        power *= 10;
    return power;
}

// The raw values of an integer or BCD type: the size of the lowest, which is negative or 0, and the highest.
struct RawRange {
    quint64 below;
    quint64 highest;
};

RawRange rawRange(const TypeRow &row)
{
    if (row.kind == Kind::BCD)
        return {0, powerOfTen(row.words * 4) - 1};
    const quint64 signBit = quint64(1) << (row.words * BITS_PER_WORD - 1);
    if (row.kind == Kind::SIGNED)
        return {signBit, signBit - 1};
    return {0, signBit - 1 + signBit};
}

std::string withoutMinusZero(std::string text)
{
    const bool isZero = text.find_first_of("123456789n") == std::string::npos; // n: nan and inf
    return isZero && text[0] == '-' ? text.substr(1) : text;
}

std::string numberText(long double value, int decimals, int digits)
{
    char text[5200]; // the longest number of 80 bits, with all its digits
    if (decimals >= 0)
        std::snprintf(text, sizeof text, "%.*Lf", decimals, value);
    else
        std::snprintf(text, sizeof text, "%.*Lg", digits, value);
    return withoutMinusZero(text);
}

std::string typeNameOf(const ValueFormat &format)
{
    return format.typeName.empty() ? rowOf(format.type).name : format.typeName;
}

std::string allowedText(const ValueFormat &format)
{
    const TypeRow &row = rowOf(format.type);
    if (row.kind == Kind::FLOATING)
        return "a decimal number whose size fits " + typeNameOf(format);
    const RawRange range = rawRange(row);
    if (!isConverted(format)) {
        return "a whole number from " + (range.below > 0 ? "-" + std::to_string(range.below) : "0") + " to "
               + std::to_string(range.highest) + ", decimal or with 0x";
    }
    long double low  = -static_cast<long double>(range.below) * format.scale + format.offset;
    long double high = static_cast<long double>(range.highest) * format.scale + format.offset;
    if (low > high)
        std::swap(low, high);
    return "a number from " + numberText(low, format.decimals, 15) + " to " + numberText(high, format.decimals, 15);
}

[[noreturn]] void refuse(const ValueFormat &format, const std::string &text)
{
    throw ValueError(text, "does not fit " + typeNameOf(format) + "; use " + allowedText(format));
}

// A whole number, decimal or with 0x, whose size fits 64 bits.
bool parseWhole(const std::string &text, bool &negative, quint64 &size)
{
    negative = !text.empty() && text[0] == '-';
    const char *begin = text.data() + (negative ? 1 : 0);
    const char *end   = text.data() + text.size();
    const bool isHex = end - begin > 2 && begin[0] == '0' && (begin[1] == 'x' || begin[1] == 'X');
    const std::from_chars_result result = std::from_chars(begin + (isHex ? 2 : 0), end, size, isHex ? 16 : 10);
    return result.ec == std::errc() && result.ptr == end;
}

template <typename Float>
bool parseDecimal(const std::string &text, Float &value)
{
    return readNumber(text, value) && std::isfinite(value);
}

// The number as it lies in the PLC's words, in two's complement where it is negative.
quint64 encodeWhole(const ValueFormat &format, const std::string &text)
{
    bool negative = false;
    quint64 size = 0;
    if (!parseWhole(text, negative, size))
        refuse(format, text);
    const RawRange range = rawRange(rowOf(format.type));
    if (size > (negative ? range.below : range.highest))
        refuse(format, text);
    return negative ? 0 - size : size;
}

quint64 encodeConverted(const ValueFormat &format, const std::string &text)
{
    long double value = 0;
    if (!parseDecimal(text, value))
        refuse(format, text);
    const RawRange range = rawRange(rowOf(format.type));
    const long double raw = std::round((value - format.offset) / format.scale);
    // Below 2^64, so that the cast is safe also where a long double cannot tell the highest number from it.
    if (!(std::fabs(raw) < std::ldexp(1.0L, 64)))
        refuse(format, text);
    const quint64 size = static_cast<quint64>(std::fabs(raw));
    if (size > (raw < 0 ? range.below : range.highest))
        refuse(format, text);
    return raw < 0 ? 0 - size : size;
}

template <typename Float, typename Bits>
quint64 encodeFloat(const ValueFormat &format, const std::string &text)
{
    Float raw = 0;
    if (!isConverted(format)) {
        if (!parseDecimal(text, raw))
            refuse(format, text);
    } else {
        long double value = 0;
        if (!parseDecimal(text, value))
            refuse(format, text);
        value = (value - format.offset) / format.scale;
        if (!(std::fabs(value) <= static_cast<long double>(std::numeric_limits<Float>::max())))
            refuse(format, text);
        raw = static_cast<Float>(value);
    }
    Bits bits = 0;
    std::memcpy(&bits, &raw, sizeof bits);
    return bits;
}

quint64 toBcd(quint64 number)
{
    quint64 bcd = 0;
    for (int shift = 0; number > 0; shift += 4, number /= 10)
        bcd |= number % 10 << shift;
    return bcd;
}

// False if a digit is above 9.
bool fromBcd(quint64 bcd, quint64 &number)
{
    number = 0;
    for (int shift = 60; shift >= 0; shift -= 4) {
        const quint64 digit = bcd >> shift & 15;
        if (digit > 9)
            return false;
        number = 10 * number + digit;
    }
    return true;
}

quint64 encodeHex(const ValueFormat &format, const std::string &text)
{
    const bool prefixed = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const char *begin = text.data() + (prefixed ? 2 : 0);
    const char *end   = text.data() + text.size();
    quint64 value = 0;
    const std::from_chars_result result = std::from_chars(begin, end, value, 16);
    const quint64 highest = rawRange(rowOf(format.type)).highest;
    if (result.ec != std::errc() || result.ptr != end || value > highest)
        throw ValueError(text, fmt::format("does not fit {}; use 0x0 to 0x{:X}", typeNameOf(format), highest));
    return value;
}

quint64 encodeBits(const std::string &text)
{
    quint64 value = 0;
    int digits = 0;
    bool wellFormed = true;
    for (const char c : text) {
        if (c == '_')
            continue;
        wellFormed = wellFormed && (c == '0' || c == '1');
        value = (value << 1 | (c == '1' ? 1 : 0)) & 0x1FFFF;
        ++digits;
    }
    if (!wellFormed || digits < 1 || digits > BITS_PER_WORD)
        throw ValueError(text, "does not fit bits; use 1 to 16 digits of 0 and 1, bit 15 first");
    return value;
}

// A word that nobody gave a type.
quint64 encodeUntyped(const std::string &text)
{
    bool negative = false;
    quint64 size = 0;
    if (!parseWhole(text, negative, size) || size > (negative ? 32768u : 65535u))
        throw ValueError(text, "is not a word value; use -32768 to 65535, or 0x0 to 0xFFFF");
    return negative ? 0 - size : size;
}

quint64 encodeRaw(const ValueFormat &format, const std::string &text)
{
    if (isHex(format.type))
        return encodeHex(format, text);
    if (format.type == DataType::BITS)
        return encodeBits(text);
    if (format.type == DataType::F32)
        return encodeFloat<float, quint32>(format, text);
    if (format.type == DataType::F64)
        return encodeFloat<double, quint64>(format, text);
    if (format.type == DataType::WORD && !isConverted(format))
        return encodeUntyped(text);
    const quint64 whole = isConverted(format) ? encodeConverted(format, text) : encodeWhole(format, text);
    return rowOf(format.type).kind == Kind::BCD ? toBcd(whole) : whole;
}

// How far the word at `index`, of `words` words of a number, is shifted in the number.
int wordShift(qint32 index, qint32 words, Order order)
{
    return BITS_PER_WORD * (order == Order::LOW ? index : words - 1 - index);
}

void appendNumber(const ValueFormat &format, const std::string &text, std::vector<quint8> &bytes)
{
    const quint64 raw = encodeRaw(format, text);
    const qint32 words = wordsPerValue(format.type);
    for (qint32 i = 0; i < words; ++i) {
        const quint64 word = raw >> wordShift(i, words, format.order);
        bytes.push_back(static_cast<quint8>(word & 0xFF));
        bytes.push_back(static_cast<quint8>(word >> 8 & 0xFF));
    }
}

// Reads ON, OFF, true and false in any case.
bool readSwitch(const std::string &text, quint64 &value)
{
    std::string small;
    for (const char c : text)
        small += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    value = small == "on" || small == "true" ? 1 : 0;
    return value == 1 || small == "off" || small == "false";
}

void appendBit(const std::string &text, std::vector<quint8> &bytes)
{
    bool negative = false;
    quint64 value = 0;
    const bool isValue = readSwitch(text, value) || parseWhole(text, negative, value);
    if (!isValue || value > 1 || (negative && value > 0))
        throw ValueError(text, "is not a bit value; use 0 or 1, OFF or ON");
    bytes.push_back(static_cast<quint8>(value));
}

std::string unescape(const std::string &text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            plain += text[i];
            continue;
        }
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        unsigned code = 0;
        const char *hex = text.data() + std::min(i + 2, text.size());
        const char *end = text.data() + std::min(i + 4, text.size());
        if (next == '\\' || next == '"') {
            plain += next;
            i += 1;
        } else if (next == 'x' && end - hex == 2 && std::from_chars(hex, end, code, 16).ptr == end) {
            plain += static_cast<char>(code);
            i += 3;
        } else {
            throw ValueError(text, "has an unknown escape; use \\\\, \\\" or \\xNN");
        }
    }
    return plain;
}

std::vector<quint8> encodeString(const ValueFormat &format, const std::string &text, qint32 words)
{
    std::string characters = unescape(text);
    const std::size_t needed = std::max<std::size_t>(1, (characters.size() + 1) / 2);
    const std::size_t wanted = words > 0 ? static_cast<std::size_t>(words) : needed;
    if (needed > wanted)
        throw ValueError(text, "has " + std::to_string(characters.size()) + " characters; "
                                   + std::to_string(2 * wanted) + " fit");
    characters.resize(2 * wanted, '\0');
    std::vector<quint8> bytes;
    for (std::size_t i = 0; i < characters.size(); i += 2) {
        const quint8 first  = static_cast<quint8>(characters[i]);
        const quint8 second = static_cast<quint8>(characters[i + 1]);
        bytes.push_back(format.order == Order::HIGH ? second : first);
        bytes.push_back(format.order == Order::HIGH ? first : second);
    }
    return bytes;
}

std::string decodeString(const ValueFormat &format, const std::vector<quint8> &bytes)
{
    std::string characters;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        characters += static_cast<char>(bytes[format.order == Order::HIGH ? i + 1 : i]);
        characters += static_cast<char>(bytes[format.order == Order::HIGH ? i : i + 1]);
    }
    characters.resize(characters.find_last_not_of('\0') + 1);
    std::string text = "\"";
    for (const char c : characters) {
        if (c == '"' || c == '\\')
            text += std::string("\\") + c;
        else
            text += c >= ' ' && c <= '~' ? std::string(1, c) : fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    }
    return text + '"';
}

std::string bitsText(quint64 word)
{
    return fmt::format("{:04b}_{:04b}_{:04b}_{:04b}", word >> 12 & 15, word >> 8 & 15, word >> 4 & 15, word & 15);
}

std::string hexText(quint64 raw, qint32 words)
{
    return fmt::format("0x{:0{}X}", raw, 4 * words);
}

// Where nobody asked for a number of decimals the digits are as many as the type can tell.
std::string convertedText(const ValueFormat &format, long double raw)
{
    const int digits = format.type == DataType::F32 ? 7 : 15;
    return numberText(raw * format.scale + format.offset, format.decimals, digits);
}

template <typename Float, typename Bits>
std::string floatText(const ValueFormat &format, quint64 raw)
{
    const Bits bits = static_cast<Bits>(raw);
    Float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (isConverted(format))
        return convertedText(format, static_cast<long double>(value));
    return shortestText(value);
}

std::string bcdText(const ValueFormat &format, quint64 raw)
{
    quint64 number = 0;
    if (!fromBcd(raw, number))
        return "no-bcd:" + hexText(raw, wordsPerValue(format.type));
    return isConverted(format) ? convertedText(format, static_cast<long double>(number)) : std::to_string(number);
}

std::string wholeText(const ValueFormat &format, quint64 raw)
{
    const TypeRow &row = rowOf(format.type);
    const quint64 signBit = quint64(1) << (row.words * BITS_PER_WORD - 1);
    const bool negative = row.kind == Kind::SIGNED && (raw & signBit) != 0;
    // Two's complement: the bits above the number are those of -1.
    const quint64 size = negative ? 0 - (raw | ~(signBit - 1)) : raw;
    if (!isConverted(format))
        return (negative ? "-" : "") + std::to_string(size);
    const long double number = static_cast<long double>(size);
    return convertedText(format, negative ? -number : number);
}

} // namespace

qint32 wordsPerValue(DataType type)
{
    return rowOf(type).words;
}

bool isNumeric(DataType type)
{
    return rowOf(type).kind != Kind::TEXT;
}

bool isHex(DataType type)
{
    return type == DataType::HEX || type == DataType::HEX32;
}

std::string dataTypeNames()
{
    std::string names;
    for (const TypeRow &row : TYPES)
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    return names;
}

bool parseOrder(const std::string &text, Order &order)
{
    if (text != "low" && text != "high")
        return false;
    order = text == "low" ? Order::LOW : Order::HIGH;
    return true;
}

ValueFormat parseFormat(const std::string &text, const OrderDefaults &orders)
{
    const std::size_t dash = text.find('-');
    const std::string name = text.substr(0, dash);
    const std::optional<std::string> manual = driverType(name);
    if (name == BIT_TYPE)
        throw UsageError("'" + text + "' is the type of a bit; name one, such as D100.05");
    for (const TypeRow &row : TYPES) {
        if (manual.value_or(name) != row.name)
            continue;
        ValueFormat format;
        if (manual)
            format.typeName = name;
        format.type  = row.type;
        format.order = row.type == DataType::STRING ? orders.characters : orders.words;
        if (dash == std::string::npos)
            return format;
        if (!hasOrder(row))
            throw UsageError("'" + text + "': " + name + " is one word and has no order; write " + name);
        if (!parseOrder(text.substr(dash + 1), format.order))
            throw UsageError("'" + text + "' is not a data type; write " + name + ", " + name + "-low or " + name
                             + "-high");
        return format;
    }
    throw UsageError("there is no data type '" + text + "'; the data types are " + dataTypeNames()
                     + ", and of the manuals " + manualTypes());
}

std::string formatText(const ValueFormat &format)
{
    const TypeRow &row = rowOf(format.type);
    if (row.type == DataType::BIT)
        return format.typeName;
    if (row.type == DataType::WORD)
        return "";
    if (!hasOrder(row) || format.order == usualOrder(row.type))
        return typeNameOf(format);
    return typeNameOf(format) + (format.order == Order::LOW ? "-low" : "-high");
}

std::vector<quint8> encodeValues(const ValueFormat &format, const std::vector<std::string> &texts, qint32 words)
{
    if (format.type == DataType::STRING) {
        if (texts.size() != 1)
            throw UsageError(std::to_string(texts.size()) + " texts for one string; write one");
        return encodeString(format, texts.front(), words);
    }
    std::vector<quint8> bytes;
    for (const std::string &text : texts) {
        if (format.type == DataType::BIT)
            appendBit(text, bytes);
        else
            appendNumber(format, text, bytes);
    }
    return bytes;
}

std::string decodeValue(const ValueFormat &format, const std::vector<quint8> &bytes, std::size_t index)
{
    if (format.type == DataType::BIT)
        return bytes.at(index) != 0 ? "1" : "0";
    const qint32 words = wordsPerValue(format.type);
    const std::size_t first = index * 2 * static_cast<std::size_t>(words);
    quint64 raw = 0;
    for (qint32 i = 0; i < words; ++i) {
        const std::size_t at = first + 2 * static_cast<std::size_t>(i);
        const quint64 word = bytes.at(at) | static_cast<quint64>(bytes.at(at + 1)) << 8;
        raw |= word << wordShift(i, words, format.order);
    }
    switch (format.type) {
    case DataType::HEX:
    case DataType::HEX32:  return hexText(raw, words);
    case DataType::BITS:  return bitsText(raw);
    case DataType::F32:   return floatText<float, quint32>(format, raw);
    case DataType::F64:   return floatText<double, quint64>(format, raw);
    case DataType::BCD16:
    case DataType::BCD32: return bcdText(format, raw);
    default:              return wholeText(format, raw);
    }
}

std::string decodeValues(const ValueFormat &format, const std::vector<quint8> &bytes)
{
    if (format.type == DataType::STRING)
        return decodeString(format, bytes);
    const std::size_t words = static_cast<std::size_t>(wordsPerValue(format.type));
    const std::size_t count = bytes.size() / (format.type == DataType::BIT ? 1 : 2 * words);
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i > 0 ? " " : "") + decodeValue(format, bytes, i);
    return text;
}
