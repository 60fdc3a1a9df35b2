#include "commands.h"

#include "exit_codes.h"
#include "items.h"

#include <iostream>

int runCheck(const DriverLibrary &library, const std::vector<std::string> &texts)
{
    int code = EXIT_DONE;
    for (const std::string &text : texts) {
        try {
            std::cout << itemText(parseItem(library, text, Access::READ)) << " valid" << std::endl;
        } catch (const UsageError &error) {
            std::cerr << "fins_panel: " << error.what() << std::endl;
            code = EXIT_USAGE;
        }
    }
    return code;
}
