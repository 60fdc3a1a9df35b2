#include "commands/commands.h"

#include "commands/ending.h"
#include "commands/output_file.h"
#include "common/numbers.h"
#include "documents/document.h"
#include "plc/listing.h"
#include "project/project.h"
#include "project/tag_table.h"
#include "screens/screen.h"

#include <iostream>

static int sayProblems(const Problems &problems)
{
    for (const std::string &line : problems.lines())
        std::cerr << line << std::endl;
    return EXIT_USAGE;
}

// The screens and alarms of a file whose tags and recipes were read, and what is wrong with both in `problems`.
static ScreenBook screensOf(const std::string &file, const TagBook &tags, const std::vector<Recipe> &recipes,
                            Problems &problems)
{
    Problems told; // what is no TOML is among the problems already
    const DataNode root = parseToml(readFile(file), file, told);
    std::vector<std::string> names;
    names.reserve(recipes.size());
    for (const Recipe &recipe : recipes)
        names.push_back(recipe.name);
    return readScreens(root, file, fins::listed(tags.tags()), names, problems);
}

static std::string alsoCounted(std::size_t number, const std::string &noun)
{
    return number > 0 ? ", " + counted(number, noun) : "";
}

int runCheckProject(const DriverLibrary &library, const std::string &file)
{
    TagBook book(library);
    Problems problems;
    const Project project = readProject(file, book, problems);
    const ScreenBook screens = screensOf(file, book, project.recipes, problems);
    if (problems.any())
        return sayProblems(problems);
    std::cout << file << " valid: " << counted(book.tags().size(), "tag") << ", "
              << counted(project.recipes.size(), "recipe") << alsoCounted(screens.screens.size(), "screen")
              << alsoCounted(screens.alarms.size(), "alarm") << '\n';
    return EXIT_DONE;
}

int runImportTags(const DriverLibrary &library, const std::string &file, const std::string &output)
{
    refuseInputs(output, {file});
    TagBook book(library);
    Problems problems;
    readTagFile(file, book, problems);
    if (problems.any())
        return sayProblems(problems);
    std::string text = "[tags]\n";
    for (const Tag &tag : book.tags())
        text += tagLine(tag) + "\n";
    giveOut(text, output);
    return EXIT_DONE;
}
