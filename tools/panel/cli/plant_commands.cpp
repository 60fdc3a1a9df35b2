#include "cli/plant_commands.h"

#include "cli/options.h"
#include "cli/plant_arguments.h"
#include "log/units.h"

#include <algorithm>

namespace {

template <typename Value, typename Parse>
CLI::Option *addUnit(CLI::App &command, const char *name, Value &value, Parse parse, const char *form,
                     const std::string &help)
{
    return command.add_option_function<std::string>(name, [name, &value, parse, form](const std::string &text) {
        const auto parsed = parse(text);
        if (!parsed)
            throw CLI::ValidationError(name, "'" + text + "' is not " + form);
        value = *parsed;
    }, help);
}

const char A_TIME[] = "a time such as 100ms, 5s, 1min, 1h or 1d";

void addLogRows(CLI::App &command, LogOptions &log)
{
    CLI::Option *every = addUnit(command, "--every", log.every, parseTime, A_TIME,
                                 "a row at each whole multiple of this time in UTC; default 1s")->type_name("TIME");
    CLI::Option *onChange = command.add_flag("--on-change", log.onChange,
                                             "a row for each change of a value or of its quality instead");
    every->excludes(onChange);
    addSetting(command, settings::DEADBAND, log.deadband)->needs(onChange);
    addSetting(command, settings::LOG_FOR, log.forSeconds);
    CLI::Option *csv  = command.add_flag("--csv", "comma-separated values, a column for each value and one for its "
                                                  "quality, which is what there is by default");
    CLI::Option *json = command.add_flag_callback("--json", [&log] { log.form = LogForm::JSON; },
                                                  "a JSON object per row");
    CLI::Option *influx = command.add_flag_callback("--influx", [&log] { log.form = LogForm::INFLUX; },
                                                    "Influx line protocol, a line for each value");
    csv->excludes(json)->excludes(influx);
    json->excludes(influx);
    command.add_option("--measurement", log.measurement, "of the line protocol; default fins")
        ->needs(influx)->type_name("NAME")->check([](const std::string &name) {
            const bool isSound = !name.empty() && name[0] != '#' && name.find('\\') == std::string::npos
                              && std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < ' '; });
            return isSound ? "" : "'" + name + "' is not a measurement; use letters, digits and such";
        });
}

void addLogFile(CLI::App &command, LogOptions &log)
{
    CLI::Option *output = command.add_option("--output", log.output, "file for the rows; standard output by default")
                              ->type_name("FILE");
    addUnit(command, "--rotate-size", log.rotation.size, parseSize, "a size such as 500k, 10M or 1G",
            "close the file before it gets larger, and begin it anew")->type_name("SIZE")->needs(output);
    addUnit(command, "--rotate-every", log.rotation.every, parseTime, A_TIME,
            "the same at each whole multiple of this time in UTC")->type_name("TIME")->needs(output);
    command.add_flag("--gzip", log.rotation.gzip, "compress the closed files")->needs(output);
    addSetting(command, settings::KEEP, log.rotation.keep)->needs(output);
}

} // namespace

void addLog(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("log", "Log values of one or several PLCs, at a fixed period or on change");
    addPlantOptions(*command, arguments, "items to log, names of tags or patterns such as 'press.*' for them; all tags of "
                                         "the project by default");
    addLogRows(*command, arguments.log);
    addLogFile(*command, arguments.log);
    command->callback([&arguments] {
        arguments.action = [&arguments](const DriverLibrary &) { return runLog(arguments.plcs, arguments.log); };
    });
}
