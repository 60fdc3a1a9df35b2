#ifndef PANEL_TABLE_SHOWN_NUMBER_H
#define PANEL_TABLE_SHOWN_NUMBER_H

#include <optional>
#include <string>

// The numbers among the values that the table shows.

/// The number that the whole text is, decimal or with 0x; none for anything else, such as a quoted text or a nan.
std::optional<double> shownNumber(const std::string &text);

/// The least and the greatest of the numbers that were noted, as they were shown.
class Extremes {
public:
    void note(const std::string &text);

    /// "" while nothing was noted.
    const std::string &minimum() const { return minimum_.text; }
    const std::string &maximum() const { return maximum_.text; }

private:
    struct Shown {
        double      number;
        std::string text;
    };

    Shown minimum_ = {};
    Shown maximum_ = {};
};

#endif
