#include "terminal/keys.h"

#include <algorithm>

namespace {

const char ESCAPE = '\033';

bool isBetween(char c, int first, int last)
{
    const int code = static_cast<unsigned char>(c);
    return code >= first && code <= last;
}

// Of ESC [ with parameters and a final letter, or ESC O with one; 1 for an Esc that begins neither; 0: not yet whole.
std::size_t escapeSize(const std::string &keys)
{
    if (keys.size() < 2)
        return 0;
    if (keys[1] == 'O')
        return keys.size() < 3 ? 0 : 3;
    if (keys[1] != '[')
        return 1;
    const auto end = std::find_if_not(keys.begin() + 2, keys.end(), [](char c) { return isBetween(c, 0x20, 0x3F); });
    if (end == keys.end())
        return 0;
    const auto before = static_cast<std::size_t>(end - keys.begin());
    return isBetween(*end, 0x40, 0x7E) ? before + 1 : before;
}

// Of a character in UTF-8; 1 for a byte that begins none; 0: not yet whole.
std::size_t characterSize(const std::string &keys)
{
    const std::size_t size = isBetween(keys[0], 0xC2, 0xDF)   ? 2
                             : isBetween(keys[0], 0xE0, 0xEF) ? 3
                             : isBetween(keys[0], 0xF0, 0xF4) ? 4
                                                              : 1;
    for (std::size_t i = 1; i < size; ++i) {
        if (i == keys.size())
            return 0;
        if (!isBetween(keys[i], 0x80, 0xBF))
            return 1;
    }
    return size;
}

Key specialKey(const std::string &bytes)
{
    static const struct {
        const char *bytes;
        Key         key;
    } KEYS[] = {
        {"\r", Key::ENTER},        {"\n", Key::ENTER},        {"\177", Key::BACKSPACE}, {"\b", Key::BACKSPACE},
        {"\033", Key::ESCAPE},
        {"\033[A", Key::UP},       {"\033OA", Key::UP},
        {"\033[B", Key::DOWN},     {"\033OB", Key::DOWN},
        {"\033[5~", Key::PAGE_UP}, {"\033[6~", Key::PAGE_DOWN},
        {"\033[H", Key::HOME},     {"\033OH", Key::HOME},     {"\033[1~", Key::HOME},
        {"\033[F", Key::END},      {"\033OF", Key::END},      {"\033[4~", Key::END},
        {"\033[0n", Key::ANSWER},
    };
    for (const auto &known : KEYS) {
        if (bytes == known.bytes)
            return known.key;
    }
    return Key::NONE;
}

Keystroke meaningOf(const std::string &bytes)
{
    const bool isText = bytes.size() == 1 ? isBetween(bytes[0], 0x20, 0x7E) : bytes[0] != ESCAPE;
    return isText ? Keystroke{Key::TEXT, bytes} : Keystroke{specialKey(bytes)};
}

} // namespace

Keystroke takeKey(std::string &keys, bool isAll)
{
    while (!keys.empty()) {
        const bool isEscape = isAll && keys.size() == 1 && keys[0] == ESCAPE;
        const std::size_t size = isEscape ? 1 : keys[0] == ESCAPE ? escapeSize(keys) : characterSize(keys);
        if (size == 0)
            break;
        const Keystroke stroke = meaningOf(keys.substr(0, size));
        keys.erase(0, size);
        if (stroke.key != Key::NONE)
            return stroke;
    }
    return {};
}
