#include "commands.h"

#include "exit_codes.h"
#include "fresh_values.h"
#include "terminal.h"
#include "watch_lines.h"
#include "watch_values.h"
#include "watch_view.h"
#include "write_queue.h"

#include <unistd.h>

#include <iostream>
#include <memory>
#include <optional>

namespace {

// The writes that go out once, as soon as the link is up.
class WatchWrites {
public:
    WatchWrites(Runtime &runtime, WatchValues &values) : queue_(runtime), values_(values) {}

    void add(const Tag &tag, const std::vector<quint8> &data) { queue_.add(tag.item, data); }

    void pump()
    {
        queue_.pump();
        if (settled_)
            return;
        std::vector<Item> items;
        for (const WritePiece &piece : queue_.pieces()) {
            if (piece.outcome == WriteOutcome::WAITING || piece.outcome == WriteOutcome::IN_FLIGHT)
                items.push_back(piece.item);
        }
        values_.setPending(items);
        settled_ = items.empty();
    }

    bool anyRefused() const
    {
        for (const WritePiece &piece : queue_.pieces()) {
            if (piece.outcome == WriteOutcome::REFUSED)
                return true;
        }
        return false;
    }

private:
    WriteQueue   queue_;
    WatchValues &values_;
    bool         settled_ = false;
};

std::vector<std::pair<Tag, std::vector<quint8>>> parseWrites(const TagBook &book, const std::vector<std::string> &texts)
{
    std::vector<std::pair<Tag, std::vector<quint8>>> writes;
    for (const std::string &text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos)
            throw UsageError("'" + text + "' is no write; use ITEM=VALUE");
        std::vector<quint8> data;
        const Tag tag = book.resolveWithValues(text.substr(0, equals), Access::WRITE, {text.substr(equals + 1)}, data);
        writes.emplace_back(tag, data);
    }
    return writes;
}

// The lines of one exchange go out together.
void printLines(Runtime &runtime, WatchValues &values, LineFormat format)
{
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
    };
    runtime.onExchange([print](const Exchange &) { print(); });
    runtime.onLost(print);
}

bool showsTable(const LinkOptions &link, const WatchOptions &options)
{
    const bool traceInTheWay = link.trace != TraceMode::NONE && isatty(STDERR_FILENO) != 0;
    return options.format == WatchFormat::AUTO && Terminal::isUsable() && !traceInTheWay;
}

LineFormat lineFormat(WatchFormat format)
{
    if (format == WatchFormat::JSON)
        return LineFormat::JSON;
    return format == WatchFormat::CSV ? LineFormat::CSV : LineFormat::PLAIN;
}

int exitCode(Runtime &runtime, const WatchValues &values, const WatchWrites &writes, const WatchOptions &options)
{
    if (writes.anyRefused())
        return EXIT_REFUSED;
    if (stopRequested())
        return EXIT_DONE;
    if (values.refused())
        return EXIT_REFUSED;
    if (!runtime.wasOnline())
        return EXIT_NO_LINK;
    if (values.changes() >= static_cast<unsigned long>(options.changes))
        return EXIT_DONE;
    runtime.messages().finish();
    std::cerr << "fins_panel: " << values.changes() << " of " << options.changes << " changes came in time"
              << std::endl;
    return EXIT_NO_LINK;
}

} // namespace

int runWatch(const DriverLibrary &library, const LinkOptions &link, const WatchOptions &options)
{
    const TagBook own(library);
    const TagBook &book = options.book ? *options.book : own;
    const std::vector<Tag> tags = book.resolveAll(options.items, Access::READ);
    const auto toWrite = parseWrites(book, options.writes);
    Runtime runtime(library, link);
    WatchValues values(runtime, tags);
    WatchWrites writes(runtime, values);
    for (const auto &[tag, data] : toWrite)
        writes.add(tag, data);
    std::optional<WatchView> view;
    if (showsTable(link, options))
        view.emplace(runtime, values);
    else
        printLines(runtime, values, lineFormat(options.format));
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    const TimePoint end = options.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    stepUntil(runtime, end, [&] {
        writes.pump();
        if (view)
            view->tick();
        return options.changes > 0 && values.changes() >= static_cast<unsigned long>(options.changes);
    });
    const std::string lastMessage = view ? view->lastMessage() : "";
    view.reset();
    const int code = exitCode(runtime, values, writes, options);
    if (code != EXIT_DONE && !lastMessage.empty())
        std::cerr << lastMessage << std::endl;
    return code;
}
