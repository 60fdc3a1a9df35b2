#include "faults/faults.h"
#include "fuzz_input.h"

// Texts of faults: what is taken means the same when it is shown and read again, and whatever it is aimed at, the
// requests that it meets are judged.

namespace {

enum { TEXT_MOST = 120, COMMAND_MOST = 40 };

void checkRule(const std::string &text)
{
    plc::FaultRule rule;
    if (!plc::parseFaultRule(text, &rule).empty())
        return;
    const std::string shown = rule.text();
    plc::FaultRule again;
    require(plc::parseFaultRule(shown, &again).empty(), "a fault that is shown can be read");
    require(again.text() == shown && again.isAimedLike(rule), "and is the same");
    require(again.value == rule.value && again.times == rule.times, "and as strong");
    plc::FaultChoice choice;
    require(plc::parseFaultChoice(shown, &choice).empty() && choice.means(rule), "and can be ended");
}

void strikeAll(plc::Faults &faults, const plc::Memory &memory, FuzzInput &input)
{
    const std::vector<std::uint8_t> command = input.bytes(static_cast<std::size_t>(input.upTo(COMMAND_MOST)));
    const std::string ip = "127.0.0.1";
    const plc::FaultTarget target = {plc::Slice(command), static_cast<unsigned>(input.byte()), ip, memory};
    for (const plc::Moment moment : {plc::Moment::REQUEST, plc::Moment::REPLY}) {
        unsigned flags = 0;
        const unsigned refusal = faults.strikeEndCode(target, moment, &flags);
        require(refusal <= 0xFFFF && (flags & ~plc::END_FLAGS) == 0, "an end code and its flags");
        require(faults.delayMs(target, moment) <= 100 * 60000, "a hundred delays");
        for (int kind = 0; kind < plc::FAULT_COUNT; ++kind)
            faults.strike(static_cast<plc::FaultKind>(kind), target, moment);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const plc::Memory MEMORY;
    FuzzInput input(data, size);
    plc::Faults faults(1);
    while (!input.isEmpty()) {
        const int choice = input.byte();
        const std::string text = input.text(static_cast<std::size_t>(input.upTo(TEXT_MOST)));
        checkRule(text);
        if (choice % 4 == 0)
            faults.clear(text);
        else
            faults.set(text);
        strikeAll(faults, MEMORY, input);
        require(!faults.list().empty() && !faults.listWithCounts().empty(), "a list");
    }
    return 0;
}
