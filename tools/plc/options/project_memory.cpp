#include "options/project_memory.h"

#include "cpu/number_type.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace plc {

namespace {

// ---- Values as people write them, turned into words --------------------------------------------------------------

// Adds the two words of a 32-bit floating-point number, low word first. Returns an empty text, or what is wrong.
std::string addFloat(double number, std::vector<unsigned> *words)
{
    const bool isTooLarge = std::isfinite(number) && std::fabs(number) > double(std::numeric_limits<float>::max());
    if (isTooLarge)
        return "the number is too large for an f32";
    const std::array<unsigned, 2> both = wordsOfFloat(static_cast<float>(number));
    words->insert(words->end(), both.begin(), both.end());
    return std::string();
}

// Adds the words of a whole number to `words`, low word first. Returns an empty text, or what is wrong.
std::string addNumber(ValueType type, std::int64_t number, std::vector<unsigned> *words)
{
    const TypeRow &row = rowOf(type);
    if (number < row.least || number > row.most)
        return std::to_string(number) + " is no " + row.name + "; use " + std::to_string(row.least) + " to " +
               std::to_string(row.most);
    const std::array<unsigned, 2> both = wordsOf(type, number);
    words->insert(words->end(), both.begin(), both.begin() + row.words);
    return std::string();
}

// The words of a text: two characters (bytes) a word, the first in the high byte unless `isLowByteFirst`; an odd one
// is followed by a zero byte.
std::vector<unsigned> textWords(const std::string &text, bool isLowByteFirst)
{
    std::vector<unsigned> words;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const unsigned first = static_cast<unsigned char>(text[i]);
        const unsigned second = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0u;
        words.push_back(isLowByteFirst ? second << 8 | first : first << 8 | second);
    }
    return words;
}

// ---- The table -----------------------------------------------------------------------------------------------------

// One value or a list of them, of one type, on its way into words or bits.
class ContentReader {
public:
    ContentReader(const Span &span, Problems &found) : place(span), problems(found) {}

    /// Adds the items of a number, a list of numbers, a boolean or a text. Returns whether nothing was wrong.
    bool add(const toml::node &node);

    /// The same where the type is given.
    bool addTyped(const toml::node &node, ValueType type);

    /// A table with one type as key, or with string.
    bool addTable(const toml::table &table);

    std::vector<unsigned> items;
    bool isList = false;
    bool isText = false;

private:
    bool fail(const toml::node &node, const std::string &text)
    {
        problems.add(node, text);
        return false;
    }
    bool isBit() const { return place.access != Access::WORD; }
    bool isWide() const { return largestValue(place) > 0xFFFFu; }
    bool addBit(const toml::node &node);
    bool addWide(const toml::node &node);
    bool addText(const toml::node &node, bool isLowByteFirst);
    bool addList(const toml::array &list, const ValueType *type);
    bool addString(const toml::table &table);

    Span      place;
    Problems &problems;
};

bool ContentReader::addBit(const toml::node &node)
{
    const auto *boolean = node.as_boolean();
    const auto *integer = node.as_integer();
    if (!boolean && !(integer && (integer->get() == 0 || integer->get() == 1)))
        return fail(node, "a bit is true, false, 0 or 1");
    items.push_back(boolean ? (boolean->get() ? 1 : 0) : static_cast<unsigned>(integer->get()));
    return true;
}

bool ContentReader::addWide(const toml::node &node)
{
    const auto *integer = node.as_integer();
    if (!integer || integer->get() < 0 || integer->get() > 0xFFFFFFFFLL)
        return fail(node, "an index register takes a number from 0 to 4294967295");
    items.push_back(static_cast<unsigned>(integer->get()));
    return true;
}

bool ContentReader::addText(const toml::node &node, bool isLowByteFirst)
{
    isText = true;
    items = textWords(node.as_string()->get(), isLowByteFirst);
    return !items.empty() || fail(node, "an empty text fills no word; leave it out");
}

bool ContentReader::addList(const toml::array &list, const ValueType *type)
{
    if (isList)
        return fail(list, "a list in a list has no meaning");
    isList = true;
    if (list.empty())
        return fail(list, "the list is empty");
    bool isGood = true;
    for (const toml::node &item : list) {
        if (item.is_string())
            isGood = fail(item, "a text cannot stand in a list; give it an address of its own");
        else
            isGood = (type ? addTyped(item, *type) : add(item)) && isGood;
    }
    return isGood;
}

bool ContentReader::add(const toml::node &node)
{
    if (const toml::array *list = node.as_array())
        return addList(*list, nullptr);
    if (isBit())
        return addBit(node);
    if (isWide())
        return addWide(node);
    if (node.is_string())
        return addText(node, false);
    if (node.is_floating_point())
        return addTyped(node, ValueType::F32);
    if (node.is_integer())
        return addTyped(node, ValueType::U16);
    if (node.is_boolean())
        return fail(node, "true and false are for bits, such as CIO_bit:0.0");
    return fail(node, "this is no value; use a number, a text, a list or { TYPE = value }");
}

bool ContentReader::addTyped(const toml::node &node, ValueType type)
{
    if (const toml::array *list = node.as_array())
        return addList(*list, &type);
    std::string wrong = "this is no number";
    if (const auto *integer = node.as_integer())
        wrong = addNumber(type, integer->get(), &items);
    else if (node.is_floating_point())
        wrong = type == ValueType::F32 ? addFloat(node.as_floating_point()->get(), &items)
                                       : "a number with decimals needs the type f32";
    return wrong.empty() || fail(node, wrong);
}

bool ContentReader::addString(const toml::table &table)
{
    bool isLowByteFirst = false;
    for (const TomlMember &member : membersOf(table)) {
        if (*member.key == "string")
            continue;
        if (*member.key != "low-byte-first" || !member.value->is_boolean()) {
            problems.add(*member.key, "beside string only low-byte-first = true or false is known");
            return false;
        }
        isLowByteFirst = member.value->as_boolean()->get();
    }
    const toml::node &text = *table.get("string");
    return text.is_string() ? addText(text, isLowByteFirst) : fail(text, "string takes a text");
}

bool ContentReader::addTable(const toml::table &table)
{
    if (isBit())
        return fail(table, "a bit has no type; use true or false");
    if (isWide())
        return fail(table, "an index register has no type; use a number");
    if (table.get("string"))
        return addString(table);
    const std::vector<TomlMember> members = membersOf(table);
    ValueType type = ValueType::U16;
    if (members.size() != 1 || !parseValueType(std::string(members[0].key->str()), &type))
        return fail(table, "use { TYPE = value } with one of u16 s16 bcd16 u32 s32 f32 string");
    return addTyped(*members[0].value, type);
}

// Whether the items fit the count behind the address: one value fills, a text is followed by zeros, a list has to agree.
// Returns an empty text, or what is wrong.
std::string checkCount(const ContentReader &reader, unsigned count)
{
    const std::size_t given = reader.items.size();
    if (given == count)
        return std::string();
    std::string counts = std::to_string(given) + " items for the " + std::to_string(count) + " of the address";
    if (reader.isList || given > count)
        return counts;
    if (!reader.isText && count % given != 0)
        return counts + "; they do not fill it evenly";
    return std::string();
}

void readMember(const TomlMember &member, Memory &memory, Problems &problems, std::vector<Content> *contents)
{
    const std::string place(member.key->str());
    Content content;
    std::string wrong = parsePlace(place, memory, &content.place);
    if (!wrong.empty()) {
        problems.add(*member.key, wrong);
        return;
    }
    if (isComputed(content.place)) {
        problems.add(*member.key, place + " is made by the CPU unit at every moment; leave it out");
        return;
    }
    ContentReader reader(content.place, problems);
    const toml::table *const table = member.value->as_table();
    if (!(table ? reader.addTable(*table) : reader.add(*member.value)))
        return;
    const bool hasCount = place.find(':') != place.rfind(':');
    if (hasCount)
        wrong = checkCount(reader, content.place.count);
    else
        wrong = parsePlace(place + ":" + std::to_string(reader.items.size()), memory, &content.place);
    content.values = reader.items;
    content.isText = reader.isText;
    if (!wrong.empty()) {
        problems.add(*member.value, wrong);
        return;
    }
    if (content.place.area == AREA_BANK)
        memory.setWord(AREA_BANK, 0, content.value(0)); // the lines below mean that bank by E
    contents->push_back(content);
}

} // namespace

std::vector<Content> readMemoryTable(const toml::table &table, Memory memory, Problems &problems)
{
    std::vector<Content> contents;
    for (const TomlMember &member : membersOf(table))
        readMember(member, memory, problems, &contents);
    return contents;
}

} // namespace plc
