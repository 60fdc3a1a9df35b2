#include "plants/plant.h"

#include "plants/conveyor_plant.h"
#include "plants/oven_plant.h"
#include "plants/tank_plant.h"

namespace plc {

namespace {

struct PlantRow {
    const char *name;
    const char *meaning;
    std::string (*help)();
    std::unique_ptr<Plant> (*make)(Controller &controller, std::uint32_t seed);
};

const PlantRow PLANTS[] = {
    {"tank", "a pump fills a tank that drains; the level is held", TankPlant::help,
     [](Controller &controller, std::uint32_t) -> std::unique_ptr<Plant> {
         return std::make_unique<TankPlant>(controller);
     }},
    {"conveyor", "parts come on a belt, are weighed, and thrown out if too light or too heavy", ConveyorPlant::help,
     [](Controller &controller, std::uint32_t seed) -> std::unique_ptr<Plant> {
         return std::make_unique<ConveyorPlant>(controller, seed);
     }},
    {"oven", "three zones are heated to their set-points", OvenPlant::help,
     [](Controller &controller, std::uint32_t seed) -> std::unique_ptr<Plant> {
         return std::make_unique<OvenPlant>(controller, seed);
     }},
};

const PlantRow *findPlant(const std::string &name)
{
    for (const PlantRow &row : PLANTS)
        if (name == row.name)
            return &row;
    return nullptr;
}

} // namespace

std::unique_ptr<Plant> makePlant(const std::string &name, Controller &controller, std::uint32_t seed)
{
    const PlantRow *const row = findPlant(name);
    return row ? row->make(controller, seed) : nullptr;
}

bool isPlant(const std::string &name) { return findPlant(name) != nullptr; }

std::string plantNames()
{
    std::string names;
    for (const PlantRow &row : PLANTS)
        names += (names.empty() ? "" : " ") + std::string(row.name);
    return names;
}

std::string plantHelp()
{
    std::string text;
    for (const PlantRow &row : PLANTS)
        text += std::string(row.name) + ": " + row.meaning + "\n" + row.help();
    return text;
}

std::string tenthsText(unsigned tenths) { return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10); }

std::string switchText(bool isOn) { return isOn ? "on" : "off"; }

unsigned nextCount(unsigned count) { return count >= 9999 ? 0 : count + 1; }

} // namespace plc
