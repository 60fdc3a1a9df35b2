#include "cli/options.h"

#include <algorithm>
#include <cctype>

namespace {

double numberOf(const Setting &setting, const std::string &text)
{
    double number = 0;
    if (!parseSetting(setting, text, number))
        throw CLI::ValidationError(setting.option, "'" + text + "' is not a " + (setting.isWhole ? "whole " : "")
                                                       + "number from " + rangeText(setting));
    return number;
}

std::string valueName(const Setting &setting)
{
    std::string name = *setting.unit ? setting.unit : "number";
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
    return name;
}

std::string helpText(const Setting &setting, const std::string &shown)
{
    return setting.help + std::string("; ") + rangeText(setting) + (shown.empty() ? "" : ", default " + shown);
}

CLI::Option *addChecked(CLI::App &command, const Setting &setting, const std::string &shown,
                        const std::function<void(const std::string &)> &take)
{
    return command.add_option_function<std::string>(setting.option, take, helpText(setting, shown))
        ->type_name(valueName(setting));
}

} // namespace

CLI::Option *addSetting(CLI::App &command, const Setting &setting, const std::string &shown,
                        const std::function<void(double)> &set)
{
    return addChecked(command, setting, shown,
                      [&setting, set](const std::string &text) { set(numberOf(setting, text)); });
}

CLI::Option *addSettings(CLI::App &command, const Setting &setting, std::vector<qint32> &values)
{
    std::string shown;
    for (const qint32 value : values)
        shown += (shown.empty() ? "" : ",") + std::to_string(value);
    return addChecked(command, setting, shown, [&setting, &values](const std::string &text) {
        values.clear();
        for (const std::string &part : CLI::detail::split(text, ','))
            values.push_back(static_cast<qint32>(numberOf(setting, part)));
    });
}

CLI::Option *addChoice(CLI::App &command, const std::string &name, std::string &value,
                       const std::vector<std::string> &words, const std::string &help)
{
    return command.add_option(name, value, help)->check(CLI::IsMember(words))->option_text(choiceText(words));
}

std::string choiceText(const std::vector<std::string> &words)
{
    return "{" + CLI::detail::join(words, ",") + "}";
}

static void addTrace(CLI::App &command, Arguments &arguments)
{
    const std::vector<std::string> forms = {"hex", "line", "full"};
    command
        .add_flag("--trace{hex}", arguments.trace,
                  "show every frame on stderr, > sent and < received: in hex; --trace=line in words, one line each; "
                  "--trace=full with a line for each field")
        ->check(CLI::IsMember(forms))->option_text("[=" + choiceText(forms) + "]");
}

void addProjectOption(CLI::App &command, Arguments &arguments)
{
    command.add_option("-p,--project", arguments.projectFile, "project file (TOML): connection, settings, tags, recipes")
        ->type_name("FILE");
    command.add_option("--plc", arguments.plc, "which PLC of the project, where nothing else names it")->type_name("NAME");
}

void addHostOption(CLI::App &command, Arguments &arguments)
{
    command.add_option("--host", arguments.otherHost, "PLC in place of the project's")->type_name("HOST");
}

void addHost(CLI::App &command, Arguments &arguments)
{
    command.add_option("host", arguments.host, "PLC: HOST, HOST:PORT or [IPV6]:PORT; port 9600 by default")
        ->each([&arguments](const std::string &) { arguments.hasHost = true; });
}

void addLinkOptions(CLI::App &command, Arguments &arguments, const Setting &words)
{
    addHost(command, arguments);
    addProjectOption(command, arguments);
    addHostOption(command, arguments);
    addSetting(command, settings::TIMEOUT, arguments.timeoutMs);
    addSetting(command, words, arguments.link.wordsPerFrame);
    addSetting(command, settings::RETRIES, arguments.link.retries);
    addSetting(command, settings::STATION, arguments.link.station);
    addTrace(command, arguments);
    command.add_flag("--stats", arguments.stats,
                     "show at the end, on stderr: requests, replies, retries, reconnects, round trips, words, errors");
}

void addGroups(CLI::App &command, ItemChoice &choice)
{
    command.add_option("--group", choice.groups, "the tags of this group of the project, too; repeatable")
        ->allow_extra_args(false)->type_name("GROUP");
}

void addItemFile(CLI::App &command, ItemChoice &choice, const std::string &line)
{
    command.add_option("--items", choice.file,
                       "file with an " + line + " in each line, - for standard input; lines that begin with # are passed "
                       "over")
        ->type_name("FILE");
}

void addValueOptions(CLI::App &command, ValueArguments &values)
{
    std::string types = dataTypeNames();
    types.erase(std::remove(types.begin(), types.end(), ' '), types.end());
    command.add_option("--as", values.as, "data type of word items that have none behind a slash; u16 by default")
        ->option_text("{" + types + "}");
    addChoice(command, "--word-order", values.wordOrder, {"low", "high"},
              "word of a 32- or 64-bit number that comes first: low, the least significant, or high; low by default");
    addChoice(command, "--char-order", values.characterOrder, {"low", "high"},
              "byte of a word with the first character; high by default");
    addSetting(command, settings::SCALE, values.format.scale);
    addSetting(command, settings::OFFSET, values.format.offset);
    addSetting(command, settings::DECIMALS, values.format.decimals);
    command.add_option("--unit", values.format.unit, "shown behind the values");
}

std::vector<CLI::Option *> addForms(CLI::App &command, ValueForm &form)
{
    const auto add = [&](const char *name, ValueForm chosen, const char *help) {
        return command.add_flag_callback(name, [&form, chosen] { form = chosen; }, help);
    };
    CLI::Option *json  = add("--json", ValueForm::JSON, "a JSON object per line");
    CLI::Option *csv   = add("--csv", ValueForm::CSV, "comma-separated values");
    CLI::Option *value = add("--value", ValueForm::VALUE, "values alone, a line for each item");
    json->excludes(csv)->excludes(value);
    csv->excludes(value);
    return {json, csv, value};
}

void addQuiet(CLI::App &command, bool &quiet)
{
    command.add_flag("-q,--quiet", quiet, "say nothing of connections made, missed and lost; errors and what became of "
                                          "writes are said all the same");
}

void addDryRun(CLI::App &command, bool &dryRun)
{
    command.add_flag("--dry-run", dryRun, "show register, wire address and bytes of each frame, send nothing");
}

void addConfirm(CLI::App &command, bool &confirm)
{
    command.add_flag("--confirm", confirm, "ask before anything is written");
}

void addModeChange(CLI::App &command, Arguments &arguments)
{
    command.add_flag("--allow-mode-change", arguments.link.allowModeChange,
                     "ask the PLC for MONITOR mode, in which its program runs, when a write needs it");
}

void addKeepGoing(CLI::App &command, bool &keepGoing)
{
    command.add_flag("--keep-going", keepGoing,
                     "go on with the other writes when one is refused or its fate is unknown");
}
