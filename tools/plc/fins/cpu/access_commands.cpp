#include "fins/cpu_commands.h"

namespace plc {

namespace {

const std::size_t RIGHT_PROGRAM = 2;

EndCode checkProgram(Slice command)
{
    if (const EndCode wrong = checkLength(command, 2, 2))
        return wrong;
    return command.get16(RIGHT_PROGRAM) == ALL_PROGRAMS ? END_NORMAL : END_NO_PROGRAM;
}

} // namespace

// ACCESS RIGHT ACQUIRE, 0C 01. The refusal names who holds it.
unsigned acquireRight(Controller &controller, Slice command, Bytes &data)
{
    if (const EndCode wrong = checkProgram(command))
        return wrong;
    if (controller.right.isHeldByAnother()) {
        const FinsAddress &holder = *controller.right.holder();
        for (const unsigned part : {holder.unit, holder.node, holder.network})
            add8(data, part);
        return END_NO_ACCESS_RIGHT;
    }
    controller.right.take();
    return END_NORMAL;
}

// ACCESS RIGHT FORCED ACQUIRE, 0C 02. The one who held it is not told.
unsigned forceRight(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkProgram(command))
        return wrong;
    controller.right.take();
    return END_NORMAL;
}

// ACCESS RIGHT RELEASE, 0C 03. A normal end even for one who does not hold it.
unsigned releaseRight(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkProgram(command))
        return wrong;
    controller.right.release();
    return END_NORMAL;
}

} // namespace plc
