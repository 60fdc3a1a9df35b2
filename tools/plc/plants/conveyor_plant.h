#ifndef PLC_PLANTS_CONVEYOR_PLANT_H
#define PLC_PLANTS_CONVEYOR_PLANT_H

#include "plants/plant.h"

#include <random>

// A belt on which parts come at irregular distances. Each is weighed, counted, and thrown out if its weight is outside
// the limits. Now and then a part jams, and the belt stands until the jam is reset.

namespace plc {

class ConveyorPlant : public Plant {
public:
    ConveyorPlant(Controller &state, std::uint32_t seed) : Plant(state), random(seed) {}

    void begin() override;
    std::vector<PlantValue> values() const override;

    /// The addresses, one a line.
    static std::string help();

private:
    void advance() override;
    void obeyPanel();
    void moveBelt();
    void weighPart();

    std::mt19937 random;
};

} // namespace plc

#endif
