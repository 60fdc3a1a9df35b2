#ifndef PLC_PLANTS_PLANT_H
#define PLC_PLANTS_PLANT_H

#include "cpu/controller.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Small plants with their control programs. All the state that a panel sees or sets is PLC memory, so that whatever it
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
    explicit Plant(Controller &state) : controller(state) {}
    virtual ~Plant() = default;

    /// Writes the values that the plant starts with.
    virtual void begin() = 0;

    /// One step of the control program and of what it controls. In PROGRAM mode all stands still.
    void step()
    {
        if (controller.mode != Mode::PROGRAM)
            advance();
    }

    /// What is worth watching.
    virtual std::vector<PlantValue> values() const = 0;

protected:
    virtual void advance() = 0;

    Controller &controller;
};

/// The plant called `name`, or null if there is none.
std::unique_ptr<Plant> makePlant(const std::string &name, Controller &controller, std::uint32_t seed);

bool isPlant(const std::string &name);

/// The names, separated by spaces.
std::string plantNames();

/// Every plant with its addresses.
std::string plantHelp();

/// `tenths` with one decimal.
std::string tenthsText(unsigned tenths);

/// "on" or "off".
std::string switchText(bool isOn);

/// The number after `count` of counters that wrap after 9999.
unsigned nextCount(unsigned count);

} // namespace plc

#endif
