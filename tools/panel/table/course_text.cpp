#include "table/course_text.h"

#include <algorithm>
#include <cmath>

// The ends of the shown values; false if none is known.
static bool findRange(const std::vector<double> &course, std::size_t begin, double &least, double &greatest)
{
    bool any = false;
    for (std::size_t i = begin; i < course.size(); ++i) {
        if (!std::isfinite(course[i]))
            continue;
        least    = any ? std::min(least, course[i]) : course[i];
        greatest = any ? std::max(greatest, course[i]) : course[i];
        any = true;
    }
    return any;
}

std::string courseText(const std::vector<double> &course, std::size_t width, bool utf8)
{
    static const char *const BLOCKS[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    static const char *const ASCII[]  = {"_", ".", ",", "-", "~", "=", "^", "#"};
    const std::size_t begin = course.size() > width ? course.size() - width : 0;
    double least = 0;
    double greatest = 0;
    findRange(course, begin, least, greatest);
    std::string text;
    for (std::size_t i = begin; i < course.size(); ++i) {
        if (std::isnan(course[i])) {
            text += utf8 ? "·" : "?";
            continue;
        }
        if (std::isinf(course[i])) {
            text += " ";
            continue;
        }
        // Halves, so that the difference of two huge values is not infinite.
        const double range = greatest / 2 - least / 2;
        const double part  = range > 0 ? (course[i] / 2 - least / 2) / range : 0;
        const std::size_t level = std::min<std::size_t>(7, static_cast<std::size_t>(part * 8));
        text += utf8 ? BLOCKS[level] : ASCII[level];
    }
    return text;
}
