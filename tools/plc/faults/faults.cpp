#include "faults/faults.h"

#include "cpu/end_codes.h"

#include <algorithm>
#include <fmt/format.h>

namespace plc {

std::string Faults::set(const std::string &text)
{
    FaultRule rule;
    std::string wrong = parseFaultRule(text, &rule);
    if (!wrong.empty())
        return wrong;
    const auto alike = std::find_if(rules.begin(), rules.end(),
                                    [&rule](const FaultRule &set) { return set.isAimedLike(rule); });
    const bool isOff = rule.probability <= 0;
    if (alike == rules.end() && !isOff && rules.size() >= RULES_MAX)
        return "there are " + std::to_string(RULES_MAX) + " faults already; end one of them first";
    if (alike != rules.end() && isOff)
        rules.erase(alike);
    else if (alike != rules.end())
        *alike = rule;
    else if (!isOff)
        rules.insert(std::find_if(rules.begin(), rules.end(),
                                  [&rule](const FaultRule &set) { return set.kind > rule.kind; }), rule);
    return std::string();
}

std::string Faults::clear(const std::string &text)
{
    if (!text.empty() && text.find_first_not_of("0123456789") == std::string::npos) {
        unsigned number = 0;
        if (!parseNumber(text, static_cast<unsigned>(rules.size()), &number) || number == 0)
            return "there is no fault " + text + "; " + std::to_string(rules.size()) + " are set";
        rules.erase(rules.begin() + (number - 1));
        return std::string();
    }
    FaultChoice choice;
    std::string wrong = parseFaultChoice(text, &choice);
    if (!wrong.empty())
        return wrong;
    const std::size_t before = rules.size();
    rules.erase(std::remove_if(rules.begin(), rules.end(), [&](const FaultRule &set) { return choice.means(set); }),
                rules.end());
    if (choice.hasAim && rules.size() == before)
        return "no fault is set that is aimed like '" + text + "'; faults lists them";
    return std::string();
}

bool Faults::strikes(FaultRule &rule, const FaultTarget &target, Moment moment)
{
    const double range = 4294967296.0; // of the random numbers
    if (rule.moment != moment || !rule.aim.hits(target))
        return false;
    if (rule.passed < rule.after) {
        ++rule.passed;
        return false;
    }
    if (rule.probability < 1 && static_cast<double>(random()) / range >= rule.probability)
        return false;
    ++rule.struck;
    if (rule.times > 0 && --rule.times == 0)
        rule.probability = 0;
    return true;
}

void Faults::removeEnded()
{
    rules.erase(std::remove_if(rules.begin(), rules.end(), [](const FaultRule &rule) { return rule.probability <= 0; }),
                rules.end());
}

std::optional<unsigned> Faults::strike(FaultKind kind, const FaultTarget &target, Moment moment)
{
    for (FaultRule &rule : rules) {
        if (rule.kind != kind || !strikes(rule, target, moment))
            continue;
        const unsigned value = rule.value;
        removeEnded();
        return value;
    }
    return std::nullopt;
}

unsigned Faults::strikeAll(FaultKind kind, const FaultTarget &target, Moment moment)
{
    unsigned sum = 0;
    for (FaultRule &rule : rules)
        if (rule.kind == kind && strikes(rule, target, moment))
            sum += rule.value;
    removeEnded();
    return sum;
}

unsigned Faults::delayMs(const FaultTarget &target, Moment moment)
{
    const unsigned delay = strikeAll(FAULT_DELAY, target, moment);
    const unsigned jitter = strikeAll(FAULT_JITTER, target, moment);
    return delay + (jitter > 0 ? static_cast<unsigned>(random() % (std::uint64_t(jitter) + 1)) : 0);
}

unsigned Faults::strikeEndCode(const FaultTarget &target, Moment moment, unsigned *flags)
{
    unsigned refusal = END_NORMAL;
    for (FaultRule &rule : rules) {
        const bool isRefusal = (rule.value & ~END_FLAGS) != 0;
        if (rule.kind != FAULT_END_CODE || (isRefusal && refusal != END_NORMAL) || !strikes(rule, target, moment))
            continue;
        (isRefusal ? refusal : *flags) |= rule.value;
    }
    removeEnded();
    return refusal;
}

bool Faults::isCertain(FaultKind kind) const
{
    return std::any_of(rules.begin(), rules.end(), [kind](const FaultRule &rule) {
        return rule.kind == kind && !rule.isAimed() && rule.probability >= 1 && rule.times == 0;
    });
}

std::string Faults::list() const
{
    std::string text;
    for (const FaultRule &rule : rules)
        text += (text.empty() ? "" : " ") + rule.text();
    return text.empty() ? "none" : text;
}

std::string Faults::listWithCounts() const
{
    std::string text;
    for (std::size_t i = 0; i < rules.size(); ++i)
        text += fmt::format("{}{} {} struck {}", i == 0 ? "" : ", ", i + 1, rules[i].text(), rules[i].struck);
    return text.empty() ? "none" : text;
}

std::string Faults::help() { return faultKindsHelp() + "  Aims:\n" + faultAimHelp(); }

} // namespace plc
