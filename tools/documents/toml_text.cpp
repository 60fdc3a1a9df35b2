#include "documents/toml_text.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

void giveUpOnToml() { throw std::logic_error("its syntax is broken"); }

namespace {

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
unsigned brokenLine(const std::string &text)
{
    std::vector<std::size_t> ends; // of the lines, their newlines included
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
        ends.push_back(at + 1);
    std::size_t first = 0;
    std::size_t last = ends.size();
    while (first < last) {
        const std::size_t middle = (first + last) / 2;
        if (makesParserGiveUp(text.substr(0, ends[middle])))
            last = middle;
        else
            first = middle + 1;
    }
    return static_cast<unsigned>(first) + 1;
}

} // namespace

std::optional<TomlProblem> parseTomlText(const std::string &text, toml::table *parsed)
{
    if (std::optional<TomlProblem> danger = findTomlDanger(text))
        return danger;
    const std::string notToml = "this is not TOML: ";
    try {
        *parsed = toml::parse(text);
    } catch (const toml::parse_error &error) {
        const toml::source_position place = error.source().begin;
        return TomlProblem{static_cast<unsigned>(place.line), static_cast<unsigned>(place.column),
                           notToml + std::string(error.description())};
    } catch (const std::logic_error &error) {
        return TomlProblem{brokenLine(text), 1, notToml + error.what()};
    }
    return std::nullopt;
}

std::vector<TomlMember> membersOf(const toml::table &table)
{
    std::vector<TomlMember> members;
    for (auto entry = table.cbegin(); entry != table.cend(); ++entry)
        members.push_back({&entry->first, &entry->second});
    std::sort(members.begin(), members.end(), [](const TomlMember &a, const TomlMember &b) {
        return a.key->source().begin < b.key->source().begin;
    });
    return members;
}
