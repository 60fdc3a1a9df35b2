#include "faults/fault_rule.h"

#include <cstdlib>
#include <fmt/format.h>
#include <set>

namespace plc {

namespace {

const unsigned TIMES_MAX = 1000000;
const double NEVER = 1e-12; // a probability below it is none

// The parts of a fault's text; those that are not there are empty, and told apart from those that are there and empty.
struct Parts {
    std::string                name;
    std::optional<std::string> value;
    std::optional<std::string> aim;
    std::optional<std::string> probability;
    std::optional<std::string> times;
};

// Cuts off what is behind the first `mark`.
std::optional<std::string> cutAt(std::string *text, char mark)
{
    const std::string::size_type at = text->find(mark);
    if (at == std::string::npos)
        return std::nullopt;
    std::string behind = text->substr(at + 1);
    text->resize(at);
    return behind;
}

Parts split(const std::string &text)
{
    Parts parts;
    parts.name = text;
    parts.times = cutAt(&parts.name, '#');
    parts.probability = cutAt(&parts.name, '@');
    parts.aim = cutAt(&parts.name, ':');
    parts.value = cutAt(&parts.name, '=');
    return parts;
}

// A decimal number from 0 to 1.
bool parseProbability(const std::string &text, double *probability)
{
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos)
        return false;
    char *end = nullptr;
    const double parsed = std::strtod(text.c_str(), &end);
    if (*end != '\0' || parsed > 1.0)
        return false;
    *probability = parsed < NEVER ? 0 : parsed;
    return true;
}

// Without an exponent, which is none of a probability's signs, and without zeros at the end.
std::string probabilityText(double probability)
{
    const std::string text = fmt::format("{:.15f}", probability);
    const std::string shortest = text.substr(0, text.find_last_not_of(".0") + 1);
    return shortest.empty() ? "0" : shortest;
}

std::string parseMoment(const std::string &text, FaultRule *rule)
{
    if (text != "request" && text != "reply")
        return "'" + text + "' is nothing that a fault is on; use on=request or on=reply";
    const Moment moment = text == "request" ? Moment::REQUEST : Moment::REPLY;
    if (moment != usualMoment(rule->kind) && !hasBothMoments(rule->kind))
        return std::string(faultName(rule->kind)) + " is never on=" + text + "; both go with " + namesWithBothMoments();
    rule->moment = moment;
    return std::string();
}

std::string parseAimPart(const std::string &part, std::set<std::string> *given, FaultRule *rule)
{
    std::string key = part;
    const std::string value = cutAt(&key, '=').value_or("");
    bool isKnown = true;
    std::string wrong;
    if (key == "after")
        wrong = parseNumber(value, TIMES_MAX, &rule->after)
                    ? "" : "'" + value + "' is no number of requests; use 0 to " + std::to_string(TIMES_MAX);
    else if (key == "on")
        wrong = parseMoment(value, rule);
    else
        wrong = rule->aim.set(key, value, &isKnown);
    if (!isKnown)
        return "'" + key + "' is no aim; aims are command area from to client after on, as in drop:area=DM,from=100";
    if (wrong.empty() && !given->insert(key).second)
        return key + " is given twice; set a second fault instead";
    return wrong;
}

// Connections have an address only, and node address exchanges a node besides.
std::string checkReach(const FaultRule &rule)
{
    const Reach reach = reachOf(rule.kind);
    const bool isOfCommands = rule.aim.command != FaultAim::ANY || rule.aim.area >= 0;
    if (reach == Reach::CONNECTION && (isOfCommands || rule.aim.node != 0))
        return std::string(faultName(rule.kind)) + " strikes connections; aim it with client=IP or after=N only";
    if (reach == Reach::EXCHANGE && isOfCommands)
        return std::string(faultName(rule.kind)) + " strikes node exchanges; aim it with client or after=N only";
    return rule.aim.check();
}

std::string parseAim(const std::string &text, FaultRule *rule)
{
    std::set<std::string> given;
    std::string rest = text;
    for (std::optional<std::string> next = rest; next;) {
        std::string part = *next;
        next = cutAt(&part, ',');
        std::string wrong = parseAimPart(part, &given, rule);
        if (!wrong.empty())
            return wrong;
    }
    return checkReach(*rule);
}

std::string parseNameAndAim(const Parts &parts, FaultRule *rule)
{
    rule->kind = findFault(parts.name);
    if (rule->kind == FAULT_COUNT)
        return unknownFault(parts.name);
    rule->value = presetValue(rule->kind);
    rule->moment = usualMoment(rule->kind);
    std::string wrong = parts.value ? parseFaultValue(rule->kind, *parts.value, &rule->value) : std::string();
    return wrong.empty() && parts.aim ? parseAim(*parts.aim, rule) : wrong;
}

} // namespace

bool FaultRule::isAimedLike(const FaultRule &other) const
{
    return kind == other.kind && aim == other.aim && after == other.after && moment == other.moment;
}

bool FaultRule::isAimed() const { return after != 0 || !(aim == FaultAim()); }

std::string FaultRule::text() const
{
    std::string aims = aim.text();
    if (after != 0)
        aims += (aims.empty() ? "" : ",") + fmt::format("after={}", after);
    if (moment != usualMoment(kind))
        aims += (aims.empty() ? "" : ",") + std::string(moment == Moment::REQUEST ? "on=request" : "on=reply");
    return faultName(kind) + faultValueText(kind, value) + (aims.empty() ? "" : ":" + aims) +
           (probability < 1 ? "@" + probabilityText(probability) : "") +
           (times > 0 ? "#" + std::to_string(times) : "");
}

std::string parseFaultRule(const std::string &text, FaultRule *rule)
{
    const Parts parts = split(text);
    if (findFault(parts.name) == FAULT_COUNT)
        return unknownFault(parts.name);
    if (parts.probability && !parseProbability(*parts.probability, &rule->probability))
        return "'" + *parts.probability + "' is no probability; use 0 to 1";
    if (parts.times && (!parseNumber(*parts.times, TIMES_MAX, &rule->times) || rule->times == 0))
        return "'" + *parts.times + "' is no number of times; use 1 to " + std::to_string(TIMES_MAX);
    const char *const needed = neededValue(findFault(parts.name));
    if (needed && !parts.value)
        return parts.name + " needs a value, such as " + parts.name + "=" + needed;
    return parseNameAndAim(parts, rule);
}

bool FaultChoice::means(const FaultRule &set) const
{
    if (rule.kind != set.kind || (hasValue && rule.value != set.value))
        return false;
    return !hasAim || rule.isAimedLike(set);
}

// A probability and a number of times may stand there, as in a list of the faults; they choose nothing.
std::string parseFaultChoice(const std::string &text, FaultChoice *choice)
{
    const Parts parts = split(text);
    choice->hasValue = parts.value.has_value();
    choice->hasAim = parts.aim.has_value();
    return parseNameAndAim(parts, &choice->rule);
}

std::string faultAimHelp()
{
    return "  command=XXXX    a command in hex, or by a name such as read write run stop status\n"
           "  area=DM         requests that name items of this area\n"
           "  from=N,to=N     and among them these words, bits by their word; either may be left out\n"
           "  client=N        a client, by its node or its IP address\n"
           "  after=N         the first N requests that are hit are let through\n"
           "  on=request      before the command is carried out, or on=reply, after it;\n"
           "                  both go with " + namesWithBothMoments() + "\n";
}

} // namespace plc
