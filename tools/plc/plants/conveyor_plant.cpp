#include "plants/conveyor_plant.h"

#include <algorithm>

namespace plc {

namespace {

// Words, with their addresses.
enum : unsigned {
    DM_SPEED     = 0, // of the belt, 0.1 m/min
    DM_POSITION  = 1, // of the belt, mm, wraps after 9999
    DM_SET_SPEED = 2, // panel: 0.1 m/min; above 600 counts as 600
    DM_WEIGHT    = 3, // of the last part, g
    DM_STEPS     = 4, // steps since the start, wraps after 9999
    DM_LIGHTEST  = 5, // panel: a lighter part is thrown out, g
    DM_HEAVIEST  = 6, // panel: a heavier part is thrown out, g
    T_NEXT_PART  = 0, // belt steps until the next part
    C_GOOD       = 0, // good parts, wraps after 9999
    C_REJECTED   = 1  // parts thrown out, wraps after 9999
};

// Bits of CIO word 0, which the plant sets.
enum : unsigned {
    STATE_WORD      = 0,
    STATE_RUNS      = 0, // the belt moves
    STATE_PART      = 1, // a part is on the scale, for one step
    STATE_EJECTOR   = 2, // a part is thrown out, for one step
    STATE_JAM       = 3, // a part has jammed; the belt stands
    STATE_HEARTBEAT = 5  // changes every 5 steps
};

// Bits of CIO word 100, which the panel sets.
enum : unsigned {
    COMMAND_WORD        = 100,
    COMMAND_RUN         = 0, // move the belt; on at the start
    COMMAND_CLEAR_JAM   = 1, // the jam is cleared; the plant takes it back
    COMMAND_RESET_COUNT = 2  // set both counters to 0; the plant takes it back
};

enum : unsigned {
    SPEED_MAX       = 600,
    SPEED_CHANGE    = 20, // a step
    START_SPEED     = 300,
    START_LIGHTEST  = 480,
    START_HEAVIEST  = 520,
    WEIGHT_LEAST    = 470,
    WEIGHT_SPREAD   = 61, // numbers of grams that a part can have
    DISTANCE_LEAST  = 10, // steps between two parts
    DISTANCE_SPREAD = 11,
    PARTS_PER_JAM   = 40, // on average
    HEARTBEAT_STEPS = 5
};

} // namespace

std::string ConveyorPlant::help()
{
    return "  DM:0 belt speed, 0.1 m/min    DM:1 belt position, mm       DM:2 set speed, 0.1 m/min (write)\n"
           "  DM:3 weight of the last part, g  DM:4 steps  DM:5 lightest, g (write)  DM:6 heaviest, g (write)\n"
           "  CIO_bit:0.0 belt moves  0.1 part on the scale  0.2 ejector  0.3 jam  0.5 heartbeat\n"
           "  CIO_bit:100.0 run  100.1 jam cleared  100.2 reset counters (write)\n"
           "  T:0 steps until the next part\n"
           "  C:0 good parts                C:1 parts thrown out\n";
}

void ConveyorPlant::begin()
{
    Memory &memory = controller.memory;
    memory.setWord(AREA_DM, DM_SET_SPEED, START_SPEED);
    memory.setWord(AREA_DM, DM_LIGHTEST, START_LIGHTEST);
    memory.setWord(AREA_DM, DM_HEAVIEST, START_HEAVIEST);
    memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_RUN, true);
    memory.setWord(AREA_T, T_NEXT_PART, DISTANCE_LEAST);
}

void ConveyorPlant::advance()
{
    Memory &memory = controller.memory;
    const unsigned steps = nextCount(memory.word(AREA_DM, DM_STEPS));
    memory.setWord(AREA_DM, DM_STEPS, steps);
    if (steps % HEARTBEAT_STEPS == 0)
        memory.setBit(AREA_CIO, STATE_WORD, STATE_HEARTBEAT, !memory.bit(AREA_CIO, STATE_WORD, STATE_HEARTBEAT));
    memory.setBit(AREA_CIO, STATE_WORD, STATE_PART, false);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_EJECTOR, false);
    obeyPanel();
    moveBelt();
    const unsigned left = memory.word(AREA_T, T_NEXT_PART);
    if (!memory.bit(AREA_CIO, STATE_WORD, STATE_RUNS))
        return;
    if (left > 1)
        memory.setWord(AREA_T, T_NEXT_PART, left - 1);
    else
        weighPart();
    memory.setFlag(AREA_T, T_NEXT_PART, left <= 1);
}

void ConveyorPlant::obeyPanel()
{
    Memory &memory = controller.memory;
    if (memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_CLEAR_JAM)) {
        memory.setBit(AREA_CIO, STATE_WORD, STATE_JAM, false);
        memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_CLEAR_JAM, false);
    }
    if (memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_RESET_COUNT)) {
        memory.setWord(AREA_C, C_GOOD, 0);
        memory.setWord(AREA_C, C_REJECTED, 0);
        memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_RESET_COUNT, false);
    }
}

// The speed follows the set speed slowly; a jam and a stop brake the belt in the same way.
void ConveyorPlant::moveBelt()
{
    Memory &memory = controller.memory;
    const bool mayRun =
        memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_RUN) && !memory.bit(AREA_CIO, STATE_WORD, STATE_JAM);
    const unsigned wanted = mayRun ? std::min<unsigned>(memory.word(AREA_DM, DM_SET_SPEED), SPEED_MAX) : 0;
    unsigned speed = std::min<unsigned>(memory.word(AREA_DM, DM_SPEED), SPEED_MAX);
    if (speed < wanted)
        speed = std::min<unsigned>(speed + SPEED_CHANGE, wanted);
    else
        speed -= std::min<unsigned>(speed - wanted, SPEED_CHANGE);
    memory.setWord(AREA_DM, DM_SPEED, speed);
    memory.setWord(AREA_DM, DM_POSITION, (memory.word(AREA_DM, DM_POSITION) + speed / 10) % 10000);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_RUNS, speed > 0);
}

void ConveyorPlant::weighPart()
{
    Memory &memory = controller.memory;
    const unsigned weight = WEIGHT_LEAST + static_cast<unsigned>(random() % WEIGHT_SPREAD);
    const bool isGood = weight >= memory.word(AREA_DM, DM_LIGHTEST) && weight <= memory.word(AREA_DM, DM_HEAVIEST);
    const unsigned counter = isGood ? C_GOOD : C_REJECTED;
    memory.setWord(AREA_DM, DM_WEIGHT, weight);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_PART, true);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_EJECTOR, !isGood);
    memory.setWord(AREA_C, counter, nextCount(memory.word(AREA_C, counter)));
    memory.setWord(AREA_T, T_NEXT_PART, DISTANCE_LEAST + static_cast<unsigned>(random() % DISTANCE_SPREAD));
    if (random() % PARTS_PER_JAM == 0)
        memory.setBit(AREA_CIO, STATE_WORD, STATE_JAM, true);
}

std::vector<PlantValue> ConveyorPlant::values() const
{
    const Memory &memory = controller.memory;
    return {{"DM:0", "belt speed", tenthsText(memory.word(AREA_DM, DM_SPEED)) + " m/min"},
            {"DM:2", "set speed", tenthsText(memory.word(AREA_DM, DM_SET_SPEED)) + " m/min"},
            {"DM:1", "position", std::to_string(memory.word(AREA_DM, DM_POSITION)) + " mm"},
            {"DM:3", "last part", std::to_string(memory.word(AREA_DM, DM_WEIGHT)) + " g"},
            {"C:0", "good parts", std::to_string(memory.word(AREA_C, C_GOOD))},
            {"C:1", "thrown out", std::to_string(memory.word(AREA_C, C_REJECTED))},
            {"CIO_bit:0.3", "jam", switchText(memory.bit(AREA_CIO, STATE_WORD, STATE_JAM))},
            {"T:0", "next part", std::to_string(memory.word(AREA_T, T_NEXT_PART)) + " steps"}};
}

} // namespace plc
