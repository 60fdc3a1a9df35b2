#include "plants/tank_plant.h"

#include <algorithm>

namespace plc {

namespace {

// Words, with their addresses.
enum : unsigned {
    DM_LEVEL     = 0, // tank level, 0.1 %, 0 to 1000
    DM_INFLOW    = 1, // level added in the last step, 0.1 %
    DM_OUTFLOW   = 2, // level taken out in the last step, 0.1 %
    DM_SET_POINT = 3, // panel: level to hold, 0.1 %; above 1000 counts as 1000
    DM_STEPS     = 4, // steps since the start, wraps after 9999
    T_REST       = 0, // rest of the pump after a stop, steps left; flag: over
    T_RUN        = 1, // steps that the pump has been running; stays at 9999
    C_STARTS     = 0, // starts of the pump, wraps after 9999
    C_BATCHES    = 1  // times that the set-point was reached, wraps after 9999
};

// Bits of CIO word 0, which the plant sets.
enum : unsigned {
    STATE_WORD       = 0,
    STATE_PUMP       = 0, // pump runs
    STATE_INLET      = 1, // inlet valve is open
    STATE_OUTLET     = 2, // outlet valve is open
    STATE_HIGH_ALARM = 3, // level 90 % or more
    STATE_LOW_ALARM  = 4, // level 10 % or less
    STATE_HEARTBEAT  = 5  // changes every 5 steps
};

// Bits of CIO word 100, which the panel sets.
enum : unsigned {
    COMMAND_WORD   = 100,
    COMMAND_AUTO   = 0, // hold the set-point; on at the start
    COMMAND_PUMP   = 1, // without COMMAND_AUTO: run the pump
    COMMAND_OUTLET = 2, // open the outlet valve; on at the start
    COMMAND_RESET  = 3  // set both counters to 0; the plant takes it back
};

enum : unsigned {
    LEVEL_MAX       = 1000,
    LEVEL_HIGH      = 900,
    LEVEL_LOW       = 100,
    START_LEVEL     = 300,
    START_SET_POINT = 500,
    HYSTERESIS      = 50, // below the set-point, before the pump starts again
    INFLOW_MAX      = 10,
    INFLOW_CHANGE   = 2,  // a step
    REST_STEPS      = 5,
    HEARTBEAT_STEPS = 5,
    COUNT_MAX       = 9999
};

} // namespace

std::string TankPlant::help()
{
    return "  DM:0 level, 0.1 %             DM:1 inflow, 0.1 % a step    DM:2 outflow, 0.1 % a step\n"
           "  DM:3 set-point, 0.1 % (write) DM:4 steps\n"
           "  CIO_bit:0.0 pump  0.1 inlet valve  0.2 outlet valve  0.3 high alarm  0.4 low alarm  0.5 heartbeat\n"
           "  CIO_bit:100.0 automatic  100.1 pump by hand  100.2 open outlet  100.3 reset counters (write)\n"
           "  T:0 rest of the pump, steps   T:1 run of the pump, steps\n"
           "  C:0 starts of the pump        C:1 set-point reached\n";
}

void TankPlant::begin()
{
    Memory &memory = controller.memory;
    memory.setWord(AREA_DM, DM_LEVEL, START_LEVEL);
    memory.setWord(AREA_DM, DM_SET_POINT, START_SET_POINT);
    memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_AUTO, true);
    memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_OUTLET, true);
    memory.setFlag(AREA_T, T_REST, true);
}

void TankPlant::advance()
{
    Memory &memory = controller.memory;
    const unsigned steps = nextCount(memory.word(AREA_DM, DM_STEPS));
    memory.setWord(AREA_DM, DM_STEPS, steps);
    if (steps % HEARTBEAT_STEPS == 0)
        memory.setBit(AREA_CIO, STATE_WORD, STATE_HEARTBEAT, !memory.bit(AREA_CIO, STATE_WORD, STATE_HEARTBEAT));
    runProgram();
    countTimers();
    moveWater();
    showAlarms();
}

bool TankPlant::wantsPump() const
{
    const Memory &memory = controller.memory;
    const unsigned level = memory.word(AREA_DM, DM_LEVEL);
    if (!memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_AUTO))
        return memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_PUMP) && level < LEVEL_MAX;
    const unsigned setPoint = std::min<unsigned>(memory.word(AREA_DM, DM_SET_POINT), LEVEL_MAX);
    const bool isRunning = memory.bit(AREA_CIO, STATE_WORD, STATE_PUMP);
    return isRunning ? level < setPoint : level + HYSTERESIS <= setPoint;
}

void TankPlant::runProgram()
{
    Memory &memory = controller.memory;
    startOrStopPump(wantsPump());
    memory.setBit(AREA_CIO, STATE_WORD, STATE_OUTLET, memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_OUTLET));
    if (!memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_RESET))
        return;
    memory.setWord(AREA_C, C_STARTS, 0);
    memory.setWord(AREA_C, C_BATCHES, 0);
    memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_RESET, false);
}

// The pump starts only when its rest is over. A stop in automatic counts as a batch if the set-point was reached.
void TankPlant::startOrStopPump(bool isWanted)
{
    Memory &memory = controller.memory;
    const bool isRunning = memory.bit(AREA_CIO, STATE_WORD, STATE_PUMP);
    if (isWanted == isRunning || (isWanted && memory.word(AREA_T, T_REST) != 0))
        return;
    memory.setBit(AREA_CIO, STATE_WORD, STATE_PUMP, isWanted);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_INLET, isWanted);
    if (isWanted) {
        memory.setWord(AREA_T, T_RUN, 0);
        memory.setWord(AREA_C, C_STARTS, nextCount(memory.word(AREA_C, C_STARTS)));
        return;
    }
    memory.setWord(AREA_T, T_REST, REST_STEPS);
    const bool isAutomatic = memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_AUTO);
    if (isAutomatic && memory.word(AREA_DM, DM_LEVEL) >= memory.word(AREA_DM, DM_SET_POINT))
        memory.setWord(AREA_C, C_BATCHES, nextCount(memory.word(AREA_C, C_BATCHES)));
}

void TankPlant::countTimers()
{
    Memory &memory = controller.memory;
    const unsigned rest = memory.word(AREA_T, T_REST);
    const unsigned run = memory.word(AREA_T, T_RUN);
    if (rest > 0)
        memory.setWord(AREA_T, T_REST, rest - 1);
    memory.setFlag(AREA_T, T_REST, rest <= 1);
    if (memory.bit(AREA_CIO, STATE_WORD, STATE_PUMP) && run < COUNT_MAX)
        memory.setWord(AREA_T, T_RUN, run + 1);
}

// The inflow follows the pump slowly; the outflow grows with the level, 3 to 7.
void TankPlant::moveWater()
{
    Memory &memory = controller.memory;
    const unsigned level = std::min<unsigned>(memory.word(AREA_DM, DM_LEVEL), LEVEL_MAX);
    unsigned inflow = std::min<unsigned>(memory.word(AREA_DM, DM_INFLOW), INFLOW_MAX);
    if (memory.bit(AREA_CIO, STATE_WORD, STATE_PUMP))
        inflow = std::min<unsigned>(inflow + INFLOW_CHANGE, INFLOW_MAX);
    else
        inflow -= std::min<unsigned>(inflow, INFLOW_CHANGE);
    const unsigned drain = 3 + level / 250;
    const unsigned outflow = memory.bit(AREA_CIO, STATE_WORD, STATE_OUTLET) ? std::min(level, drain) : 0;
    memory.setWord(AREA_DM, DM_INFLOW, inflow);
    memory.setWord(AREA_DM, DM_OUTFLOW, outflow);
    memory.setWord(AREA_DM, DM_LEVEL, std::min<unsigned>(level + inflow - outflow, LEVEL_MAX));
}

void TankPlant::showAlarms()
{
    Memory &memory = controller.memory;
    const unsigned level = memory.word(AREA_DM, DM_LEVEL);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_HIGH_ALARM, level >= LEVEL_HIGH);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_LOW_ALARM, level <= LEVEL_LOW);
}

std::vector<PlantValue> TankPlant::values() const
{
    const Memory &memory = controller.memory;
    const auto state = [&memory](unsigned number) { return switchText(memory.bit(AREA_CIO, STATE_WORD, number)); };
    return {{"DM:0", "level", tenthsText(memory.word(AREA_DM, DM_LEVEL)) + " %"},
            {"DM:3", "set-point", tenthsText(memory.word(AREA_DM, DM_SET_POINT)) + " %"},
            {"DM:1", "inflow", tenthsText(memory.word(AREA_DM, DM_INFLOW)) + " % a step"},
            {"DM:2", "outflow", tenthsText(memory.word(AREA_DM, DM_OUTFLOW)) + " % a step"},
            {"CIO_bit:0.0", "pump", state(STATE_PUMP)},
            {"CIO_bit:0.3", "high alarm", state(STATE_HIGH_ALARM)},
            {"CIO_bit:0.4", "low alarm", state(STATE_LOW_ALARM)},
            {"C:0", "starts", std::to_string(memory.word(AREA_C, C_STARTS))}};
}

} // namespace plc
