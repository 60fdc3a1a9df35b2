#include "fins/cpu_commands.h"

namespace plc {

namespace {

enum : std::size_t { MESSAGE_WORD = 2 };

// What bits 15 and 14 ask for.
enum class Wanted : unsigned { READ = 0, CLEAR = 1, ERROR_TEXT = 2 };

enum : unsigned {
    WANTED_SHIFT   = 14,
    NUMBER_MASK    = 0x3FFF, // of an error text: the number of FAL or FALS
    NUMBER_MAX     = 511,
    MESSAGES_MASK  = 0x00FF, // of messages: one bit a message
    MESSAGE_SIZE   = 32,
    ERROR_TEXT_SIZE = 16
};

// Calls `use` with every message whose bit is set.
template <typename Use>
void forMessages(Controller &controller, unsigned wanted, const Use &use)
{
    for (unsigned i = 0; i < controller.messages.size(); ++i)
        if ((wanted >> i & 1u) != 0)
            use(controller.messages[i]);
}

// The text that a FALS or FAL instruction gave; empty if neither stands.
std::string errorText(const StandingErrors &errors, unsigned number)
{
    for (const CpuError &error : errors.all())
        if (error.kind->hasText && error.number == number)
            return error.text;
    return std::string();
}

unsigned readErrorText(const Controller &controller, unsigned number, Bytes &data)
{
    if (number == 0 || number > NUMBER_MAX)
        return END_PARAMETER_ERROR;
    add16(data, number);
    addText(data, errorText(controller.errors, number), ERROR_TEXT_SIZE);
    return END_NORMAL;
}

} // namespace

// MESSAGE READ, MESSAGE CLEAR and FAL/FALS MESSAGE READ, 09 20.
unsigned messages(Controller &controller, Slice command, Bytes &data)
{
    if (const EndCode wrong = checkLength(command, 2, 2))
        return wrong;
    const unsigned word = command.get16(MESSAGE_WORD);
    const Wanted wanted = static_cast<Wanted>(word >> WANTED_SHIFT);
    if (wanted == Wanted::ERROR_TEXT)
        return readErrorText(controller, word & NUMBER_MASK, data);
    if ((wanted != Wanted::READ && wanted != Wanted::CLEAR) || (word & NUMBER_MASK & ~MESSAGES_MASK) != 0)
        return END_PARAMETER_ERROR;
    if (wanted == Wanted::CLEAR && controller.right.isHeldByAnother())
        return END_NO_ACCESS_RIGHT;
    if (wanted == Wanted::READ)
        add16(data, word);
    forMessages(controller, word, [&](std::string &text) {
        if (wanted == Wanted::READ)
            addText(data, text, MESSAGE_SIZE);
        else
            text.clear();
    });
    return END_NORMAL;
}

} // namespace plc
