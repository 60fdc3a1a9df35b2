#include "commands/commands.h"

#include "base/usage_error.h"
#include "commands/exit_codes.h"

#include <iostream>

int runCheck(const TagBook &book, const std::vector<std::string> &texts)
{
    int code = EXIT_DONE;
    for (const std::string &text : texts) {
        try {
            std::cout << book.resolve(text, Access::READ).name << " valid" << std::endl;
        } catch (const UsageError &error) {
            std::cerr << "fins_panel: " << error.what() << std::endl;
            code = EXIT_USAGE;
        }
    }
    return code;
}
