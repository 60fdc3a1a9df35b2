#ifndef TESTS_PLC_PLANT_FIXTURE_H
#define TESTS_PLC_PLANT_FIXTURE_H

#include "plants/shipped_plants.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

// A plant and the controller it works on, stepped by hand.
class PlantTest : public ::testing::Test {
protected:
    void start(const std::string &name, std::uint32_t seed = 1)
    {
        controller = std::make_unique<plc::Controller>();
        plant = plc::makePlant(name, *controller, seed);
        plant->begin();
    }

    void step(unsigned count = 1)
    {
        for (unsigned i = 0; i < count; ++i)
            plant->step();
    }

    // Steps until the value is there, 10,000 times at most.
    void stepUntil(const std::string &place, unsigned wanted)
    {
        for (unsigned i = 0; i < 10000 && get(place) != wanted; ++i)
            plant->step();
        EXPECT_EQ(get(place), wanted) << place;
    }

    unsigned get(const std::string &place) const { return controller->memory.get(spanOf(place), 0); }

    // The values of TYPE:ADDRESS:COUNT, separated by spaces.
    std::string values(const std::string &place) const
    {
        const plc::Span span = spanOf(place);
        std::string text;
        for (unsigned i = 0; i < span.count; ++i)
            text += (i ? " " : "") + std::to_string(controller->memory.get(span, i));
        return text;
    }

    void set(const std::string &place, unsigned value) { controller->memory.set(spanOf(place), 0, value); }

    // What the live view says of the place.
    std::string shown(const std::string &place) const
    {
        for (const plc::PlantValue &value : plant->values())
            if (value.place == place)
                return value.name + " " + value.text;
        return "nothing";
    }

    std::unique_ptr<plc::Controller> controller;
    std::unique_ptr<plc::Plant>      plant;

private:
    plc::Span spanOf(const std::string &place) const
    {
        plc::Span span;
        EXPECT_EQ(plc::parsePlace(place, controller->memory, &span), "") << place;
        return span;
    }
};

#endif
