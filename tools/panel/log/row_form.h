#ifndef PANEL_LOG_ROW_FORM_H
#define PANEL_LOG_ROW_FORM_H

#include "common/time_text.h"
#include "fins_runtime/values.h"

#include <cstddef>
#include <string>
#include <vector>

// The forms of a row of values. A value that is not good has no value, only its quality.

enum class LogForm {
    CSV,   // a record of all values, each with its quality, behind a heading
    JSON,  // an object
    INFLUX // line protocol: a line for each value
};

/// One value of each row.
struct LogColumn {
    std::string name;                // press.Level, press.DM:100
    std::string plc;                 // press; "" for the only one
    bool        isUnsigned = false;  // a whole number that an int64 may have no room for
    double      deadband   = 0;      // smaller changes are passed over; as shown
};

class RowForm {
public:
    RowForm(LogForm form, std::vector<LogColumn> columns, const std::string &measurement);

    /// What stands at the beginning of a file: a whole line, or nothing.
    const std::string &heading() const { return heading_; }

    /// Whole lines for the values at that time. Those of `chosen` are what is told; a record of CSV tells all of them.
    std::string row(SystemTime time, const fins::Samples &values, const std::vector<std::size_t> &chosen) const;

private:
    std::string csvRow(SystemTime time, const fins::Samples &values) const;
    std::string jsonRow(SystemTime time, const fins::Samples &values, const std::vector<std::size_t> &chosen) const;
    std::string influxRow(SystemTime time, const fins::Samples &values, const std::vector<std::size_t> &chosen) const;

    LogForm                  form_;
    std::vector<LogColumn>   columns_;
    std::string              heading_;
    std::vector<std::string> labels_; // of the columns, as the form has them
};

#endif
