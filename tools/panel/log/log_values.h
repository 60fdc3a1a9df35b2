#ifndef PANEL_LOG_LOG_VALUES_H
#define PANEL_LOG_LOG_VALUES_H

#include "log/row_form.h"
#include "plant/plant.h"

#include <cstdint>
#include <functional>
#include <vector>

// The values of all PLCs as they are known now, in the order of the columns, and what of their changes is to be logged.

/// What of a value's changes is to be logged: those of its quality, and those that reach the dead band, each against
/// what was logged before.
class DeadBand {
public:
    explicit DeadBand(double width) : width_(width) {}

    /// True if the sample is to be logged; then it is what the next one is compared with.
    bool passes(const fins::Sample &sample);

private:
    bool isChange(const fins::Sample &sample) const;

    double        width_;
    bool          isFirst_ = true;
    fins::Quality quality_ = fins::Quality::NOT_CONNECTED;
    fins::Value   value_;
    std::string   text_;
};

class LogValues {
public:
    /// A row that is due: its time, and the columns of which it tells.
    using RowCall = std::function<void(SystemTime time, const std::vector<std::size_t> &chosen)>;

    /// `deadband` is for numbers whose tag has none.
    LogValues(Plant &plant, const std::vector<PlantPlc> &plcs, double deadband);

    const std::vector<LogColumn> &columns() const { return columns_; }
    const fins::Samples &latest() const { return latest_; }

    /// Takes samples of a PLC, which latest() tells after takeHeld().
    void hold(std::size_t plc, const fins::Samples &samples);
    void takeHeld();

    /// The values as they were at `time`, which is over, and not before that of the call before. What cannot be told any more,
    /// since later samples have taken its place, is last known.
    fins::Samples at(SystemTime time);

    /// Takes samples of a PLC, and calls `row` for each time at which something changed: that of the reply that brought it, or
    /// `now` for what is not good.
    void take(std::size_t plc, const fins::Samples &samples, SystemTime now, const RowCall &row);

    /// Samples that were merged with later ones, since this program was too slow.
    std::uint64_t dropped() const { return dropped_; }

    /// True for each PLC that has answered: with a value, or by refusing one.
    const std::vector<bool> &answered() const { return answered_; }

    /// True if the PLC refuses to read a value that it never gave.
    bool anyRefused() const;

private:
    // A sample that is not yet among the latest, and its column.
    struct Held {
        std::size_t  plc;
        std::size_t  column;
        fins::Sample sample;
    };

    void store(std::size_t plc, const fins::Sample &sample);

    std::vector<LogColumn>   columns_;
    std::vector<DeadBand>    bands_;   // of the columns
    fins::Samples            latest_;
    std::vector<Held>        held_;
    std::vector<std::size_t> first_;   // column of each PLC
    std::vector<bool>        answered_; // of the PLCs
    std::uint64_t            dropped_ = 0;
};

#endif
