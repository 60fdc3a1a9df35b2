#ifndef TESTS_REFERENCE_OPERATION_H
#define TESTS_REFERENCE_OPERATION_H

#include "plain_records.h"

// One step of a sequence: what the runtime, its user or the PLC does. Steps do not depend on what the driver answers,
// so that any of them can be left out of a sequence.

namespace reference {

enum class Kind {
    INITIALISE,     // property
    WATCH,          // items
    RECIPE_PLAN,    // vars
    CONDITION_READ, // items[0], id
    WRITE,          // tag, type, address, count, data, id
    READ,           // tag, type, address, count
    SEND,
    REPLY,          // reply, noise: to the request that was handed out last
    FLAGS,          // count: the two recipe request bytes, write first, in tens and ones
    RECIPE_WORDS,   // noise: new content of the recipe buffer
    CHECK_ADDRESS,  // type, text, count, id (mode), address (data kind)
    COPIES,         // type, address, count, id (step)
    LISTS           // type, count (kind)
};

enum class Reply { RIGHT, WRONG_SID, SHORT, LONG, END_CODE, MODE_REFUSAL, EMPTY, NOISE };

struct Operation {
    Kind                    kind = Kind::SEND;
    Property                property;
    std::vector<KeyAddress> items;
    std::vector<RecipeVar>  vars;
    Int                     tag = 0;
    Text                    type;
    Int                     address = 0;
    Int                     count = 0;
    Int                     id = 0;
    Text                    text;
    Bytes                   data;
    Reply                   reply = Reply::RIGHT;
    std::uint32_t           noise = 0;
};

struct Sequence {
    int                    nesting = 0; // reads inside the callback: 0 none, 1 what changed, 2 something else
    std::vector<Operation> operations;
};

/// One line for people.
Text describe(const Operation &operation);

} // namespace reference

#endif
