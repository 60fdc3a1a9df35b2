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
