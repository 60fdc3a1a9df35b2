#include "console/console.h"
#include "console/cpu_texts.h"

// The console's commands for the state of the CPU unit.

namespace plc {

// Tells the state, or sets it if there is something behind the name.
std::string Console::tellOrSet(Words &words, std::string (*tell)(const Controller &controller),
                               std::string (*set)(const std::string &text, Controller &controller))
{
    std::string text;
    std::getline(words >> std::ws, text);
    text.erase(text.find_last_not_of(" \r") + 1);
    if (text.empty())
        return "ok " + tell(plc.controller);
    const std::string wrong = set(text, plc.controller);
    return wrong.empty() ? "ok" : "error " + wrong;
}

std::string Console::error(Words &words) { return tellOrSet(words, errorsText, setError); }

std::string Console::battery(Words &words) { return tellOrSet(words, batteryText, setBattery); }

std::string Console::clock(Words &words) { return tellOrSet(words, clockText, setClock); }

std::string Console::cycle(Words &words) { return tellOrSet(words, cycleText, setCycle); }

std::string Console::message(Words &words) { return tellOrSet(words, messagesText, setMessage); }

std::string Console::log(Words &words)
{
    return tellOrSet(words, logText, [](const std::string &text, Controller &controller) {
        if (text != "clear")
            return "'" + text + "' is not understood; use log or log clear";
        controller.clearLog();
        return std::string();
    });
}

} // namespace plc
