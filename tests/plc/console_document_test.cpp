#include "console/console.h"
#include "expressions/operations.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

// The document's lists are the program's, no more and no less.

static void expectList(const std::string &list)
{
    std::ifstream file(SIMULATOR_DOCUMENT);
    const std::string document{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ASSERT_NE(document, "") << SIMULATOR_DOCUMENT << " cannot be read";
    EXPECT_NE(document.find("\n```text\n" + list + "```\n"), std::string::npos)
        << SIMULATOR_DOCUMENT << " lacks this list:\n" << list;
}

TEST(ConsoleDocument, ListsTheCommandsOfTheHelp) { expectList(plc::Console::help()); }

TEST(ConsoleDocument, ListsTheFunctionsOfPlants) { expectList(plc::functionHelp()); }
