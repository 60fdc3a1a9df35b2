#include "plc/setup.h"

#include "common/numbers.h"
#include "link/host_port.h"
#include "plc/listing.h"
#include "project/settings.h"

namespace fins {

namespace {

// Notes what the call throws for bad input.
template <typename Call>
void check(Problems &problems, const Call &call)
{
    try {
        call();
    } catch (const UsageError &error) {
        problems.add("", {}, error.what());
    }
}

void checkRange(Problems &problems, const Setting &setting, double value, const char *name)
{
    if (!isSet(setting, value))
        problems.add("", {}, std::string(name) + " = " + plainNumber(value) + " is out of range; use "
                                 + rangeText(setting));
}

void checkNumbers(Problems &problems, const Config &config)
{
    const auto millis = [](std::chrono::milliseconds time) { return static_cast<double>(time.count()); };
    checkRange(problems, settings::TIMEOUT, millis(config.timeout), "timeout");
    checkRange(problems, settings::INTERVAL, millis(config.interval), "interval");
    checkRange(problems, settings::RETRY_REFUSED, millis(config.retryRefused) / 1000, "retryRefused");
    checkRange(problems, settings::WRITE_WORDS, config.wordsPerFrame, "wordsPerFrame");
    checkRange(problems, settings::RETRIES, config.retries, "retries");
    checkRange(problems, settings::STATION, config.station, "station");
    if (config.queueLimit == 0)
        problems.add("", {}, "queueLimit = 0 leaves no room for an event; use 1 or more");
    if (config.allowModeChange && config.retries == 1)
        problems.add("", {}, "allowModeChange needs retries of 2 or more: with 1 the driver drops the link instead");
}

LinkOptions linkOf(const Config &config)
{
    LinkOptions link;
    link.timeout         = config.timeout;
    link.interval        = config.interval;
    link.wordsPerFrame   = config.wordsPerFrame;
    link.retries         = config.retries;
    link.station         = config.station;
    link.allowModeChange = config.allowModeChange;
    link.refusedPause    = config.retryRefused;
    link.quiet           = config.quiet;
    return link;
}

void checkTag(const TagConfig &config, const Tag &tag)
{
    const bool hasNumber = isNumeric(tag.format.type);
    if (!hasNumber && (config.scale != 1 || config.offset != 0 || config.decimals != -1))
        throw UsageError("the tag '" + config.name + "' is no number, so it has no scale, offset or decimals");
    if (!hasNumber && (config.minimum || config.maximum))
        throw UsageError("the tag '" + config.name + "' is no number, so it has no limits");
    if (!(config.deadband >= 0) || (!hasNumber && config.deadband > 0))
        throw UsageError("the tag '" + config.name + "' has a deadband that no value can keep; use a number from 0, for "
                         "numbers only");
    if (config.minimum && config.maximum && *config.minimum > *config.maximum)
        throw UsageError("the minimum of the tag '" + config.name + "' is above its maximum");
    if (!isSet(settings::SCALE, config.scale) || !isSet(settings::OFFSET, config.offset))
        throw UsageError("scale or offset of the tag '" + config.name + "' is out of range; use "
                         + rangeText(settings::SCALE));
    if (config.decimals < -1 || config.decimals > DECIMALS_LIMIT)
        throw UsageError("decimals of the tag '" + config.name + "' is out of range; use -1 to "
                         + std::to_string(DECIMALS_LIMIT));
}

void addTag(TagBook &book, const TagConfig &config)
{
    if (!isTagName(config.name))
        throw UsageError("'" + config.name + "' is not a tag's name; use letters, digits, _ . and -, with a letter or _ first");
    if (!isItemText(config.item))
        throw UsageError("the tag '" + config.name + "': '" + config.item + "' is not an item; write TYPE:ADDRESS such as DM:100");
    if (config.name.compare(0, book.plc().size(), book.plc()) != 0)
        throw UsageError("the tag '" + config.name + "' does not begin with the name of its PLC; call it " + book.plc()
                         + config.name);
    Tag tag = book.resolveItem(book.plc() + config.item, config.readOnly ? Access::READ : Access::WRITE);
    checkTag(config, tag);
    tag.name            = config.name;
    tag.format.scale    = config.scale;
    tag.format.offset   = config.offset;
    tag.format.decimals = config.decimals;
    tag.format.unit     = config.unit;
    tag.minimum         = config.minimum;
    tag.maximum         = config.maximum;
    tag.readOnly        = config.readOnly;
    tag.remoteWrites    = config.remoteWrites;
    tag.deadband        = config.deadband;
    tag.comment         = config.comment;
    tag.screen          = config.screen;
    tag.group           = config.group;
    if (!book.add(tag))
        throw UsageError("the tag '" + config.name + "' is there twice; rename one");
}

Recipe recipeOf(const TagBook &book, const RecipeConfig &config)
{
    Recipe recipe;
    recipe.name = config.name;
    for (const RecipeConfig::Variable &variable : config.variables)
        recipe.entries.push_back(makeEntry(book, variable.item, variable.values));
    std::string reason;
    if (recipe.entries.empty())
        reason = "it has no variables";
    else if (findOverlap(recipe.entries, reason) == recipe.entries.size())
        reason.clear();
    if (!reason.empty())
        throw UsageError("the recipe '" + config.name + "': " + reason);
    return recipe;
}

void throwIfAny(const Problems &problems)
{
    if (!problems.any())
        return;
    std::vector<Problem> all;
    for (const Problems::Entry &entry : problems.entries())
        all.push_back({entry.file, entry.place.line, entry.place.column, entry.text});
    throw ConfigError(std::move(all));
}

std::unique_ptr<DriverLibrary> loadDriver(const std::string &file)
{
    try {
        return DriverLibrary::copyOf(file);
    } catch (const UsageError &error) {
        throw ConfigError({{"", 0, 0, error.what()}});
    }
}

} // namespace

Setup::Setup(const Config &config)
    : library(loadDriver(config.library)), book(*library), link(linkOf(config)), queueLimit(config.queueLimit),
      utc(config.utc), steady(config.steady)
{
    Problems problems;
    book.setPlc(config.name);
    if (!utc)
        utc = std::chrono::system_clock::now;
    if (!steady)
        steady = Clock::now;
    checkNumbers(problems, config);
    check(problems, [&] { parseHost(config.host, link.host, link.port); });
    check(problems, [&] {
        if (!config.project.empty())
            recipes = readProject(config.project, book, problems).recipes;
    });
    for (const TagConfig &tag : config.tags)
        check(problems, [&] { addTag(book, tag); });
    for (const RecipeConfig &recipe : config.recipes)
        check(problems, [&] { recipes.push_back(recipeOf(book, recipe)); });
    throwIfAny(problems);
}

const Recipe &Setup::recipe(const std::string &name) const
{
    std::string names;
    for (const Recipe &recipe : recipes) {
        if (recipe.name == name)
            return recipe;
        names += (names.empty() ? "" : ", ") + recipe.name;
    }
    throw NameError("there is no recipe '" + name + "'" + (names.empty() ? "; the configuration has none" : "; there are " + names));
}

// The connection and settings of one PLC.
static Config configOf(const Project &project)
{
    Config config;
    config.name = project.plc;
    config.host = project.host;
    config.allowModeChange = project.allowModeChange;
    const auto take = [](const std::optional<long> &from, auto &to) {
        if (from)
            to = std::decay_t<decltype(to)>(*from);
    };
    take(project.timeoutMs, config.timeout);
    take(project.intervalMs, config.interval);
    take(project.wordsPerFrame, config.wordsPerFrame);
    take(project.retries, config.retries);
    take(project.station, config.station);
    return config;
}

Config configOf(const ProjectPlc &plc)
{
    Config config  = configOf(plc.project);
    config.tags    = listed(plc.tags.tags());
    config.recipes = listed(plc.project.recipes);
    return config;
}

Config Config::ofProject(const std::string &file)
{
    const std::unique_ptr<DriverLibrary> library = loadDriver("");
    TagBook book(*library);
    Problems problems;
    Project project;
    check(problems, [&] { project = readProject(file, book, problems); });
    throwIfAny(problems);
    Config config  = configOf(project);
    config.project = file;
    return config;
}

std::vector<Config> Config::plcsOf(const std::string &file)
{
    const std::unique_ptr<DriverLibrary> library = loadDriver("");
    std::vector<ProjectPlc> plcs;
    Problems problems;
    check(problems, [&] { plcs = readProjectPlcs(file, *library, problems); });
    throwIfAny(problems);
    std::vector<Config> configs;
    configs.reserve(plcs.size());
    for (const ProjectPlc &plc : plcs)
        configs.push_back(configOf(plc));
    return configs;
}

} // namespace fins
