#include "fins/cpu_commands.h"

namespace plc {

namespace {

// The Ethernet unit of the CPU unit: bus unit 0.
enum : unsigned { UNIT_CPU = 0x00, UNIT_ETHERNET = 0x10, ETHERNET_NUMBER = 0 };

const char *const ETHERNET_MODEL = "CJ2B-EIP21";

enum : unsigned { MODEL_SIZE = 20, VERSION_SIZE = 20, BUS_UNITS = 16 };

// First part of the controller data: offset, size in bytes, field.
//  0 20 model
// 20 20 version of the internal system
// 40 40 for system use: DIP switch, largest EM bank
// 80 12 area data
void addModel(const Controller &controller, Bytes &data)
{
    const unsigned SYSTEM_USE_REST = 38;
    const unsigned PROGRAM_K = 400;
    const unsigned IO_K = 23;
    const unsigned K = 1024;
    const Memory &memory = controller.memory;
    addText(data, controller.identity.model, MODEL_SIZE);
    addText(data, controller.identity.version, VERSION_SIZE, '\0');
    add8 (data, 0);  // DIP switch
    add8 (data, memory.emBanks() != 0 ? memory.emBanks() - 1 : 0);
    addText(data, "", SYSTEM_USE_REST, '\0');
    add16(data, PROGRAM_K);
    add8 (data, IO_K);
    add16(data, memory.size(AREA_DM));
    add8 (data, (memory.size(AREA_T) + memory.size(AREA_C)) / K);
    add8 (data, memory.emBanks());
    add16(data, 0);
    add8 (data, 0);  // kind of memory card: none
    add16(data, 0);  // size of the memory card
}

// Second part: offset, size in bytes, field.
//  0 32 units on the CPU bus, 2 each
// 32 32 reserved
// 64  2 remote I/O
// 66  1 CPU information
void addUnits(Bytes &data)
{
    const unsigned UNIT_PRESENT = 0x8000;
    const unsigned RESERVED_SIZE = 32;
    const unsigned HOST_INTERFACE = 0x40;
    for (unsigned unit = 0; unit < BUS_UNITS; ++unit)
        add16(data, unit == ETHERNET_NUMBER ? UNIT_PRESENT : 0u);
    addText(data, "", RESERVED_SIZE, '\0');
    add16(data, 0);
    add8 (data, HOST_INTERFACE);
}

// Status bits of CONTROLLER STATUS READ.
enum : unsigned { STATUS_RUNNING = 0x01, STATUS_BATTERY = 0x04 };

// One bit a message, the first one in bit 0.
unsigned messagesPresent(const Controller &controller)
{
    unsigned present = 0;
    for (unsigned i = 0; i < controller.messages.size(); ++i)
        present |= controller.messages[i].empty() ? 0u : 1u << i;
    return present;
}

} // namespace

// CONTROLLER DATA READ, 05 01. Without a parameter both parts.
unsigned readControllerData(Controller &controller, Slice command, Bytes &data)
{
    const std::size_t PART = 2;
    const unsigned FIRST = 0x00;
    const unsigned SECOND = 0x01;
    if (const EndCode wrong = checkLength(command, 0, 1))
        return wrong;
    const bool isAll = command.size() == PART;
    const unsigned part = command.get8(PART);
    if (part != FIRST && part != SECOND)
        return END_PARAMETER_ERROR;
    if (isAll || part == FIRST)
        addModel(controller, data);
    if (isAll || part == SECOND)
        addUnits(data);
    return END_NORMAL;
}

// CONNECTION DATA READ, 05 02: the models of the units from one unit address on.
unsigned readConnectionData(Controller &controller, Slice command, Bytes &data)
{
    const std::size_t FIRST = 2;
    const std::size_t COUNT = 3;
    const unsigned COUNT_MAX = 0x19;
    const unsigned IS_LAST = 0x80;
    if (const EndCode wrong = checkLength(command, 1, 2))
        return wrong;
    const unsigned most = command.size() > COUNT ? command.get8(COUNT) : COUNT_MAX;
    if (most == 0 || most > COUNT_MAX)
        return END_PARAMETER_ERROR;
    const struct {
        unsigned    address;
        std::string model;
    } units[] = {{UNIT_CPU, controller.identity.model}, {UNIT_ETHERNET, ETHERNET_MODEL}};
    Bytes found;
    unsigned count = 0;
    bool isLast = true;
    for (const auto &unit : units) {
        if (unit.address < command.get8(FIRST))
            continue;
        isLast = count < most;
        if (!isLast)
            break;
        ++count;
        add8(found, unit.address);
        addText(found, unit.model, MODEL_SIZE);
    }
    add8(data, count | (isLast ? IS_LAST : 0u));
    data.insert(data.end(), found.begin(), found.end());
    return END_NORMAL;
}

// CONTROLLER STATUS READ, 06 01. The text is that of the worst error, if its instruction gave one.
unsigned readStatus(Controller &controller, Slice command, Bytes &data)
{
    const unsigned TEXT_SIZE = 16;
    if (const EndCode wrong = checkLength(command, 0, 0))
        return wrong;
    const StandingErrors &errors = controller.errors;
    add8 (data, (controller.isRunning() ? unsigned(STATUS_RUNNING) : 0u) |
                    (controller.hasBattery ? unsigned(STATUS_BATTERY) : 0u));
    add8 (data, static_cast<unsigned>(controller.mode));
    add16(data, errors.fatalWord());
    add16(data, errors.nonFatalWord());
    add16(data, messagesPresent(controller));
    add16(data, errors.worstCode());
    addText(data, errors.worst() ? errors.worst()->text : "", TEXT_SIZE);
    return END_NORMAL;
}

// CYCLE TIME READ, 06 20. Initialising has the three begin anew with the average.
unsigned cycleTime(Controller &controller, Slice command, Bytes &data)
{
    const std::size_t ACTION = 2;
    const unsigned INITIALISE = 0x00;
    const unsigned READ = 0x01;
    if (const EndCode wrong = checkLength(command, 1, 1))
        return wrong;
    const unsigned action = command.get8(ACTION);
    if (action != INITIALISE && action != READ)
        return END_PARAMETER_ERROR;
    if (controller.mode == Mode::PROGRAM)
        return END_STOPPED;
    CycleTime &cycle = controller.cycle;
    if (action == INITIALISE) {
        cycle.most = cycle.least = cycle.average;
        return END_NORMAL;
    }
    for (const unsigned time : {cycle.average, cycle.most, cycle.least})
        add32(data, time);
    return END_NORMAL;
}

// INTERNODE ECHO TEST, 08 01.
unsigned echo(Controller &, Slice command, Bytes &data)
{
    for (std::size_t i = 2; i < command.size(); ++i)
        add8(data, command.get8(i));
    return END_NORMAL;
}

} // namespace plc
