#include "commands.h"

#include "exit_codes.h"
#include "fresh_values.h"
#include "recipe_transfer.h"
#include "values.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

static std::vector<RecipeEntry> loadRecipe(const DriverLibrary &library, const RecipeOptions &options)
{
    std::ifstream file(options.file);
    if (!file)
        throw UsageError(options.file + ": " + std::strerror(errno));
    return readRecipe(library, file, options.file, options.write);
}

static std::string recipeText(RecipeTransfer &transfer, const std::vector<RecipeEntry> &entries)
{
    std::string text;
    for (const RecipeEntry &entry : entries)
        text += recipeLine({entry.item, transfer.values(entry.item)}) + '\n';
    return text;
}

static int compare(RecipeTransfer &transfer, const std::vector<RecipeEntry> &entries)
{
    int code = EXIT_DONE;
    for (const RecipeEntry &entry : entries) {
        const std::vector<quint8> held = transfer.values(entry.item);
        if (held == entry.values)
            continue;
        code = EXIT_REFUSED;
        std::cerr << "differs: " << itemText(entry.item) << " was to be " << valuesText(entry.values, false)
                  << ", the PLC holds " << valuesText(held, false) << std::endl;
    }
    return code;
}

static int writeRecipe(Runtime &runtime, const std::vector<RecipeEntry> &entries, Millis giveUp)
{
    const TimePoint end = Clock::now() + giveUp;
    RecipeTransfer transfer(runtime, entries);
    const TransferEnd written = transfer.write(end);
    if (written == TransferEnd::CUT_OFF)
        std::cerr << "unconfirmed: the recipe write was cut off; it will be read back" << std::endl;
    if (written == TransferEnd::NO_LINK) {
        std::cerr << "unconfirmed: the recipe write" << std::endl;
        return noAnswer(runtime, giveUp);
    }
    const TransferEnd read = transfer.read(end);
    if (read == TransferEnd::NO_LINK)
        return noAnswer(runtime, giveUp);
    if (read == TransferEnd::REFUSED)
        return EXIT_REFUSED;
    std::cout << recipeText(transfer, entries);
    const int code = compare(transfer, entries);
    return written == TransferEnd::REFUSED ? EXIT_REFUSED : code;
}

static int readRecipeValues(Runtime &runtime, const std::vector<RecipeEntry> &entries, Millis giveUp,
                            const std::string &output)
{
    RecipeTransfer transfer(runtime, entries);
    const TransferEnd end = transfer.read(Clock::now() + giveUp);
    if (end == TransferEnd::NO_LINK)
        return noAnswer(runtime, giveUp);
    if (end == TransferEnd::REFUSED)
        return EXIT_REFUSED;
    if (output.empty()) {
        std::cout << recipeText(transfer, entries);
        return EXIT_DONE;
    }
    std::ofstream file(output);
    file << recipeText(transfer, entries) << std::flush;
    if (!file)
        throw UsageError(output + ": cannot be written");
    return EXIT_DONE;
}

int runRecipe(const DriverLibrary &library, const LinkOptions &link, Millis giveUp, const RecipeOptions &options)
{
    const std::vector<RecipeEntry> entries = loadRecipe(library, options);
    Runtime runtime(library, link);
    return options.write ? writeRecipe(runtime, entries, giveUp)
                         : readRecipeValues(runtime, entries, giveUp, options.output);
}
