#ifndef PLC_EXPRESSIONS_EXPRESSION_H
#define PLC_EXPRESSIONS_EXPRESSION_H

#include "expressions/operations.h"
#include "expressions/quantity.h"

#include <optional>
#include <string>
#include <vector>

// Expressions over the PLC's memory: read once, and then worked out step by step without a look at their text or names.

namespace plc {

/// What a word of an expression stands for.
struct Meaning {
    enum Kind { QUANTITY, SIGNAL } kind = QUANTITY;
    std::size_t index = 0;
};

/// Knows the words of expressions: TYPE:ADDRESS and names.
class Vocabulary {
public:
    virtual ~Vocabulary() = default;

    /// Returns an empty text and sets `meaning`, or what is wrong with the word and how to mend it.
    virtual std::string find(const std::string &word, Meaning *meaning) = 0;
};

/// What a plant's expressions work on.
struct Course {
    const Memory                &memory;
    const std::vector<Quantity> &quantities;
    std::vector<Number>          signals; // in this step
    Chance                       chance;
};

class Expression {
public:
    /// Numbers at hand at once while it is worked out.
    enum : std::size_t { DEPTH_MOST = 64 };

    Number value(Course &course) const;

    // In the order in which it is worked out: values before what is done with them.
    void addNumber(Number number) { add({Kind::NUMBER, number, 0, nullptr}, 0); }
    void addStep() { add({Kind::STEP, 0, 0, nullptr}, 0); }
    void addMeaning(const Meaning &meaning);
    void addOperation(const Operation &operation) { add({Kind::OPERATION, 0, 0, &operation}, operation.arguments); }

    std::size_t deepest() const { return most; }

private:
    enum class Kind { NUMBER, STEP, QUANTITY, SIGNAL, OPERATION };
    struct Instruction {
        Kind             kind;
        Number           number;
        std::size_t      index;
        const Operation *operation;
    };

    void add(const Instruction &instruction, std::size_t taken);

    std::vector<Instruction> code;
    std::size_t              depth = 0;
    std::size_t              most = 0;
};

/// What is wrong with a text, and where.
struct ExpressionProblem {
    std::size_t at; // byte of the text
    std::string text;
};

/// Reads all of the text.
std::optional<ExpressionProblem> readExpression(const std::string &text, Vocabulary &vocabulary,
                                                Expression *expression);

/// Whether a value or signal may have the name: letters, digits and _, not what expressions know by that word.
bool isFreeName(const std::string &name);

} // namespace plc

#endif
