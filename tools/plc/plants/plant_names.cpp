#include "plants/plant_names.h"

#include "common/suggestion.h"

namespace plc {

std::string PlantNames::find(const std::string &word, Meaning *meaning)
{
    const auto found = names.find(word);
    if (found != names.end()) {
        *meaning = found->second;
        return std::string();
    }
    if (word.find(':') == std::string::npos) {
        std::vector<std::string> known = functionNames();
        for (const auto &[name, unused] : names)
            known.push_back(name);
        return "'" + word + "' is no name here" + hintAt(nearestWord(word, known))
               + "; use TYPE:ADDRESS, or a name of [plant.values] or of a signal above";
    }
    Quantity quantity;
    std::string wrong = findPlace(word, ValueType::U16, &quantity);
    if (wrong.empty())
        wrong = addQuantity(word, quantity);
    if (wrong.empty())
        *meaning = names[word];
    return wrong;
}

std::string PlantNames::findTarget(const std::string &word, std::size_t *quantity)
{
    Meaning meaning;
    std::string wrong = find(word, &meaning);
    if (wrong.empty() && meaning.kind == Meaning::SIGNAL)
        wrong = "'" + word + "' is a signal, which no step sets; name a value or TYPE:ADDRESS";
    else if (wrong.empty() && isComputed(quantities[meaning.index].place))
        wrong = "'" + word + "' is made by the CPU unit at every moment, and no step sets it; name another place";
    *quantity = meaning.index;
    return wrong;
}

std::string PlantNames::findPlace(const std::string &text, ValueType type, Quantity *quantity) const
{
    const auto isOf = [&text](const std::string &start) { return text.compare(0, start.size(), start) == 0; };
    const bool isFlag = isOf("T_flag:") || isOf("C_flag:");
    const std::string place = isFlag ? text.substr(0, 1) + text.substr(6) : text;
    if (place.find(':') != place.rfind(':'))
        return "'" + text + "' has a count; name one item by TYPE:ADDRESS";
    Quantity found;
    std::string wrong = parsePlace(place, memory, &found.place);
    if (isFlag)
        found.place.access = Access::FLAG;
    else if (wrong.empty() && found.isWord())
        wrong = parsePlace(place + ":" + std::to_string(rowOf(type).words), memory, &found.place);
    if (isOf("E:") || isOf("E_bit:"))
        found.place.area = AREA_E; // not the bank that is the current one now
    found.type = type;
    if (wrong.empty())
        *quantity = found;
    return wrong;
}

std::string PlantNames::add(const std::string &name, const Meaning &meaning)
{
    return names.insert({name, meaning}).second ? "" : "'" + name + "' is a value already; choose another name";
}

std::string PlantNames::addQuantity(const std::string &name, const Quantity &quantity)
{
    std::string wrong = add(name, {Meaning::QUANTITY, quantities.size()});
    quantities.push_back(quantity);
    return wrong;
}

std::string PlantNames::addSignal(const std::string &name) { return add(name, {Meaning::SIGNAL, signals++}); }

} // namespace plc
