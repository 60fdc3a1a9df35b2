#include "view/view.h"

#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <iostream>
#include <unistd.h>

namespace plc {

namespace {

const std::chrono::milliseconds PERIOD(250);
const std::size_t SAMPLES_MAX = 9; // rates are those of the last two seconds

bool wantsColour()
{
    const char *const setting = std::getenv("NO_COLOR");
    return !setting || !*setting;
}

unsigned secondsSince(std::chrono::steady_clock::time_point time)
{
    const auto passed = std::chrono::steady_clock::now() - time;
    return static_cast<unsigned>(std::chrono::duration_cast<std::chrono::seconds>(passed).count());
}

// The worst error's code, and how many more stand.
std::string errorText(const StandingErrors &errors)
{
    if (!errors.worst())
        return std::string();
    const std::size_t more = errors.all().size() - 1;
    return fmt::format("{:04X}", errors.worstCode()) + (more > 0 ? fmt::format("+{}", more) : std::string());
}

} // namespace

View::View(asio::io_context &io, const ViewSubject &subject)
    : shown(subject), hasColour(wantsColour()),
      answer("Type a command and Enter: help shows their names. Ctrl-C ends the simulator."), timer(io),
      resizing(io, SIGWINCH)
{
    if (isatty(STDERR_FILENO))
        errors = std::cerr.rdbuf(messages.rdbuf());
    sample();
    draw();
    refreshLater();
    followResizing();
}

View::~View()
{
    if (!errors)
        return;
    std::cerr.rdbuf(errors);
    terminal.leave();
    std::cerr << messages.str() << std::flush;
}

void View::refreshLater()
{
    timer.expires_after(PERIOD);
    timer.async_wait([this](const asio::error_code &error) {
        if (error)
            return;
        sample();
        draw();
        refreshLater();
    });
}

void View::followResizing()
{
    resizing.async_wait([this](const asio::error_code &error, int) {
        if (error)
            return;
        terminal.forget();
        draw();
        followResizing();
    });
}

// Rates begin anew: the samples are those of another PLC.
void View::show(const ViewSubject &subject)
{
    shown = subject;
    samples.clear();
    sample();
}

void View::takeKeys(const std::string &keys)
{
    for (const char key : keys) {
        std::string line;
        if (commandLine.take(key, &line) && !line.empty())
            answer = line + ": " + shown.console->answer(line);
    }
    draw();
}

void View::sample()
{
    Sample now = {Clock::now(), shown.plc->stats.requests, {}};
    for (const Connection::Client &client : shown.server->clients())
        now.clientRequests[client.id] = client.requests;
    samples.push_back(now);
    if (samples.size() > SAMPLES_MAX)
        samples.pop_front();
}

void View::takeMessages()
{
    const std::string all = messages.str();
    if (all.size() == messagesShown)
        return;
    messagesShown = all.size();
    const std::string lines = all.substr(0, all.find_last_not_of('\n') + 1);
    answer = lines.substr(lines.find_last_of('\n') + 1);
}

void View::draw()
{
    takeMessages();
    terminal.show(drawScreen(state(), Terminal::size(), hasColour));
}

double View::rateSince(Clock::time_point time, std::uint64_t now, std::uint64_t before) const
{
    const double seconds = std::chrono::duration<double>(samples.back().time - time).count();
    return seconds > 0 ? static_cast<double>(now - before) / seconds : 0;
}

ScreenState View::state() const
{
    const Sample &oldest = samples.front();
    const Sample &newest = samples.back();
    std::ostringstream address;
    address << shown.server->endpoint();
    ScreenState screen;
    screen.address = address.str();
    screen.node = shown.plc->nodes.server();
    screen.profile = shown.options->profile;
    screen.mode = modeName(shown.plc->controller.mode);
    screen.error = errorText(shown.plc->controller.errors);
    screen.upSeconds = secondsSince(start);
    screen.clientLimit = shown.plc->nodes.limit();
    screen.stats = shown.plc->stats;
    screen.requestRate = rateSince(oldest.time, newest.requests, oldest.requests);
    screen.faults = shown.plc->faults.list();
    if (!shown.options->recordFile.empty())
        screen.files += "recording " + shown.options->recordFile + " ";
    if (!shown.options->replayFile.empty())
        screen.files += "replaying " + shown.options->replayFile;
    for (const Connection::Client &client : shown.server->clients()) {
        const auto before = oldest.clientRequests.find(client.id);
        const auto now = newest.clientRequests.find(client.id);
        const std::uint64_t first = before == oldest.clientRequests.end() ? 0 : before->second;
        const std::uint64_t last = now == newest.clientRequests.end() ? first : now->second;
        screen.clients.push_back({client, rateSince(oldest.time, last, first)});
    }
    if (shown.plant) {
        screen.plant = shown.options->plant;
        screen.values = shown.plant->values();
    }
    for (const WriteLog::Entry &entry : shown.plc->controller.writes.entries())
        screen.writes.push_back({placeText(entry.place), entry.value, secondsSince(entry.time)});
    screen.typed = commandLine.text();
    screen.answer = answer;
    return screen;
}

} // namespace plc
