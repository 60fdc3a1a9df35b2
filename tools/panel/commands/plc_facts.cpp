#include "commands/plc_facts.h"

#include "service/service_request.h"

#include <fmt/format.h>

namespace {

std::string listText(const std::vector<std::string> &texts)
{
    return texts.empty() ? "none" : fmt::format("{}", fmt::join(texts, ", "));
}

std::string batteryText(const PlcStatus &status)
{
    if (hasBatteryError(status))
        return "low or missing: the PLC reports a battery error";
    return status.hasBattery ? "present" : "none";
}

Fact milliseconds(const std::string &name, std::uint32_t tenths)
{
    return {name, cycleText(tenths), name + "_ms", tenths / 10.0};
}

// As long as the PLC's clock may be off after it was set: it has whole seconds.
const std::chrono::seconds CLOCK_TOLERANCE(2);

// The two largest units: a difference of whole hours tells of another zone, or of summer time.
std::string spanText(std::chrono::seconds span)
{
    const struct {
        long        seconds;
        const char *name;
    } units[] = {{86400, " d"}, {3600, " h"}, {60, " min"}, {1, " s"}};
    std::size_t i = 0;
    while (i + 1 < std::size(units) && span.count() < units[i].seconds)
        ++i;
    std::string text = std::to_string(span.count() / units[i].seconds) + units[i].name;
    const auto rest = i + 1 < std::size(units) ? span.count() % units[i].seconds / units[i + 1].seconds : 0;
    if (rest > 0)
        text += " " + std::to_string(rest) + units[i + 1].name;
    return text;
}

} // namespace

Facts nameFacts(const Controller &controller)
{
    return {{"model", controller.model, "model", controller.model},
            {"version", controller.version, "version", controller.version}};
}

Facts factsOf(const Controller &controller)
{
    const std::string kwords = std::to_string(controller.programKwords);
    const std::string card = controller.hasCard ? std::to_string(controller.cardKbytes) + " KB" : "none";
    Facts facts = nameFacts(controller);
    facts.push_back({"program", kwords + " K words", "program_kwords", controller.programKwords});
    facts.push_back({"DM", std::to_string(controller.dmWords) + " words", "dm_words", controller.dmWords});
    facts.push_back({"EM banks", std::to_string(controller.emBanks), "em_banks", controller.emBanks});
    facts.push_back({"card", card, "card_kbytes", controller.hasCard ? Json(controller.cardKbytes) : Json()});
    return facts;
}

Facts factsOf(const CycleTime &cycle)
{
    return {milliseconds("average", cycle.average), milliseconds("max", cycle.longest),
            milliseconds("min", cycle.shortest)};
}

Facts modeFacts(const PlcStatus &status)
{
    const std::string mode = modeText(status.mode);
    std::string program = status.isRunning ? "running" : "stopped";
    if (status.isStandby)
        program += ", standby";
    if (status.writesFlash)
        program += ", the flash memory is being written";
    return {{"mode", mode, "mode", mode}, {"program", program, "running", status.isRunning}};
}

Facts errorFacts(const PlcStatus &status)
{
    const std::vector<std::string> fatal    = fatalTexts(status.fatal);
    const std::vector<std::string> nonFatal = nonFatalTexts(status.nonFatal);
    const std::string code = status.errorCode == 0 ? "none" : errorCodeText(status.errorCode);
    Facts facts = {{"fatal", listText(fatal), "fatal", fatal},
                   {"non-fatal", listText(nonFatal), "non_fatal", nonFatal},
                   {"error code", code, "error_code", fmt::format("{:04X}", status.errorCode)},
                   {"battery", batteryText(status), "battery_ok", status.hasBattery && !hasBatteryError(status)}};
    if (!status.errorText.empty())
        facts.push_back({"message", status.errorText, "message", status.errorText});
    return facts;
}

Facts factsOf(const ErrorLog &log)
{
    std::string text = log.records.empty() ? "empty" : std::to_string(log.records.size()) + " of at most "
                                                           + std::to_string(log.room) + " records, the oldest first";
    Json records = Json::array();
    for (const LoggedError &record : log.records) {
        text += "\n" + loggedText(record);
        records.push_back({{"time", record.time ? Json(plcTimeText(*record.time)) : Json()},
                           {"code", fmt::format("{:04X}", record.code)},
                           {"detail", fmt::format("{:04X}", record.detail)},
                           {"text", errorCodeText(record.code)}});
    }
    return {{"log", text, "log", records}};
}

std::string differenceText(const PlcTime &time, std::chrono::system_clock::time_point now)
{
    const auto difference = aheadBy(time, localTime(now));
    if (!difference)
        return "a day that does not exist";
    if (difference->count() == 0)
        return "as this computer's";
    return spanText(std::chrono::abs(*difference)) + (difference->count() < 0 ? " behind" : " ahead of")
           + " this computer's";
}

bool hasTaken(const PlcTime &time, std::chrono::system_clock::time_point sent,
              std::chrono::system_clock::time_point now)
{
    const auto sinceSent = aheadBy(time, localTime(sent));
    const auto sinceNow  = aheadBy(time, localTime(now));
    return sinceSent && sinceNow && *sinceSent >= -CLOCK_TOLERANCE && *sinceNow <= CLOCK_TOLERANCE;
}

Facts clockFacts(const PlcTime &time, std::chrono::system_clock::time_point now)
{
    const auto difference = aheadBy(time, localTime(now));
    return {{"clock", plcTimeText(time), "clock", plcTimeText(time)},
            {"difference", differenceText(time, now), "difference_s",
             difference ? Json(difference->count()) : Json()}};
}

std::string factLines(const Facts &facts)
{
    std::string lines;
    for (const Fact &fact : facts) {
        lines += fmt::format("{:<12} ", fact.name);
        for (const char c : fact.text)
            lines += c == '\n' ? "\n" + std::string(13, ' ') : std::string(1, c);
        lines += '\n';
    }
    return lines;
}

std::string factsJson(const Facts &facts)
{
    Json object = Json::object();
    for (const Fact &fact : facts)
        object[fact.key] = fact.value;
    return jsonText(object) + '\n';
}
