#ifndef PANEL_PLANT_PLANT_VALUES_H
#define PANEL_PLANT_PLANT_VALUES_H

#include "plant/plant.h"
#include "session/watch_values.h"

#include <functional>
#include <vector>

// The watched values of several PLCs, in the order of the PLCs, and what happens to them.

class PlantValues {
public:
    using EventCall = std::function<void(std::size_t value, const WatchEvent &event)>;

    /// `tags` are what the plant watches of each of its PLCs, in that order.
    explicit PlantValues(const std::vector<std::vector<Tag>> &tags);

    /// Takes samples of a PLC, and calls `call` for each that tells of something new.
    void take(std::size_t plc, const fins::Samples &samples, const EventCall &call);

    const std::vector<WatchedValue> &of(std::size_t plc) const { return values_[plc]; }

    /// The number of a PLC's first value among all.
    std::size_t first(std::size_t plc) const { return first_[plc]; }

    unsigned long changes() const { return changes_; }

    /// True for each PLC that has answered: with a value, or by refusing one.
    const std::vector<bool> &answered() const { return answered_; }

    /// True if a PLC refuses to read a value that it never gave.
    bool anyRefused() const;

private:
    std::vector<std::vector<WatchedValue>> values_;
    std::vector<std::size_t>               first_;
    std::vector<bool>                      answered_;
    unsigned long                          changes_ = 0;
};

#endif
