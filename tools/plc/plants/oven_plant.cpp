#include "plants/plant.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace plc {

namespace {

// Words, with their addresses. Those of the second and third zone follow that of the first.
enum : unsigned {
    DM_TEMPERATURE = 0,  // 0.1 degrees C
    DM_SET_POINT   = 10, // panel: 0.1 degrees C; above 3000 counts as 3000
    DM_HEATER      = 20, // output, %
    DM_AVERAGE     = 30, // temperature of the zones as a 32-bit floating-point number, low word first, degrees C
    T_READY        = 0,  // steps since all zones are at their set-points; stays at 9999
    C_DOOR         = 0   // openings of the door, wraps after 9999
};

// Bits of CIO word 0, which the plant sets.
enum : unsigned {
    STATE_READY     = 3, // bits 0 to 2: the zone's heater is on; all zones within 5 degrees of their set-points
    STATE_ALARM     = 4, // a zone has 290 degrees or more
    STATE_DOOR      = 6  // the door is open
};

// Bits of CIO word 100, which the panel sets.
enum : unsigned {
    COMMAND_HEAT = 0, // heat; on at the start
    COMMAND_DOOR = 1  // open the door
};

enum : unsigned {
    ZONES           = 3,
    AMBIENT         = 200,
    TEMPERATURE_MAX = 3000,
    ALARM_LEVEL     = 2900,
    READY_BAND      = 50
};

const unsigned START_SET_POINTS[ZONES] = {1500, 1800, 1650};

// An oven with three zones, each with a heater and a controller of its own. An open door cools all of them.
class OvenPlant : public Plant {
public:
    OvenPlant(Controller &shared, std::uint32_t seed) : Plant(shared), random(seed) {}

    void begin() override;
    std::vector<PlantValue> values() const override;

private:
    void advance() override;
    void showAverage(float average);
    unsigned setPoint(unsigned zone) const { return std::min<unsigned>(data(DM_SET_POINT + zone), TEMPERATURE_MAX); }
    void controlZone(unsigned zone);
    void heatZone(unsigned zone);
    void showState();

    std::mt19937 random;
};

// A 32-bit floating-point number, low word first, as the PLC stores it.
void OvenPlant::showAverage(float average)
{
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof average, "float has 32 bits");
    std::memcpy(&bits, &average, sizeof bits);
    setData(DM_AVERAGE, bits & 0xFFFFu);
    setData(DM_AVERAGE + 1, bits >> 16);
}

void OvenPlant::begin()
{
    for (unsigned zone = 0; zone < ZONES; ++zone) {
        setData(DM_TEMPERATURE + zone, AMBIENT);
        setData(DM_SET_POINT + zone, START_SET_POINTS[zone]);
    }
    setCommand(COMMAND_HEAT, true);
    showAverage(20.0f);
}

void OvenPlant::advance()
{
    const bool isOpen = command(COMMAND_DOOR);
    if (isOpen && !state(STATE_DOOR))
        countUp(C_DOOR);
    setState(STATE_DOOR, isOpen);
    for (unsigned zone = 0; zone < ZONES; ++zone) {
        controlZone(zone);
        heatZone(zone);
    }
    showState();
}

// Full power far below the set-point, then in proportion to what is missing.
void OvenPlant::controlZone(unsigned zone)
{
    const unsigned temperature = data(DM_TEMPERATURE + zone);
    const unsigned wanted = setPoint(zone);
    const bool mayHeat = command(COMMAND_HEAT);
    const unsigned missing = wanted > temperature ? wanted - temperature : 0;
    const unsigned output = mayHeat ? std::min<unsigned>(missing * 2, 100) : 0;
    setData(DM_HEATER + zone, output);
    setState(zone, output > 0);
}

// Heat goes in with the heater's output and out with the distance from the surroundings, faster through an open door.
void OvenPlant::heatZone(unsigned zone)
{
    const unsigned temperature = std::min<unsigned>(data(DM_TEMPERATURE + zone), TEMPERATURE_MAX);
    const unsigned above = temperature > AMBIENT ? temperature - AMBIENT : 0;
    const unsigned gain = data(DM_HEATER + zone) / 4 + static_cast<unsigned>(random() % 3);
    const unsigned loss = above / (state(STATE_DOOR) ? 20 : 150) + (above > 0 ? 1 : 0);
    const unsigned changed = temperature + gain - std::min(loss, temperature);
    setData(DM_TEMPERATURE + zone, std::min<unsigned>(changed, TEMPERATURE_MAX));
}

void OvenPlant::showState()
{
    bool isReady = true;
    bool isHot = false;
    unsigned sum = 0;
    for (unsigned zone = 0; zone < ZONES; ++zone) {
        const unsigned temperature = data(DM_TEMPERATURE + zone);
        const unsigned wanted = setPoint(zone);
        isReady = isReady && temperature + READY_BAND >= wanted && temperature <= wanted + READY_BAND;
        isHot = isHot || temperature >= ALARM_LEVEL;
        sum += temperature;
    }
    setState(STATE_READY, isReady);
    setState(STATE_ALARM, isHot);
    setTimer(T_READY, isReady ? std::min<unsigned>(timer(T_READY) + 1, COUNT_MAX) : 0);
    showAverage(static_cast<float>(sum) / static_cast<float>(10 * ZONES));
}

std::vector<PlantValue> OvenPlant::values() const
{
    std::vector<PlantValue> shown;
    const auto addZones = [&](unsigned first, const std::string &name, const auto &textOf) {
        for (unsigned zone = 0; zone < ZONES; ++zone)
            shown.push_back({"DM:" + std::to_string(first + zone), name + " " + std::to_string(zone + 1),
                             textOf(data(first + zone))});
    };
    const auto degrees = [](unsigned tenths) { return tenthsText(tenths) + " C"; };
    addZones(DM_TEMPERATURE, "zone", degrees);
    addZones(DM_SET_POINT, "set-point", degrees);
    addZones(DM_HEATER, "heater", [](unsigned percent) { return std::to_string(percent) + " %"; });
    shown.push_back({"CIO_bit:0.3", "ready", stateText(STATE_READY)});
    shown.push_back({"CIO_bit:0.4", "too hot", stateText(STATE_ALARM)});
    shown.push_back({"CIO_bit:0.6", "door open", stateText(STATE_DOOR)});
    return shown;
}

const char ADDRESSES[] =
    "  DM:0 DM:1 DM:2 temperature of zones 1 to 3, 0.1 degrees C   DM:4 steps\n"
    "  DM:10 DM:11 DM:12 set-points, 0.1 degrees C (write)         DM:20 DM:21 DM:22 heater output, %\n"
    "  DM:30 average temperature, 32-bit floating point in two words, low word first\n"
    "  CIO_bit:0.0 0.1 0.2 heater on  0.3 ready  0.4 over-temperature  0.5 heartbeat  0.6 door open\n"
    "  CIO_bit:100.0 heat  100.1 open the door (write)\n"
    "  T:0 steps since ready         C:0 openings of the door\n";

} // namespace

const PlantKind OVEN = {"oven", "three zones are heated to their set-points",
    ADDRESSES,
    [](Controller &controller, std::uint32_t seed) -> std::unique_ptr<Plant> {
        return std::make_unique<OvenPlant>(controller, seed);
    }};

} // namespace plc
