#include "commands/confirmation.h"

#include "commands/difference_table.h"
#include "commands/ending.h"
#include "common/usage_error.h"
#include "session/step_until.h"

#include <unistd.h>

#include <iostream>

void requireTerminal(const std::string &problem)
{
    if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0)
        throw UsageError(problem);
}

bool isYes(const std::string &question)
{
    std::cerr << question << std::flush;
    std::string answer;
    if (!std::getline(std::cin, answer))
        std::cerr << std::endl; // nobody has ended the line
    return answer == "y" || answer == "Y" || answer == "yes";
}

bool isConfirmed(const std::vector<WriteReport::Order> &orders, const HeldBytes &held)
{
    std::vector<std::vector<std::string>> rows = {{"item", "PLC", "new", "unit"}};
    for (const WriteReport::Order &order : orders)
        rows.push_back({order.name, decodeValues(order.format, held(order.item)),
                        decodeValues(order.format, order.data), order.format.unit});
    return isYes(tableText(rows, {false, true, true, false}) + "write these values? [y/N] ");
}

int endUnwritten(Runtime &runtime, WriteReport &report, const std::string &reason, Millis giveUp)
{
    report.finish(reason);
    if (reason == endedEarly(runtime))
        noAnswer(runtime, giveUp);
    return exitCode(report.verdict());
}
