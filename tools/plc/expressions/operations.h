#ifndef PLC_EXPRESSIONS_OPERATIONS_H
#define PLC_EXPRESSIONS_OPERATIONS_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// What expressions can do with numbers. All are whole; a result beyond NUMBER_MOST either way stays there, and a
// division by zero gives 0, so that no content of memory stops a plant.

namespace plc {

using Number = std::int64_t;

constexpr Number NUMBER_MOST = INT64_MAX; // and -NUMBER_MOST below, so that every number has its opposite

/// What the functions of a step know besides their arguments.
struct Chance {
    Number       step = 0; // steps done before this one
    std::mt19937 random;
};

struct Operation {
    const char *name;
    unsigned    arguments;
    int         rank;    // of operators between two values, the higher the tighter; 0: a function
    Number    (*run)(const Number *arguments, Chance &chance);
    const char *usage;   // of a function
    const char *meaning; // of a function
};

/// The operator between two values that is written so, or null.
const Operation *findOperator(const std::string &symbol);

/// The function of that name, or null.
const Operation *findFunction(const std::string &name);

// The operators before a value.
extern const Operation NEGATE;
extern const Operation NOT;

/// The names of the functions.
std::vector<std::string> functionNames();

/// Every function, one a line.
std::string functionHelp();

} // namespace plc

#endif
