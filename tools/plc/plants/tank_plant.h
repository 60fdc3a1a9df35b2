#ifndef PLC_PLANTS_TANK_PLANT_H
#define PLC_PLANTS_TANK_PLANT_H

#include "plants/plant.h"

#include <string>

// A tank that a pump fills through an inlet valve and that drains through an
// outlet valve.

namespace plc {

class TankPlant : public Plant {
public:
    explicit TankPlant(Controller &state) : Plant(state) {}

    void begin() override;
    std::vector<PlantValue> values() const override;

    /// The addresses, one a line.
    static std::string help();

private:
    void advance() override;
    bool wantsPump() const;
    void runProgram();
    void startOrStopPump(bool isWanted);
    void countTimers();
    void moveWater();
    void showAlarms();
};

} // namespace plc

#endif
