#include "cli/command_options.h"

#include "cli/options.h"

#include <algorithm>

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
    command.add_option("--project", arguments.projectFile, "project file (TOML): connection, settings, tags, recipes")
        ->type_name("FILE");
}

void addHostOption(CLI::App &command, Arguments &arguments)
{
    command.add_option("--host", arguments.otherHost, "PLC in place of the project's")->type_name("HOST");
}

void addLinkOptions(CLI::App &command, Arguments &arguments, const Setting &words)
{
    command.add_option("host", arguments.host, "PLC: HOST, HOST:PORT or [IPV6]:PORT; port 9600 by default")
        ->each([&arguments](const std::string &) { arguments.hasHost = true; });
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

void addItems(CLI::App &command, std::vector<std::string> &items, const char *help)
{
    command.add_option("items", items, help);
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
