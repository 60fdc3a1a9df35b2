#include "commands/commands.h"

#include "commands/exit_codes.h"

#include <iostream>

int runComplete(const TagBook &book, const Project &project, bool recipes)
{
    if (recipes) {
        for (const Recipe &recipe : project.recipes)
            std::cout << recipe.name << '\n';
        return EXIT_DONE;
    }
    for (const Tag &tag : book.tags())
        std::cout << tag.name << '\n';
    return EXIT_DONE;
}
