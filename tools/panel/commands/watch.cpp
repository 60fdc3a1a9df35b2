#include "commands/commands.h"

#include "commands/ending.h"
#include "session/step_until.h"
#include "session/watch_values.h"
#include "terminal/stop_flag.h"
#include "terminal/terminal.h"
#include "watch/watch_lines.h"
#include "watch/watch_view.h"
#include "watch/watch_writes.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>
#include <optional>

namespace {

using Writes = std::vector<TagWrite>;

// The lines of one exchange go out together. Where nobody reads them any more the program ends, and not by a signal:
// what became of its writes is still to be said. The lines come as long as the handles last.
std::vector<CallHandle> printLines(Runtime &runtime, WatchValues &values, LineFormat format)
{
    std::signal(SIGPIPE, SIG_IGN);
    if (format == LineFormat::CSV)
        std::cout << csvHead() << std::endl;
    const auto waiting = std::make_shared<std::string>();
    values.onEvent([format, waiting](const WatchEvent &event) {
        const std::string line = eventLine(format, event, std::chrono::system_clock::now());
        if (!line.empty())
            *waiting += line + "\n";
    });
    const auto print = [waiting] {
        if (!waiting->empty())
            std::cout << *waiting << std::flush;
        waiting->clear();
        if (!std::cout)
            programStop().stop();
    };
    return {runtime.onExchange([print](const Exchange &) { print(); }), runtime.onLost(print)};
}

bool showsTable(const LinkOptions &link, const WatchOptions &options)
{
    const bool traceInTheWay = link.trace != TraceMode::NONE && isatty(STDERR_FILENO) != 0;
    return !options.format && Terminal::isUsable() && !traceInTheWay;
}

int exitCode(Runtime &runtime, const WatchValues &values, const WatchOptions &options)
{
    if (programStop().isStopped())
        return EXIT_DONE;
    if (values.refused())
        return EXIT_REFUSED;
    if (!runtime.wasOnline()) // which the messages have told, unless nobody wanted them
        return runtime.options().quiet ? noLink(runtime) : static_cast<int>(EXIT_NO_LINK);
    if (values.changes() >= static_cast<unsigned long>(options.changes))
        return EXIT_DONE;
    runtime.messages().finish();
    std::cerr << "fins_panel: " << values.changes() << " of " << options.changes << " changes came in time"
              << std::endl;
    return EXIT_NO_LINK;
}

std::vector<Item> writtenItems(const Writes &writes)
{
    std::vector<Item> items;
    for (const TagWrite &write : writes)
        items.push_back(write.tag.item);
    return items;
}

} // namespace

int runWatch(const TagBook &book, const LinkOptions &link, const WatchOptions &options)
{
    const std::vector<Tag> tags = chosenTags({&book}, options.choice);
    const Writes toWrite = chosenWrites({&book}, {options.writes, "", {}});
    Runtime runtime(book.library(), link);
    WatchWrites writes(runtime);
    writes.begin(toWrite, options.keepGoing);
    WatchValues values(runtime, tags, writtenItems(toWrite), [&] { return writes.openItems(); });
    std::optional<WatchView> view;
    std::vector<CallHandle> lines;
    if (showsTable(link, options))
        view.emplace(runtime, book, tags, values, writes);
    else
        lines = printLines(runtime, values, options.format.value_or(LineFormat::PLAIN));
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    const TimePoint end = options.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    stepUntil(runtime, end, [&] {
        if (writes.pump())
            values.notePending();
        if (view)
            view->tick();
        return options.changes > 0 && values.changes() >= static_cast<unsigned long>(options.changes)
               && writes.settled();
    });
    view.reset(); // what is said from here on must not be lost with the table
    const int written = exitCode(writes.end(endedEarly(runtime)));
    return std::max(written, exitCode(runtime, values, options));
}
