#ifndef PANEL_TABLE_COURSE_TEXT_H
#define PANEL_TABLE_COURSE_TEXT_H

#include <cstddef>
#include <string>
#include <vector>

/// The characters of a course: at most `width`, the latest last, between the least and the greatest value shown. NaN: not
/// known at that time; infinite: no number.
std::string courseText(const std::vector<double> &course, std::size_t width, bool utf8);

#endif
