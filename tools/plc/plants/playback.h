#ifndef PLC_PLANTS_PLAYBACK_H
#define PLC_PLANTS_PLAYBACK_H

#include "documents/problems.h"
#include "expressions/operations.h"

#include <string>
#include <vector>

// A column of a CSV file, one row after the other.

namespace plc {

struct Playback {
    std::string         file;           // in which the rows are
    std::vector<Number> rows;
    unsigned            every = 1;      // steps for a row
    bool                repeats = true; // otherwise the last row stays

    /// The row of the step; there has to be one.
    Number value(Number step) const;
};

/// The numbers of the column that the header names so, each multiplied by ten for every one of `decimals`. What is
/// wrong is added to `problems`.
std::vector<Number> readColumn(const std::string &text, const std::string &file, const std::string &column,
                               unsigned decimals, Problems &problems);

} // namespace plc

#endif
