#include "commands/commands.h"

#include "commands/ending.h"
#include "commands/output_file.h"
#include "commands/symbol_tags.h"
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
static ScreenBook screensOf(const std::string &file, const std::vector<ProjectPlc> &plcs, Problems &problems)
{
    Problems told; // what is no TOML is among the problems already
    const DataNode root = parseToml(readFile(file), file, told);
    std::vector<std::string> recipes;
    std::vector<fins::TagConfig> tags;
    for (const ProjectPlc &plc : plcs) {
        for (const Recipe &recipe : plc.project.recipes)
            recipes.push_back(recipe.name);
        for (fins::TagConfig &tag : fins::listed(plc.tags.tags()))
            tags.push_back(std::move(tag));
    }
    return readScreens(root, file, tags, recipes, problems);
}

static std::string alsoCounted(std::size_t number, const std::string &noun)
{
    return number > 0 ? ", " + counted(number, noun) : "";
}

int runCheckProject(const DriverLibrary &library, const std::string &file)
{
    Problems problems;
    const std::vector<ProjectPlc> plcs = readProjectPlcs(file, library, problems);
    const ScreenBook screens = screensOf(file, plcs, problems);
    if (problems.any())
        return sayProblems(problems);
    std::size_t tags    = 0;
    std::size_t recipes = 0;
    for (const ProjectPlc &plc : plcs) {
        tags += plc.tags.tags().size();
        recipes += plc.project.recipes.size();
    }
    std::cout << file << " valid: " << (plcs.size() > 1 ? counted(plcs.size(), "PLC") + ", " : "") << counted(tags, "tag")
              << ", " << counted(recipes, "recipe") << alsoCounted(screens.screens.size(), "screen")
              << alsoCounted(screens.alarms.size(), "alarm") << '\n';
    return EXIT_DONE;
}

int runImportTags(const DriverLibrary &library, const std::string &file, const std::string &output)
{
    refuseInputs(output, {file});
    TagBook book(library);
    Problems problems;
    Problems notes;
    const std::optional<std::vector<Symbol>> symbols = readSymbols(readFile(file), file, problems);
    if (symbols)
        addSymbols(*symbols, file, book, problems, notes);
    else
        readTagFile(file, book, problems);
    sayProblems(notes);
    const int code = sayProblems(problems);
    if (problems.any() && !symbols)
        return code;
    std::string text = "[tags]\n";
    for (const Tag &tag : book.tags())
        text += tagLine(tag) + "\n";
    giveOut(text, output);
    return problems.any() ? EXIT_REFUSED : EXIT_DONE;
}
