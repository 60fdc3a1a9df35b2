#include "plants/plant_reader.h"

#include "common/numbers.h"

#include <cmath>

// The entries of [plant.values].

namespace plc {

namespace {

enum : long { DECIMALS_MOST = 6, SCALE_MOST = 1000000 };

bool readType(TableReader &reader, ValueType *type)
{
    std::string name = rowOf(*type).name;
    if (!reader.text("type", name))
        return false;
    return parseValueType(name, type) ||
           reader.report(*reader.take("type"), "'" + name + "' is no type; use one of " + TYPE_NAMES);
}

// What an F32 in memory is multiplied by: its decimals are kept unless something else is said.
bool readScale(TableReader &reader, unsigned decimals, Quantity *quantity)
{
    const DataNode *const node = reader.take("scale");
    const bool isFloat = quantity->type == ValueType::F32;
    if (node && !isFloat)
        return reader.report(*node, "'scale' is for the type f32; remove it");
    long scale = isFloat ? std::lround(std::pow(10.0, decimals)) : 1;
    const bool isGood = reader.whole("scale", 1, SCALE_MOST, scale);
    quantity->scale = static_cast<unsigned>(scale);
    return isGood;
}

bool readQuantity(TableReader &reader, const PlantNames &names, unsigned decimals, Quantity *quantity)
{
    const DataNode *const at = reader.need("at", "at = \"DM:0\"");
    std::string place;
    Quantity found;
    const bool isTyped = readType(reader, &found.type) && readScale(reader, decimals, &found);
    if (!at || !isTyped || !reader.text("at", place))
        return false;
    const unsigned scale = found.scale;
    const std::string wrong = names.findPlace(place, found.type, &found);
    found.scale = scale;
    *quantity = found;
    const DataNode *const type = reader.take("type");
    const bool isOfType = found.isWord() && itemSize(found.place) == 2;
    if (wrong.empty() && type && !isOfType)
        return reader.report(*type, "'type' is for words; leave it out");
    return wrong.empty() || reader.report(*at, wrong);
}

bool readStart(TableReader &reader, const Quantity &quantity, NamedValue *value)
{
    const DataNode *const node = reader.take("start");
    if (!node)
        return true;
    if (isComputed(quantity.place))
        return reader.report(*node, "'start' is for what can be set, and the CPU unit makes this value at every moment; "
                                    "leave it out");
    value->hasStart = true;
    const bool isBoolean = node->kind == NodeKind::BOOLEAN;
    if (isBoolean)
        value->start = node->text == "true" ? 1 : 0;
    const bool isNumber = node->kind == NodeKind::INTEGER && readNumber(node->text, value->start);
    const bool isInside = value->start >= quantity.least() && value->start <= quantity.most();
    if (isInside && (isNumber || (isBoolean && !quantity.isWord())))
        return true;
    return reader.report(*node, "'start' is not a whole number from " + std::to_string(quantity.least()) + " to "
                                    + std::to_string(quantity.most()));
}

bool readTexts(TableReader &reader, NamedValue *value)
{
    long decimals = 0;
    const bool isAbout = reader.text("about", value->about);
    const bool isShown = reader.text("show", value->shown);
    const bool isUnit = reader.text("unit", value->unit);
    const bool isWrite = reader.yesOrNo("write", value->isWritable);
    const bool isGood = reader.whole("decimals", 0, DECIMALS_MOST, decimals);
    value->decimals = static_cast<unsigned>(decimals);
    return isAbout && isShown && isUnit && isWrite && isGood;
}

} // namespace

std::optional<NamedValue> readNamedValue(const PlantEntry &entry, PlantContext &context)
{
    if (!context.checkName(entry))
        return std::nullopt;
    NamedValue value;
    Quantity quantity;
    bool isGood = false;
    value.name = entry.name;
    value.quantity = context.names.quantities.size();
    if (entry.node.kind == NodeKind::TABLE) {
        TableReader reader(entry.node, context.file, context.problems);
        isGood = readTexts(reader, &value);
        isGood = readQuantity(reader, context.names, value.decimals, &quantity) && isGood;
        isGood = readStart(reader, quantity, &value) && isGood;
        reader.refuseOthers();
    } else {
        context.report(entry.node.place, "'" + entry.name + "' has to be a table, such as { at = \"DM:0\" }");
    }
    context.report(entry.place, context.names.addQuantity(entry.name, quantity));
    return isGood ? std::optional<NamedValue>(value) : std::nullopt;
}

} // namespace plc
