#include "documents/toml_guard.h"

#include <algorithm>

namespace {

// The end of a string in three quotes, which may have one or two more quotes before them; `at` is behind its first three.
std::size_t endOfLongString(const std::string &text, std::size_t at, char quote)
{
    const std::string closing(3, quote);
    for (; at < text.size(); ++at) {
        if (quote == '"' && text[at] == '\\')
            ++at;
        else if (text.compare(at, closing.size(), closing) == 0)
            return std::min(text.find_first_not_of(quote, at), at + 5);
    }
    return text.size();
}

// The position behind the string that begins at `at`. One that its line leaves open ends there, as does the parser.
std::size_t endOfString(const std::string &text, std::size_t at)
{
    const char quote = text[at];
    if (text.compare(at, 3, std::string(3, quote)) == 0)
        return endOfLongString(text, at + 3, quote);
    for (++at; at < text.size() && text[at] != '\n'; ++at) {
        if (quote == '"' && text[at] == '\\')
            ++at;
        else if (text[at] == quote)
            return at + 1;
    }
    return at;
}

TomlProblem problemAt(const std::string &text, std::size_t at, const std::string &what)
{
    const std::size_t lineEnd = text.rfind('\n', at);
    const std::size_t begin = lineEnd == std::string::npos ? 0 : lineEnd + 1;
    const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(begin), '\n');
    return {static_cast<unsigned>(lines) + 1, static_cast<unsigned>(at - begin) + 1, what};
}

} // namespace

std::optional<TomlProblem> findTomlDanger(const std::string &text)
{
    if (text.size() > TOML_MAX_BYTES)
        return TomlProblem{1, 1, "the file is larger than 4 MiB; keep what belongs together in smaller files"};
    std::size_t levels = 0;
    std::size_t points = 0; // since the beginning of a key or value
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '#') {
            at = std::min(text.find('\n', at), text.size()) - 1;
        } else if (c == '"' || c == '\'') {
            at = endOfString(text, at) - 1;
        } else if (c == '.') {
            if (++points == TOML_MAX_KEY_PARTS)
                return problemAt(text, at, "a key of more than 32 parts; use fewer points");
        } else if (c == '[' || c == '{') {
            if (++levels > TOML_MAX_LEVELS)
                return problemAt(text, at, "brackets of more than 32 levels; nest less deeply");
            points = 0;
        } else if (c == ']' || c == '}') {
            levels -= levels > 0 ? 1 : 0;
            points = 0;
        } else if (c == '\n' || c == '=' || c == ',') {
            points = 0;
        }
    }
    return std::nullopt;
}
