#include "watch/watch_editor.h"

#include "session/runtime.h"

// A tag's name has no data type behind it.
static std::string withoutType(const std::string &name)
{
    return name.substr(0, name.find('/'));
}

WatchEditor::WatchEditor(const Runtime &runtime, const TagBook &book, const std::vector<Tag> &tags,
                         const WatchValues &values, WatchWrites &writes)
    : runtime_(runtime), book_(book), values_(values), writes_(writes)
{
    for (const WatchedValue &value : values.values())
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
    return valueAt(value).name;
}

std::string WatchEditor::held(std::size_t value) const
{
    return withUnit(valueAt(value).text, valueAt(value).format);
}

std::string WatchEditor::allowed(std::size_t value) const
{
    return targets_[value].allowed;
}

std::string WatchEditor::obstacle(std::size_t value) const
{
    if (!targets_[value].obstacle.empty())
        return targets_[value].obstacle;
    if (!writes_.settled())
        return "a write before is not settled yet; one goes out at a time";
    if (runtime_.phase() != LinkPhase::ONLINE || !runtime_.answering())
        return "the PLC does not answer; a value can be edited while the link is up";
    if (valueAt(value).quality != Quality::GOOD)
        return name(value) + " is not good but " + fins::text(valueAt(value).quality) + "; it cannot be edited";
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
    writes_.edit(resolve(value, text));
    edited_ = value;
}

std::string WatchEditor::fate(std::size_t value) const
{
    return edited_ == value ? writes_.fateOfEdit() : "";
}
