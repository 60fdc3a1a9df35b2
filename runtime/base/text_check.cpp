#include "base/text_check.h"

#include <algorithm>
#include <cstdio>

namespace {

// A character of UTF-8: the length of its bytes, 0 if they are none.
struct Character {
    char32_t    code;
    std::size_t size;
};

Character characterAt(const std::string &text, std::size_t at)
{
    const auto byte = [&](std::size_t i) -> unsigned {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return {first, 1};
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    const char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    char32_t code = first & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return {0, 0};
        code = code << 6 | (byte(i) & 0x3F);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool isOne = first >= 0xC2 && first <= 0xF4 && code >= least[size] && code <= 0x10FFFF && !isSurrogate;
    return {code, isOne ? size : 0};
}

// The codes below space, DEL and those from 0x80 on, and the marks that set the direction of the text behind them.
bool isControl(char32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x061C || code == 0x200E || code == 0x200F
           || (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

} // namespace

std::optional<BadCharacter> findBadCharacter(const std::string &text, const std::string &allowed)
{
    for (std::size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        if (character.size == 0)
            return BadCharacter{at, "this is not UTF-8; save the file as UTF-8"};
        if (isControl(character.code) && allowed.find(text[at]) == std::string::npos) {
            char name[16];
            std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(character.code));
            return BadCharacter{at, std::string(name) + " is a control character; remove it"};
        }
        at += character.size;
    }
    return std::nullopt;
}

bool checkCharacters(const std::string &text, const std::string &file, Problems &problems)
{
    const std::optional<BadCharacter> bad = findBadCharacter(text, "\t\r\n");
    if (!bad)
        return true;
    const auto at    = text.begin() + static_cast<std::ptrdiff_t>(bad->at);
    const auto begin = std::find(std::make_reverse_iterator(at), text.rend(), '\n').base();
    const auto isCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    problems.add(file, {static_cast<int>(std::count(text.begin(), at, '\n')) + 1,
                        static_cast<int>(std::count_if(begin, at, isCharacter)) + 1}, bad->what);
    return false;
}

std::string withoutBadCharacters(std::string text)
{
    for (std::optional<BadCharacter> bad = findBadCharacter(text); bad; bad = findBadCharacter(text))
        text[bad->at] = '?';
    return text;
}
