#include "tags.h"

#include "values.h"

#include <cctype>
#include <charconv>
#include <cmath>

// "a value from 0 to 100 %", what the limits of the tag allow.
static std::string allowedText(const Tag &tag)
{
    const auto shown = [&](double limit) { return withUnit(shortestText(limit), tag.format); };
    if (tag.minimum && tag.maximum)
        return "a value from " + shortestText(*tag.minimum) + " to " + shown(*tag.maximum);
    return tag.minimum ? shown(*tag.minimum) + " or more" : shown(*tag.maximum) + " or less";
}

// How the value, as the tag would show it, breaks a limit; "" if it keeps them.
static std::string brokenLimit(const Tag &tag, const std::string &value)
{
    long double number = 0;
    const char *end = value.data() + value.size();
    if (std::from_chars(value.data(), end, number).ptr != end || !std::isfinite(number))
        return "no number";
    if (tag.minimum && number < *tag.minimum)
        return "below the tag's min of " + withUnit(shortestText(*tag.minimum), tag.format);
    if (tag.maximum && number > *tag.maximum)
        return "above the tag's max of " + withUnit(shortestText(*tag.maximum), tag.format);
    return "";
}

// `bytes` are to become the words of `tag`, which the user named `text`, as the tag itself or in another data type.
static void checkLimits(const Tag &tag, const std::string &text, const std::vector<std::string> &texts,
                        const std::vector<quint8> &bytes)
{
    if (!tag.minimum && !tag.maximum)
        return;
    ValueFormat format = tag.format;
    format.decimals = -1; // every digit counts
    for (std::size_t i = 0; i < static_cast<std::size_t>(tag.valueCount()); ++i) {
        const std::string value  = decodeValue(format, bytes, i);
        const std::string broken = brokenLimit(tag, value);
        if (broken.empty())
            continue;
        if (text == tag.name)
            throw UsageError("'" + text + "=" + texts[i] + "' is " + broken + "; write " + allowedText(tag));
        throw UsageError("'" + text + "' makes it " + withUnit(value, format) + ", which is " + broken + "; write "
                         + allowedText(tag));
    }
}

static std::string givenText(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " is given" : " are given");
}

static std::vector<quint8> encodeFor(const std::string &text, const ValueFormat &format,
                                     const std::vector<std::string> &texts, qint32 words)
{
    try {
        return encodeValues(format, texts, words);
    } catch (const ValueError &error) {
        throw error.of(text);
    }
}

void TagBook::setDefaults(const ValueFormat &format, const OrderDefaults &orders)
{
    format_ = format;
    orders_ = orders;
}

bool TagBook::add(const Tag &tag)
{
    if (!places_.emplace(tag.name, tags_.size()).second)
        return false;
    tags_.push_back(tag);
    return true;
}

const Tag *TagBook::find(const std::string &name) const
{
    const auto place = places_.find(name);
    return place == places_.end() ? nullptr : &tags_[place->second];
}

TagBook::Parts TagBook::split(const std::string &text)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos)
        return {text, "", false};
    return {text.substr(0, slash), text.substr(slash + 1), true};
}

ValueFormat TagBook::formatOf(const Parts &parts) const
{
    ValueFormat bit;
    bit.type = DataType::BIT;
    const std::string regType = parts.base.substr(0, parts.base.find(':'));
    const bool isBit = isBitType(QString::fromStdString(regType));
    if (isBit && parts.hasType)
        throw UsageError("'" + parts.base + "/" + parts.type + "': a bit has no data type; write " + parts.base);
    if (isBit)
        return bit;
    if (!parts.hasType)
        return format_;
    ValueFormat format = parseFormat(parts.type, orders_);
    if (!isNumeric(format.type))
        return format;
    format.scale    = format_.scale;
    format.offset   = format_.offset;
    format.decimals = format_.decimals;
    format.unit     = format_.unit;
    return format;
}

// A tag, or its words in the form of another data type, without the scale that belongs to its own.
Tag TagBook::namedTag(const Tag &tag, const Parts &parts) const
{
    if (!parts.hasType)
        return tag;
    if (tag.item.isBit)
        throw UsageError("'" + parts.base + "/" + parts.type + "': a bit has no data type; write " + parts.base);
    Tag other = tag;
    other.format = parseFormat(parts.type, orders_);
    other.name   = tag.name + "/" + formatText(other.format);
    const qint32 words = wordsPerValue(other.format.type);
    if (tag.item.count % words != 0)
        throw UsageError("'" + other.name + "': " + tag.name + " has " + std::to_string(tag.item.count) + " words, and "
                         + formatText(other.format) + " needs " + std::to_string(words) + " a value");
    return other;
}

Tag TagBook::itemTag(const Parts &parts, const ValueFormat &format, Access access) const
{
    Tag tag;
    tag.item   = parseItem(library_, parts.base, access, wordsPerValue(format.type));
    tag.format = format;
    tag.name   = itemName(tag.item, format);
    return tag;
}

Tag TagBook::resolve(const std::string &text, Access access) const
{
    const Parts parts = split(text);
    if (const Tag *tag = find(parts.base))
        return namedTag(*tag, parts);
    if (!source_.empty() && parts.base.find(':') == std::string::npos)
        throw UsageError("'" + parts.base + "' is neither a tag of " + source_
                         + " nor an item; write a tag's name, or TYPE:ADDRESS such as DM:100:2");
    return itemTag(parts, formatOf(parts), access);
}

Tag TagBook::resolveWithValues(const std::string &text, Access access, const std::vector<std::string> &texts,
                               std::vector<quint8> &bytes) const
{
    Parts parts = split(text);
    const Tag *named = find(parts.base);
    const bool hasCount = named != nullptr || parts.base.find(':') != parts.base.rfind(':');
    if (hasCount || parts.base.find(':') == std::string::npos) {
        Tag tag = resolve(text, access);
        if (named && named->readOnly)
            throw UsageError("'" + text + "' can only be read: the access of the tag is r");
        bytes = encodeFor(text, tag.format, texts, tag.item.count);
        if (bytes.size() != tag.item.byteSize())
            throw UsageError("'" + text + "' holds " + counted(static_cast<std::size_t>(tag.valueCount()), "value")
                             + ", and " + givenText(texts.size()) + "; write as many as it holds");
        if (named)
            checkLimits(*named, text, texts, bytes);
        return tag;
    }
    const ValueFormat format = formatOf(parts);
    bytes = encodeFor(text, format, texts, 0);
    const std::size_t count = format.type == DataType::STRING ? bytes.size() / 2 : texts.size();
    parts.base += ":" + std::to_string(count);
    return itemTag(parts, format, access);
}

ValueFormat TagBook::formatFor(const std::string &text) const
{
    const Parts parts = split(text);
    const Tag *tag = find(parts.base);
    return tag ? namedTag(*tag, parts).format : formatOf(parts);
}

std::vector<Tag> TagBook::resolveAll(const std::vector<std::string> &texts, Access access) const
{
    std::vector<Tag> tags;
    tags.reserve(texts.size());
    for (const std::string &text : texts)
        tags.push_back(resolve(text, access));
    return tags;
}

std::string itemName(const Item &item, const ValueFormat &format)
{
    const std::string type = formatText(format);
    return itemText(item.regType, item.address, item.count / wordsPerValue(format.type))
           + (type.empty() ? "" : "/" + type);
}

std::string withUnit(const std::string &text, const ValueFormat &format)
{
    return format.unit.empty() ? text : text + " " + format.unit;
}

std::string shownValue(const ValueFormat &format, const std::vector<quint8> &bytes)
{
    return withUnit(decodeValues(format, bytes), format);
}

bool isTagName(const std::string &text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const bool isLetter = std::isalpha(c) || c == '_' || c >= 0x80;
        if (!isLetter && (i == 0 || !(std::isdigit(c) || c == '.' || c == '-')))
            return false;
    }
    return !text.empty();
}

std::vector<Item> itemsOf(const std::vector<Tag> &tags)
{
    std::vector<Item> items;
    items.reserve(tags.size());
    for (const Tag &tag : tags)
        items.push_back(tag.item);
    return items;
}
