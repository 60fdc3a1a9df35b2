#include "commands/commands.h"

#include "commands/ending.h"
#include "session/read_once.h"
#include "session/step_until.h"

#include <iostream>

int runRead(const TagBook &book, const LinkOptions &link, Millis giveUp, const ItemChoice &choice)
{
    const std::vector<Tag> tags = chosenTags(book, choice);
    Runtime runtime(book.library(), link);
    ReadOnce fresh(runtime, itemsOf(tags));
    if (!stepUntil(runtime, Clock::now() + giveUp, [&] { return fresh.complete(); }))
        return noAnswer(runtime, giveUp);
    for (const Tag &tag : tags) {
        if (!fresh.refused(tag.item))
            std::cout << tag.name << " = " << withUnit(decodeValues(tag.format, runtime.values(tag.item)), tag.format)
                      << '\n';
    }
    return fresh.anyRefused() ? EXIT_REFUSED : EXIT_DONE;
}
