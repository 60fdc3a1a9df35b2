#include "plants/plant.h"

#include <algorithm>
#include <random>

namespace plc {

namespace {

// Words, with their addresses.
enum : unsigned {
    DM_SPEED     = 0, // of the belt, 0.1 m/min
    DM_POSITION  = 1, // of the belt, mm, wraps after 9999
    DM_SET_SPEED = 2, // panel: 0.1 m/min; above 600 counts as 600
    DM_WEIGHT    = 3, // of the last part, g
    DM_LIGHTEST  = 5, // panel: a lighter part is thrown out, g
    DM_HEAVIEST  = 6, // panel: a heavier part is thrown out, g
    T_NEXT_PART  = 0, // belt steps until the next part
    C_GOOD       = 0, // good parts, wraps after 9999
    C_REJECTED   = 1  // parts thrown out, wraps after 9999
};

// Bits of CIO word 0, which the plant sets.
enum : unsigned {
    STATE_RUNS      = 0, // the belt moves
    STATE_PART      = 1, // a part is on the scale, for one step
    STATE_EJECTOR   = 2, // a part is thrown out, for one step
    STATE_JAM       = 3  // a part has jammed; the belt stands
};

// Bits of CIO word 100, which the panel sets.
enum : unsigned {
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
    PARTS_PER_JAM   = 40  // on average
};

// A belt on which parts come at irregular distances. Each is weighed, counted, and thrown out if its weight is outside
// the limits. Now and then a part jams, and the belt stands until the jam is reset.
class ConveyorPlant : public Plant {
public:
    ConveyorPlant(Controller &shared, std::uint32_t seed) : Plant(shared), random(seed) {}

    void begin() override;
    std::vector<PlantValue> values() const override;

private:
    void advance() override;
    void obeyPanel();
    void moveBelt();
    void weighPart();

    std::mt19937 random;
};

void ConveyorPlant::begin()
{
    setData(DM_SET_SPEED, START_SPEED);
    setData(DM_LIGHTEST, START_LIGHTEST);
    setData(DM_HEAVIEST, START_HEAVIEST);
    setCommand(COMMAND_RUN, true);
    setTimer(T_NEXT_PART, DISTANCE_LEAST);
}

void ConveyorPlant::advance()
{
    setState(STATE_PART, false);
    setState(STATE_EJECTOR, false);
    obeyPanel();
    moveBelt();
    const unsigned left = timer(T_NEXT_PART);
    if (!state(STATE_RUNS))
        return;
    if (left > 1)
        setTimer(T_NEXT_PART, left - 1);
    else
        weighPart();
    memory.setFlag(AREA_T, T_NEXT_PART, left <= 1);
}

void ConveyorPlant::obeyPanel()
{
    if (command(COMMAND_CLEAR_JAM)) {
        setState(STATE_JAM, false);
        setCommand(COMMAND_CLEAR_JAM, false);
    }
    if (command(COMMAND_RESET_COUNT)) {
        setCounter(C_GOOD, 0);
        setCounter(C_REJECTED, 0);
        setCommand(COMMAND_RESET_COUNT, false);
    }
}

// The speed follows the set speed slowly; a jam and a stop brake the belt in the same way.
void ConveyorPlant::moveBelt()
{
    const bool mayRun = command(COMMAND_RUN) && !state(STATE_JAM);
    const unsigned wanted = mayRun ? std::min<unsigned>(data(DM_SET_SPEED), SPEED_MAX) : 0;
    unsigned speed = std::min<unsigned>(data(DM_SPEED), SPEED_MAX);
    if (speed < wanted)
        speed = std::min<unsigned>(speed + SPEED_CHANGE, wanted);
    else
        speed -= std::min<unsigned>(speed - wanted, SPEED_CHANGE);
    setData(DM_SPEED, speed);
    setData(DM_POSITION, (data(DM_POSITION) + speed / 10) % 10000);
    setState(STATE_RUNS, speed > 0);
}

void ConveyorPlant::weighPart()
{
    const unsigned weight = WEIGHT_LEAST + static_cast<unsigned>(random() % WEIGHT_SPREAD);
    const bool isGood = weight >= data(DM_LIGHTEST) && weight <= data(DM_HEAVIEST);
    setData(DM_WEIGHT, weight);
    setState(STATE_PART, true);
    setState(STATE_EJECTOR, !isGood);
    countUp(isGood ? C_GOOD : C_REJECTED);
    setTimer(T_NEXT_PART, DISTANCE_LEAST + static_cast<unsigned>(random() % DISTANCE_SPREAD));
    if (random() % PARTS_PER_JAM == 0)
        setState(STATE_JAM, true);
}

std::vector<PlantValue> ConveyorPlant::values() const
{
    return {{"DM:0", "belt speed", tenthsText(data(DM_SPEED)) + " m/min"},
            {"DM:2", "set speed", tenthsText(data(DM_SET_SPEED)) + " m/min"},
            {"DM:1", "position", std::to_string(data(DM_POSITION)) + " mm"},
            {"DM:3", "last part", std::to_string(data(DM_WEIGHT)) + " g"},
            {"C:0", "good parts", std::to_string(counter(C_GOOD))},
            {"C:1", "thrown out", std::to_string(counter(C_REJECTED))},
            {"CIO_bit:0.3", "jam", stateText(STATE_JAM)},
            {"T:0", "next part", std::to_string(timer(T_NEXT_PART)) + " steps"}};
}

const char ADDRESSES[] =
    "  DM:0 belt speed, 0.1 m/min    DM:1 belt position, mm       DM:2 set speed, 0.1 m/min (write)\n"
    "  DM:3 weight of the last part, g  DM:4 steps  DM:5 lightest, g (write)  DM:6 heaviest, g (write)\n"
    "  CIO_bit:0.0 belt moves  0.1 part on the scale  0.2 ejector  0.3 jam  0.5 heartbeat\n"
    "  CIO_bit:100.0 run  100.1 jam cleared  100.2 reset counters (write)\n"
    "  T:0 steps until the next part\n"
    "  C:0 good parts                C:1 parts thrown out\n";

} // namespace

const PlantKind CONVEYOR = {"conveyor", "parts come on a belt, are weighed, and thrown out if too light or too heavy",
    ADDRESSES,
    [](Controller &controller, std::uint32_t seed) -> std::unique_ptr<Plant> {
        return std::make_unique<ConveyorPlant>(controller, seed);
    }};

} // namespace plc
