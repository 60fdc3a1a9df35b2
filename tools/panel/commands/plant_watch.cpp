#include "commands/commands.h"

#include "commands/ending.h"
#include "plant/plant_edits.h"
#include "plant/plant_values.h"
#include "terminal/stop_flag.h"
#include "watch/table_view.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>
#include <optional>

namespace {

constexpr Millis TICK{50}; // at most from one look at keys and screen to the next

std::vector<PlantPlc> plcsOf(const std::vector<WatchedPlc> &watched)
{
    std::vector<PlantPlc> plcs;
    plcs.reserve(watched.size());
    for (const WatchedPlc &one : watched)
        plcs.push_back(one.plc);
    return plcs;
}

std::vector<std::vector<Tag>> tagsOf(const std::vector<WatchedPlc> &watched)
{
    std::vector<std::vector<Tag>> tags;
    tags.reserve(watched.size());
    for (const WatchedPlc &one : watched)
        tags.push_back(one.tags);
    return tags;
}

int exitCode(fins::Fate fate)
{
    switch (fate) {
    case fins::Fate::ACCEPTED:
    case fins::Fate::VERIFIED:    return EXIT_DONE;
    case fins::Fate::DIFFERS:
    case fins::Fate::REFUSED:
    case fins::Fate::INVALID:     return EXIT_REFUSED;
    case fins::Fate::UNCONFIRMED:
    case fins::Fate::NOT_SENT:    break;
    }
    return EXIT_NO_LINK;
}

std::string linkText(const fins::State &state)
{
    switch (state.phase) {
    case fins::Phase::WAITING:
        return retryText(std::max(state.nextAttempt - std::chrono::system_clock::now(), SystemTime::duration::zero()));
    case fins::Phase::CONNECTING: return "connecting";
    case fins::Phase::HANDSHAKE:  return "handshake";
    case fins::Phase::PROVING:
    case fins::Phase::ONLINE:     return "online";
    case fins::Phase::SILENT:     return "no answer";
    case fins::Phase::CLOSED:     break;
    }
    return "closed";
}

class PlantWatch {
public:
    PlantWatch(const std::vector<WatchedPlc> &watched, const std::string &title, const WatchOptions &options);

    void run();

    // Tells what is left to tell; returns the exit code.
    int end();

private:
    void takeLines(LineFormat format);
    void takeTable();
    void print();
    void fillHead(TableContent &content);
    bool isEnough() const { return options_.changes > 0 && values_.changes() >= static_cast<unsigned long>(options_.changes); }
    bool showsTable() const { return !options_.format && Terminal::isUsable(); }

    const std::string         title_;
    const WatchOptions       &options_;
    Messages                  messages_;
    Plant                     plant_;
    PlantValues               values_;
    std::vector<std::unique_ptr<PlantEdits>> edits_; // of the PLCs
    PlantEditor               editor_;
    std::string               waiting_; // lines
    std::optional<TableView>  table_;
};

PlantWatch::PlantWatch(const std::vector<WatchedPlc> &watched, const std::string &title, const WatchOptions &options)
    : title_(title), options_(options), plant_(plcsOf(watched)), values_(tagsOf(watched))
{
    for (std::size_t i = 0; i < watched.size(); ++i) {
        edits_.push_back(std::make_unique<PlantEdits>(plant_, i));
        editor_.add(std::make_unique<WatchEditor>(watched[i].book, watched[i].tags, values_.of(i), *edits_[i]));
    }
    plant_.onMessage([this](const std::string &line) { messages_.say(line); });
    plant_.onState([this](std::size_t plc, const fins::State &state) { edits_[plc]->noteState(state); });
    if (showsTable())
        takeTable();
    else
        takeLines(options.format.value_or(LineFormat::PLAIN));
}

void PlantWatch::takeLines(LineFormat format)
{
    std::signal(SIGPIPE, SIG_IGN);
    if (format == LineFormat::CSV)
        waiting_ = csvHead() + "\n";
    plant_.onSamples([this, format](std::size_t plc, const fins::Samples &samples) {
        values_.take(plc, samples, [&](std::size_t, const WatchEvent &event) {
            const std::string line = eventLine(format, event, std::chrono::system_clock::now());
            if (!line.empty())
                waiting_ += line + "\n";
        });
    });
}

void PlantWatch::takeTable()
{
    table_.emplace(editor_, [this] { return editor_.rows(); },
                   [this](TableContent &content, TimePoint) { fillHead(content); }, messages_);
    plant_.onSamples([this](std::size_t plc, const fins::Samples &samples) {
        values_.take(plc, samples, [&](std::size_t value, const WatchEvent &event) {
            if (event.value.quality == Quality::GOOD)
                table_->noteGood(value, event.value.text);
        });
    });
}

// Where nobody reads the lines any more the program ends.
void PlantWatch::print()
{
    if (!waiting_.empty())
        std::cout << waiting_ << std::flush;
    waiting_.clear();
    if (!std::cout)
        programStop().stop();
}

// How many of the PLCs answer, and of the first one that does not why.
void PlantWatch::fillHead(TableContent &content)
{
    std::size_t online = 0;
    std::string first;
    for (std::size_t i = 0; i < plant_.size(); ++i) {
        const fins::State state = plant_.plc(i).state();
        const bool isOnline = state.phase == fins::Phase::ONLINE;
        online += isOnline ? 1 : 0;
        if (!isOnline && first.empty())
            first = ", " + plant_.name(i) + ": " + linkText(state);
        content.errors += static_cast<unsigned long>(state.losses);
    }
    content.peer = title_;
    content.link = std::to_string(online) + " of " + std::to_string(plant_.size()) + " online" + first;
    content.isUp = online == plant_.size();
}

void PlantWatch::run()
{
    std::vector<pollfd> nothing; // to wait for besides the PLCs
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options_.forSeconds));
    const TimePoint end = options_.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    print();
    while (!programStop().isStopped() && Clock::now() < end && !isEnough()) {
        plant_.step(table_ ? std::min(end, Clock::now() + TICK) : end, nothing);
        print();
        if (table_)
            table_->tick();
    }
}

int PlantWatch::end()
{
    plant_.onSamples(nullptr);
    table_.reset(); // what is said from here on must not be lost with it
    int code = EXIT_DONE;
    for (const auto &edits : edits_) {
        for (const fins::Fate fate : edits->end(messages_))
            code = std::max(code, exitCode(fate));
    }
    if (programStop().isStopped())
        return code;
    if (values_.anyRefused())
        code = std::max<int>(code, EXIT_REFUSED);
    const std::string silent = plant_.silent(values_.answered());
    if (!silent.empty())
        messages_.sayAlways("fins_panel: no answer from " + silent);
    const bool isShort = options_.changes > 0 && !isEnough();
    if (isShort)
        messages_.sayAlways("fins_panel: " + std::to_string(values_.changes()) + " of " + std::to_string(options_.changes)
                            + " changes came in time");
    return silent.empty() && !isShort ? code : static_cast<int>(EXIT_NO_LINK);
}

} // namespace

int runPlantWatch(const std::vector<WatchedPlc> &plcs, const std::string &title, const WatchOptions &options)
{
    PlantWatch watch(plcs, title, options);
    watch.run();
    return watch.end();
}
