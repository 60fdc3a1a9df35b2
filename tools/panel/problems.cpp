#include "problems.h"

#include "exit_codes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <tuple>

void Problems::add(const std::string &file, Place place, const std::string &text)
{
    lines_.push_back({file, place, text});
}

std::vector<std::string> Problems::lines() const
{
    std::vector<Entry> sorted = lines_;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Entry &a, const Entry &b) {
        return std::tie(a.file, a.place.line, a.place.column) < std::tie(b.file, b.place.line, b.place.column);
    });
    std::vector<std::string> lines;
    for (const Entry &entry : sorted) {
        std::string line = entry.file + ":";
        if (entry.place.line > 0)
            line += std::to_string(entry.place.line) + ":";
        if (entry.place.column > 0)
            line += std::to_string(entry.place.column) + ":";
        lines.push_back(line + " " + entry.text);
    }
    return lines;
}

void Problems::refuse(const std::string &hint) const
{
    if (!any())
        return;
    const std::vector<std::string> all = lines();
    const std::string more = all.size() > 1 ? " (and " + std::to_string(all.size() - 1) + " more" + hint + ")" : "";
    throw UsageError(all.front() + more);
}

std::string readFile(const std::string &file)
{
    errno = 0;
    std::ifstream input(file, std::ios::binary);
    if (!input)
        throw UsageError(file + ": " + std::strerror(errno));
    std::string text;
    char part[4096];
    while (input.read(part, sizeof part) || input.gcount() > 0)
        text.append(part, static_cast<std::size_t>(input.gcount()));
    if (input.bad())
        throw UsageError(file + ": cannot be read");
    return text;
}
