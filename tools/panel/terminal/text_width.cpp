#include "terminal/text_width.h"

#include "terminal/utf8_scope.h"

#include <cwchar>
#include <limits>

namespace {

struct Character {
    std::size_t size;       // bytes
    std::size_t columns;
    bool        isShowable;
};

const Character NOT_SHOWABLE = {1, 1, false};

// Without tables every character takes one column.
Character plainCharacter(const std::string &text, std::size_t at)
{
    const unsigned char first = static_cast<unsigned char>(text[at]);
    if (first < 32 || first == 127)
        return NOT_SHOWABLE;
    std::size_t end = at + 1;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        ++end;
    return {end - at, 1, true};
}

// The character at `at`, in a Utf8Scope.
Character characterAt(const std::string &text, std::size_t at)
{
    if (!utf8Tables())
        return plainCharacter(text, at);
    wchar_t wide = 0;
    std::mbstate_t state = {};
    const std::size_t size = std::mbrtowc(&wide, text.data() + at, text.size() - at, &state);
    if (size == 0 || size > text.size() - at) // a NUL, or no character
        return NOT_SHOWABLE;
    const int columns = wcwidth(wide);
    return columns < 0 ? Character{size, 1, false} : Character{size, static_cast<std::size_t>(columns), true};
}

// The beginning of a text.
struct Start {
    std::size_t size    = 0; // bytes
    std::size_t columns = 0;
};

// As much of the text as fits into so many columns.
Start startOf(const std::string &text, std::size_t columns)
{
    const Utf8Scope scope;
    Start start;
    while (start.size < text.size()) {
        const Character character = characterAt(text, start.size);
        if (start.columns + character.columns > columns)
            break;
        start.columns += character.columns;
        start.size += character.size;
    }
    return start;
}

} // namespace

std::size_t textWidth(const std::string &text)
{
    return startOf(text, std::numeric_limits<std::size_t>::max()).columns;
}

std::size_t screenWidth(const std::string &text)
{
    std::string shown;
    bool inAttribute = false;
    for (const char c : text) {
        if (c == '\033')
            inAttribute = true;
        else if (inAttribute)
            inAttribute = c != 'm';
        else
            shown += c;
    }
    return textWidth(shown);
}

std::string textStart(const std::string &text, std::size_t columns)
{
    return text.substr(0, startOf(text, columns).size);
}

std::string showable(const std::string &text)
{
    const Utf8Scope scope;
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        shown += character.isShowable ? text.substr(at, character.size) : "?";
        at += character.size;
    }
    return shown;
}
