#ifndef PLC_PLANTS_PLANT_READER_H
#define PLC_PLANTS_PLANT_READER_H

#include "documents/table_reader.h"
#include "plants/plant_file.h"
#include "plants/plant_names.h"

#include <optional>
#include <string>

// The parts of a plant's file, each read from its table.

namespace plc {

/// A key of a table with its value.
struct PlantEntry {
    const std::string &name;
    Place              place;
    const DataNode    &node;
};

/// What all parts are read with.
struct PlantContext {
    const std::string &file;
    const FileLoader  &load;
    Problems          &problems;
    PlantNames         names;

    /// Adds a problem, but for an empty text.
    void report(Place place, const std::string &wrong);

    /// Whether the entry's name is one for values and signals; what is wrong with it is reported.
    bool checkName(const PlantEntry &entry);

    /// The expression of a text, a number, or true or false.
    Expression expressionOf(const DataNode &node);
};

/// Reads an entry of [plant.values]. Its name has a meaning from then on, even if something is wrong.
std::optional<NamedValue> readNamedValue(const PlantEntry &entry, PlantContext &context);

/// Reads an entry of [plant.signals].
PlantSignal readSignal(const PlantEntry &entry, PlantContext &context);

/// Reads one of the steps of [plant.program].
PlantStep readStep(const DataNode &node, PlantContext &context);

} // namespace plc

#endif
