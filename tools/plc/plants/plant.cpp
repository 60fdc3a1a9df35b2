#include "plants/plant.h"

namespace plc {

namespace {

const PlantKind *const PLANTS[] = {&TANK, &CONVEYOR, &OVEN};

const PlantKind *findPlant(const std::string &name)
{
    for (const PlantKind *const kind : PLANTS)
        if (name == kind->name)
            return kind;
    return nullptr;
}

} // namespace

void Plant::step()
{
    if (controller.mode == Mode::PROGRAM)
        return;
    setData(DM_STEPS, nextCount(data(DM_STEPS)));
    if (data(DM_STEPS) % 5 == 0)
        setState(STATE_HEARTBEAT, !state(STATE_HEARTBEAT));
    advance();
}

std::string Plant::tenthsText(unsigned tenths)
{
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::unique_ptr<Plant> makePlant(const std::string &name, Controller &controller, std::uint32_t seed)
{
    const PlantKind *const kind = findPlant(name);
    return kind ? kind->make(controller, seed) : nullptr;
}

bool isPlant(const std::string &name) { return findPlant(name) != nullptr; }

std::string plantNames()
{
    std::string names;
    for (const PlantKind *const kind : PLANTS)
        names += (names.empty() ? "" : " ") + std::string(kind->name);
    return names;
}

std::string plantHelp()
{
    std::string text;
    for (const PlantKind *const kind : PLANTS)
        text += std::string(kind->name) + ": " + kind->meaning + "\n" + kind->addresses;
    return text;
}

} // namespace plc
