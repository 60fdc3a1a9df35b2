#ifndef PLC_PLANTS_PLANT_NAMES_H
#define PLC_PLANTS_PLANT_NAMES_H

#include "expressions/expression.h"

#include <map>
#include <string>
#include <vector>

// The words of a plant's expressions: the names that its file gives, and TYPE:ADDRESS.

namespace plc {

class PlantNames : public Vocabulary {
public:
    explicit PlantNames(const Memory &plcMemory) : memory(plcMemory) {}

    std::string find(const std::string &word, Meaning *meaning) override;

    /// Finds the quantity that a step can set. Returns an empty text, or what is wrong.
    std::string findTarget(const std::string &word, std::size_t *quantity);

    /// Finds the items of a type at TYPE:ADDRESS; T_flag:N and C_flag:N are completion flags. Returns an empty text, or
    /// what is wrong.
    std::string findPlace(const std::string &text, ValueType type, Quantity *quantity) const;

    /// Gives a meaning to a name. Returns an empty text, or why the name cannot have one.
    std::string addQuantity(const std::string &name, const Quantity &quantity);
    std::string addSignal(const std::string &name);

    std::vector<Quantity> quantities; // that are named or addressed

private:
    std::string add(const std::string &name, const Meaning &meaning);

    const Memory                  &memory;
    std::map<std::string, Meaning> names;
    std::size_t                    signals = 0;
};

} // namespace plc

#endif
