#include "cli/plant_arguments.h"

#include "cli/options.h"
#include "plc/setup.h"

#include <set>

void addPlantOptions(CLI::App &command, Arguments &arguments, const std::string &items)
{
    addHost(command, arguments);
    addProjectOption(command, arguments);
    addHostOption(command, arguments);
    addQuiet(command, arguments.link.quiet);
    command.add_option("items", arguments.choice.items, items);
    addGroups(command, arguments.choice);
    addItemFile(command, arguments.choice, "item");
    addSetting(command, settings::TIMEOUT, arguments.timeoutMs);
    addSetting(command, settings::INTERVAL, arguments.intervalMs);
    addSetting(command, settings::WRITE_WORDS, arguments.link.wordsPerFrame);
    addSetting(command, settings::RETRIES, arguments.link.retries);
    addSetting(command, settings::STATION, arguments.link.station);
    addSetting(command, settings::RETRY_REFUSED, arguments.retryRefused);
    arguments.plantCommands.insert(&command);
}

bool isForPlant(const CLI::App &command, const Arguments &arguments)
{
    return arguments.plantCommands.count(&command) > 0;
}

namespace {

// As for every other command.
void placeOnly(CLI::App &command, Arguments &arguments, ProjectPlc &plc)
{
    arguments.project = plc.project;
    *arguments.book   = plc.tags;
    placeArguments(command, arguments);
    plc.project.host  = arguments.host;
}

std::vector<ProjectPlc> placedPlcs(CLI::App &command, Arguments &arguments)
{
    if (arguments.projectFile.empty()) {
        Project project;
        project.host = arguments.host;
        return {{project, *arguments.book}};
    }
    std::vector<ProjectPlc> plcs = projectPlcs(arguments);
    if (plcs.size() == 1)
        placeOnly(command, arguments, plcs.front());
    else
        placeItems(arguments);
    return plcs;
}

fins::Config configOf(const CLI::App &command, const Arguments &arguments, const ProjectPlc &plc)
{
    fins::Config config    = fins::configOf(plc);
    const Project &project = plc.project;
    const auto settle = [&command](const Setting &setting, const std::optional<long> &own, auto given, auto &to) {
        const bool isGiven = command.get_option(setting.option)->count() > 0;
        to = std::decay_t<decltype(to)>(own && !isGiven ? static_cast<decltype(given)>(*own) : given);
    };
    settle(settings::TIMEOUT, project.timeoutMs, arguments.timeoutMs, config.timeout);
    settle(settings::INTERVAL, project.intervalMs, arguments.intervalMs, config.interval);
    settle(settings::WRITE_WORDS, project.wordsPerFrame, arguments.link.wordsPerFrame, config.wordsPerFrame);
    settle(settings::RETRIES, project.retries, arguments.link.retries, config.retries);
    settle(settings::STATION, project.station, arguments.link.station, config.station);
    config.retryRefused    = Millis(static_cast<Millis::rep>(arguments.retryRefused * 1000));
    config.allowModeChange = config.allowModeChange || arguments.link.allowModeChange;
    config.quiet           = arguments.link.quiet;
    config.library         = arguments.libraryFile;
    return config;
}

// Without tags nothing can be taken for all of them.
void requireAny(const std::vector<Tag> &tags)
{
    if (tags.empty())
        throw CLI::RequiredError("items");
}

} // namespace

std::vector<PlantPlc> chosenPlcs(CLI::App &command, Arguments &arguments)
{
    const std::vector<ProjectPlc> plcs = placedPlcs(command, arguments);
    std::vector<PlantPlc> chosen;
    for (WatchedPlc &watched : watchedPlcs(command, arguments, plcs))
        chosen.push_back(std::move(watched.plc));
    return chosen;
}

std::vector<WatchedPlc> watchedPlcs(const CLI::App &command, const Arguments &arguments, const std::vector<ProjectPlc> &plcs)
{
    TagBooks books;
    books.reserve(plcs.size());
    for (const ProjectPlc &plc : plcs)
        books.push_back(&plc.tags);
    const std::vector<Tag> tags = chosenTags(books, arguments.choice);
    requireAny(tags);
    std::vector<WatchedPlc> chosen;
    for (const ProjectPlc &plc : plcs) {
        WatchedPlc watched = {plc.tags, {}, {configOf(command, arguments, plc), {}}};
        std::set<std::string> names;
        for (const Tag &tag : tags) { // whose name tells all of its form
            if (tag.plc != plc.tags.plc() || !names.insert(tag.name).second)
                continue;
            watched.tags.push_back(tag);
            watched.plc.items.push_back(tag.name);
        }
        if (!watched.tags.empty())
            chosen.push_back(std::move(watched));
    }
    return chosen;
}
