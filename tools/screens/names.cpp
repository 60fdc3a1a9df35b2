#include "screens/names.h"

#include "common/numbers.h"
#include "common/suggestion.h"

namespace {

const std::size_t LONGEST_HINTED = 64; // characters of a name that is compared with others

const DataNode *tableOf(const DataNode &root, const char *key)
{
    const DataNode *node = root.find(key);
    return node && node->kind == NodeKind::TABLE ? node : nullptr;
}

// A file of tags was left out, or some of its lines, for what is wrong with it.
bool lacksTagsOf(const DataNode *node, const std::string &file, const Problems &problems)
{
    if (!node || node->kind == NodeKind::TABLE)
        return false;
    const std::vector<Problems::Entry> entries = problems.entries();
    return std::any_of(entries.begin(), entries.end(), [&](const Problems::Entry &entry) {
        const bool isAtNode = entry.place.line == node->place.line && entry.place.column == node->place.column;
        return entry.file != file || isAtNode;
    });
}

bool isOf(const Kinds &kinds, ValueKind kind)
{
    switch (kind) {
    case ValueKind::BIT:    return kinds.bits;
    case ValueKind::NUMBER: return kinds.numbers;
    default:                return kinds.texts;
    }
}

const char *textOf(ValueKind kind)
{
    switch (kind) {
    case ValueKind::BIT:    return "a bit";
    case ValueKind::NUMBER: return "a number";
    default:                return "a text";
    }
}

// "Speeds has 8 values; write Speeds[0] to Speeds[7]"
std::string severalText(const fins::TagConfig &tag)
{
    const std::size_t count = valueCountOf(tag);
    return "the tag '" + tag.name + "' has " + counted(count, "value") + "; write " + tag.name + "[0] to " + tag.name + "["
           + std::to_string(count - 1) + "]";
}

} // namespace

std::string brokenLimit(const fins::TagConfig &tag, double number)
{
    const std::string unit = tag.unit.empty() ? "" : " " + tag.unit;
    if (tag.minimum && number < *tag.minimum)
        return "below the tag's min of " + shortestText(*tag.minimum) + unit;
    if (tag.maximum && number > *tag.maximum)
        return "above the tag's max of " + shortestText(*tag.maximum) + unit;
    return "";
}

Names::Names(const DataNode &root, const std::string &file, const std::vector<fins::TagConfig> &tags,
             const std::vector<std::string> &recipes, Problems &problems)
    : file_(file), problems_(problems), recipes_(recipes)
{
    for (const fins::TagConfig &tag : tags) {
        tags_.emplace(tag.name, &tag);
        tagNames_.push_back(tag.name);
    }
    noteTags(root, "");
    if (const DataNode *plcs = tableOf(root, "plc")) {
        for (std::size_t i = 0; i < plcs->keys.size(); ++i)
            noteTags(plcs->children[i], plcs->keys[i] + ".");
    }
    if (const DataNode *table = tableOf(root, "recipes"))
        recipes_.insert(recipes_.end(), table->keys.begin(), table->keys.end()); // those that are broken, too
    if (const DataNode *table = tableOf(root, "screens"))
        screens_ = table->keys;
}

// The names of the table [tags], which are looked at for what is no sound tag.
void Names::noteTags(const DataNode &parent, const std::string &prefix)
{
    const DataNode *tags = parent.find("tags");
    lacksTags_ = lacksTags_ || lacksTagsOf(tags, file_, problems_);
    if (const DataNode *table = tableOf(parent, "tags")) {
        for (const std::string &key : table->keys)
            brokenTags_.insert(prefix + key);
    }
}

bool Names::report(const DataNode &node, const std::string &text)
{
    problems_.add(file_, node.place, text);
    return false;
}

std::string Names::hint(const std::string &name, const std::vector<std::string> &names, const std::string &otherwise)
{
    const bool isLookedFor = name.size() <= LONGEST_HINTED && hintsLeft_-- > 0;
    const std::string nearest = isLookedFor ? nearestWord(name, names) : "";
    return nearest.empty() ? otherwise : hintAt(nearest);
}

const fins::TagConfig *Names::find(const DataNode &node, const std::string &name)
{
    const auto found = tags_.find(name);
    if (found != tags_.end())
        return found->second;
    if (!lacksTags_ && brokenTags_.count(name) == 0)
        report(node, "there is no tag '" + name + "'"
                         + hint(name, tagNames_, "; write the name of one, or add it to the file's tags"));
    return nullptr;
}

bool Names::readIndex(const DataNode &node, std::size_t bracket, NamedValue &named)
{
    const std::size_t count = valueCountOf(*named.tag);
    if (bracket == std::string::npos)
        return count == 1 || report(node, severalText(*named.tag));
    if (count == 1)
        return report(node, "'" + node.text + "': the tag has one value; write " + named.tag->name);
    const std::string index = node.text.substr(bracket + 1, node.text.size() - bracket - 2);
    return (readNumber(index, named.value.index) && node.text.back() == ']' && named.value.index < count)
           || report(node, "'" + node.text + "' is none of its values: " + severalText(*named.tag));
}

std::optional<NamedValue> Names::value(const DataNode &node, const Kinds &kinds, const std::string &user)
{
    if (node.kind != NodeKind::TEXT) {
        report(node, "this is not a tag; write its name between quotes");
        return std::nullopt;
    }
    const std::size_t bracket = node.text.find('[');
    NamedValue named = {{node.text.substr(0, bracket), 0}, nullptr};
    named.tag = find(node, named.value.tag);
    if (!named.tag || !readIndex(node, bracket, named))
        return std::nullopt;
    if (isOf(kinds, kindOf(*named.tag)))
        return named;
    report(node, "'" + node.text + "' is " + textOf(kindOf(*named.tag)) + ", and " + user + " needs " + kinds.text
                     + "; name another tag");
    return std::nullopt;
}

std::optional<NamedValue> Names::writtenValue(const DataNode &node, const Kinds &kinds, const std::string &user)
{
    std::optional<NamedValue> named = value(node, kinds, user);
    if (!named)
        return named;
    const std::size_t count = valueCountOf(*named->tag);
    if (count > 1) {
        report(node, "'" + node.text + "' is one of " + std::to_string(count) + " values, and " + user
                         + " writes one alone; make a tag of its own for it");
        return std::nullopt;
    }
    if (named->tag->readOnly) {
        report(node, "'" + node.text + "' can only be read: the access of the tag is r, and " + user
                         + " writes it; name another tag");
        return std::nullopt;
    }
    return named;
}

bool Names::checkNumber(const DataNode &node, const NamedValue &named, double number)
{
    if (kindOf(*named.tag) != ValueKind::BIT || number == 0 || number == 1)
        return true;
    return report(node, "'" + named.tag->name + "' is a bit, and never " + shortestText(number) + "; write 0 or 1");
}

bool Names::checkWritten(const DataNode &node, const NamedValue &named, double number)
{
    const std::string broken = brokenLimit(*named.tag, number);
    if (broken.empty())
        return checkNumber(node, named, number);
    return report(node, "'" + named.tag->name + "=" + shortestText(number) + "' is " + broken
                            + "; write a value within its limits");
}

std::string Names::listed(const DataNode &node, const char *what, const std::vector<std::string> &names)
{
    const std::string kind = what;
    if (node.kind != NodeKind::TEXT)
        report(node, "this is not a " + kind + "; write its name between quotes");
    else if (std::find(names.begin(), names.end(), node.text) != names.end())
        return node.text;
    else
        report(node, "there is no " + kind + " '" + node.text + "'"
                         + hint(node.text, names, "; write the name of one of the file's " + kind + "s"));
    return "";
}

std::string Names::recipe(const DataNode &node)
{
    return listed(node, "recipe", recipes_);
}

std::string Names::screen(const DataNode &node)
{
    return listed(node, "screen", screens_);
}
