#include "values/tags.h"

#include "common/numbers.h"
#include "common/suggestion.h"

#include <algorithm>
#include <cctype>
#include <cmath>

std::string allowedText(const Tag &tag)
{
    const auto shown = [&](double limit) { return withUnit(shortestText(limit), tag.format); };
    if (tag.minimum && tag.maximum)
        return "a value from " + shortestText(*tag.minimum) + " to " + shown(*tag.maximum);
    if (tag.minimum)
        return shown(*tag.minimum) + " or more";
    return tag.maximum ? shown(*tag.maximum) + " or less" : "";
}

// How the value, as the tag would show it, breaks a limit; "" if it keeps them.
static std::string brokenLimit(const Tag &tag, const std::string &value)
{
    long double number = 0;
    if (!readNumber(value, number) || !std::isfinite(number))
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
    noteAddress(tag.name);
    return true;
}

const Tag *TagBook::find(const std::string &name) const
{
    const auto place = places_.find(name);
    return place == places_.end() ? nullptr : &tags_[place->second];
}

TagBook::Parts TagBook::split(const std::string &text) const
{
    if (text.compare(0, plc_.size(), plc_) != 0)
        throw UsageError("'" + text + "' is not of the PLC " + plc_.substr(0, plc_.size() - 1)
                         + ", whose tags and items begin with " + plc_);
    const std::size_t slash = text.find('/');
    const std::string name  = text.substr(0, slash);
    const bool hasType      = slash != std::string::npos;
    return {name, name.substr(plc_.size()), hasType ? text.substr(slash + 1) : "", hasType};
}

// The one data type that a bit may be given.
static std::string bitType(const std::string &name, const std::string &type)
{
    if (type != BIT_TYPE)
        throw UsageError("'" + name + "/" + type + "': a bit has no data type; write " + name);
    return type;
}

static ValueFormat typeOfWords(const std::string &name, const std::string &type, const OrderDefaults &orders)
{
    if (type == BIT_TYPE)
        throw UsageError("'" + name + "/" + type
                         + "': words are no bit; name a bit, such as D100.05, or another data type");
    return parseFormat(type, orders);
}

ValueFormat TagBook::formatOf(const Parts &parts) const
{
    ValueFormat bit;
    bit.type = DataType::BIT;
    const std::string item    = driverItem(parts.base).value_or(parts.base);
    const std::string regType = item.substr(0, item.find(':'));
    const bool isBit = isBitType(QString::fromStdString(regType));
    if (isBit && parts.hasType)
        bit.typeName = bitType(parts.name, parts.type);
    if (isBit)
        return bit;
    if (!parts.hasType)
        return format_;
    ValueFormat typed = typeOfWords(parts.name, parts.type, orders_);
    if (!isNumeric(typed.type))
        return typed;
    ValueFormat format = format_;
    format.type     = typed.type;
    format.order    = typed.order;
    format.typeName = typed.typeName;
    return format;
}

// A tag, or its words in the form of another data type, without the scale that belongs to its own.
Tag TagBook::namedTag(const Tag &tag, const Parts &parts) const
{
    if (!parts.hasType)
        return tag;
    Tag other = tag;
    if (tag.item.isBit)
        other.format.typeName = bitType(parts.name, parts.type);
    else
        other.format = typeOfWords(parts.name, parts.type, orders_);
    other.name = tag.name + "/" + formatText(other.format);
    const qint32 words = wordsPerValue(other.format.type);
    if (tag.item.count % words != 0)
        throw UsageError("'" + other.name + "': " + tag.name + " has " + std::to_string(tag.item.count) + " words, and "
                         + formatText(other.format) + " needs " + std::to_string(words) + " a value");
    return other;
}

// D100:3 is an item, but D100 may be the name of a tag with other words.
void TagBook::refuseTagOf(const Parts &parts) const
{
    const std::string name = parts.name.substr(0, parts.name.find(':'));
    const std::optional<std::string> item = driverItem(parts.base);
    if (item && find(name))
        throw UsageError("'" + parts.name + "': " + name + " is a tag of its own; write " + plc_ + *item + " for the address");
}

// True if a value of the item would be named like a tag; such an item is shown in the driver's notation.
bool TagBook::namesATag(const Item &item) const
{
    const auto next = addresses_.lower_bound({item.regType.toStdString(), item.address});
    return item.notation == Notation::MANUAL && next != addresses_.end() && next->first == item.regType.toStdString()
        && next->second < item.address + item.count;
}

void TagBook::noteAddress(const std::string &name)
{
    const std::string base = name.substr(std::min(plc_.size(), name.size())); // a tag's name begins with its PLC's
    if (!driverItem(base))
        return;
    try {
        const Item item = parseItem(*library_, base, Access::READ);
        addresses_.insert({item.regType.toStdString(), item.address});
    } catch (const UsageError &) {
        return; // beyond the area: no item is shown so
    }
}

Tag TagBook::itemTag(const Parts &parts, const ValueFormat &format, Access access) const
{
    Tag tag;
    tag.item   = parseItem(*library_, parts.base, access, wordsPerValue(format.type));
    tag.format = format;
    tag.plc    = plc_;
    if (namesATag(tag.item))
        tag.item.notation = Notation::DRIVER;
    tag.name   = plc_ + itemName(tag.item, format);
    return tag;
}

// A search looks at every tag, and a file may have as many unknown names as there are tags.
std::string TagBook::hint(const std::string &name) const
{
    const std::size_t longest = 64;
    if (name.size() > longest || hintsLeft_->fetch_sub(1) <= 0)
        return "";
    std::vector<std::string> names;
    names.reserve(tags_.size());
    for (const Tag &tag : tags_)
        names.push_back(tag.name);
    return hintAt(nearestWord(name, names));
}

Tag TagBook::resolve(const std::string &text, Access access) const
{
    const Parts parts = split(text);
    if (const Tag *tag = find(parts.name))
        return namedTag(*tag, parts);
    if (!source_.empty() && !isItemText(parts.base))
        throw UsageError("'" + parts.name + "' is neither a tag of " + source_
                         + " nor an item; write a tag's name, or TYPE:ADDRESS such as DM:100:2"
                         + hint(parts.name));
    refuseTagOf(parts);
    return itemTag(parts, formatOf(parts), access);
}

Tag TagBook::resolveItem(const std::string &text, Access access) const
{
    const Parts parts = split(text);
    return itemTag(parts, formatOf(parts), access);
}

// Values that nobody counted may be one with a decimal comma.
static void checkCount(const Tag &tag, const std::string &text, bool hasCount, std::size_t given)
{
    const std::size_t held = static_cast<std::size_t>(tag.valueCount());
    if (given == held)
        return;
    const std::string number = std::to_string(given);
    if (!hasCount)
        throw UsageError("'" + text + "' is one value, and " + number + " are given; write "
                         + std::string(text).insert(std::min(text.find('/'), text.size()), ":" + number)
                         + " for as many, or a decimal number with a point");
    throw UsageError("'" + text + "' holds " + counted(held, "value") + ", and " + number
                     + (given == 1 ? " is" : " are") + " given; write as many as it holds");
}

Tag TagBook::resolveWithValues(const std::string &text, Access access, const std::vector<std::string> &texts,
                               std::vector<quint8> &bytes) const
{
    Parts parts = split(text);
    const Tag *named       = find(parts.name);
    const std::string item = driverItem(parts.base).value_or(parts.base);
    const bool isItem      = !named && item.find(':') != std::string::npos;
    const bool hasCount    = !isItem || item.find(':') != item.rfind(':');
    if (!hasCount) {
        const ValueFormat format = formatOf(parts);
        if (format.type == DataType::STRING) {
            bytes = encodeFor(text, format, texts, 0);
            parts.base += ":" + std::to_string(bytes.size() / 2);
            return itemTag(parts, format, access);
        }
    }
    Tag tag = resolve(text, access);
    if (named && named->readOnly)
        throw UsageError("'" + text + "' can only be read: the access of the tag is r");
    if (tag.format.type != DataType::STRING)
        checkCount(tag, text, hasCount, texts.size());
    bytes = encodeFor(text, tag.format, texts, tag.item.count);
    if (named)
        checkLimits(*named, text, texts, bytes);
    return tag;
}

static std::vector<std::string> splitAtCommas(const std::string &text)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t comma = std::min(text.find(',', begin), text.size());
        parts.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    return parts;
}

TagWrite TagBook::resolveWrite(const std::string &text) const
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("'" + text + "' is not a write; use ITEM=VALUE[,VALUE...], such as DM:100=5");
    const std::string name = text.substr(0, equals);
    std::vector<std::string> values = {text.substr(equals + 1)};
    if (formatFor(name).type != DataType::STRING)
        values = splitAtCommas(values.front());
    TagWrite write;
    write.tag = resolveWithValues(name, Access::WRITE, values, write.data);
    return write;
}

ValueFormat TagBook::formatFor(const std::string &text) const
{
    const Parts parts = split(text);
    const Tag *tag = find(parts.name);
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
    Item values = item;
    values.count /= wordsPerValue(format.type);
    return itemText(values) + (type.empty() ? "" : "/" + type);
}

std::string driverName(Item item, ValueFormat format)
{
    item.notation = Notation::DRIVER;
    format.typeName.clear();
    return itemName(item, format);
}

bool isItemText(const std::string &text)
{
    const std::string words = text.substr(0, text.find('/'));
    return words.find(':') != std::string::npos || driverItem(words);
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
