#include "commands/symbol_tags.h"
#include "fuzz_input.h"

#include <algorithm>

// Tables of symbols from programming tools: of any bytes each line becomes a tag that a PLC may have, or a problem with its
// place.

namespace {

enum { LAST_WORD = 32767 };

void checkTags(const TagBook &book)
{
    for (const Tag &tag : book.tags()) {
        require(isTagName(tag.name), "names that can be typed");
        require(tag.item.count >= 1 && tag.item.address >= 0, "items have a place");
        require(tag.item.isBit || tag.item.endWord() <= LAST_WORD + 1, "words that a PLC may have");
        require(book.find(tag.name) == &tag, "each name once");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const DriverLibrary library("");
    const std::string text(data, data + size);
    const auto lines = 2 + std::count(text.begin(), text.end(), '\n') + std::count(text.begin(), text.end(), '\r');
    Problems problems;
    Problems notes;
    const auto symbols = readSymbols(text, "table.txt", problems);
    if (!symbols)
        return 0;
    TagBook book(library);
    addSymbols(*symbols, "table.txt", book, problems, notes);
    checkTags(book);
    for (const Symbol &symbol : *symbols)
        require(symbol.line >= 1 && symbol.line <= lines, "lines of the table");
    require(book.tags().size() + problems.entries().size() >= symbols->size(), "what is no tag is a problem");
    return 0;
}
