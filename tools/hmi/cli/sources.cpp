#include "cli/sources.h"

#include "common/usage_error.h"
#include "documents/document.h"

// A project file is read here for its screens; its tags and recipes are the library's to read.
static PlcSource projectSource(const std::string &file, const Options &options)
{
    PlcSource source;
    source.config = fins::Config::ofProject(file);
    source.config.library = options.library;
    if (!options.host.empty())
        source.config.host = options.host;
    if (source.config.host.empty())
        throw UsageError(file + " names no PLC; write host = \"...\" under [connection], or give --host HOST");
    source.items = options.words;
    return source;
}

static PlcSource hostSource(const Options &options)
{
    PlcSource source;
    source.config.library = options.library;
    source.items = options.words;
    source.config.host = options.host;
    if (options.host.empty() && !source.items.empty()) {
        source.config.host = source.items.front();
        source.items.erase(source.items.begin());
    }
    if (source.config.host.empty())
        throw UsageError("nothing to show; give HOST and items, such as fins_hmi 192.168.250.1 DM:0, or --project FILE");
    if (source.items.empty())
        throw UsageError("there is nothing to show of " + source.config.host + "; name items, such as DM:0 or CIO_bit:0.0:3");
    return source;
}

std::vector<PlcSource> readSources(const Options &options)
{
    if (options.projects.empty())
        return {hostSource(options)};
    if (options.projects.size() > 1 && !(options.host.empty() && options.words.empty()))
        throw UsageError("--host and items belong to one PLC; give one --project with them");
    std::vector<PlcSource> sources;
    for (const std::string &file : options.projects)
        sources.push_back(projectSource(file, options));
    return sources;
}
