#include "fuzz_input.h"
#include "options/profile.h"
#include "options/project.h"

// The simulator's project files: any text is PLCs, each with a CPU unit that can be brought into the state of its [cpu]
// and with room for its [memory], or refused with lines that name their file. Plants have a target of their own.

namespace {

void requireLines(const std::vector<std::string> &problems)
{
    for (const std::string &line : problems) {
        require(line.compare(0, 9, "mill.toml") == 0, "a problem names its file");
        for (const char c : line)
            require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F, "a problem is a line");
    }
}

void requireShown(const std::string &text)
{
    require(!text.empty(), "a state has words");
    for (const char c : text)
        require(c >= ' ' && c <= '~', "a state can be shown");
}

// What is told of the state is what AR has of it, and reads back as it was told.
void checkState(plc::Controller &controller)
{
    for (const auto &told : {plc::batteryText, plc::clockText, plc::cycleText, plc::messagesText, plc::errorsText,
                             plc::logText})
        requireShown(told(controller));
    require(controller.identity.model.size() <= 20 && controller.identity.version.size() <= 20, "names that fit");
    const plc::CycleTime &cycle = controller.cycle;
    require(cycle.least >= 1 && cycle.least <= cycle.average && cycle.average <= cycle.most && cycle.most <= 400000,
            "cycle times in order");
    const plc::Memory &memory = controller.memory;
    require(memory.word(plc::AREA_AR, 400) == controller.errors.worstCode(), "the worst error");
    require(memory.word(plc::AREA_AR, 401) == controller.errors.fatalWord(), "the fatal errors");
    require(memory.word(plc::AREA_AR, 402) == controller.errors.nonFatalWord(), "the others");
    require(memory.word(plc::AREA_AR, 300) == controller.log.all().size(), "records of the log");
    const std::string time = plc::clockText(controller).substr(0, 19);
    require(plc::setClock(time, controller).empty() && plc::clockText(controller).compare(0, 19, time) == 0,
            "a time that is told can be set");
    require(plc::setBattery(plc::batteryText(controller), controller).empty(), "so can a battery");
}

void checkContent(const plc::Content &content, plc::Memory &memory)
{
    const plc::Span &place = content.place;
    require(!content.values.empty() && content.values.size() <= place.count, "values for the items");
    require(place.first + place.count <= memory.itemsOf(place), "items of the memory");
    for (unsigned i = 0; i < place.count; ++i) {
        require(content.value(i) <= plc::largestValue(place), "a value that an item holds");
        memory.set(place, i, content.value(i));
        require(memory.get(place, i) == content.value(i), "and keeps");
    }
}

void checkPlc(const plc::Options &options)
{
    const plc::Profile *const profile = plc::findProfile(options.profile);
    require(profile != nullptr, "a profile");
    plc::Controller controller;
    controller.fit(profile->sizes);
    controller.clock.standStill();
    for (const plc::CpuLine &line : *options.cpuLines)
        require(line.setting->set(line.text, controller).empty(), "what has been tried can be set");
    checkState(controller);
    for (const plc::Content &content : *options.contents)
        checkContent(content, controller.memory);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(data, data + size);
    std::vector<plc::Options> plcs;
    const std::vector<std::string> problems = plc::readProjectText(text, "mill.toml", plc::Options(), &plcs);
    requireLines(problems);
    if (!problems.empty())
        return 0;
    require(!plcs.empty() && plcs.size() <= plc::PLCS_MAX, "a PLC, or some");
    for (const plc::Options &options : plcs)
        checkPlc(options);
    return 0;
}
