#include "cli/plc_definitions.h"

#include "cli/options.h"
#include "common/suggestion.h"
#include "common/usage_error.h"

#include <algorithm>

namespace {

const std::vector<std::string> MODES = {"run", "monitor", "program"};

void requireMode(const std::string &mode)
{
    if (!mode.empty() && std::find(MODES.begin(), MODES.end(), mode) == MODES.end())
        throw UsageError("'" + mode + "' is no operating mode; the modes are " + CLI::detail::join(MODES, ", ")
                         + hintAt(nearestWord(mode, MODES)));
}

void addYes(CLI::App &command, Arguments &arguments)
{
    command.add_flag("--yes", arguments.plcTask.yes, "ask nobody before the PLC is changed");
}

CLI::App &addTask(CLI::App &plc, Arguments &arguments, PlcTask task, const char *name, const char *help)
{
    CLI::App *command = plc.add_subcommand(name, help);
    addLinkOptions(*command, arguments, settings::READ_WORDS);
    addQuiet(*command, arguments.link.quiet);
    addSetting(*command, settings::GIVE_UP, arguments.giveUp);
    command->add_flag("--json", arguments.plcTask.json, "a JSON object in one line");
    command->callback([&arguments, task] {
        arguments.action = [&arguments, task](const DriverLibrary &library) {
            requireMode(arguments.plcTask.mode);
            arguments.plcTask.task = task;
            const std::chrono::duration<double> giveUp(arguments.giveUp);
            return runPlc(library, arguments.link, std::chrono::duration_cast<Millis>(giveUp), arguments.plcTask);
        };
    });
    return *command;
}

} // namespace

void addPlc(CLI::App &app, Arguments &arguments)
{
    CLI::App *plc = app.add_subcommand("plc", "Ask a PLC for its model, mode, errors, clock and cycle time");
    plc->require_subcommand(1);
    addTask(*plc, arguments, PlcTask::INFO, "info", "Show model, version and memory");
    CLI::App &errors = addTask(*plc, arguments, PlcTask::ERRORS, "errors", "Show the errors and the error log");
    errors.add_flag("--clear", arguments.plcTask.clears, "clear the errors, and show what is left");
    addYes(errors, arguments);
    CLI::App &clock = addTask(*plc, arguments, PlcTask::CLOCK, "clock", "Show the clock, and how far it is off");
    clock.add_flag("--set", arguments.plcTask.sets, "set it to this computer's time");
    addYes(clock, arguments);
    addTask(*plc, arguments, PlcTask::CYCLE, "cycle", "Show the cycle time: average, longest and shortest");
    CLI::App &mode = addTask(*plc, arguments, PlcTask::MODE, "mode", "Show the operating mode, or change it");
    mode.add_option("new_mode", arguments.plcTask.mode, "the mode to change to: run, monitor or program");
    addYes(mode, arguments);
}
