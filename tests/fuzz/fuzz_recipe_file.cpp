#include "common/usage_error.h"
#include "fuzz_input.h"
#include "project/recipe_file.h"

#include <sstream>

// The panel's recipe file reader: any text is a recipe or refused with one line, and a recipe survives being written
// and read again.

namespace {

enum { WORDS_MOST = 65536, LAST_ADDRESS = 32767 };

std::vector<RecipeEntry> read(const DriverLibrary &library, const std::string &text, bool needValues)
{
    std::istringstream stream(text);
    return readRecipe(TagBook(library), stream, "mix.rcp", needValues);
}

void checkEntries(const std::vector<RecipeEntry> &entries, bool needValues)
{
    require(!entries.empty(), "a recipe has variables");
    for (const RecipeEntry &entry : entries) {
        require(!entry.item.isBit && entry.item.count >= 1, "recipes hold words");
        require(entry.item.address >= 0 && entry.item.endWord() <= LAST_ADDRESS + 1, "words that a PLC may have");
        require(entry.values.empty() ? !needValues : entry.values.size() == entry.item.byteSize(), "values of a line");
    }
}

std::string linesOf(const std::vector<RecipeEntry> &entries)
{
    std::string text;
    for (const RecipeEntry &entry : entries)
        text += entry.values.empty() ? entryName(entry) + "\n" : recipeLine(entry) + "\n";
    return text;
}

/// Every word is laid out once, in pieces of at most a frame.
void checkLayout(const std::vector<RecipeEntry> &entries, qint32 wordsPerFrame)
{
    qint64 words = 0;
    for (const RecipeEntry &entry : entries)
        words += entry.item.count;
    for (const RecipeEntry &piece : layOutRecipe(entries, wordsPerFrame)) {
        require(piece.item.count >= 1 && piece.item.count <= wordsPerFrame, "pieces of a frame's size");
        words -= piece.item.count;
    }
    require(words == 0, "every word is laid out");
}

void checkRefusal(const std::string &what)
{
    require(what.compare(0, 7, "mix.rcp") == 0, "a refusal names the file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const DriverLibrary library("");
    FuzzInput input(data, size);
    const int choice = input.byte();
    const bool needValues = (choice & 1) != 0;
    try {
        const std::vector<RecipeEntry> entries = read(library, input.text(WORDS_MOST), needValues);
        checkEntries(entries, needValues);
        require(linesOf(read(library, linesOf(entries), needValues)) == linesOf(entries), "a recipe survives its text");
        checkLayout(entries, 1 + (choice >> 1));
    } catch (const UsageError &error) {
        checkRefusal(error.what());
    }
    return 0;
}
