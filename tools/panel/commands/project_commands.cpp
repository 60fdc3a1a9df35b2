#include "commands/commands.h"

#include "commands/ending.h"
#include "commands/output_file.h"
#include "common/numbers.h"
#include "project/project.h"
#include "project/tag_table.h"

#include <iostream>

static int sayProblems(const Problems &problems)
{
    for (const std::string &line : problems.lines())
        std::cerr << line << std::endl;
    return EXIT_USAGE;
}

int runCheckProject(const DriverLibrary &library, const std::string &file)
{
    TagBook book(library);
    Problems problems;
    const Project project = readProject(file, book, problems);
    if (problems.any())
        return sayProblems(problems);
    std::cout << file << " valid: " << counted(book.tags().size(), "tag") << ", "
              << counted(project.recipes.size(), "recipe") << '\n';
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
