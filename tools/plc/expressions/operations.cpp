#include "expressions/operations.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace plc {

namespace {

// ---- Arithmetic that neither overflows nor traps --------------------------------------------------------------------

Number held(bool overflows, Number result, bool isNegative)
{
    if (overflows)
        return isNegative ? -NUMBER_MOST : NUMBER_MOST;
    return std::max(result, -NUMBER_MOST);
}

Number sum(Number a, Number b)
{
    Number result = 0;
    const bool overflows = __builtin_add_overflow(a, b, &result);
    return held(overflows, result, a < 0);
}

Number difference(Number a, Number b) { return sum(a, -b); }

Number product(Number a, Number b)
{
    Number result = 0;
    const bool overflows = __builtin_mul_overflow(a, b, &result);
    return held(overflows, result, (a < 0) != (b < 0));
}

Number quotient(Number a, Number b) { return b == 0 ? 0 : a / b; }
Number rest(Number a, Number b) { return b == 0 ? 0 : a % b; }

Number clamped(Number value, Number least, Number most) { return std::max(std::min(value, most), least); }

// ---- Signals --------------------------------------------------------------------------------------------------------

// The number of the step within a run of `length` steps that begins anew.
Number phase(Number length, const Chance &chance) { return length > 0 ? chance.step % length : 0; }

Number ramp(const Number *a, Chance &chance)
{
    const Number length = std::max<Number>(a[2], 1);
    const Number done = phase(sum(length, 1), chance);
    return sum(a[0], quotient(product(difference(a[1], a[0]), done), length));
}

// Rounded so that the halves, which the machine's sine meets from below or above, all go up.
Number sine(const Number *a, Chance &chance)
{
    const double turn = 2 * std::acos(-1.0);
    const double least = static_cast<double>(a[0]);
    const double most = static_cast<double>(a[1]);
    const double length = static_cast<double>(std::max<Number>(a[2], 1));
    const double angle = turn * static_cast<double>(phase(a[2], chance)) / length;
    const double value = least + (most - least) * (1 + std::sin(angle)) / 2;
    const double bound = 9e18; // what a Number certainly holds
    return static_cast<Number>(std::clamp(std::floor(value + 0.5 + 1e-9), -bound, bound));
}

Number square(const Number *a, Chance &chance) { return product(phase(a[2], chance), 2) < a[2] ? a[1] : a[0]; }

Number noise(const Number *a, Chance &chance)
{
    const Number count = sum(difference(a[1], a[0]), 1);
    const Number drawn = static_cast<Number>(chance.random());
    return count > 0 ? sum(a[0], drawn % count) : a[0];
}

// A step of less than one is one, so that the end is reached.
Number lag(const Number *a, Chance &)
{
    const Number missing = difference(a[1], a[0]);
    const Number change = quotient(missing, std::max<Number>(a[2], 1));
    const Number least = missing > 0 ? 1 : (missing < 0 ? -1 : 0);
    return sum(a[0], change != 0 ? change : least);
}

// ---- The tables -----------------------------------------------------------------------------------------------------

const Operation OPERATORS[] = {
    {"or",  2, 1, [](const Number *a, Chance &) -> Number { return a[0] != 0 || a[1] != 0; }, nullptr, nullptr},
    {"and", 2, 2, [](const Number *a, Chance &) -> Number { return a[0] != 0 && a[1] != 0; }, nullptr, nullptr},
    {"==",  2, 3, [](const Number *a, Chance &) -> Number { return a[0] == a[1]; }, nullptr, nullptr},
    {"!=",  2, 3, [](const Number *a, Chance &) -> Number { return a[0] != a[1]; }, nullptr, nullptr},
    {"<=",  2, 3, [](const Number *a, Chance &) -> Number { return a[0] <= a[1]; }, nullptr, nullptr},
    {">=",  2, 3, [](const Number *a, Chance &) -> Number { return a[0] >= a[1]; }, nullptr, nullptr},
    {"<",   2, 3, [](const Number *a, Chance &) -> Number { return a[0] < a[1]; }, nullptr, nullptr},
    {">",   2, 3, [](const Number *a, Chance &) -> Number { return a[0] > a[1]; }, nullptr, nullptr},
    {"+",   2, 4, [](const Number *a, Chance &) { return sum(a[0], a[1]); }, nullptr, nullptr},
    {"-",   2, 4, [](const Number *a, Chance &) { return difference(a[0], a[1]); }, nullptr, nullptr},
    {"*",   2, 5, [](const Number *a, Chance &) { return product(a[0], a[1]); }, nullptr, nullptr},
    {"/",   2, 5, [](const Number *a, Chance &) { return quotient(a[0], a[1]); }, nullptr, nullptr},
    {"%",   2, 5, [](const Number *a, Chance &) { return rest(a[0], a[1]); }, nullptr, nullptr},
};

const Operation FUNCTIONS[] = {
    {"ramp", 3, 0, ramp, "ramp(FROM, TO, STEPS)", "goes from one number to the other in so many steps, and again"},
    {"sine", 3, 0, sine, "sine(LEAST, MOST, STEPS)", "a wave of so many steps; begins in the middle and rises"},
    {"square", 3, 0, square, "square(LEAST, MOST, STEPS)", "the most for half of the steps, then the least"},
    {"noise", 2, 0, noise, "noise(LEAST, MOST)", "a number by chance, the seed's"},
    {"counter", 2, 0, [](const Number *a, Chance &) { return a[0] >= a[1] ? 0 : sum(a[0], 1); },
     "counter(VALUE, MOST)", "the value and 1; 0 behind the most"},
    {"lag", 3, 0, lag, "lag(VALUE, TARGET, STEPS)",
     "the value, nearer to its target by one part of so many, at least 1"},
    {"integrate", 4, 0, [](const Number *a, Chance &) { return clamped(sum(a[0], a[1]), a[2], a[3]); },
     "integrate(VALUE, CHANGE, LEAST, MOST)", "the value and its change, within the limits"},
    {"if", 3, 0, [](const Number *a, Chance &) { return a[0] != 0 ? a[1] : a[2]; }, "if(CONDITION, THIS, OTHER)",
     "this one where the condition is not 0"},
    {"min", 2, 0, [](const Number *a, Chance &) { return std::min(a[0], a[1]); }, "min(A, B)", "the smaller one"},
    {"max", 2, 0, [](const Number *a, Chance &) { return std::max(a[0], a[1]); }, "max(A, B)", "the larger one"},
    {"clamp", 3, 0, [](const Number *a, Chance &) { return clamped(a[0], a[1], a[2]); }, "clamp(VALUE, LEAST, MOST)",
     "the value, within the limits"},
    {"abs", 1, 0, [](const Number *a, Chance &) { return a[0] < 0 ? -a[0] : a[0]; }, "abs(A)", "without its sign"},
};

} // namespace

const Operation NEGATE = {"-", 1, 0, [](const Number *a, Chance &) { return -a[0]; }, nullptr, nullptr};
const Operation NOT = {"not", 1, 0, [](const Number *a, Chance &) -> Number { return a[0] == 0; }, nullptr, nullptr};

const Operation *findOperator(const std::string &symbol)
{
    for (const Operation &operation : OPERATORS)
        if (symbol == operation.name)
            return &operation;
    return nullptr;
}

const Operation *findFunction(const std::string &name)
{
    for (const Operation &operation : FUNCTIONS)
        if (name == operation.name)
            return &operation;
    return nullptr;
}

std::vector<std::string> functionNames()
{
    std::vector<std::string> names;
    for (const Operation &operation : FUNCTIONS)
        names.emplace_back(operation.name);
    return names;
}

std::string functionHelp()
{
    std::string text;
    for (const Operation &operation : FUNCTIONS)
        text += fmt::format("  {:<39} {}\n", operation.usage, operation.meaning);
    return text;
}

} // namespace plc
