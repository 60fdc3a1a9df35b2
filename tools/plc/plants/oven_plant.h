#ifndef PLC_PLANTS_OVEN_PLANT_H
#define PLC_PLANTS_OVEN_PLANT_H

#include "plants/plant.h"

#include <random>

// An oven with three zones, each with a heater and a controller of its own. An open door cools all of them.

namespace plc {

class OvenPlant : public Plant {
public:
    OvenPlant(Controller &state, std::uint32_t seed) : Plant(state), random(seed) {}

    void begin() override;
    std::vector<PlantValue> values() const override;

    /// The addresses, one a line.
    static std::string help();

private:
    void advance() override;
    void controlZone(unsigned zone);
    void heatZone(unsigned zone);
    void showState();

    std::mt19937 random;
};

} // namespace plc

#endif
