#include "plants/shipped_plants.h"

#include "plants/plant_file.h"

#include <algorithm>
#include <filesystem>

namespace plc {

namespace {

namespace fs = std::filesystem;

const char *const DEFAULT_PLANT = "tank";
const char *const SUFFIX = ".toml";
enum : std::size_t { LINE_MOST = 100 };

// The nearest such folder above the program, which has it beside its bin folder; in a build tree it lies further up.
// Empty if there is none.
fs::path plantFolder()
{
    std::error_code absent;
    const fs::path program = fs::read_symlink("/proc/self/exe", absent);
    for (fs::path above = program.parent_path(); above.has_relative_path(); above = above.parent_path()) {
        fs::path folder = above / "share" / "fins_plc" / "plants";
        if (fs::is_directory(folder, absent))
            return folder;
    }
    return fs::path();
}

std::vector<std::string> shippedPlants()
{
    std::vector<std::string> names;
    std::error_code absent;
    for (const fs::directory_entry &entry : fs::directory_iterator(plantFolder(), absent))
        if (entry.path().extension() == SUFFIX)
            names.push_back(entry.path().stem());
    std::sort(names.begin(), names.end(), [](const std::string &a, const std::string &b) {
        return std::make_pair(a != DEFAULT_PLANT, a) < std::make_pair(b != DEFAULT_PLANT, b);
    });
    return names;
}

std::string fileOf(const std::string &text)
{
    return isPlantFile(text) ? text : (plantFolder() / (text + SUFFIX)).string();
}

// As plants write it: the completion flags of timers and counters have a type of their own.
std::string plantPlaceText(const Span &place)
{
    std::string text = placeText(place);
    return place.access == Access::FLAG ? text.insert(1, "_flag") : text;
}

// ", 0.1 %": what one of the number means.
std::string unitText(const NamedValue &value, const Quantity &quantity)
{
    if (value.unit.empty() || !quantity.isWord())
        return std::string();
    const bool isScaled = value.decimals > 0 && quantity.type != ValueType::F32;
    return ", " + (isScaled ? "0." + std::string(value.decimals - 1, '0') + "1 " : std::string()) + value.unit;
}

// The values one behind the other; those that are the same follow the places of all of them.
std::vector<std::string> addressTexts(const PlantProgram &program)
{
    std::vector<std::string> texts;
    std::string places;
    for (std::size_t i = 0; i < program.values.size(); ++i) {
        const NamedValue &value = program.values[i];
        const Quantity &quantity = program.quantities[value.quantity];
        const std::string &meaning = value.about.empty() ? value.name : value.about;
        places += plantPlaceText(quantity.place) + " ";
        if (i + 1 < program.values.size() && !value.about.empty() && program.values[i + 1].about == value.about)
            continue;
        texts.push_back(places + meaning + unitText(value, quantity) + (value.isWritable ? " (write)" : ""));
        places.clear();
    }
    return texts;
}

std::string addressHelp(const PlantProgram &program)
{
    std::string help;
    std::string line;
    for (const std::string &text : addressTexts(program)) {
        const bool isFull = !line.empty() && line.size() + text.size() + 4 > LINE_MOST;
        if (isFull)
            help += "  " + line + ";\n";
        line = line.empty() || isFull ? text : line + "; " + text;
    }
    return line.empty() ? help : help + "  " + line + "\n";
}

} // namespace

bool isPlantFile(const std::string &text)
{
    return text.find('/') != std::string::npos || fs::path(text).extension() == SUFFIX;
}

bool isPlant(const std::string &text)
{
    const std::vector<std::string> names = shippedPlants();
    return isPlantFile(text) || std::find(names.begin(), names.end(), text) != names.end();
}

std::string plantNames()
{
    std::string names;
    for (const std::string &name : shippedPlants())
        names += (names.empty() ? "" : " ") + name;
    return names;
}

std::string plantHelp()
{
    std::string text;
    for (const std::string &name : shippedPlants()) {
        Problems problems;
        const PlantProgram program = loadPlant(fileOf(name), Memory(), problems);
        text += problems.any() ? problems.lines().front() + "\n"
                               : name + ": " + program.about + "\n" + addressHelp(program);
    }
    return text;
}

std::unique_ptr<Plant> makePlant(const std::string &text, Controller &controller, std::uint32_t seed,
                                 std::vector<std::string> *problems)
{
    if (!isPlant(text))
        return nullptr;
    Problems found;
    PlantProgram program = loadPlant(fileOf(text), controller.memory, found);
    if (problems)
        *problems = found.lines();
    return found.any() ? nullptr : std::make_unique<Plant>(std::move(program), controller, seed);
}

} // namespace plc
