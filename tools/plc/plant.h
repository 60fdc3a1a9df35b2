#ifndef FINS_PLC_PLANT_H
#define FINS_PLC_PLANT_H

#include "controller.h"

#include <string>

// A small plant with its control program: a tank that a pump fills through an inlet valve and that drains through an
// outlet valve. All its state is PLC memory, so that whatever a panel writes takes effect with the next step.

namespace plc {

class Plant {
public:
    explicit Plant(Controller &state) : controller(state) {}

    /// Writes the values that the plant starts with.
    void begin();

    /// One step of the control program (not in PROGRAM mode) and of the tank.
    void step();

    /// The addresses, one a line.
    static std::string help();

private:
    bool wantsPump() const;
    void runProgram();
    void startOrStopPump(bool isWanted);
    void countTimers();
    void moveWater();
    void showAlarms();

    Controller &controller;
};

} // namespace plc

#endif
