#include "plants/plant.h"

#include <fmt/format.h>

namespace plc {

Plant::Plant(PlantProgram read, Controller &state, std::uint32_t seed)
    : program(std::move(read)), controller(state),
      course{state.memory, program.quantities, std::vector<Number>(program.signals.size()), {0, std::mt19937(seed)}}
{
}

void Plant::begin()
{
    for (const NamedValue &value : program.values)
        if (value.hasStart)
            store(value.quantity, value.start);
}

void Plant::step()
{
    if (!controller.isRunning())
        return;
    for (std::size_t i = 0; i < program.signals.size(); ++i) {
        const PlantSignal &signal = program.signals[i];
        const bool isPlayed = !signal.playback.rows.empty();
        course.signals[i] = isPlayed ? signal.playback.value(course.chance.step) : signal.expression.value(course);
    }
    for (const PlantStep &statement : program.steps)
        run(statement);
    ++course.chance.step;
}

void Plant::run(const PlantStep &statement)
{
    if (course.chance.step % statement.every != 0 || (statement.when && statement.when->value(course) == 0))
        return;
    if (!statement.isLatch) {
        store(statement.target, statement.value.value(course));
        return;
    }
    const bool isSet = statement.value.value(course) != 0;
    const bool isReset = statement.reset.value(course) != 0;
    if (isSet || isReset)
        store(statement.target, isReset ? 0 : 1);
}

std::string Plant::textOf(const NamedValue &value) const
{
    const Quantity &quantity = program.quantities[value.quantity];
    const Number number = quantity.load(controller.memory);
    if (!quantity.isWord())
        return number != 0 ? "on" : "off";
    double divisor = quantity.scale;
    for (unsigned i = 0; quantity.type != ValueType::F32 && i < value.decimals; ++i)
        divisor *= 10;
    const std::string text = fmt::format("{:.{}f}", static_cast<double>(number) / divisor, value.decimals);
    return value.unit.empty() ? text : text + " " + value.unit;
}

std::vector<std::string> Plant::playedFiles() const
{
    std::vector<std::string> files;
    for (const PlantSignal &signal : program.signals)
        if (!signal.playback.file.empty())
            files.push_back(signal.playback.file);
    return files;
}

std::vector<PlantValue> Plant::values() const
{
    std::vector<PlantValue> shown;
    for (const NamedValue &value : program.values)
        if (!value.shown.empty())
            shown.push_back({placeText(program.quantities[value.quantity].place), value.shown, textOf(value)});
    return shown;
}

} // namespace plc
