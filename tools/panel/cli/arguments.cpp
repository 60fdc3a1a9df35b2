#include "cli/arguments.h"

#include "common/suggestion.h"
#include "common/usage_error.h"
#include "link/host_port.h"
#include "project/settings.h"

#include <algorithm>
#include <optional>

namespace {

// A setting of the project counts where its option was not given.
template <typename Value>
void prefer(CLI::App &command, const Setting &setting, const std::optional<long> &project, Value &value)
{
    const CLI::Option *given = command.get_option_no_throw(setting.option);
    if (project && given && given->count() == 0)
        value = static_cast<Value>(*project);
}

// Where the PLC is known without it, the first positional argument is no host but what comes behind it.
void placeHost(CLI::App &command, Arguments &arguments)
{
    const std::string known = arguments.otherHost.empty() ? arguments.project.host : arguments.otherHost;
    if (!command.get_option_no_throw("host") || known.empty())
        return;
    if (arguments.hasHost && command.get_option_no_throw("file")) {
        if (!arguments.recipe.file.empty())
            throw UsageError("'" + arguments.recipe.file + "' is one argument too many: the PLC is " + known
                             + "; give another one with --host");
        arguments.recipe.file = arguments.host;
    } else if (arguments.hasHost) {
        std::vector<std::string> &items = arguments.choice.items;
        items.insert(items.begin(), arguments.host);
    }
    arguments.host    = known;
    arguments.hasHost = true;
}

// Where groups can be chosen, no choice is that of all tags.
void requireItems(const CLI::App &command, const Arguments &arguments)
{
    if (!command.get_option_no_throw("items") || !arguments.choice.isEmpty())
        return;
    const bool takesAll = command.get_option_no_throw("--group") && arguments.book && !arguments.book->tags().empty();
    if (!takesAll)
        throw CLI::RequiredError("items");
    if (arguments.project.host.empty() && arguments.otherHost.empty() && arguments.book->find(arguments.host))
        throw UsageError("'" + arguments.host + "' is a tag, and the PLC is missing; give HOST before it, or the project "
                         "its host");
}

void requirePositionals(CLI::App &command, const Arguments &arguments)
{
    if (command.get_option_no_throw("host") && !arguments.hasHost)
        throw CLI::RequiredError("host");
    requireItems(command, arguments);
    if (command.get_option_no_throw("conditions") && arguments.choice.items.empty())
        throw CLI::RequiredError("conditions");
    if (command.get_option_no_throw("host") && command.get_option_no_throw("file") && arguments.recipe.file.empty())
        throw CLI::RequiredError("file");
}

std::vector<std::string> namesOf(const std::vector<ProjectPlc> &plcs)
{
    std::vector<std::string> names;
    names.reserve(plcs.size());
    for (const ProjectPlc &plc : plcs)
        names.push_back(plc.project.plc);
    return names;
}

// The only PLC, or the one that is named by what is to be read, written or listed of it.
ProjectPlc &chosenPlc(std::vector<ProjectPlc> &plcs, const Arguments &arguments)
{
    if (plcs.size() == 1)
        return plcs.front();
    std::vector<std::string> words = {arguments.host, arguments.recipe.file};
    for (const auto *more : {&arguments.choice.items, &arguments.watch.writes})
        words.insert(words.end(), more->begin(), more->end());
    for (const std::string &word : words) {
        const auto owner = std::find_if(plcs.begin(), plcs.end(), [&](const ProjectPlc &plc) {
            return word.compare(0, plc.tags.plc().size(), plc.tags.plc()) == 0 || plc.project.findRecipe(word);
        });
        if (owner != plcs.end())
            return *owner;
    }
    const std::vector<std::string> names = namesOf(plcs);
    throw UsageError(arguments.projectFile + " has several PLCs: " + CLI::detail::join(names, ", ")
                     + "; name one with --plc, or what is to be worked on, such as " + names.front() + ".DM:0");
}

// The tags and recipes of all PLCs, to be listed.
ProjectPlc &joinedPlcs(std::vector<ProjectPlc> &plcs)
{
    ProjectPlc &all = plcs.front();
    for (std::size_t i = 1; i < plcs.size(); ++i) {
        for (const Tag &tag : plcs[i].tags.tags())
            all.tags.add(tag);
        std::move(plcs[i].project.recipes.begin(), plcs[i].project.recipes.end(), std::back_inserter(all.project.recipes));
    }
    return all;
}

void readProjectFile(CLI::App &command, Arguments &arguments)
{
    std::vector<ProjectPlc> plcs = projectPlcs(arguments);
    const bool isList = command.get_name() == "list" || command.get_name() == "complete";
    ProjectPlc &plc = isList ? joinedPlcs(plcs) : chosenPlc(plcs, arguments);
    arguments.project        = std::move(plc.project);
    *arguments.book          = std::move(plc.tags);
    arguments.recipe.project = &arguments.project;
}

} // namespace

std::vector<ProjectPlc> projectPlcs(const Arguments &arguments)
{
    Problems problems;
    std::vector<ProjectPlc> plcs = readProjectPlcs(arguments.projectFile, *arguments.library, problems);
    problems.refuse("; see fins_panel check-project " + arguments.projectFile);
    if (arguments.plc.empty())
        return plcs;
    for (ProjectPlc &plc : plcs) {
        if (plc.project.plc == arguments.plc)
            return {std::move(plc)};
    }
    throw UsageError("there is no PLC '" + arguments.plc + "' in " + arguments.projectFile
                     + hintAt(nearestWord(arguments.plc, namesOf(plcs))));
}

void applyProject(CLI::App &command, Arguments &arguments)
{
    if (arguments.projectFile.empty())
        return;
    readProjectFile(command, arguments);
    const Project &project = arguments.project;
    prefer(command, settings::TIMEOUT, project.timeoutMs, arguments.timeoutMs);
    prefer(command, settings::INTERVAL, project.intervalMs, arguments.intervalMs);
    prefer(command, settings::WRITE_WORDS, project.wordsPerFrame, arguments.link.wordsPerFrame);
    prefer(command, settings::RETRIES, project.retries, arguments.link.retries);
    prefer(command, settings::STATION, project.station, arguments.link.station);
    arguments.link.allowModeChange = arguments.link.allowModeChange || project.allowModeChange;
}

void placeArguments(CLI::App &command, Arguments &arguments)
{
    placeHost(command, arguments);
    requirePositionals(command, arguments);
    if (arguments.hasHost)
        parseHost(arguments.host, arguments.link.host, arguments.link.port);
}

void setValueDefaults(CLI::App &command, Arguments &arguments)
{
    ValueArguments &values = arguments.values;
    OrderDefaults orders   = arguments.project.orders;
    parseOrder(values.wordOrder, orders.words);
    parseOrder(values.characterOrder, orders.characters);
    ValueFormat format = values.format;
    if (!values.as.empty()) {
        const ValueFormat typed = parseFormat(values.as, orders);
        format.type     = typed.type;
        format.order    = typed.order;
        format.typeName = typed.typeName;
    }
    for (const Setting &setting : {settings::SCALE, settings::OFFSET, settings::DECIMALS}) {
        const CLI::Option *option = command.get_option_no_throw(setting.option);
        if (option && option->count() > 0 && !isNumeric(format.type))
            throw UsageError(std::string(setting.option) + " is for numbers; leave it out, or change --as " + values.as);
    }
    arguments.book->setDefaults(format, orders);
}
