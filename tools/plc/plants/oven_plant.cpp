#include "plants/oven_plant.h"

#include <algorithm>
#include <cstring>

namespace plc {

namespace {

// Words, with their addresses. Those of the second and third zone follow that of the first.
enum : unsigned {
    DM_TEMPERATURE = 0,  // 0.1 degrees C
    DM_STEPS       = 4,  // steps since the start, wraps after 9999
    DM_SET_POINT   = 10, // panel: 0.1 degrees C; above 3000 counts as 3000
    DM_HEATER      = 20, // output, %
    DM_AVERAGE     = 30, // temperature of the zones as a 32-bit floating-point number, low word first, degrees C
    T_READY        = 0,  // steps since all zones are at their set-points; stays at 9999
    C_DOOR         = 0   // openings of the door, wraps after 9999
};

// Bits of CIO word 0, which the plant sets.
enum : unsigned {
    STATE_WORD      = 0,
    STATE_READY     = 3, // bits 0 to 2: the zone's heater is on; all zones within 5 degrees of their set-points
    STATE_ALARM     = 4, // a zone has 290 degrees or more
    STATE_HEARTBEAT = 5, // changes every 5 steps
    STATE_DOOR      = 6  // the door is open
};

// Bits of CIO word 100, which the panel sets.
enum : unsigned {
    COMMAND_WORD = 100,
    COMMAND_HEAT = 0, // heat; on at the start
    COMMAND_DOOR = 1  // open the door
};

enum : unsigned {
    ZONES           = 3,
    AMBIENT         = 200,
    TEMPERATURE_MAX = 3000,
    ALARM_LEVEL     = 2900,
    READY_BAND      = 50,
    COUNT_MAX       = 9999,
    HEARTBEAT_STEPS = 5
};

const unsigned START_SET_POINTS[ZONES] = {1500, 1800, 1650};

// A 32-bit floating-point number, low word first, as the PLC stores it.
void setFloat(Memory &memory, unsigned number, float value)
{
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof value, "float has 32 bits");
    std::memcpy(&bits, &value, sizeof bits);
    memory.setWord(AREA_DM, number, bits & 0xFFFFu);
    memory.setWord(AREA_DM, number + 1, bits >> 16);
}

unsigned setPoint(const Memory &memory, unsigned zone)
{
    return std::min<unsigned>(memory.word(AREA_DM, DM_SET_POINT + zone), TEMPERATURE_MAX);
}

} // namespace

std::string OvenPlant::help()
{
    return "  DM:0 DM:1 DM:2 temperature of zones 1 to 3, 0.1 degrees C   DM:4 steps\n"
           "  DM:10 DM:11 DM:12 set-points, 0.1 degrees C (write)         DM:20 DM:21 DM:22 heater output, %\n"
           "  DM:30 average temperature, 32-bit floating point in two words, low word first\n"
           "  CIO_bit:0.0 0.1 0.2 heater on  0.3 ready  0.4 over-temperature  0.5 heartbeat  0.6 door open\n"
           "  CIO_bit:100.0 heat  100.1 open the door (write)\n"
           "  T:0 steps since ready         C:0 openings of the door\n";
}

void OvenPlant::begin()
{
    Memory &memory = controller.memory;
    for (unsigned zone = 0; zone < ZONES; ++zone) {
        memory.setWord(AREA_DM, DM_TEMPERATURE + zone, AMBIENT);
        memory.setWord(AREA_DM, DM_SET_POINT + zone, START_SET_POINTS[zone]);
    }
    memory.setBit(AREA_CIO, COMMAND_WORD, COMMAND_HEAT, true);
    setFloat(memory, DM_AVERAGE, 20.0f);
}

void OvenPlant::advance()
{
    Memory &memory = controller.memory;
    const unsigned steps = nextCount(memory.word(AREA_DM, DM_STEPS));
    memory.setWord(AREA_DM, DM_STEPS, steps);
    if (steps % HEARTBEAT_STEPS == 0)
        memory.setBit(AREA_CIO, STATE_WORD, STATE_HEARTBEAT, !memory.bit(AREA_CIO, STATE_WORD, STATE_HEARTBEAT));
    const bool isOpen = memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_DOOR);
    if (isOpen && !memory.bit(AREA_CIO, STATE_WORD, STATE_DOOR))
        memory.setWord(AREA_C, C_DOOR, nextCount(memory.word(AREA_C, C_DOOR)));
    memory.setBit(AREA_CIO, STATE_WORD, STATE_DOOR, isOpen);
    for (unsigned zone = 0; zone < ZONES; ++zone) {
        controlZone(zone);
        heatZone(zone);
    }
    showState();
}

// Full power far below the set-point, then in proportion to what is missing.
void OvenPlant::controlZone(unsigned zone)
{
    Memory &memory = controller.memory;
    const unsigned temperature = memory.word(AREA_DM, DM_TEMPERATURE + zone);
    const unsigned wanted = setPoint(memory, zone);
    const bool mayHeat = memory.bit(AREA_CIO, COMMAND_WORD, COMMAND_HEAT);
    const unsigned missing = wanted > temperature ? wanted - temperature : 0;
    const unsigned output = mayHeat ? std::min<unsigned>(missing * 2, 100) : 0;
    memory.setWord(AREA_DM, DM_HEATER + zone, output);
    memory.setBit(AREA_CIO, STATE_WORD, zone, output > 0);
}

// Heat goes in with the heater's output and out with the distance from the surroundings, faster through an open door.
void OvenPlant::heatZone(unsigned zone)
{
    Memory &memory = controller.memory;
    const unsigned temperature = std::min<unsigned>(memory.word(AREA_DM, DM_TEMPERATURE + zone), TEMPERATURE_MAX);
    const unsigned above = temperature > AMBIENT ? temperature - AMBIENT : 0;
    const unsigned gain = memory.word(AREA_DM, DM_HEATER + zone) / 4 + static_cast<unsigned>(random() % 3);
    const unsigned loss = above / (memory.bit(AREA_CIO, STATE_WORD, STATE_DOOR) ? 20 : 150) + (above > 0 ? 1 : 0);
    const unsigned changed = temperature + gain - std::min(loss, temperature);
    memory.setWord(AREA_DM, DM_TEMPERATURE + zone, std::min<unsigned>(changed, TEMPERATURE_MAX));
}

void OvenPlant::showState()
{
    Memory &memory = controller.memory;
    bool isReady = true;
    bool isHot = false;
    unsigned sum = 0;
    for (unsigned zone = 0; zone < ZONES; ++zone) {
        const unsigned temperature = memory.word(AREA_DM, DM_TEMPERATURE + zone);
        const unsigned wanted = setPoint(memory, zone);
        isReady = isReady && temperature + READY_BAND >= wanted && temperature <= wanted + READY_BAND;
        isHot = isHot || temperature >= ALARM_LEVEL;
        sum += temperature;
    }
    memory.setBit(AREA_CIO, STATE_WORD, STATE_READY, isReady);
    memory.setBit(AREA_CIO, STATE_WORD, STATE_ALARM, isHot);
    memory.setWord(AREA_T, T_READY, isReady ? std::min<unsigned>(memory.word(AREA_T, T_READY) + 1, COUNT_MAX) : 0);
    setFloat(memory, DM_AVERAGE, static_cast<float>(sum) / static_cast<float>(10 * ZONES));
}

std::vector<PlantValue> OvenPlant::values() const
{
    const Memory &memory = controller.memory;
    std::vector<PlantValue> shown;
    const auto addZones = [&](unsigned first, const std::string &name, const auto &textOf) {
        for (unsigned zone = 0; zone < ZONES; ++zone)
            shown.push_back({"DM:" + std::to_string(first + zone), name + " " + std::to_string(zone + 1),
                             textOf(memory.word(AREA_DM, first + zone))});
    };
    const auto degrees = [](unsigned tenths) { return tenthsText(tenths) + " C"; };
    addZones(DM_TEMPERATURE, "zone", degrees);
    addZones(DM_SET_POINT, "set-point", degrees);
    addZones(DM_HEATER, "heater", [](unsigned percent) { return std::to_string(percent) + " %"; });
    shown.push_back({"CIO_bit:0.3", "ready", switchText(memory.bit(AREA_CIO, STATE_WORD, STATE_READY))});
    shown.push_back({"CIO_bit:0.4", "too hot", switchText(memory.bit(AREA_CIO, STATE_WORD, STATE_ALARM))});
    shown.push_back({"CIO_bit:0.6", "door open", switchText(memory.bit(AREA_CIO, STATE_WORD, STATE_DOOR))});
    return shown;
}

} // namespace plc
