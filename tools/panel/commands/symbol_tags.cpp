#include "commands/symbol_tags.h"

#include "documents/csv_reader.h"

#include <algorithm>
#include <cctype>
#include <regex>

namespace {

const char WORD_TYPE[]   = "CHANNEL"; // a word that is no number
const char STRING_TYPE[] = "STRING";

std::string capitals(std::string text)
{
    for (char &c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// A type as tables have it: INT, INT[10], ARRAY[0..9] OF INT or, with its characters, STRING[20].
struct SymbolType {
    std::string name;
    long        count = -1; // -1: not told
};

SymbolType typeOf(const std::string &text)
{
    static const std::regex SEVERAL(R"(([A-Z_0-9]+) ?[\[(](\d{1,6})[\])])");
    static const std::regex ARRAY(R"(ARRAY ?\[(\d{1,6})\.\.(\d{1,6})\] OF ([A-Z_0-9]+))");
    const std::string type = capitals(text);
    if (type.size() > 40 || type.find_first_of("[(") == std::string::npos)
        return {type};
    std::smatch parts;
    if (std::regex_match(type, parts, SEVERAL))
        return {parts[1], std::stol(parts[2])};
    if (std::regex_match(type, parts, ARRAY) && parts[3] != STRING_TYPE) // of how many characters each?
        return {parts[3], std::stol(parts[2]) - std::stol(parts[1]) + 1};
    return {type};
}

bool isSymbolType(const std::string &text)
{
    const std::string name = typeOf(text).name;
    return name == BIT_TYPE || name == WORD_TYPE || driverType(name);
}

// The item that the symbol is. Throws UsageError.
std::string itemOf(const Symbol &symbol)
{
    // A spreadsheet that takes 0.10 for a number leaves 0.1.
    const std::string word = symbol.address.substr(0, symbol.address.find('.'));
    if (symbol.address == word + ".1" && word.find_first_not_of("0123456789") == std::string::npos)
        throw UsageError("'" + symbol.address + "' may be bit 1, or bit 10 without its last digit; write " + word + ".01 or "
                         + word + ".10");
    if (symbol.address.empty())
        throw UsageError("it has no address");
    if (!isItemText(symbol.address))
        throw UsageError("'" + symbol.address + "' is no address such as D100, W3.05 or 100.05");
    if (!symbol.type.empty() && !isSymbolType(symbol.type))
        throw UsageError("'" + symbol.type + "' is no type of words or bits; there are " + WORD_TYPE + ", " + manualTypes());
    SymbolType type = typeOf(symbol.type);
    if (type.name == STRING_TYPE) {
        if (type.count < 1)
            throw UsageError("nothing tells how long it is; write the type with its characters, such as STRING[20]");
        type.count = (type.count + 1) / 2;
    }
    const bool isPlain = type.name.empty() || type.name == WORD_TYPE;
    return symbol.address + (type.count >= 0 ? ":" + std::to_string(type.count) : "") + (isPlain ? "" : "/" + type.name);
}

// The name with a _ for every character that a tag's may not have.
std::string tagNameOf(std::string name)
{
    for (char &c : name) {
        if (!isTagName(std::string("x") + c))
            c = '_';
    }
    return isTagName(name) ? name : "_" + name;
}

void addSymbol(const Symbol &symbol, TagBook &book)
{
    if (symbol.name.empty())
        throw UsageError("it has no name");
    Tag tag = book.resolveItem(itemOf(symbol), Access::WRITE);
    tag.name    = tagNameOf(symbol.name);
    tag.comment = symbol.comment;
    if (!book.add(tag))
        throw UsageError("there is another tag '" + tag.name + "'; give each a name of its own");
}

// True for a list of tags as projects have it, whose types are the driver's register types.
bool isTagList(const std::string &text, const std::string &file)
{
    Problems ignored;
    CsvReader reader(text, file, ignored);
    std::vector<Field> head;
    std::vector<Field> row;
    bool sound = true;
    reader.readRecord(head, sound);
    const auto column = [&](const char *name) {
        const auto found = std::find_if(head.begin(), head.end(), [&](const Field &field) { return field.text == name; });
        return static_cast<std::size_t>(found - head.begin());
    };
    const auto has = [&](const char *name) { return column(name) < head.size(); };
    const std::size_t type = column("type");
    if (!has("name") || !has("address"))
        return false;
    if (!has("type"))
        return head.size() > (has("comment") ? 3u : 2u);
    while (reader.readRecord(row, sound)) {
        if (type < row.size() && isSymbolType(row[type].text))
            return false;
    }
    return true;
}

} // namespace

std::optional<std::vector<Symbol>> readSymbols(const std::string &text, const std::string &file, Problems &problems)
{
    if (isTagList(text, file))
        return std::nullopt;
    const SymbolForms forms = {isSymbolType, [](const std::string &cell) { return driverItem(cell).has_value(); }};
    return readSymbolTable(text, file, forms, problems);
}

void addSymbols(const std::vector<Symbol> &symbols, const std::string &file, TagBook &book, Problems &problems,
                Problems &notes)
{
    for (const Symbol &symbol : symbols) {
        const Place place = {symbol.line, 0};
        try {
            addSymbol(symbol, book);
            if (book.tags().back().name != symbol.name)
                notes.add(file, place, "'" + symbol.name + "' is named " + book.tags().back().name);
        } catch (const UsageError &error) {
            problems.add(file, place, "'" + symbol.name + "': " + error.what());
        }
    }
}
