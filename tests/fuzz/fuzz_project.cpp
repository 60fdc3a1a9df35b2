#include "fuzz_input.h"
#include "plc/listing.h"
#include "project/project.h"
#include "screens/screen.h"

#include "documents/document.h"

#include <set>
#include <sys/mman.h>
#include <unistd.h>

// The project files of fins_panel and fins_hmi: any text is PLCs with tags and recipes, and screens and alarms of them, or
// refused with problems that have a place in it.

namespace {

enum { LAST_WORD = 32767, MOST_CELLS = 32, MOST_ELEMENTS = 400 };

// A file in memory, for what is read by its name.
class MemoryFile {
public:
    explicit MemoryFile(const std::string &text) : descriptor_(memfd_create("project", MFD_CLOEXEC))
    {
        require(write(descriptor_, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "a file in memory");
    }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;
    ~MemoryFile() { close(descriptor_); }

    std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

void checkProblems(const Problems &problems, const std::string &text)
{
    const auto lines = 1 + std::count(text.begin(), text.end(), '\n');
    for (const Problems::Entry &entry : problems.entries()) {
        require(entry.place.line >= 0 && entry.place.line <= lines, "a place in the file");
        require(!entry.text.empty(), "a problem has words");
        for (const char c : entry.text)
            require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F, "a problem is a line");
    }
}

void checkTags(const TagBook &book)
{
    for (const Tag &tag : book.tags()) {
        require(isTagName(tag.name), "names that can be typed");
        require(tag.item.count >= 1 && tag.item.address >= 0, "items have a place");
        require(tag.item.isBit || tag.item.endWord() <= LAST_WORD + 1, "words that a PLC may have");
        require(book.find(tag.name) == &tag, "each name once");
    }
}

void checkRecipes(const std::vector<Recipe> &recipes)
{
    for (const Recipe &recipe : recipes) {
        require(!recipe.entries.empty(), "a recipe has variables");
        for (const RecipeEntry &entry : recipe.entries)
            require(entry.values.empty() || entry.values.size() == entry.item.byteSize(), "values of a variable");
    }
}

void checkElement(const ScreenElement &element, const Screen &screen, const std::set<std::string> &tags)
{
    require(element.column >= 0 && element.columns >= 1 && element.column + element.columns <= screen.columns, "columns");
    require(element.row >= 0 && element.rows >= 1 && element.row + element.rows <= screen.rows, "rows");
    for (const TagValue &value : element.tags)
        require(tags.count(value.tag) == 1, "tags of the project");
    if (element.kind == ElementKind::BAR)
        require(element.minimum && element.maximum && *element.minimum < *element.maximum, "a bar has two ends");
}

void checkScreens(const ScreenBook &book, const std::set<std::string> &tags)
{
    for (const Screen &screen : book.screens) {
        require(screen.columns >= 1 && screen.columns <= MOST_CELLS, "columns of a grid");
        require(screen.rows >= 1 && screen.rows <= MOST_CELLS, "rows of a grid");
        require(!screen.elements.empty() && screen.elements.size() <= MOST_ELEMENTS, "a screen shows something");
        for (const ScreenElement &element : screen.elements)
            checkElement(element, screen, tags);
    }
    for (const AlarmRule &alarm : book.alarms) {
        require(tags.count(alarm.value.tag) == 1, "alarms of the project's tags");
        require(alarm.priority >= 1 && alarm.priority <= 3 && alarm.delay.count() >= 0 && alarm.hysteresis >= 0,
                "alarms that can come and go");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const DriverLibrary library("");
    const std::string text(data, data + size);
    const MemoryFile file(text);
    Problems problems;
    const std::vector<ProjectPlc> plcs = readProjectPlcs(file.name(), library, problems);
    require(!plcs.empty(), "a PLC at least");

    std::vector<fins::TagConfig> tags;
    std::vector<std::string>     recipes;
    std::set<std::string>        names;
    for (const ProjectPlc &plc : plcs) {
        checkTags(plc.tags);
        for (fins::TagConfig &tag : fins::listed(plc.tags.tags())) {
            names.insert(tag.name);
            tags.push_back(std::move(tag));
        }
        for (const Recipe &recipe : plc.project.recipes)
            recipes.push_back(recipe.name);
        if (!problems.any())
            checkRecipes(plc.project.recipes);
    }
    Problems again;
    const DataNode root = parseToml(text, file.name(), again);
    const ScreenBook book = readScreens(root, file.name(), tags, recipes, problems);
    checkProblems(problems, text);
    if (!problems.any())
        checkScreens(book, names);
    return 0;
}
