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
    explicit Plant(Controller &state) : controller(state), memory(state.memory) {}
    virtual ~Plant() = default;

    /// Writes the values that the plant starts with.
    virtual void begin() = 0;

    /// One step of the control program and of what it controls. In PROGRAM mode all stands still.
    void step();

    /// What is worth watching.
    virtual std::vector<PlantValue> values() const = 0;

protected:
    // What all plants have in common.
    enum : unsigned {
        DM_STEPS        = 4, // steps since the start, wraps after 9999
        STATE_HEARTBEAT = 5, // changes every 5 steps
        COUNT_MAX       = 9999
    };

    virtual void advance() = 0;

    // Words of DM, bits of CIO word 0, which the plant sets, and of CIO word 100, which the panel sets; counters that
    // wrap after COUNT_MAX.
    unsigned data(unsigned number) const { return memory.word(AREA_DM, number); }
    void setData(unsigned number, unsigned value) { memory.setWord(AREA_DM, number, value); }
    bool state(unsigned bit) const { return memory.bit(AREA_CIO, 0, bit); }
    void setState(unsigned bit, bool on) { memory.setBit(AREA_CIO, 0, bit, on); }
    bool command(unsigned bit) const { return memory.bit(AREA_CIO, 100, bit); }
    void setCommand(unsigned bit, bool on) { memory.setBit(AREA_CIO, 100, bit, on); }
    unsigned timer(unsigned number) const { return memory.word(AREA_T, number); }
    void setTimer(unsigned number, unsigned value) { memory.setWord(AREA_T, number, value); }
    unsigned counter(unsigned number) const { return memory.word(AREA_C, number); }
    void setCounter(unsigned number, unsigned value) { memory.setWord(AREA_C, number, value); }
    void countUp(unsigned number) { setCounter(number, nextCount(counter(number))); }

    /// What is shown of a bit of CIO word 0: "on" or "off".
    std::string stateText(unsigned bit) const { return state(bit) ? "on" : "off"; }

    /// `tenths` with one decimal.
    static std::string tenthsText(unsigned tenths);

private:
    static unsigned nextCount(unsigned count) { return count >= COUNT_MAX ? 0 : count + 1; }

    Controller &controller;

protected:
    Memory &memory;
};

struct PlantKind {
    const char *name;
    const char *meaning;
    const char *addresses; // one a line
    std::unique_ptr<Plant> (*make)(Controller &controller, std::uint32_t seed);
};

// Each in a file of its own.
extern const PlantKind TANK;
extern const PlantKind CONVEYOR;
extern const PlantKind OVEN;

/// The plant called `name`, or null if there is none.
std::unique_ptr<Plant> makePlant(const std::string &name, Controller &controller, std::uint32_t seed);
bool isPlant(const std::string &name);

/// The names, separated by spaces.
std::string plantNames();

/// Every plant with its addresses.
std::string plantHelp();

} // namespace plc

#endif
