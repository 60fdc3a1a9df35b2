#include "commands/commands.h"

#include "commands/confirmation.h"
#include "commands/difference_table.h"
#include "commands/ending.h"
#include "commands/output_file.h"
#include "commands/progress_bar.h"
#include "common/numbers.h"
#include "common/usage_error.h"
#include "project/recipe_file.h"
#include "session/dry_run.h"
#include "session/recipe_transfer.h"
#include "session/step_until.h"
#include "session/write_report.h"

#include <iostream>
#include <memory>

namespace {

const std::vector<std::string> DIFFERENCE_HEAD = {"variable", "recipe", "PLC", "unit"};

// The recipe of that name in the project, or the file of that name.
Recipe findRecipe(const TagBook &book, const RecipeOptions &options, bool needValues)
{
    if (options.file.empty())
        throw UsageError("file is required; see fins_panel --help");
    const Recipe *named = options.project ? options.project->findRecipe(options.file) : nullptr;
    if (!named)
        return loadRecipeFile(book, options.file, needValues);
    if (needValues)
        requireValues(*named);
    return *named;
}

// The files that the recipe and its tags were read from.
std::vector<std::string> inputsOf(const RecipeOptions &options)
{
    std::vector<std::string> inputs;
    if (options.project)
        inputs = options.project->files;
    if (!options.project || !options.project->findRecipe(options.file))
        inputs.push_back(options.file);
    return inputs;
}

// The entries with the values that the latest read has brought.
std::vector<RecipeEntry> heldEntries(RecipeTransfer &transfer, const std::vector<RecipeEntry> &entries)
{
    std::vector<RecipeEntry> held = entries;
    for (RecipeEntry &entry : held)
        entry.values = transfer.values(entry.item);
    return held;
}

// The entries that the latest read has brought; names the others.
std::vector<RecipeEntry> readEntries(Runtime &runtime, const RecipeTransfer &transfer,
                                     const std::vector<RecipeEntry> &entries)
{
    std::vector<RecipeEntry> read;
    std::string refused;
    for (const RecipeEntry &entry : entries) {
        if (transfer.refused(entry.item))
            refused += " " + entryName(entry);
        else
            read.push_back(entry);
    }
    runtime.messages().finish();
    if (!refused.empty())
        std::cerr << "refused (" << entries.size() - read.size() << " of " << counted(entries.size(), "variable")
                  << "):" << refused << std::endl;
    return read;
}

using Transfer = TransferEnd (RecipeTransfer::*)(TimePoint giveUp);

// Reads or writes, with a bar where there are several blocks.
TransferEnd runWithBar(RecipeTransfer &transfer, Transfer run, const Runtime &runtime, const Recipe &recipe,
                       TimePoint end)
{
    const bool isLong = recipe.wordCount() > static_cast<std::size_t>(runtime.options().wordsPerFrame);
    ProgressBar bar(run == &RecipeTransfer::read ? "reading" : "writing", isLong && ProgressBar::isUsable());
    transfer.onProgress([&bar](std::size_t done, std::size_t total) { bar.show(done, total); });
    const TransferEnd result = (transfer.*run)(end);
    transfer.onProgress(nullptr);
    return result;
}

std::vector<std::vector<std::string>> allDifferences(const std::vector<RecipeEntry> &wanted,
                                                     const std::vector<RecipeEntry> &held)
{
    std::vector<std::vector<std::string>> rows = {DIFFERENCE_HEAD};
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        for (const std::vector<std::string> &row : differences(wanted[i], held[i].values))
            rows.push_back(row);
    }
    return rows;
}

std::size_t countDiffering(const std::vector<RecipeEntry> &wanted, const std::vector<RecipeEntry> &held)
{
    std::size_t differing = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i)
        differing += wanted[i].values == held[i].values ? 0 : 1;
    return differing;
}

void orderAll(WriteReport &report, const Recipe &recipe)
{
    for (const RecipeEntry &entry : recipe.entries)
        report.add(entryName(entry), entry.item, entry.format, entry.values);
    report.onResult([](const WriteReport::Order &order) {
        std::cout << recipeLine({order.item, *order.held, order.name, order.format}) << std::endl;
    });
}

// The differences as a table, for a terminal.
void showDifferences(const WriteReport &report)
{
    std::vector<std::vector<std::string>> rows = {DIFFERENCE_HEAD};
    for (const WriteReport::Order &order : report.orders()) {
        if (order.fate != Fate::DIFFERS)
            continue;
        for (const std::vector<std::string> &row : differences({order.item, order.data, order.name, order.format},
                                                               *order.held))
            rows.push_back(row);
    }
    if (rows.size() > 1)
        std::cerr << tableText(rows, {false, true, true, false}) << std::flush;
}

// Why the variables that were not sent were not.
std::string whyNotSent(const Runtime &runtime, TransferEnd written)
{
    if (written == TransferEnd::REFUSED)
        return "the PLC refused what was to be written before it";
    return written == TransferEnd::CUT_OFF ? "the link was lost before" : endedEarly(runtime);
}

// Reads and shows what the PLC holds. Returns why nothing is to be written, or "".
std::string askFirst(RecipeTransfer &transfer, const Runtime &runtime, const Recipe &recipe, const WriteReport &report,
                     TimePoint end)
{
    const TransferEnd read = runWithBar(transfer, &RecipeTransfer::read, runtime, recipe, end);
    if (read != TransferEnd::DONE)
        return read == TransferEnd::REFUSED ? "the PLC refuses to read what it would replace" : endedEarly(runtime);
    const auto held = [&transfer](const Item &item) { return transfer.values(item); };
    return isConfirmed(report.orders(), held) ? "" : "not confirmed";
}

int writeRecipe(Runtime &runtime, const Recipe &recipe, Millis giveUp, const RecipeOptions &options)
{
    WriteReport report(runtime);
    orderAll(report, recipe);
    const bool asTable = options.table || ProgressBar::isUsable();
    if (asTable)
        report.leaveDifferencesOut();
    RecipeTransfer transfer(runtime, recipe.entries);
    TimePoint end = Clock::now() + giveUp;
    if (options.confirm) {
        const std::string reason = askFirst(transfer, runtime, recipe, report, end);
        if (!reason.empty())
            return endUnwritten(runtime, report, reason, giveUp);
        end = Clock::now() + giveUp;
    }
    const TransferEnd written = runWithBar(transfer, &RecipeTransfer::write, runtime, recipe, end);
    const std::string reason  = whyNotSent(runtime, written);
    TransferEnd read = written == TransferEnd::NO_LINK ? written : TransferEnd::DONE;
    if (!report.settled())
        read = runWithBar(transfer, &RecipeTransfer::read, runtime, recipe, end);
    report.finish(reason);
    if (asTable)
        showDifferences(report);
    if (read == TransferEnd::NO_LINK)
        noAnswer(runtime, giveUp);
    return exitCode(report.verdict());
}

int comparisonCode(const std::vector<RecipeEntry> &wanted, const std::vector<RecipeEntry> &held)
{
    return countDiffering(wanted, held) == 0 ? EXIT_DONE : EXIT_REFUSED;
}

int showComparison(const std::vector<RecipeEntry> &wanted, const std::vector<RecipeEntry> &held)
{
    const std::size_t differing = countDiffering(wanted, held);
    if (differing == 0) {
        std::cout << "no difference: " << counted(wanted.size(), "variable") << " as in the recipe\n";
        return EXIT_DONE;
    }
    std::cout << tableText(allDifferences(wanted, held), {false, true, true, false}) << differing << " of "
              << counted(wanted.size(), "variable") << (differing == 1 ? " differs\n" : " differ\n");
    return EXIT_REFUSED;
}

// The variables for other programs: all that were read, or those that differ, and those that are refused.
std::string readLines(RecipeTransfer &transfer, const Recipe &recipe, const RecipeOptions &options)
{
    const bool compares = options.task == RecipeTask::COMPARE;
    std::vector<ReadValue> values;
    for (const RecipeEntry &entry : recipe.entries) {
        ReadValue value = {entryName(entry), entry.item, entry.format, std::nullopt, entry.values};
        if (!transfer.refused(entry.item))
            value.bytes = transfer.values(entry.item);
        if (!compares || value.bytes != value.wanted)
            values.push_back(std::move(value));
    }
    return compares ? comparedLines(options.form, values) : valueLines(options.form, values);
}

int readRecipe(Runtime &runtime, const Recipe &recipe, Millis giveUp, const RecipeOptions &options)
{
    RecipeTransfer transfer(runtime, recipe.entries);
    const TransferEnd end = runWithBar(transfer, &RecipeTransfer::read, runtime, recipe, Clock::now() + giveUp);
    if (end == TransferEnd::NO_LINK)
        return noAnswer(runtime, giveUp);
    const std::vector<RecipeEntry> wanted = readEntries(runtime, transfer, recipe.entries);
    const bool isPlain = options.form == ValueForm::PLAIN;
    if (!isPlain)
        std::cout << readLines(transfer, recipe, options);
    if (wanted.empty())
        return EXIT_REFUSED;
    const std::vector<RecipeEntry> held = heldEntries(transfer, wanted);
    int code = EXIT_DONE;
    if (options.task == RecipeTask::COMPARE)
        code = isPlain ? showComparison(wanted, held) : comparisonCode(wanted, held);
    else if (isPlain)
        giveOut(recipeFileText(options.output, held), options.output);
    return wanted.size() == recipe.entries.size() ? code : static_cast<int>(EXIT_REFUSED);
}

int showFrames(const TagBook &book, const LinkOptions &link, const Recipe &recipe)
{
    DryRun dryRun(book.library(), link);
    std::cout << recipeFileText("", recipe.entries);
    for (const std::string &line : dryRun.writeRecipe(recipe.entries))
        std::cout << "  " << line << '\n';
    std::cerr << dryRunText(link) << std::endl;
    return EXIT_DONE;
}

std::size_t valueCount(const RecipeEntry &entry)
{
    return static_cast<std::size_t>(entry.item.count / wordsPerValue(entry.format.type));
}

} // namespace

int runRecipe(const TagBook &book, const LinkOptions &link, Millis giveUp, const RecipeOptions &options)
{
    const bool isWrite = options.task == RecipeTask::WRITE;
    const Recipe recipe = findRecipe(book, options, options.task != RecipeTask::READ);
    refuseInputs(options.output, inputsOf(options));
    if (isWrite && options.dryRun)
        return showFrames(book, link, recipe);
    if (isWrite && options.confirm)
        requireTerminal();
    Runtime runtime(book.library(), link);
    return isWrite ? writeRecipe(runtime, recipe, giveUp, options)
                   : readRecipe(runtime, recipe, giveUp, options);
}

int runRecipeList(const Project *project)
{
    if (!project)
        throw UsageError("recipe list shows the recipes of a project; name it with --project FILE");
    std::vector<std::vector<std::string>> rows = {{"recipe", "variables", "words", "comment"}};
    for (const Recipe &recipe : project->recipes)
        rows.push_back({recipe.name, std::to_string(recipe.entries.size()), std::to_string(recipe.wordCount()),
                        recipe.comment});
    std::cout << tableText(rows, {false, true, true, false});
    return EXIT_DONE;
}

int runRecipeShow(const TagBook &book, const RecipeOptions &options)
{
    const Recipe recipe = findRecipe(book, options, false);
    std::vector<std::vector<std::string>> rows = {{"variable", "address", "type", "value", "unit"}};
    for (const RecipeEntry &entry : recipe.entries) {
        const std::string type  = formatText(entry.format);
        const std::string count = valueCount(entry) > 1 ? ":" + std::to_string(valueCount(entry)) : "";
        rows.push_back({entryName(entry), addressText(entry.item.regType, entry.item.address) + count,
                        type.empty() ? "word" : type,
                        entry.values.empty() ? "-" : decodeValues(entry.format, entry.values), entry.format.unit});
    }
    std::cout << tableText(rows, {false, false, false, false, false}) << counted(recipe.entries.size(), "variable")
              << ", " << counted(recipe.wordCount(), "word") << (recipe.comment.empty() ? "" : ": " + recipe.comment)
              << '\n';
    return EXIT_DONE;
}
