#include "cli/sources.h"

#include "common/usage_error.h"
#include "documents/document.h"

static PanelSource projectSource(const std::string &file, const Options &options)
{
    PanelSource source = {file, fins::Config::plcsOf(file), options.words};
    if (source.plcs.size() > 1 && !options.host.empty())
        throw UsageError("--host is for a project of one PLC, and " + file + " has " + std::to_string(source.plcs.size())
                         + "; change the hosts there");
    for (fins::Config &plc : source.plcs) {
        plc.library = options.library;
        if (!options.host.empty())
            plc.host = options.host;
        if (plc.host.empty())
            throw UsageError(file + " names no PLC; write host = \"...\" under [connection], or give --host HOST");
    }
    return source;
}

static PanelSource hostSource(const Options &options)
{
    PanelSource source = {"", {fins::Config()}, options.words};
    fins::Config &plc = source.plcs.front();
    plc.library = options.library;
    plc.host    = options.host;
    if (options.host.empty() && !source.items.empty()) {
        plc.host = source.items.front();
        source.items.erase(source.items.begin());
    }
    if (plc.host.empty())
        throw UsageError("nothing to show; give HOST and items, such as fins_hmi 192.168.250.1 DM:0, or --project FILE");
    if (source.items.empty())
        throw UsageError("there is nothing to show of " + plc.host + "; name items, such as DM:0 or CIO_bit:0.0:3");
    return source;
}

std::vector<PanelSource> readSources(const Options &options)
{
    if (options.projects.empty())
        return {hostSource(options)};
    if (options.projects.size() > 1 && !(options.host.empty() && options.words.empty()))
        throw UsageError("--host and items belong to one project; give one --project with them");
    std::vector<PanelSource> sources;
    for (const std::string &file : options.projects)
        sources.push_back(projectSource(file, options));
    return sources;
}
