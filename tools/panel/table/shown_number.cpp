#include "table/shown_number.h"

#include <cmath>
#include <cstdlib>

std::optional<double> shownNumber(const std::string &text)
{
    char *end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(number))
        return std::nullopt;
    return number;
}

void Extremes::note(const std::string &text)
{
    const std::optional<double> number = shownNumber(text);
    if (!number)
        return;
    if (minimum_.text.empty() || *number < minimum_.number)
        minimum_ = {*number, text};
    if (maximum_.text.empty() || *number > maximum_.number)
        maximum_ = {*number, text};
}
