#include "data_tree.h"

#include <stdexcept>

// Some malformed files break what the parser asserts, and without assertions it would go on with what is wrong. Here it
// gives up on the file in every build.
[[noreturn]] static void giveUpParsing()
{
    throw std::logic_error("its syntax is broken");
}

#undef NDEBUG
#define TOML_EXCEPTIONS 1
#define TOML_ASSERT(condition) ((condition) ? static_cast<void>(0) : giveUpParsing())
#include <toml++/toml.h>

#include <algorithm>
#include <charconv>

namespace {

Place placeOf(const toml::source_region &region)
{
    return {static_cast<int>(region.begin.line), static_cast<int>(region.begin.column)};
}

std::string floatText(double value)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

DataNode convert(const toml::node &node);

DataNode convertTable(const toml::table &table)
{
    struct Member {
        Place            place;
        std::string      key;
        const toml::node *value;
    };
    std::vector<Member> members;
    for (const auto &[key, value] : table)
        members.push_back({placeOf(key.source()), std::string(key.str()), &value});
    std::sort(members.begin(), members.end(), [](const Member &a, const Member &b) {
        return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
    });
    DataNode converted;
    for (const Member &member : members)
        converted.append(member.key, member.place, convert(*member.value));
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
        converted.text = floatText(number->get());
    } else if (const auto *boolean = node.as_boolean()) {
        converted.kind = NodeKind::BOOLEAN;
        converted.text = boolean->get() ? "true" : "false";
    } else if (!node.is_table()) {
        converted.kind = NodeKind::OTHER;
    }
    return converted;
}

bool makesParserGiveUp(const std::string &text)
{
    try {
        static_cast<void>(toml::parse(text));
    } catch (const toml::parse_error &) {
        return false;
    } catch (const std::logic_error &) {
        return true;
    }
    return false;
}

// The line at which the parser gives up: the shortest beginning of the text that makes it do so ends there.
int brokenLine(const std::string &text)
{
    std::vector<std::size_t> ends; // of the lines
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
        ends.push_back(at);
    std::size_t first = 0;
    std::size_t last  = ends.size();
    while (first < last) {
        const std::size_t middle = (first + last) / 2;
        if (makesParserGiveUp(text.substr(0, ends[middle])))
            last = middle;
        else
            first = middle + 1;
    }
    return static_cast<int>(first) + 1;
}

} // namespace

DataNode parseToml(const std::string &text, const std::string &file, Problems &problems)
{
    try {
        return convert(toml::parse(text, file));
    } catch (const toml::parse_error &error) {
        problems.add(file, placeOf(error.source()), "this is not TOML: " + std::string(error.description()));
    } catch (const std::logic_error &error) {
        problems.add(file, {brokenLine(text), 1}, std::string("this is not TOML: ") + error.what());
    }
    return DataNode();
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
