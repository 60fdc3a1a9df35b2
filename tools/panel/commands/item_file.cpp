#include "commands/item_file.h"

#include "common/usage_error.h"
#include "documents/problems.h"
#include "documents/text_check.h"
#include "terminal/stop_flag.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <stdexcept>

static std::string readStandardInput(const std::string &name)
{
    std::string text;
    char part[65536];
    for (;;) {
        const ssize_t size = read(STDIN_FILENO, part, sizeof part);
        if (size < 0 && errno != EINTR)
            throw UsageError(name + ": " + std::strerror(errno));
        if (size < 0 && programStop().isStopped())
            throw std::runtime_error("interrupted");
        if (size == 0)
            return text;
        if (size > 0)
            text.append(part, static_cast<std::size_t>(size));
        if (text.size() > FILE_MOST_BYTES)
            throw UsageError(name + ": is larger than " + std::to_string(FILE_MOST_BYTES / 1024)
                             + " KiB; use smaller files");
    }
}

// A text that is to be written may end with blanks.
static std::string itemOf(const std::string &line)
{
    const std::size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '#')
        return "";
    const bool hasValue = line.find('=') != std::string::npos;
    return line.substr(begin, line.find_last_not_of(hasValue ? "\r" : " \t\r") + 1 - begin);
}

static void forEachLine(const std::string &file, const std::function<void(const std::string &)> &take)
{
    const bool isInput     = file == "-";
    const std::string name = isInput ? "standard input" : file;
    const std::string text = isInput ? readStandardInput(name) : readFile(file);
    Problems problems;
    checkCharacters(text, name, problems);
    problems.refuse();
    std::istringstream lines(text);
    bool any   = false;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const std::string item = itemOf(line);
        if (item.empty())
            continue;
        any = true;
        try {
            take(item);
        } catch (const UsageError &error) {
            throw UsageError(name + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (!any)
        throw UsageError(name + ": holds no item; write one a line");
}

void forEachItem(const std::vector<std::string> &items, const std::string &file,
                 const std::function<void(const std::string &)> &take)
{
    for (const std::string &item : items)
        take(item);
    if (!file.empty())
        forEachLine(file, take);
}
