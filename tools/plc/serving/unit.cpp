#include "serving/unit.h"

#include "plants/shipped_plants.h"
#include "recording/replay_file.h"
#include "serving/refusal.h"

#include <chrono>

namespace plc {

namespace {

// Sets a place of the project; a command line with a smaller profile than the project's may have left no room for it.
bool setContents(Memory &memory, const std::vector<Content> &contents)
{
    for (const Content &content : contents) {
        if (content.place.first + content.place.count > memory.itemsOf(content.place))
            return refuse(placeText(content.place) + " of the project is not in the profile's memory; choose another "
                                                     "--profile");
        for (unsigned i = 0; i < content.place.count; ++i)
            memory.set(content.place, i, content.value(i));
    }
    return true;
}

bool readReplay(const std::string &file, Replay *replay)
{
    const std::string wrong = loadReplay(file, replay);
    return wrong.empty() || refuse("--replay: " + wrong);
}

bool preparePlant(const Options &options, Plc &plc)
{
    std::vector<std::string> problems;
    plc.plant = makePlant(options.plant, plc.controller, options.seed, &problems);
    for (const std::string &problem : problems)
        refuse(problem);
    if (plc.plant)
        plc.period = std::chrono::milliseconds(plc.plant->periodMs());
    if (options.plantPeriodMs != 0)
        plc.period = std::chrono::milliseconds(options.plantPeriodMs);
    if (plc.plant)
        plc.plant->begin();
    return problems.empty();
}

} // namespace

bool prepare(Unit &unit)
{
    const Options &options = unit.options;
    Plc &plc = unit.plc;
    const Profile &profile = *findProfile(options.profile);
    plc.controller.fit(profile.sizes);
    plc.controller.messageMax = profile.messageMax;
    plc.controller.mode = options.mode;
    if (options.isStepped)
        plc.controller.clock.standStill();
    else
        plc.controller.calendar.beginLocal(plc.controller.clock.now());
    plc.controller.refusalInRun = options.refusalInRun;
    plc.controller.refusalInProgram = options.refusalInProgram;
    for (const CpuLine &line : *options.cpuLines)
        line.setting->set(line.text, plc.controller);
    if (!options.replayFile.empty())
        plc.recorded = &unit.replay;
    for (const std::string &fault : options.faults)
        plc.faults.set(fault);
    return preparePlant(options, plc) && setContents(plc.controller.memory, *options.contents) &&
           (!plc.recorded || readReplay(options.replayFile, &unit.replay));
}

} // namespace plc
