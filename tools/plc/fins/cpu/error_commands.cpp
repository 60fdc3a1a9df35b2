#include "fins/cpu_commands.h"

#include <algorithm>

namespace plc {

namespace {

// Parameters: offset, size in bytes, field.
enum : std::size_t {
    ERROR_CODE = 2, // 2  of ERROR CLEAR
    LOG_FIRST  = 2, // 2  of ERROR LOG READ: the first record, 0 is the oldest
    LOG_COUNT  = 4  // 2  records
};

} // namespace

// ERROR CLEAR, 21 01. An error that does not stand is a normal end.
unsigned clearErrors(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkLength(command, 2, 2))
        return wrong;
    if (controller.right.isHeldByAnother())
        return END_NO_ACCESS_RIGHT;
    return controller.reset(command.get16(ERROR_CODE));
}

// ERROR LOG READ, 21 02. Fewer records than asked for come with an end code that says so.
unsigned readErrorLog(Controller &controller, Slice command, Bytes &data)
{
    if (const EndCode wrong = checkLength(command, 4, 4))
        return wrong;
    const std::deque<ErrorRecord> &records = controller.log.all();
    const std::size_t first = command.get16(LOG_FIRST);
    const std::size_t wanted = command.get16(LOG_COUNT);
    if (first > 0 && first >= records.size())
        return END_START_OUT_OF_RANGE;
    const std::size_t count = std::min(wanted, records.size() - first);
    add16(data, ErrorLog::RECORDS_MAX);
    add16(data, static_cast<unsigned>(records.size()));
    add16(data, static_cast<unsigned>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const Bytes record = recordBytes(records[first + i]);
        data.insert(data.end(), record.begin(), record.end());
    }
    return count < wanted ? END_RANGE_EXCEEDED : END_NORMAL;
}

// ERROR LOG CLEAR, 21 03.
unsigned clearErrorLog(Controller &controller, Slice command, Bytes &)
{
    if (const EndCode wrong = checkLength(command, 0, 0))
        return wrong;
    if (controller.right.isHeldByAnother())
        return END_NO_ACCESS_RIGHT;
    controller.clearLog();
    return END_NORMAL;
}

} // namespace plc
