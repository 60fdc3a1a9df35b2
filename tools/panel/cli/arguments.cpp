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
void prefer(const CLI::App &command, const Setting &setting, const std::optional<long> &project, Value &value)
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
    } else if (arguments.hasHost && command.get_option_no_throw("new_mode")) {
        if (!arguments.plcTask.mode.empty())
            throw UsageError("'" + arguments.plcTask.mode + "' is one argument too many: the PLC is " + known
                             + "; give another one with --host");
        arguments.plcTask.mode = arguments.host;
    } else if (arguments.hasHost && command.get_parent() && command.get_parent()->get_name() == "plc") {
        throw UsageError("'" + arguments.host + "' is one argument too many: the PLC is " + known
                         + "; give another one with --host");
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
    const auto hasTags = [](const ProjectPlc &plc) { return !plc.tags.tags().empty(); };
    const bool takesAll = command.get_option_no_throw("--group")
                       && ((arguments.book && !arguments.book->tags().empty())
                           || std::any_of(arguments.several.begin(), arguments.several.end(), hasTags));
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

// What names a PLC by its first part: what is to be read, written or listed of it.
std::vector<std::string> wordsOf(const Arguments &arguments)
{
    std::vector<std::string> words;
    for (const std::string &word : {arguments.host, arguments.recipe.file}) {
        if (!word.empty())
            words.push_back(word);
    }
    for (const auto *more : {&arguments.choice.items, &arguments.watch.writes})
        words.insert(words.end(), more->begin(), more->end());
    return words;
}

bool isOf(const ProjectPlc &plc, const std::string &word)
{
    return word.compare(0, plc.tags.plc().size(), plc.tags.plc()) == 0 || plc.project.findRecipe(word);
}

// The only PLC, or the one that a word names.
ProjectPlc &chosenPlc(std::vector<ProjectPlc> &plcs, const Arguments &arguments)
{
    if (plcs.size() == 1)
        return plcs.front();
    for (const std::string &word : wordsOf(arguments)) {
        const auto owner = std::find_if(plcs.begin(), plcs.end(), [&](const ProjectPlc &plc) { return isOf(plc, word); });
        if (owner != plcs.end())
            return *owner;
    }
    const std::vector<std::string> names = namesOf(plcs);
    throw UsageError(arguments.projectFile + " has several PLCs: " + CLI::detail::join(names, ", ")
                     + "; name one with --plc, or what is to be worked on, such as " + names.front() + ".DM:0");
}

// True if the command is for more than the one PLC that all words name.
bool isForSeveral(const CLI::App &command, const std::vector<ProjectPlc> &plcs, const Arguments &arguments)
{
    if (arguments.severalCommands.count(&command) == 0 || plcs.size() == 1)
        return false;
    const std::vector<std::string> words = wordsOf(arguments);
    const bool namesAll = !words.empty() && arguments.choice.file.empty() && arguments.choice.groups.empty();
    return !namesAll || std::none_of(plcs.begin(), plcs.end(), [&](const ProjectPlc &plc) {
        return std::all_of(words.begin(), words.end(), [&](const std::string &word) { return isOf(plc, word); });
    });
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
    if (isForSeveral(command, plcs, arguments)) {
        arguments.several = std::move(plcs);
        return;
    }
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

// What the project says of the link, where it is not given.
struct LinkSettings {
    long        timeoutMs;
    long        intervalMs;
    LinkOptions link;
};

static LinkSettings settingsOf(const CLI::App &command, const Arguments &arguments, const Project &project)
{
    LinkSettings settled = {arguments.timeoutMs, arguments.intervalMs, arguments.link};
    prefer(command, settings::TIMEOUT, project.timeoutMs, settled.timeoutMs);
    prefer(command, settings::INTERVAL, project.intervalMs, settled.intervalMs);
    prefer(command, settings::WRITE_WORDS, project.wordsPerFrame, settled.link.wordsPerFrame);
    prefer(command, settings::RETRIES, project.retries, settled.link.retries);
    prefer(command, settings::STATION, project.station, settled.link.station);
    settled.link.allowModeChange = settled.link.allowModeChange || project.allowModeChange;
    return settled;
}

void applyProject(CLI::App &command, Arguments &arguments)
{
    if (arguments.projectFile.empty())
        return;
    readProjectFile(command, arguments);
    if (!arguments.several.empty())
        return;
    const LinkSettings settled = settingsOf(command, arguments, arguments.project);
    arguments.timeoutMs  = settled.timeoutMs;
    arguments.intervalMs = settled.intervalMs;
    arguments.link       = settled.link;
}

void placeItems(Arguments &arguments)
{
    if (!arguments.otherHost.empty())
        throw UsageError("--host is for one PLC, and " + arguments.projectFile + " has several; choose one with --plc");
    if (arguments.hasHost)
        arguments.choice.items.insert(arguments.choice.items.begin(), arguments.host);
    arguments.hasHost = true;
}

void placeArguments(CLI::App &command, Arguments &arguments)
{
    if (!arguments.several.empty())
        placeItems(arguments);
    else
        placeHost(command, arguments);
    requirePositionals(command, arguments);
    if (!arguments.several.empty() && (arguments.stats || !arguments.trace.empty()))
        throw UsageError("--stats and --trace are for one PLC; choose one with --plc");
    if (arguments.several.empty() && arguments.hasHost)
        parseHost(arguments.host, arguments.link.host, arguments.link.port);
}

Sites sitesOf(const CLI::App &command, const Arguments &arguments)
{
    if (arguments.several.empty())
        return {{*arguments.book, arguments.link,
                 [&arguments] { return Site::Driver(Site::Driver(), arguments.library.get()); }}};
    Sites sites;
    for (const ProjectPlc &plc : arguments.several) {
        LinkSettings settled = settingsOf(command, arguments, plc.project);
        parseHost(plc.project.host, settled.link.host, settled.link.port);
        settled.link.timeout    = Millis(settled.timeoutMs);
        settled.link.statistics = nullptr;
        if (command.get_option_no_throw(settings::INTERVAL.option))
            settled.link.interval = Millis(settled.intervalMs);
        sites.push_back({plc.tags, settled.link, [&arguments] {
            return Site::Driver(DriverLibrary::copyOf(arguments.libraryFile));
        }});
    }
    return sites;
}

static void setDefaults(CLI::App &command, const ValueArguments &values, OrderDefaults orders, TagBook &book)
{
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
    book.setDefaults(format, orders);
}

void setValueDefaults(CLI::App &command, Arguments &arguments)
{
    for (ProjectPlc &plc : arguments.several)
        setDefaults(command, arguments.values, plc.project.orders, plc.tags);
    setDefaults(command, arguments.values, arguments.project.orders, *arguments.book);
}
