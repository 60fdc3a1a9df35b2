#include "documents/text_check.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <unictype.h>
#include <unistr.h>

// Control characters, and the marks that set the direction of the text behind them.
static bool isControl(ucs4_t code)
{
    return uc_is_general_category(code, UC_CONTROL) || uc_is_property_bidi_control(code);
}

// The first one from the character that begins at `at`.
static std::optional<BadCharacter> findBadFrom(std::size_t at, const std::string &text, const std::string &allowed)
{
    while (at < text.size()) {
        ucs4_t code = 0;
        const int size = u8_mbtoucr(&code, reinterpret_cast<const std::uint8_t *>(text.data()) + at, text.size() - at);
        if (size < 0)
            return BadCharacter{at, "this is not UTF-8; save the file as UTF-8"};
        if (isControl(code) && allowed.find(text[at]) == std::string::npos)
            return BadCharacter{at, fmt::format("U+{:04X} is a control character; remove it", code)};
        at += static_cast<std::size_t>(size);
    }
    return std::nullopt;
}

std::optional<BadCharacter> findBadCharacter(const std::string &text, const std::string &allowed)
{
    return findBadFrom(0, text, allowed);
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
    for (std::optional<BadCharacter> bad = findBadCharacter(text); bad; bad = findBadFrom(bad->at + 1, text, ""))
        text[bad->at] = '?';
    return text;
}
