#ifndef PANEL_CLI_OPTIONS_H
#define PANEL_CLI_OPTIONS_H

#include "cli/arguments.h"
#include "project/settings.h"

// Options of the command line whose values are checked before anything else happens: numbers with their ranges, and
// words of a list.

/// An option, or a positional argument, for the number. `shown` is its default, or empty.
CLI::Option *addSetting(CLI::App &command, const Setting &setting, const std::string &shown,
                        const std::function<void(double)> &set);

template <typename Value>
CLI::Option *addSetting(CLI::App &command, const Setting &setting, Value &value)
{
    const auto initial = static_cast<double>(value);
    return addSetting(command, setting, isSet(setting, initial) ? plainNumber(initial) : "",
                      [&value](double number) { value = static_cast<Value>(number); });
}

/// An option for several such numbers, separated by commas.
CLI::Option *addSettings(CLI::App &command, const Setting &setting, std::vector<qint32> &values);

/// An option for one word of the list.
CLI::Option *addChoice(CLI::App &command, const std::string &name, std::string &value,
                       const std::vector<std::string> &words, const std::string &help);

/// "{low,high}"
std::string choiceText(const std::vector<std::string> &words);

// The options that several commands have.

void addProjectOption(CLI::App &command, Arguments &arguments);
void addHostOption(CLI::App &command, Arguments &arguments);

/// The positional argument HOST.
void addHost(CLI::App &command, Arguments &arguments);

/// HOST and all that belongs to a link; `words` is the limit of one request.
void addLinkOptions(CLI::App &command, Arguments &arguments, const Setting &words);

void addGroups(CLI::App &command, ItemChoice &choice);

/// `line` is what a line of the file holds.
void addItemFile(CLI::App &command, ItemChoice &choice, const std::string &line);

/// How values are shown and taken.
void addValueOptions(CLI::App &command, ValueArguments &values);

/// The forms for other programs; each excludes the others. Returns the options.
std::vector<CLI::Option *> addForms(CLI::App &command, ValueForm &form);

void addQuiet(CLI::App &command, bool &quiet);
void addDryRun(CLI::App &command, bool &dryRun);
void addConfirm(CLI::App &command, bool &confirm);
void addModeChange(CLI::App &command, Arguments &arguments);
void addKeepGoing(CLI::App &command, bool &keepGoing);

#endif
