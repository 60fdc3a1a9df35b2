#ifndef TESTS_SCREENS_SCREENS_FIXTURE_H
#define TESTS_SCREENS_SCREENS_FIXTURE_H

#include "documents/document.h"
#include "screens/screen.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>

// Project files with screens and alarms, read with tags of every kind.

using Lines = std::vector<std::string>;

inline fins::TagConfig tagOf(const std::string &name, const std::string &item)
{
    fins::TagConfig tag;
    tag.name = name;
    tag.item = item;
    return tag;
}

class ScreensFixture : public ::testing::Test {
protected:
    ScreensFixture()
    {
        tags = {tagOf("Level", "DM:0/s16"),     tagOf("SetPoint", "DM:3/u16"),           tagOf("Pump", "CIO_bit:0.0"),
                tagOf("Start", "WR_bit:1.0"),   tagOf("Mode", "DM:5"),                   tagOf("Measured", "DM:6/f32-high"),
                tagOf("Speeds", "DM:10:8/s16"), tagOf("Doors", "CIO_bit:2.0:4"),         tagOf("Product", "DM:30:4/string"),
                tagOf("Code", "DM:40/hex"),     tagOf("Door", "CIO_bit:2.0")};
        tags[0].minimum = 0;
        tags[0].maximum = 100;
        tags[1].minimum = 10;
        tags[1].maximum = 90;
        tags[1].unit    = "%";
        tags[5].readOnly = true;
        tags[10].readOnly = true;
    }

    // What is wrong with the text of a project file; the book that was read is kept.
    Lines read(const std::string &text)
    {
        Problems problems;
        const DataNode root = parseToml(text, "p.toml", problems);
        book = readScreens(root, "p.toml", tags, recipes, problems);
        return problems.lines();
    }

    // The same for the elements of a screen of 8 x 5; the first one begins in line 3, column 1.
    Lines readElements(const std::string &elements)
    {
        return read("[screens.tank]\nelements = [\n" + elements + "\n]\n[screens.oven]\nelements = [\n"
                    "{ type = \"alarms\", at = [1, 1] }]\n");
    }

    const ScreenElement &element(std::size_t index = 0) const { return book.screens.at(0).elements.at(index); }

    std::vector<fins::TagConfig> tags;
    std::vector<std::string>     recipes = {"Lemonade", "Cola"};
    ScreenBook                   book;
};

#endif
