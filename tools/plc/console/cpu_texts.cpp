#include "console/cpu_texts.h"

#include "common/numbers.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <sstream>

namespace plc {

namespace {

const char *const BATTERY = "battery";

enum : std::size_t { NAME_MAX_LENGTH = 20, MESSAGE_MAX_LENGTH = 32, ERROR_TEXT_MAX_LENGTH = 16 };

// What is wrong with a text of up to so many characters, or an empty text.
std::string checkText(const std::string &text, std::size_t most)
{
    const bool isPrintable = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return !text.empty() && text.size() <= most && isPrintable
               ? std::string()
               : fmt::format("'{}' is no text of 1 to {} printable ASCII characters", text, most);
}

std::string setName(const std::string &text, std::string *name)
{
    std::string wrong = checkText(text, NAME_MAX_LENGTH);
    if (wrong.empty())
        *name = text;
    return wrong;
}

// What is left of the line, without the spaces around it.
std::string restOf(std::istringstream &words)
{
    std::string rest;
    std::getline(words >> std::ws, rest);
    return rest.substr(0, rest.find_last_not_of(" \r") + 1);
}

std::string timeText(const std::tm &time)
{
    return fmt::format("{}-{:02}-{:02} {:02}:{:02}:{:02}", time.tm_year + 1900, time.tm_mon + 1, time.tm_mday,
                       time.tm_hour, time.tm_min, time.tm_sec);
}

std::string tenthsText(unsigned tenths) { return fmt::format("{}.{}", tenths / 10, tenths % 10); }

// Reads milliseconds with at most one decimal.
bool readTenths(const std::string &text, unsigned *tenths)
{
    const double LEAST = 0.1;
    const double MOST = 40000;
    double ms = 0;
    if (!readNumber(text, ms) || !(ms >= LEAST && ms <= MOST) || std::fabs(ms * 10 - std::round(ms * 10)) > 1e-6)
        return false;
    *tenths = static_cast<unsigned>(std::lround(ms * 10));
    return true;
}

std::string named(const CpuError &error)
{
    return error.kind->name + (error.kind->most > 0 ? " " + std::to_string(error.number) : std::string());
}

// Reads the kind and, if it has one, the number.
std::string readError(std::istringstream &words, CpuError *error)
{
    std::string name;
    words >> name;
    error->kind = findErrorKind(name);
    if (!error->kind)
        return "'" + name + "' is no error; errors are " + errorKindNames();
    if (error->kind->most == 0)
        return std::string();
    std::string number;
    words >> number;
    if (parseNumber(number, error->kind->most, &error->number) && error->number >= error->kind->least)
        return std::string();
    return fmt::format("'{}' is no number of {}; use {} to {}", number, name, error->kind->least, error->kind->most);
}

std::string raiseError(const CpuError &error, Controller &controller)
{
    if (!error.kind->hasText && !error.text.empty())
        return "'" + error.text + "' is not understood; " + named(error) + " takes nothing but off";
    std::string wrong = error.text.empty() ? error.text : checkText(error.text, ERROR_TEXT_MAX_LENGTH);
    if (wrong.empty())
        controller.raise(error);
    return wrong;
}

void endAllErrors(Controller &controller)
{
    controller.dismissAll();
    controller.hasBattery = true;
}

} // namespace

const std::array<CpuSetting, CPU_SETTING_COUNT> CPU_SETTINGS = {{
    {"model", false, "what the CPU unit is called, up to 20 characters",
     [](const std::string &text, Controller &controller) { return setName(text, &controller.identity.model); }},
    {"version", false, "its version, up to 20 characters",
     [](const std::string &text, Controller &controller) { return setName(text, &controller.identity.version); }},
    {"clock", false, "what its clock shows at the start, YYYY-MM-DD HH:MM:SS", setClock},
    {"cycle", false, "cycle time in ms: one, or average, longest and shortest", setCycle},
    {BATTERY, false, "good, low or none", setBattery},
    {"errors", true, "errors that stand, NAME [NUMBER] [TEXT] as the console takes them", setError},
    {"messages", true, "messages of the program, NUMBER TEXT", setMessage},
}};

// A battery that is low or missing is an error with this name.
std::string setBattery(const std::string &text, Controller &controller)
{
    if (text != "good" && text != "low" && text != "none")
        return "'" + text + "' is no state of the battery; use good, low or none";
    const CpuError error = {findErrorKind(BATTERY), 0, std::string()};
    controller.hasBattery = text != "none";
    if (text == "good")
        controller.dismiss(error.code());
    else
        controller.raise(error);
    return std::string();
}

std::string setClock(const std::string &text, Controller &controller)
{
    std::tm time = {};
    const char *const end = strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &time);
    return end && *end == '\0' && controller.calendar.set(time, controller.clock.now())
               ? std::string()
               : "'" + text + "' is no time; use YYYY-MM-DD HH:MM:SS, 1998 to 2097";
}

std::string setCycle(const std::string &text, Controller &controller)
{
    std::istringstream words(text);
    std::array<unsigned, 3> tenths = {};
    std::size_t count = 0;
    bool isGood = true;
    for (std::string word; words >> word; ++count)
        isGood = isGood && count < tenths.size() && readTenths(word, &tenths[count]);
    if (isGood && count == 1)
        tenths[1] = tenths[2] = tenths[0];
    const bool isInOrder = tenths[2] <= tenths[0] && tenths[0] <= tenths[1];
    if (!isGood || (count != 1 && count != tenths.size()) || !isInOrder)
        return "'" + text + "' is no cycle time; use one of 0.1 to 40000 ms, or average, longest and shortest";
    controller.cycle = {tenths[0], tenths[1], tenths[2]};
    return std::string();
}

std::string setMessage(const std::string &text, Controller &controller)
{
    std::istringstream words(text);
    std::string number;
    words >> number;
    unsigned which = 0;
    if (!parseNumber(number, static_cast<unsigned>(controller.messages.size() - 1), &which))
        return "'" + number + "' is no number of a message; use 0 to 7";
    std::string message = restOf(words);
    const bool isEnd = message == "off";
    std::string wrong = isEnd ? std::string() : checkText(message, MESSAGE_MAX_LENGTH);
    if (wrong.empty())
        controller.messages[which] = isEnd ? std::string() : message;
    return wrong;
}

std::string setError(const std::string &text, Controller &controller)
{
    if (text == "off") {
        endAllErrors(controller);
        return std::string();
    }
    std::istringstream words(text);
    CpuError error = {nullptr, 0, std::string()};
    std::string wrong = readError(words, &error);
    if (!wrong.empty())
        return wrong;
    error.text = restOf(words);
    if (error.text != "off")
        return raiseError(error, controller);
    if (error.kind == findErrorKind(BATTERY))
        return setBattery("good", controller);
    return controller.dismiss(error.code()) ? std::string() : named(error) + " does not stand";
}

std::string batteryText(const Controller &controller)
{
    if (!controller.hasBattery)
        return "none";
    return controller.errors.has(findErrorKind(BATTERY)->code) ? "low" : "good";
}

std::string clockText(const Controller &controller)
{
    const std::tm time = controller.time();
    return timeText(time) + " weekday " + std::to_string(time.tm_wday);
}

std::string cycleText(const Controller &controller)
{
    const CycleTime &cycle = controller.cycle;
    return "average=" + tenthsText(cycle.average) + " longest=" + tenthsText(cycle.most) +
           " shortest=" + tenthsText(cycle.least);
}

std::string messagesText(const Controller &controller)
{
    std::string text;
    for (std::size_t i = 0; i < controller.messages.size(); ++i)
        if (!controller.messages[i].empty())
            text += fmt::format("{}{} '{}'", text.empty() ? "" : ", ", i, controller.messages[i]);
    return text.empty() ? "none" : text;
}

std::string errorsText(const Controller &controller)
{
    std::string text;
    for (const CpuError &error : controller.errors.all())
        text += fmt::format("{}{:04X} {}{}", text.empty() ? "" : ", ", error.code(), named(error),
                            error.text.empty() ? "" : " '" + error.text + "'");
    return text.empty() ? "none" : text;
}

std::string logText(const Controller &controller)
{
    std::string text;
    for (const ErrorRecord &record : controller.log.all())
        text += fmt::format("{}{:04X} {}", text.empty() ? "" : ", ", record.code, timeText(record.time));
    return text.empty() ? "empty" : text;
}

} // namespace plc
