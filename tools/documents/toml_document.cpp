#include "documents/document.h"

#include "common/numbers.h"
#include "documents/text_check.h"
#include "documents/toml_text.h"

#include <algorithm>

namespace {

Place placeOf(const toml::source_region &region)
{
    return {static_cast<int>(region.begin.line), static_cast<int>(region.begin.column)};
}

DataNode convert(const toml::node &node);

DataNode convertTable(const toml::table &table)
{
    DataNode converted;
    for (const TomlMember &member : membersOf(table))
        converted.append(std::string(member.key->str()), placeOf(member.key->source()), convert(*member.value));
    return converted;
}

DataNode convert(const toml::node &node)
{
    DataNode converted;
    if (const toml::table *table = node.as_table())
        converted = convertTable(*table);
    converted.place = placeOf(node.source());
    if (const toml::array *array = node.as_array()) {
        converted.kind = NodeKind::ARRAY;
        for (const toml::node &item : *array)
            converted.children.push_back(convert(item));
    } else if (const auto *text = node.as_string()) {
        converted.kind = NodeKind::TEXT;
        converted.text = text->get();
    } else if (const auto *integer = node.as_integer()) {
        converted.kind = NodeKind::INTEGER;
        converted.text = std::to_string(integer->get());
    } else if (const auto *number = node.as_floating_point()) {
        converted.kind = NodeKind::NUMBER;
        converted.text = shortestText(number->get());
    } else if (const auto *boolean = node.as_boolean()) {
        converted.kind = NodeKind::BOOLEAN;
        converted.text = boolean->get() ? "true" : "false";
    } else if (!node.is_table()) {
        converted.kind = NodeKind::OTHER;
    }
    return converted;
}

// An escape in a text stands for any character.
bool checkTexts(const DataNode &node, const std::string &file, Problems &problems)
{
    const auto check = [&](const std::string &text, Place place) {
        const std::optional<BadCharacter> bad = findBadCharacter(text);
        if (bad)
            problems.add(file, place, bad->what);
        return !bad;
    };
    bool sound = node.kind != NodeKind::TEXT || check(node.text, node.place);
    for (std::size_t i = 0; i < node.keys.size(); ++i)
        sound = check(node.keys[i], node.keyPlaces[i]) && sound;
    for (const DataNode &child : node.children)
        sound = checkTexts(child, file, problems) && sound;
    return sound;
}

} // namespace

DataNode parseToml(const std::string &text, const std::string &file, Problems &problems)
{
    if (!checkCharacters(text, file, problems))
        return DataNode();
    toml::table parsed;
    if (const std::optional<TomlProblem> problem = parseTomlText(text, &parsed)) {
        problems.add(file, {static_cast<int>(problem->line), static_cast<int>(problem->column)},
                     withoutBadCharacters(problem->text));
        return DataNode();
    }
    DataNode root = convert(parsed);
    return checkTexts(root, file, problems) ? root : DataNode();
}

std::string tomlString(const std::string &text)
{
    static const char HEX[] = "0123456789ABCDEF";
    std::string quoted = "\"";
    for (const char c : text) {
        const unsigned char code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            quoted += std::string("\\") + c;
        else if (code < 0x20 || code == 0x7F)
            quoted += std::string("\\u00") + HEX[code >> 4] + HEX[code & 15];
        else
            quoted += c;
    }
    return quoted + '"';
}

std::string tomlKey(const std::string &key)
{
    const bool isBare = !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
    return isBare ? key : tomlString(key);
}
