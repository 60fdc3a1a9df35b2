#include "commands/plc_facts.h"

#include "common/time_text.h"
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

std::chrono::seconds differenceOf(std::chrono::system_clock::time_point time, std::chrono::system_clock::time_point now)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time - std::chrono::floor<std::chrono::seconds>(now));
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
    const auto system = systemTime(time);
    if (!system)
        return "a day that does not exist";
    const std::chrono::seconds difference = differenceOf(*system, now);
    if (difference.count() == 0)
        return "as this computer's";
    return ageText(std::chrono::abs(difference)) + (difference.count() < 0 ? " behind" : " ahead of")
           + " this computer's";
}

Facts clockFacts(const PlcTime &time, std::chrono::system_clock::time_point now)
{
    const auto system = systemTime(time);
    return {{"clock", plcTimeText(time), "clock", plcTimeText(time)},
            {"difference", differenceText(time, now), "difference_s",
             system ? Json(differenceOf(*system, now).count()) : Json()}};
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
