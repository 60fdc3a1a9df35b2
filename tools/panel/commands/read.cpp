#include "commands/commands.h"

#include "commands/ending.h"
#include "session/read_once.h"
#include "session/step_until.h"

#include <iostream>

int runRead(const TagBook &book, const LinkOptions &link, Millis giveUp, const ItemChoice &choice, ValueForm form)
{
    const std::vector<Tag> tags = chosenTags({&book}, choice);
    Runtime runtime(book.library(), link);
    ReadOnce fresh(runtime, itemsOf(tags));
    if (!stepUntil(runtime, Clock::now() + giveUp, [&] { return fresh.complete(); }))
        return noAnswer(runtime, giveUp);
    std::vector<ReadValue> values;
    values.reserve(tags.size());
    for (const Tag &tag : tags) {
        values.push_back({tag.name, tag.item, tag.format, std::nullopt});
        if (!fresh.refused(tag.item))
            values.back().bytes = runtime.values(tag.item);
    }
    std::cout << valueLines(form, values);
    return fresh.anyRefused() ? EXIT_REFUSED : EXIT_DONE;
}
