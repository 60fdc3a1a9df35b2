#include "watch/watch_editor.h"

// A tag's name has no data type behind it.
static std::string withoutType(const std::string &name)
{
    return name.substr(0, name.find('/'));
}

WatchEditor::WatchEditor(const TagBook &book, const std::vector<Tag> &tags, const std::vector<WatchedValue> &values,
                         EditWay &way)
    : book_(book), tags_(tags), values_(values), way_(way)
{
    for (const WatchedValue &value : values)
        targets_.push_back(targetOf(value, tags[value.tag]));
}

// A single value of several is no tag that can be named on the command line; here it gets the limits of its tag.
WatchEditor::Target WatchEditor::targetOf(const WatchedValue &value, const Tag &tag) const
{
    const Tag *known = book_.find(withoutType(tag.name));
    Target target;
    target.obstacle = lastingObstacle(value, tag);
    target.allowed  = allowedText(known ? *known : tag);
    if (target.allowed.empty())
        target.allowed = value.item.isBit ? "0 or 1" : formatText(value.format);
    target.name = value.name;
    if (known && value.name == tag.name)
        return target;
    Tag single    = tag;
    single.item   = value.item;
    single.name   = withoutType(value.name);
    target.name   = single.name;
    target.own    = std::make_unique<TagBook>(book_.library());
    target.own->add(single);
    return target;
}

std::string WatchEditor::lastingObstacle(const WatchedValue &value, const Tag &tag) const
{
    const Tag *known = book_.find(withoutType(tag.name));
    if (known && known->readOnly)
        return value.name + " can only be read: the access of the tag is r";
    if (known && known->name != tag.name && value.name != tag.name)
        return value.name + " is one of several values in another data type; edit those of " + known->name;
    try {
        parseItem(book_.library(), driverText(value.item), Access::WRITE);
    } catch (const UsageError &error) {
        return error.what();
    }
    return "";
}

std::string WatchEditor::name(std::size_t value) const
{
    return values_[value].name;
}

std::string WatchEditor::held(std::size_t value) const
{
    return withUnit(values_[value].text, values_[value].format);
}

std::string WatchEditor::allowed(std::size_t value) const
{
    return targets_[value].allowed;
}

std::string WatchEditor::obstacle(std::size_t value) const
{
    if (!targets_[value].obstacle.empty())
        return targets_[value].obstacle;
    const std::string obstacle = way_.obstacle();
    if (!obstacle.empty())
        return obstacle;
    if (values_[value].quality != Quality::GOOD)
        return name(value) + " is not good but " + fins::text(values_[value].quality) + "; it cannot be edited";
    return "";
}

TagWrite WatchEditor::resolve(std::size_t value, const std::string &text) const
{
    const Target &target = targets_[value];
    TagWrite write = (target.own ? *target.own : book_).resolveWrite(target.name + "=" + text);
    write.tag.name = name(value);
    return write;
}

std::string WatchEditor::check(std::size_t value, const std::string &text) const
{
    const TagWrite write = resolve(value, text);
    return shownValue(write.tag.format, write.data);
}

void WatchEditor::write(std::size_t value, const std::string &text)
{
    way_.edit(resolve(value, text), text);
    edited_ = value;
}

ValueRow WatchEditor::row(std::size_t index) const
{
    const WatchedValue &value = values_[index];
    const Tag &tag = tags_[value.tag];
    ValueRow row;
    row.name    = value.name;
    row.plc     = tag.plc.substr(0, tag.plc.find('.'));
    row.group   = tag.group;
    row.comment = tag.comment;
    row.value   = value.text;
    row.unit    = value.format.unit;
    row.quality = value.quality;
    if (value.changes > 0)
        row.changedAt = value.changedAt;
    if (edited_ == index)
        row.fate = way_.fateOfEdit();
    return row;
}

std::vector<ValueRow> WatchEditor::rows() const
{
    std::vector<ValueRow> rows;
    rows.reserve(values_.size());
    for (std::size_t i = 0; i < values_.size(); ++i)
        rows.push_back(row(i));
    return rows;
}
