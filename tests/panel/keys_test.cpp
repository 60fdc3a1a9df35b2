#include "terminal/keys.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

Keystroke only(std::string keys, bool isAll = false)
{
    Keystroke stroke = takeKey(keys, isAll);
    EXPECT_EQ(keys, "");
    return stroke;
}

TEST(TakeKey, KeysOfSeveralTerminals)
{
    const std::pair<const char *, Key> KEYS[] = {
        {"\033[A", Key::UP},       {"\033OA", Key::UP},       {"\033[B", Key::DOWN},   {"\033OB", Key::DOWN},
        {"\033[5~", Key::PAGE_UP}, {"\033[6~", Key::PAGE_DOWN},
        {"\033[H", Key::HOME},     {"\033OH", Key::HOME},     {"\033[1~", Key::HOME},
        {"\033[F", Key::END},      {"\033OF", Key::END},      {"\033[4~", Key::END},
        {"\033[0n", Key::ANSWER},  {"\r", Key::ENTER},        {"\n", Key::ENTER},
        {"\177", Key::BACKSPACE},  {"\b", Key::BACKSPACE},
    };
    for (const auto &[bytes, key] : KEYS) {
        EXPECT_EQ(only(bytes).key, key) << bytes + 1;
        EXPECT_EQ(only(bytes).text, "");
    }
}

TEST(TakeKey, CharactersAreText)
{
    for (const char *character : {"q", " ", "~", "/", "ü", "水", "😀"}) {
        EXPECT_EQ(only(character).key, Key::TEXT) << character;
        EXPECT_EQ(only(character).text, character);
    }
}

TEST(TakeKey, WaitsForTheRestOfASequence)
{
    std::string keys = "\033[";
    EXPECT_EQ(takeKey(keys).key, Key::NONE);
    keys += "6";
    EXPECT_EQ(takeKey(keys).key, Key::NONE);
    keys += "~q";
    EXPECT_EQ(takeKey(keys).key, Key::PAGE_DOWN);
    EXPECT_EQ(takeKey(keys).text, "q");
    EXPECT_EQ(takeKey(keys).key, Key::NONE);
}

TEST(TakeKey, WaitsForTheRestOfACharacter)
{
    std::string keys = "\xE6\xB0";
    EXPECT_EQ(takeKey(keys).key, Key::NONE);
    keys += "\xB4";
    EXPECT_EQ(takeKey(keys).text, "水");
}

TEST(TakeKey, ALoneEscapeIsTheEscKeyOnceNothingFollows)
{
    std::string keys = "\033";
    EXPECT_EQ(takeKey(keys).key, Key::NONE);
    EXPECT_EQ(takeKey(keys, true).key, Key::ESCAPE);
    EXPECT_EQ(keys, "");
    keys = "\033[";
    EXPECT_EQ(takeKey(keys, true).key, Key::NONE) << "half an arrow";
    keys += "A";
    EXPECT_EQ(takeKey(keys, true).key, Key::UP);
}

TEST(TakeKey, AnEscapeBeforeAnotherKeyIsTheEscKey)
{
    std::string keys = "\033q\033\033[A";
    EXPECT_EQ(takeKey(keys).key, Key::ESCAPE);
    EXPECT_EQ(takeKey(keys).text, "q");
    EXPECT_EQ(takeKey(keys).key, Key::ESCAPE);
    EXPECT_EQ(takeKey(keys).key, Key::UP);
}

// Shift and Tab, F5, Ctrl and an arrow, F1, a byte that is no text, Ctrl-A: nothing of them is left as text.
TEST(TakeKey, SkipsWhatIsNoKeyHere)
{
    std::string keys = "\033[Z\033[15~\033[1;5A\033OP\xFF\001q";
    EXPECT_EQ(takeKey(keys).text, "q");
    EXPECT_EQ(keys, "");
}

} // namespace
