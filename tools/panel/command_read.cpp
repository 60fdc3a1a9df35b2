#include "commands.h"

#include "exit_codes.h"
#include "fresh_values.h"
#include "values.h"

#include <iostream>

int runRead(const DriverLibrary &library, const LinkOptions &link, Millis giveUp, const std::vector<std::string> &texts)
{
    const std::vector<Item> items = parseItems(library, texts, Access::READ);
    Runtime runtime(library, link);
    FreshValues fresh(runtime, items);
    if (!stepUntil(runtime, Clock::now() + giveUp, [&] { return fresh.complete(); }))
        return noAnswer(runtime, giveUp);
    for (const Item &item : items) {
        if (!fresh.refused(item))
            std::cout << itemText(item) << " = " << valuesText(runtime.values(item), item.isBit) << '\n';
    }
    return fresh.anyRefused() ? EXIT_REFUSED : EXIT_DONE;
}
