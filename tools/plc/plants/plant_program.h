#ifndef PLC_PLANTS_PLANT_PROGRAM_H
#define PLC_PLANTS_PLANT_PROGRAM_H

#include "expressions/expression.h"
#include "plants/playback.h"

#include <string>
#include <vector>

// A plant as its file describes it, ready to run.

namespace plc {

/// A place of memory with a name.
struct NamedValue {
    std::string name;
    std::string about;    // what it is, in words
    std::string shown;    // its name in the live view; empty: it is not shown there
    std::string unit;
    unsigned    decimals = 0;
    bool        isWritable = false; // by a panel
    bool        hasStart = false;
    Number      start = 0;
    std::size_t quantity = 0;
};

/// Worked out at the beginning of each step.
struct PlantSignal {
    Expression expression;
    Playback   playback; // goes before the expression unless it is empty
};

/// One statement of the control program.
struct PlantStep {
    std::size_t               target = 0; // a quantity
    bool                      isLatch = false;
    Expression                value; // of a latch: when it is set
    Expression                reset; // of a latch
    std::optional<Expression> when;
    unsigned                  every = 1; // steps
};

struct PlantProgram {
    std::string              about;
    unsigned                 periodMs = 50;
    std::vector<Quantity>    quantities;
    std::vector<NamedValue>  values;
    std::vector<PlantSignal> signals;
    std::vector<PlantStep>   steps;
};

} // namespace plc

#endif
