#include "plants/plant_file.h"

#include "plants/plant_reader.h"

#include <filesystem>

namespace plc {

namespace {

enum : long { PERIOD_MOST_MS = 60000 };

// The child of that kind, or null; another kind is a problem.
const DataNode *childOf(TableReader &reader, const char *key, NodeKind kind, const char *example)
{
    const DataNode *const node = reader.take(key);
    if (!node || node->kind == kind)
        return node;
    reader.report(*node, std::string("'") + key + "' has to be written as " + example);
    return nullptr;
}

std::vector<PlantEntry> entriesOf(const DataNode *table)
{
    std::vector<PlantEntry> entries;
    for (std::size_t i = 0; table && i < table->keys.size(); ++i)
        entries.push_back({table->keys[i], table->keyPlaces[i], table->children[i]});
    return entries;
}

void readProgram(const DataNode &table, PlantContext &context, PlantProgram *program)
{
    TableReader reader(table, context.file, context.problems);
    if (const DataNode *steps = childOf(reader, "steps", NodeKind::ARRAY, "steps = [ { ... }, ... ]"))
        for (const DataNode &step : steps->children)
            program->steps.push_back(readStep(step, context));
    reader.refuseOthers();
}

PlantProgram readTables(const DataNode &plant, PlantContext &context)
{
    PlantProgram program;
    TableReader reader(plant, context.file, context.problems);
    long period = program.periodMs;
    reader.text("about", program.about);
    reader.whole("period", 1, PERIOD_MOST_MS, period);
    program.periodMs = static_cast<unsigned>(period);
    for (const PlantEntry &entry : entriesOf(childOf(reader, "values", NodeKind::TABLE, "[plant.values]")))
        if (const std::optional<NamedValue> value = readNamedValue(entry, context))
            program.values.push_back(*value);
    for (const PlantEntry &entry : entriesOf(childOf(reader, "signals", NodeKind::TABLE, "[plant.signals]")))
        program.signals.push_back(readSignal(entry, context));
    if (const DataNode *steps = childOf(reader, "program", NodeKind::TABLE, "[plant.program]"))
        readProgram(*steps, context, &program);
    reader.refuseOthers();
    program.quantities = context.names.quantities;
    return program;
}

} // namespace

PlantProgram readPlant(const std::string &text, const std::string &file, const Memory &memory, const FileLoader &load,
                       Problems &problems)
{
    const DataNode root = parseToml(text, file, problems);
    const DataNode *const plant = root.find("plant");
    PlantContext context = {file, load, problems, PlantNames(memory)};
    if (plant && plant->kind == NodeKind::TABLE)
        return readTables(*plant, context);
    if (!problems.any())
        problems.add(file, plant ? plant->place : Place{1, 1}, "there is no plant; describe it in a table [plant]");
    return PlantProgram();
}

PlantProgram loadPlant(const std::string &file, const Memory &memory, Problems &problems)
{
    const FileContent content = readWholeFile(file, FILE_MOST_BYTES);
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    const auto load = [&folder](const std::string &name) { return readWholeFile(folder / name, FILE_MOST_BYTES); };
    PlantProgram program;
    if (content.problem.empty())
        program = readPlant(content.text, file, memory, load, problems);
    else
        problems.add(file, Place(), content.problem);
    for (PlantSignal &signal : program.signals)
        if (!signal.playback.file.empty())
            signal.playback.file = (folder / signal.playback.file).string();
    return program;
}

} // namespace plc
