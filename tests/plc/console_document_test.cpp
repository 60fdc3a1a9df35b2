#include "console/console.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

// The document's list of the commands is the program's, no more and no less.

TEST(ConsoleDocument, ListsTheCommandsOfTheHelp)
{
    std::ifstream file(SIMULATOR_DOCUMENT);
    const std::string document{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ASSERT_NE(document, "") << SIMULATOR_DOCUMENT << " cannot be read";
    EXPECT_NE(document.find("\n```text\n" + plc::Console::help() + "```\n"), std::string::npos)
        << SIMULATOR_DOCUMENT << " lacks this list:\n" << plc::Console::help();
}
