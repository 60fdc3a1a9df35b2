#include "plants/plant_reader.h"

// Expressions, and the entries of [plant.signals] and of [plant.program].

namespace plc {

namespace {

enum : long { EVERY_MOST = 1000000, DECIMALS_MOST = 6 };

unsigned readEvery(TableReader &reader)
{
    long every = 1;
    reader.whole("every", 1, EVERY_MOST, every);
    return static_cast<unsigned>(every);
}

Playback readPlayback(const DataNode &node, PlantContext &context)
{
    Playback playback;
    TableReader reader(node, context.file, context.problems);
    const std::string &file = playback.file;
    std::string column;
    long decimals = 0;
    const DataNode *const named = reader.need("csv", "csv = \"day.csv\"");
    reader.need("column", "column = \"flow\"");
    const bool isNamed = reader.text("csv", playback.file) && reader.text("column", column);
    reader.whole("decimals", 0, DECIMALS_MOST, decimals);
    reader.yesOrNo("repeat", playback.repeats);
    playback.every = readEvery(reader);
    reader.refuseOthers();
    if (!named || !isNamed || !reader.isSound())
        return playback;
    const FileContent content = context.load(file);
    if (!content.problem.empty())
        context.report(named->place, file + ": " + content.problem);
    else
        playback.rows = readColumn(content.text, file, column, static_cast<unsigned>(decimals), context.problems);
    return playback;
}

Expression expressionAt(TableReader &reader, const char *key, const char *example, PlantContext &context)
{
    const DataNode *const node = reader.need(key, example);
    return node ? context.expressionOf(*node) : Expression();
}

// What the step does, and to which quantity.
void readAction(TableReader &reader, PlantContext &context, PlantStep *step)
{
    const DataNode *const latch = reader.take("latch");
    step->isLatch = latch != nullptr;
    const DataNode *const target = latch ? latch : reader.need("set", "{ set = \"DM:0\", to = \"DM:0 + 1\" }");
    if (step->isLatch) {
        step->value = expressionAt(reader, "on", "on = \"DM:0 > 900\"", context);
        step->reset = expressionAt(reader, "off", "off = \"DM:0 < 800\"", context);
    } else {
        step->value = expressionAt(reader, "to", "to = \"DM:0 + 1\"", context);
    }
    std::string name;
    if (!target || !reader.text(latch ? "latch" : "set", name))
        return;
    const std::string wrong = context.names.findTarget(name, &step->target);
    context.report(target->place, wrong);
    if (latch && wrong.empty() && context.names.quantities[step->target].isWord())
        context.report(target->place, "'" + name + "' is a word; a latch sets a bit");
}

} // namespace

void PlantContext::report(Place place, const std::string &wrong)
{
    if (!wrong.empty())
        problems.add(file, place, wrong);
}

bool PlantContext::checkName(const PlantEntry &entry)
{
    const bool isFree = isFreeName(entry.name);
    if (!isFree)
        report(entry.place, "'" + entry.name + "' cannot be a name; use letters, digits and _, a letter first, and no "
                                               "word of expressions");
    return isFree;
}

Expression PlantContext::expressionOf(const DataNode &node)
{
    Expression expression;
    const int quote = node.kind == NodeKind::TEXT ? 1 : 0;
    const std::optional<ExpressionProblem> wrong = readExpression(node.text, names, &expression);
    if (quote == 0 && node.kind != NodeKind::INTEGER && node.kind != NodeKind::BOOLEAN)
        report(node.place, "this is no expression; write a text such as \"DM:0 + 1\", or a whole number");
    else if (wrong)
        report({node.place.line, node.place.column + quote + static_cast<int>(wrong->at)}, wrong->text);
    return expression;
}

PlantSignal readSignal(const PlantEntry &entry, PlantContext &context)
{
    PlantSignal signal;
    const bool isFree = context.checkName(entry);
    if (entry.node.kind == NodeKind::TABLE)
        signal.playback = readPlayback(entry.node, context);
    else
        signal.expression = context.expressionOf(entry.node);
    if (isFree)
        context.report(entry.place, context.names.addSignal(entry.name));
    return signal;
}

PlantStep readStep(const DataNode &node, PlantContext &context)
{
    PlantStep step;
    if (node.kind != NodeKind::TABLE) {
        context.report(node.place, "a step is a table, such as { set = \"DM:0\", to = \"DM:0 + 1\" }");
        return step;
    }
    TableReader reader(node, context.file, context.problems);
    readAction(reader, context, &step);
    if (const DataNode *when = reader.take("when"))
        step.when = context.expressionOf(*when);
    step.every = readEvery(reader);
    reader.refuseOthers();
    return step;
}

} // namespace plc
