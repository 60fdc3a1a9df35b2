#include "documents/problems.h"

#include "common/file_reader.h"
#include "common/usage_error.h"

#include <algorithm>
#include <tuple>

void Problems::add(const std::string &file, Place place, const std::string &text)
{
    entries_.push_back({file, place, text});
}

std::vector<Problems::Entry> Problems::entries() const
{
    std::vector<Entry> sorted = entries_;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Entry &a, const Entry &b) {
        return std::tie(a.file, a.place.line, a.place.column) < std::tie(b.file, b.place.line, b.place.column);
    });
    return sorted;
}

std::vector<std::string> Problems::lines() const
{
    std::vector<std::string> lines;
    for (const Entry &entry : entries()) {
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
    const FileContent content = readWholeFile(file, FILE_MOST_BYTES);
    if (!content.problem.empty())
        throw UsageError(file + ": " + content.problem);
    return content.text;
}
