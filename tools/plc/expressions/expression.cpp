#include "expressions/expression.h"

#include <algorithm>
#include <array>

namespace plc {

void Expression::add(const Instruction &instruction, std::size_t taken)
{
    code.push_back(instruction);
    depth += 1;
    depth -= taken;
    most = std::max(most, depth);
}

void Expression::addMeaning(const Meaning &meaning)
{
    const Kind kind = meaning.kind == Meaning::SIGNAL ? Kind::SIGNAL : Kind::QUANTITY;
    add({kind, 0, meaning.index, nullptr}, 0);
}

Number Expression::value(Course &course) const
{
    std::array<Number, DEPTH_MOST> stack;
    std::size_t top = 0;
    for (const Instruction &instruction : code) {
        Number result = instruction.number;
        if (instruction.kind == Kind::STEP)
            result = course.chance.step;
        else if (instruction.kind == Kind::QUANTITY)
            result = course.quantities[instruction.index].load(course.memory);
        else if (instruction.kind == Kind::SIGNAL)
            result = course.signals[instruction.index];
        else if (instruction.kind == Kind::OPERATION) {
            top -= instruction.operation->arguments;
            result = instruction.operation->run(stack.data() + top, course.chance);
        }
        stack[top++] = result;
    }
    return top == 0 ? 0 : stack[0];
}

} // namespace plc
