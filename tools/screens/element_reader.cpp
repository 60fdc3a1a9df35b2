#include "screens/element_reader.h"

#include "common/numbers.h"

#include <limits>

namespace {

const std::size_t MOST_STATES = 20;
const std::size_t MOST_TREND_TAGS = 8;
const long MOST_MINUTES = 480;

struct ElementType {
    const char *name;
    ElementKind kind;
};

constexpr ElementType TYPES[] = {
    {"text", ElementKind::TEXT},     {"number", ElementKind::NUMBER}, {"bar", ElementKind::BAR},
    {"lamp", ElementKind::LAMP},     {"trend", ElementKind::TREND},   {"button", ElementKind::BUTTON},
    {"set-point", ElementKind::SET_POINT}, {"choice", ElementKind::CHOICE}, {"recipe", ElementKind::RECIPE},
    {"alarms", ElementKind::ALARMS}, {"group", ElementKind::GROUP},   {"screen", ElementKind::SCREEN}};

const ElementType *typeOf(const std::string &name)
{
    for (const ElementType &type : TYPES) {
        if (name == type.name)
            return &type;
    }
    return nullptr;
}

std::string typeNames()
{
    std::string names;
    for (const ElementType &type : TYPES)
        names += (names.empty() ? "" : ", ") + std::string(type.name);
    return names;
}

} // namespace

std::string readFilledText(TableReader &reader, const char *key)
{
    std::string text;
    const DataNode *node = reader.take(key);
    if (reader.text(key, text) && node && text.empty())
        reader.report(*node, "'" + std::string(key) + "' is empty; write a text");
    return text;
}

bool ElementReader::read()
{
    element_.place = table_.place;
    const DataNode *type = reader_.need("type", "type = \"number\"");
    if (!type || !reader_.text("type", type_))
        return false;
    const ElementType *known = typeOf(type_);
    if (!known)
        return reader_.report(*type, "'" + type_ + "' is not a type; the types are " + typeNames());
    element_.kind = known->kind;
    readGridPlace();
    readKind();
    reader_.refuseOthers();
    return true;
}

// ---- The place in the grid ---------------------------------------------------------------------------------------

bool ElementReader::readPair(const DataNode &node, const char *form, long (&pair)[2])
{
    const auto isWhole = [](const DataNode &child, long &number) {
        const long most = std::numeric_limits<long>::max();
        return child.kind == NodeKind::INTEGER && parseNumber(child.text, -most, most, number);
    };
    const bool isPair = node.kind == NodeKind::ARRAY && node.children.size() == 2 && isWhole(node.children[0], pair[0])
                        && isWhole(node.children[1], pair[1]);
    return isPair || reader_.report(node, std::string("these are not two whole numbers; write ") + form);
}

void ElementReader::readGridPlace()
{
    long at[2]   = {1, 1};
    long size[2] = {1, 1};
    const long grid[2] = {columns_, rows_};
    const char *const nouns[2] = {"column", "row"};
    const DataNode *atNode   = reader_.need("at", "at = [1, 1]");
    const DataNode *sizeNode = reader_.take("size");
    bool isAtSound = atNode && readPair(*atNode, "column and row, such as [1, 1]", at);
    bool isSound   = !sizeNode || readPair(*sizeNode, "columns and rows, such as [2, 1]", size);
    for (std::size_t i = 0; isAtSound && i < 2; ++i) {
        if (at[i] < 1 || at[i] > grid[i])
            isAtSound = reader_.report(atNode->children[i], std::string(nouns[i]) + " " + std::to_string(at[i])
                                           + " lies outside of the grid, which has " + nouns[i] + "s 1 to "
                                           + std::to_string(grid[i]));
    }
    for (std::size_t i = 0; isSound && sizeNode && i < 2; ++i) {
        if (size[i] < 1)
            isSound = reader_.report(sizeNode->children[i], "a size of " + std::to_string(size[i]) + " " + nouns[i]
                                                                + "s is none; write 1 or more");
        else if (isAtSound && size[i] > grid[i] - at[i] + 1)
            isSound = reader_.report(sizeNode->children[i], counted(static_cast<std::size_t>(size[i]), nouns[i]) + " from "
                                         + nouns[i] + " " + std::to_string(at[i]) + " reach outside of the grid, which has "
                                         + nouns[i] + "s 1 to " + std::to_string(grid[i]));
    }
    if (!isAtSound || !isSound)
        return;
    element_.column  = static_cast<int>(at[0]) - 1;
    element_.row     = static_cast<int>(at[1]) - 1;
    element_.columns = static_cast<int>(size[0]);
    element_.rows    = static_cast<int>(size[1]);
    gridPlace_ = atNode->place;
}

// ---- What all kinds are made of ----------------------------------------------------------------------------------

std::string ElementReader::needCaption(const char *key, const char *example)
{
    reader_.need(key, std::string(key) + " = \"" + example + "\"");
    return readFilledText(reader_, key);
}

std::optional<NamedValue> ElementReader::readTag(const Kinds &kinds)
{
    const DataNode *node = reader_.need("tag", "tag = \"Level\"");
    std::optional<NamedValue> named = node ? names_.value(*node, kinds, user()) : std::nullopt;
    if (named)
        element_.tags = {named->value};
    return named;
}

std::optional<NamedValue> ElementReader::readControl(const Kinds &kinds, const std::string &user)
{
    const DataNode *node = reader_.need("tag", "tag = \"SetPoint\"");
    std::optional<NamedValue> named = node ? names_.writtenValue(*node, kinds, user) : std::nullopt;
    if (named)
        element_.tags = {named->value};
    return named;
}

// Appends the state. Of a choice, whose values are written, it has no priority.
void ElementReader::readState(const DataNode &node, const char *key, const std::optional<NamedValue> &named)
{
    if (node.kind != NodeKind::TABLE) {
        reader_.report(node, "this is no entry of '" + std::string(key) + "'; write { value = 0, text = \"off\" }");
        return;
    }
    TableReader reader(node, names_.file(), names_.problems());
    ValueText state;
    const DataNode *value = reader.need("value", "value = 0");
    const bool isNumber = reader.number("value", state.value) && value;
    reader.need("text", "text = \"off\"");
    state.text = readFilledText(reader, "text");
    long priority = 0;
    if (element_.kind == ElementKind::LAMP)
        reader.whole("priority", 0, 3, priority);
    state.priority = static_cast<int>(priority);
    reader.refuseOthers();
    if (!isNumber)
        return;
    const auto isSame = [&](const ValueText &other) { return other.value == state.value; };
    if (std::any_of(element_.states.begin(), element_.states.end(), isSame))
        reader.report(*value, "the value " + shortestText(state.value) + " is there twice; remove one");
    else if (named && element_.kind == ElementKind::CHOICE)
        names_.checkWritten(*value, *named, state.value);
    else if (named)
        names_.checkNumber(*value, *named, state.value);
    element_.states.push_back(state);
}

void ElementReader::readStates(const char *key, std::size_t least, const std::optional<NamedValue> &named)
{
    const DataNode *node = reader_.need(key, std::string(key) + " = [{ value = 0, text = \"off\" }, { value = 1, text = "
                                                                "\"on\" }]");
    if (!node)
        return;
    const std::size_t count = node->children.size();
    if (node->kind != NodeKind::ARRAY || count < least || count > MOST_STATES) {
        reader_.report(*node, "'" + std::string(key) + "' is not a list of " + std::to_string(least) + " to "
                                  + std::to_string(MOST_STATES) + " entries such as { value = 0, text = \"off\" }");
        return;
    }
    for (const DataNode &state : node->children)
        readState(state, key, named);
}

// ---- The kinds ---------------------------------------------------------------------------------------------------

void ElementReader::readKind()
{
    const bool isFixedText = element_.kind == ElementKind::TEXT && !table_.find("tag");
    if (!isFixedText)
        element_.label = readFilledText(reader_, "label");
    switch (element_.kind) {
    case ElementKind::TEXT:      readTexts(); break;
    case ElementKind::NUMBER:    readTag(NUMBERS); break;
    case ElementKind::BAR:       readBar(); break;
    case ElementKind::LAMP:      readLamp(); break;
    case ElementKind::TREND:     readTrend(); break;
    case ElementKind::BUTTON:    readButton(); break;
    case ElementKind::SET_POINT: readControl(NUMBERS, user()); break;
    case ElementKind::CHOICE:    readStates("choices", 2, readControl(BITS_AND_NUMBERS, user())); break;
    case ElementKind::RECIPE:
        if (const DataNode *recipe = reader_.take("recipe"))
            element_.recipe = names_.recipe(*recipe);
        break;
    case ElementKind::ALARMS:
    case ElementKind::GROUP: break;
    case ElementKind::SCREEN:
        if (const DataNode *screen = reader_.need("screen", "screen = \"oven\""))
            element_.screen = names_.screen(*screen);
        break;
    }
}

// A fixed text, or the value of a tag.
void ElementReader::readTexts()
{
    const DataNode *tag  = reader_.take("tag");
    const DataNode *text = reader_.take("text");
    if (tag && text)
        reader_.report(*text, "a text is a fixed one or that of a tag; remove 'text' or 'tag'");
    else if (tag)
        readTag(ANY_KIND);
    else
        element_.text = needCaption("text", "Mixing plant");
}

std::optional<double> ElementReader::readLimit(const char *key, const std::optional<double> &ofTag, bool hasTag)
{
    double number = 0;
    if (reader_.take(key))
        return reader_.number(key, number) ? std::optional<double>(number) : std::nullopt;
    if (!ofTag && hasTag)
        reader_.report(table_, "'" + std::string(key) + "' is missing, and the tag has none; add it, such as " + key + " = "
                                   + (key == std::string("min") ? "0" : "100"));
    return ofTag;
}

void ElementReader::readBar()
{
    const std::optional<NamedValue> named = readTag(NUMBERS);
    const std::optional<double> none;
    element_.minimum = readLimit("min", named ? named->tag->minimum : none, named.has_value());
    element_.maximum = readLimit("max", named ? named->tag->maximum : none, named.has_value());
    if (!element_.minimum || !element_.maximum || *element_.minimum < *element_.maximum)
        return;
    const DataNode *written = reader_.take("max") ? reader_.take("max") : reader_.take("min");
    reader_.report(written ? *written : table_, "a bar from " + shortestText(*element_.minimum) + " to "
                                                    + shortestText(*element_.maximum)
                                                    + " has no length; write a 'min' that is below 'max'");
}

void ElementReader::readLamp()
{
    const std::optional<NamedValue> named = readTag(BITS_AND_NUMBERS);
    const bool isBit = named && kindOf(*named->tag) == ValueKind::BIT;
    if (reader_.take("states") || (named && !isBit))
        readStates("states", 1, named);
    else
        element_.states = {{0, "off", 0}, {1, "on", 0}};
}

void ElementReader::readTrend()
{
    const DataNode *tags = reader_.take("tags");
    long minutes = static_cast<long>(element_.span.count());
    if (!tags || reader_.take("tag"))
        readTag(BITS_AND_NUMBERS);
    if (tags && reader_.take("tag"))
        reader_.report(*tags, "the tags are given twice; remove 'tag' or 'tags'");
    else if (tags && (tags->kind != NodeKind::ARRAY || tags->children.empty() || tags->children.size() > MOST_TREND_TAGS))
        reader_.report(*tags, "'tags' is not a list of 1 to 8 tags; write their names, such as [\"Level\", \"SetPoint\"]");
    else if (tags)
        readTrendTags(*tags);
    reader_.whole("minutes", 1, MOST_MINUTES, minutes);
    element_.span = std::chrono::minutes(minutes);
}

void ElementReader::readTrendTags(const DataNode &tags)
{
    for (const DataNode &node : tags.children) {
        const std::optional<NamedValue> named = names_.value(node, BITS_AND_NUMBERS, user());
        if (!named)
            continue;
        const auto isSame = [&](const TagValue &other) {
            return other.tag == named->value.tag && other.index == named->value.index;
        };
        if (std::any_of(element_.tags.begin(), element_.tags.end(), isSame))
            reader_.report(node, "'" + node.text + "' is there twice; remove one");
        element_.tags.push_back(named->value);
    }
}

void ElementReader::readButton()
{
    std::string mode = "set";
    const DataNode *modeNode = reader_.take("mode");
    bool isMode = reader_.text("mode", mode);
    if (isMode && mode != "set" && mode != "momentary" && mode != "toggle")
        isMode = reader_.report(*modeNode, "'" + mode + "' is not a mode; write set, momentary or toggle");
    const bool isToggle = mode == "toggle";
    if (isMode && mode != "set")
        element_.mode = isToggle ? ButtonMode::TOGGLE : ButtonMode::MOMENTARY;
    const std::optional<NamedValue> named = isToggle ? readControl(BITS, "a button that toggles")
                                                       : readControl(BITS_AND_NUMBERS, user());
    element_.text = needCaption("text", isToggle ? "Open" : "Start");
    if (isToggle)
        element_.textOn = needCaption("text_on", "Close");
    else
        readButtonValue(named);
    if (!isMode)
        reader_.take("text_on"); // perhaps of a toggle
}

void ElementReader::readButtonValue(const std::optional<NamedValue> &named)
{
    const DataNode *value = reader_.take("value");
    if (!reader_.number("value", element_.value) || !named
        || !names_.checkWritten(value ? *value : table_, *named, element_.value))
        return;
    const std::string broken = element_.mode == ButtonMode::MOMENTARY ? brokenLimit(*named->tag, 0) : "";
    if (!broken.empty())
        reader_.report(*reader_.take("mode"), "a momentary button writes 0 when it is released, which is " + broken
                                                  + "; write mode = \"set\"");
}
