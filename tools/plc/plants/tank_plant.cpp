#include "plants/plant.h"

#include <algorithm>

namespace plc {

namespace {

// Words, with their addresses.
enum : unsigned {
    DM_LEVEL     = 0, // tank level, 0.1 %, 0 to 1000
    DM_INFLOW    = 1, // level added in the last step, 0.1 %
    DM_OUTFLOW   = 2, // level taken out in the last step, 0.1 %
    DM_SET_POINT = 3, // panel: level to hold, 0.1 %; above 1000 counts as 1000
    T_REST       = 0, // rest of the pump after a stop, steps left; flag: over
    T_RUN        = 1, // steps that the pump has been running; stays at 9999
    C_STARTS     = 0, // starts of the pump, wraps after 9999
    C_BATCHES    = 1  // times that the set-point was reached, wraps after 9999
};

// Bits of CIO word 0, which the plant sets.
enum : unsigned {
    STATE_PUMP       = 0, // pump runs
    STATE_INLET      = 1, // inlet valve is open
    STATE_OUTLET     = 2, // outlet valve is open
    STATE_HIGH_ALARM = 3, // level 90 % or more
    STATE_LOW_ALARM  = 4  // level 10 % or less
};

// Bits of CIO word 100, which the panel sets.
enum : unsigned {
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
    REST_STEPS      = 5
};

// A tank that a pump fills through an inlet valve and that drains through an outlet valve.
class TankPlant : public Plant {
public:
    using Plant::Plant;

    void begin() override;
    std::vector<PlantValue> values() const override;

private:
    void advance() override;
    bool wantsPump() const;
    void runProgram();
    void startOrStopPump(bool isWanted);
    void countTimers();
    void moveWater();
    void showAlarms();
};

void TankPlant::begin()
{
    setData(DM_LEVEL, START_LEVEL);
    setData(DM_SET_POINT, START_SET_POINT);
    setCommand(COMMAND_AUTO, true);
    setCommand(COMMAND_OUTLET, true);
    memory.setFlag(AREA_T, T_REST, true);
}

void TankPlant::advance()
{
    runProgram();
    countTimers();
    moveWater();
    showAlarms();
}

bool TankPlant::wantsPump() const
{
    const unsigned level = data(DM_LEVEL);
    if (!command(COMMAND_AUTO))
        return command(COMMAND_PUMP) && level < LEVEL_MAX;
    const unsigned setPoint = std::min<unsigned>(data(DM_SET_POINT), LEVEL_MAX);
    const bool isRunning = state(STATE_PUMP);
    return isRunning ? level < setPoint : level + HYSTERESIS <= setPoint;
}

void TankPlant::runProgram()
{
    startOrStopPump(wantsPump());
    setState(STATE_OUTLET, command(COMMAND_OUTLET));
    if (!command(COMMAND_RESET))
        return;
    setCounter(C_STARTS, 0);
    setCounter(C_BATCHES, 0);
    setCommand(COMMAND_RESET, false);
}

// The pump starts only when its rest is over. A stop in automatic counts as a batch if the set-point was reached.
void TankPlant::startOrStopPump(bool isWanted)
{
    const bool isRunning = state(STATE_PUMP);
    if (isWanted == isRunning || (isWanted && timer(T_REST) != 0))
        return;
    setState(STATE_PUMP, isWanted);
    setState(STATE_INLET, isWanted);
    if (isWanted) {
        setTimer(T_RUN, 0);
        countUp(C_STARTS);
        return;
    }
    setTimer(T_REST, REST_STEPS);
    const bool isAutomatic = command(COMMAND_AUTO);
    if (isAutomatic && data(DM_LEVEL) >= data(DM_SET_POINT))
        countUp(C_BATCHES);
}

void TankPlant::countTimers()
{
    const unsigned rest = timer(T_REST);
    const unsigned run = timer(T_RUN);
    if (rest > 0)
        setTimer(T_REST, rest - 1);
    memory.setFlag(AREA_T, T_REST, rest <= 1);
    if (state(STATE_PUMP) && run < COUNT_MAX)
        setTimer(T_RUN, run + 1);
}

// The inflow follows the pump slowly; the outflow grows with the level, 3 to 7.
void TankPlant::moveWater()
{
    const unsigned level = std::min<unsigned>(data(DM_LEVEL), LEVEL_MAX);
    unsigned inflow = std::min<unsigned>(data(DM_INFLOW), INFLOW_MAX);
    if (state(STATE_PUMP))
        inflow = std::min<unsigned>(inflow + INFLOW_CHANGE, INFLOW_MAX);
    else
        inflow -= std::min<unsigned>(inflow, INFLOW_CHANGE);
    const unsigned drain = 3 + level / 250;
    const unsigned outflow = state(STATE_OUTLET) ? std::min(level, drain) : 0;
    setData(DM_INFLOW, inflow);
    setData(DM_OUTFLOW, outflow);
    setData(DM_LEVEL, std::min<unsigned>(level + inflow - outflow, LEVEL_MAX));
}

void TankPlant::showAlarms()
{
    const unsigned level = data(DM_LEVEL);
    setState(STATE_HIGH_ALARM, level >= LEVEL_HIGH);
    setState(STATE_LOW_ALARM, level <= LEVEL_LOW);
}

std::vector<PlantValue> TankPlant::values() const
{
    return {{"DM:0", "level", tenthsText(data(DM_LEVEL)) + " %"},
            {"DM:3", "set-point", tenthsText(data(DM_SET_POINT)) + " %"},
            {"DM:1", "inflow", tenthsText(data(DM_INFLOW)) + " % a step"},
            {"DM:2", "outflow", tenthsText(data(DM_OUTFLOW)) + " % a step"},
            {"CIO_bit:0.0", "pump", stateText(STATE_PUMP)},
            {"CIO_bit:0.3", "high alarm", stateText(STATE_HIGH_ALARM)},
            {"CIO_bit:0.4", "low alarm", stateText(STATE_LOW_ALARM)},
            {"C:0", "starts", std::to_string(counter(C_STARTS))}};
}

const char ADDRESSES[] =
    "  DM:0 level, 0.1 %             DM:1 inflow, 0.1 % a step    DM:2 outflow, 0.1 % a step\n"
    "  DM:3 set-point, 0.1 % (write) DM:4 steps\n"
    "  CIO_bit:0.0 pump  0.1 inlet valve  0.2 outlet valve  0.3 high alarm  0.4 low alarm  0.5 heartbeat\n"
    "  CIO_bit:100.0 automatic  100.1 pump by hand  100.2 open outlet  100.3 reset counters (write)\n"
    "  T:0 rest of the pump, steps   T:1 run of the pump, steps\n"
    "  C:0 starts of the pump        C:1 set-point reached\n";

} // namespace

const PlantKind TANK = {"tank", "a pump fills a tank that drains; the level is held",
    ADDRESSES,
    [](Controller &controller, std::uint32_t) -> std::unique_ptr<Plant> {
        return std::make_unique<TankPlant>(controller);
    }};

} // namespace plc
