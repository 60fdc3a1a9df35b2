#include "fuzz_input.h"
#include "plants/plant.h"
#include "plants/plant_file.h"

// The simulator's plant reader: any text is a plant that can be stepped, or refused with lines that name their file,
// and equal seeds give equal memory.

namespace {

enum { STEPS = 8 };

// The clock stands still: its pulses are memory, too.
std::vector<plc::Number> numbersOf(const plc::PlantProgram &program, std::uint32_t seed)
{
    plc::Controller controller;
    controller.clock.standStill();
    plc::Plant plant(program, controller, seed);
    plant.begin();
    for (int i = 0; i < STEPS; ++i)
        plant.step();
    for (const plc::PlantValue &value : plant.values())
        require(!value.place.empty() && !value.text.empty(), "a value has a place and a text");
    std::vector<plc::Number> numbers;
    for (const plc::Quantity &quantity : program.quantities)
        numbers.push_back(quantity.load(controller.memory));
    return numbers;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const plc::Memory memory;
    FuzzInput input(data, size);
    const std::uint32_t seed = input.byte();
    const std::string column = "a,b\n1,2\n" + std::to_string(seed) + ",0.5\n";
    const std::string text = input.text(size);
    const auto load = [&](const std::string &name) { return FileContent{name == "self" ? text : column, ""}; };
    Problems problems;
    const plc::PlantProgram program = plc::readPlant(text, "mill.toml", memory, load, problems);
    for (const std::string &line : problems.lines())
        require(line.find(':') != std::string::npos && line.find('\n') == std::string::npos, "a problem is a line");
    if (!problems.any())
        require(numbersOf(program, seed) == numbersOf(program, seed), "equal seeds give equal memory");
    return 0;
}
