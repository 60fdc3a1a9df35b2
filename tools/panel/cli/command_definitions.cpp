#include "cli/arguments.h"

#include "cli/options.h"
#include "cli/plant_arguments.h"
#include "cli/plant_commands.h"
#include "cli/plc_definitions.h"
#include "cli/publish_definition.h"
#include "common/usage_error.h"

namespace {

Millis millis(double seconds)
{
    return std::chrono::duration_cast<Millis>(std::chrono::duration<double>(seconds));
}

// What is done once all that was given is settled.
template <typename Action>
void onCommand(CLI::App &command, Arguments &arguments, Action action)
{
    command.callback([&arguments, action] { arguments.action = action; });
}

// ---- Commands with a link ----------------------------------------------------------------------------------------

void addLink(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("link", "Try the link to a PLC step by step, and say what is wrong with it");
    addLinkOptions(*command, arguments, settings::READ_WORDS);
    addSetting(*command, settings::ROUND_TRIPS, arguments.roundTrips);
    onCommand(*command, arguments, [&arguments](const DriverLibrary &library) {
        return runLink(library, arguments.link, arguments.roundTrips);
    });
}

int watchSeveral(const CLI::App &command, const Arguments &arguments)
{
    if (!arguments.watch.writes.empty())
        throw UsageError("--write is for one PLC; use fins_panel write, or choose one PLC with --plc");
    return runPlantWatch(watchedPlcs(command, arguments, arguments.several), arguments.projectFile, arguments.watch);
}

void addWatchForm(CLI::App &command, Arguments &arguments)
{
    CLI::Option *lines = command.add_flag("--lines", "lines on a terminal too, in place of the live table");
    CLI::Option *json  = command.add_flag("--json", "a JSON object per line");
    CLI::Option *csv   = command.add_flag("--csv", "comma-separated values");
    lines->excludes(json)->excludes(csv);
    json->excludes(csv);
    onCommand(command, arguments, [&command, &arguments, lines, json, csv](const DriverLibrary &) {
        if (*lines)
            arguments.watch.format = LineFormat::PLAIN;
        if (*json || *csv)
            arguments.watch.format = *json ? LineFormat::JSON : LineFormat::CSV;
        arguments.link.interval     = Millis(arguments.intervalMs);
        arguments.link.refusedPause = millis(arguments.retryRefused);
        arguments.watch.choice      = arguments.choice;
        if (!arguments.several.empty())
            return watchSeveral(command, arguments);
        return runWatch(*arguments.book, arguments.link, arguments.watch);
    });
}

void addWatch(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("watch",
                                           "Watch values: a live table on a terminal, else a line for every change");
    addLinkOptions(*command, arguments, settings::READ_WORDS);
    addQuiet(*command, arguments.link.quiet);
    command->add_option("items", arguments.choice.items,
                        "items to watch, names of tags or patterns such as 'press.*' for them; all tags of the project "
                        "by default; a line is time (UTC), item, old and new value, '-' being the old one of a first "
                        "value");
    addGroups(*command, arguments.choice);
    addItemFile(*command, arguments.choice, "item");
    addSetting(*command, settings::WATCH_FOR, arguments.watch.forSeconds);
    addSetting(*command, settings::CHANGES, arguments.watch.changes);
    addSetting(*command, settings::INTERVAL, arguments.intervalMs);
    addSetting(*command, settings::RETRY_REFUSED, arguments.retryRefused);
    command->add_option("--write", arguments.watch.writes,
                        "write this once when the link is up; repeatable")
        ->allow_extra_args(false)->type_name("ITEM=VALUE");
    addModeChange(*command, arguments);
    addKeepGoing(*command, arguments.watch.keepGoing);
    arguments.severalCommands.insert(command);
    addWatchForm(*command, arguments);
}

void addBench(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("bench", "Measure the refresh time of a poll for several block sizes");
    addLinkOptions(*command, arguments, settings::READ_WORDS);
    addQuiet(*command, arguments.link.quiet);
    addSetting(*command, settings::GIVE_UP, arguments.giveUp);
    command->add_option("polled", arguments.choice.items, "items to poll; a block of DM from 0 on by default");
    addSetting(*command, settings::BENCH_WORDS, arguments.bench.words);
    addSettings(*command, settings::BENCH_SIZES, arguments.bench.sizes);
    addSetting(*command, settings::BENCH_FOR, arguments.bench.forSeconds);
    onCommand(*command, arguments, [&arguments](const DriverLibrary &) {
        arguments.bench.items = arguments.choice.items;
        return runBench(*arguments.book, arguments.link, millis(arguments.giveUp), arguments.bench);
    });
}

void addWait(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("wait", "Wait until values are as asked");
    arguments.severalCommands.insert(command);
    addLinkOptions(*command, arguments, settings::READ_WORDS);
    addQuiet(*command, arguments.link.quiet);
    command->add_option("conditions", arguments.choice.items,
                        "ITEM=VALUE, ITEM!=VALUE, or with >, >=, < or <= in its place; all have to hold at once");
    command->add_flag("--any", arguments.wait.any, "one of them is enough");
    addSetting(*command, settings::WAIT_FOR, arguments.wait.forSeconds);
    addSetting(*command, settings::INTERVAL, arguments.intervalMs);
    onCommand(*command, arguments, [&arguments, command](const DriverLibrary &) {
        arguments.link.interval   = Millis(arguments.intervalMs);
        arguments.wait.conditions = arguments.choice.items;
        return runWait(sitesOf(*command, arguments), arguments.wait);
    });
}

void addRead(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("read", "Read items once: ITEM = VALUE ...");
    arguments.severalCommands.insert(command);
    addLinkOptions(*command, arguments, settings::READ_WORDS);
    addQuiet(*command, arguments.link.quiet);
    addSetting(*command, settings::GIVE_UP, arguments.giveUp);
    command->add_option("items", arguments.choice.items,
                        "items to read, names of tags or patterns such as 'press.*' for them; all tags of the project by "
                        "default");
    addGroups(*command, arguments.choice);
    addItemFile(*command, arguments.choice, "item");
    addForms(*command, arguments.form);
    addValueOptions(*command, arguments.values);
    onCommand(*command, arguments, [&arguments, command](const DriverLibrary &) {
        return runRead(sitesOf(*command, arguments), millis(arguments.giveUp), arguments.choice, arguments.form);
    });
}

void addWrite(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("write",
                                           "Write values and read them back: ITEM = VALUE ... as the PLC holds it");
    arguments.severalCommands.insert(command);
    addLinkOptions(*command, arguments, settings::WRITE_WORDS);
    addQuiet(*command, arguments.link.quiet);
    addSetting(*command, settings::GIVE_UP, arguments.giveUp);
    command->add_option("items", arguments.choice.items,
                        "ITEM=VALUE[,VALUE...]; words -32768 to 65535 or 0x0 to 0xFFFF, bits 0 or 1");
    addItemFile(*command, arguments.choice, "ITEM=VALUE");
    addValueOptions(*command, arguments.values);
    addDryRun(*command, arguments.write.dryRun);
    addConfirm(*command, arguments.write.confirm);
    addModeChange(*command, arguments);
    addKeepGoing(*command, arguments.write.keepGoing);
    onCommand(*command, arguments, [&arguments, command](const DriverLibrary &) {
        arguments.write.choice = arguments.choice;
        return runWrite(sitesOf(*command, arguments), millis(arguments.giveUp), arguments.write);
    });
}

// ---- Recipes -----------------------------------------------------------------------------------------------------

void addRecipeTransfer(CLI::App &recipe, Arguments &arguments, RecipeTask task, const char *name, const char *help)
{
    CLI::App *command = recipe.add_subcommand(name, help);
    addLinkOptions(*command, arguments, task == RecipeTask::WRITE ? settings::WRITE_WORDS : settings::READ_WORDS);
    addQuiet(*command, arguments.link.quiet);
    addSetting(*command, settings::GIVE_UP, arguments.giveUp);
    command->add_option("file", arguments.recipe.file, "recipe file (text, .toml or .csv), or a recipe of the project");
    std::vector<CLI::Option *> forms;
    if (task != RecipeTask::WRITE)
        forms = addForms(*command, arguments.recipe.form);
    if (task == RecipeTask::READ) {
        CLI::Option *output = command->add_option("--output", arguments.recipe.output,
                                                  "file for the values, in the form of its ending .toml, .csv or any "
                                                  "other; standard output by default")
                                  ->type_name("FILE");
        for (CLI::Option *form : forms)
            output->excludes(form);
    }
    if (task == RecipeTask::WRITE) {
        addDryRun(*command, arguments.recipe.dryRun);
        addConfirm(*command, arguments.recipe.confirm);
        addModeChange(*command, arguments);
        command->add_flag("--table", arguments.recipe.table, "differences as a table, as on a terminal");
    }
    onCommand(*command, arguments, [&arguments, task](const DriverLibrary &) {
        arguments.recipe.task = task;
        return runRecipe(*arguments.book, arguments.link, millis(arguments.giveUp), arguments.recipe);
    });
}

void addRecipe(CLI::App &app, Arguments &arguments)
{
    CLI::App *recipe = app.add_subcommand("recipe", "List, show, read, write and compare recipes");
    recipe->require_subcommand(1);
    addRecipeTransfer(*recipe, arguments, RecipeTask::READ, "read",
                      "Read the variables of a recipe; its values may be left out");
    addRecipeTransfer(*recipe, arguments, RecipeTask::WRITE, "write", "Write a recipe, read it back and compare");
    addRecipeTransfer(*recipe, arguments, RecipeTask::COMPARE, "compare", "Show where the PLC differs from a recipe");
    CLI::App *list = recipe->add_subcommand("list", "List the recipes of the project");
    addProjectOption(*list, arguments);
    onCommand(*list, arguments, [&arguments](const DriverLibrary &) { return runRecipeList(arguments.recipe.project); });
    CLI::App *show = recipe->add_subcommand("show", "Show the variables and values of a recipe");
    addProjectOption(*show, arguments);
    show->add_option("file", arguments.recipe.file, "recipe file, or a recipe of the project")->required();
    onCommand(*show, arguments, [&arguments](const DriverLibrary &) {
        return runRecipeShow(*arguments.book, arguments.recipe);
    });
}

// ---- Commands without a link -------------------------------------------------------------------------------------

void addFiles(CLI::App &app, Arguments &arguments)
{
    CLI::App *check = app.add_subcommand("check-project", "Check a project file without a PLC, and show every error");
    check->add_option("file", arguments.file, "project file (TOML)")->required();
    onCommand(*check, arguments, [&arguments](const DriverLibrary &library) {
        return runCheckProject(library, arguments.file);
    });
    CLI::App *import = app.add_subcommand("import-tags", "Turn a list of tags or a table of symbols into the TOML of a "
                                                         "project file");
    import
        ->add_option("file", arguments.file,
                     "CSV file; columns name, type, address, and as needed count, data, word_order, char_order, scale, "
                     "offset, decimals, min, max, deadband, unit, access, comment, screen, group; or a table of symbols as a "
                     "programming tool exports it, with names, types, addresses and comments: then what cannot be taken "
                     "is listed, and the exit code is 1")
        ->required();
    import->add_option("--output", arguments.output, "file for the tags; standard output by default")
        ->type_name("FILE");
    onCommand(*import, arguments, [&arguments](const DriverLibrary &library) {
        return runImportTags(library, arguments.file, arguments.output);
    });
}

void addCheck(CLI::App &app, Arguments &arguments)
{
    CLI::App *check = app.add_subcommand("check", "Check items without a PLC");
    addProjectOption(*check, arguments);
    check->add_option("items", arguments.choice.items, "items to check");
    addValueOptions(*check, arguments.values);
    onCommand(*check, arguments, [&arguments](const DriverLibrary &) {
        return runCheck(*arguments.book, arguments.choice.items);
    });
}

void addLists(CLI::App &app, Arguments &arguments)
{
    CLI::App *types = app.add_subcommand("types", "List the register types with their ranges and notations");
    onCommand(*types, arguments, runTypes);
    CLI::App *copies = app.add_subcommand("copies", "List the addresses of several copies of a variable");
    copies->add_option("item", arguments.copiesItem, "TYPE:ADDRESS of the first copy")->required();
    addSetting(*copies, settings::COPIES, arguments.copies)->required();
    addSetting(*copies, settings::STEP, arguments.step);
    onCommand(*copies, arguments, [&arguments](const DriverLibrary &library) {
        return runCopies(library, arguments.copiesItem, arguments.copies, arguments.step);
    });
}

void addCompletion(CLI::App &app, Arguments &arguments)
{
    CLI::App *complete = app.add_subcommand("complete", "List names of a project, for the completion of a shell");
    complete->group(""); // not for people, and in no help
    addProjectOption(*complete, arguments);
    complete->add_option("kind", arguments.completed)->required()->check(CLI::IsMember({"tags", "recipes", "groups"}));
    onCommand(*complete, arguments, [&arguments](const DriverLibrary &) {
        return runComplete(*arguments.book, arguments.project, arguments.completed);
    });
}

} // namespace

void addCommands(CLI::App &app, Arguments &arguments)
{
    addProjectOption(app, arguments);
    addHostOption(app, arguments);
    addLink(app, arguments);
    addWatch(app, arguments);
    addRead(app, arguments);
    addWrite(app, arguments);
    addWait(app, arguments);
    addLog(app, arguments);
    addRecipe(app, arguments);
    addPlc(app, arguments);
    addPublish(app, arguments);
    addFiles(app, arguments);
    addBench(app, arguments);
    addCheck(app, arguments);
    addLists(app, arguments);
    addCompletion(app, arguments);
}
