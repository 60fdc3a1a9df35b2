#ifndef PLC_PLANTS_PLANT_H
#define PLC_PLANTS_PLANT_H

#include "cpu/controller.h"
#include "plants/plant_program.h"

#include <cstdint>
#include <string>
#include <vector>

// A small plant with its control program. All the state that a panel sees or sets is PLC memory, so that whatever it
// writes takes effect with the next step. Equal seeds and equal writes give equal courses.

namespace plc {

/// A value of a plant as people read it.
struct PlantValue {
    std::string place; // TYPE:ADDRESS
    std::string name;
    std::string text;  // with unit
};

class Plant {
public:
    /// The places of the program have to lie in the controller's memory, which has to outlive the plant.
    Plant(PlantProgram read, Controller &state, std::uint32_t seed);
    Plant(const Plant &) = delete;
    Plant &operator=(const Plant &) = delete;

    /// Writes the values that the plant starts with.
    void begin();

    /// One step of the control program and of what it controls. While the CPU unit is stopped all stands still.
    void step();

    /// What is worth watching.
    std::vector<PlantValue> values() const;

    /// The files that its signals play.
    std::vector<std::string> playedFiles() const;

    /// Of the steps, as the plant's file has it.
    unsigned periodMs() const { return program.periodMs; }

private:
    void store(std::size_t quantity, Number number) { program.quantities[quantity].store(controller.memory, number); }
    void run(const PlantStep &statement);
    std::string textOf(const NamedValue &value) const;

    const PlantProgram program;
    Controller        &controller;
    Course             course;
};

} // namespace plc

#endif
