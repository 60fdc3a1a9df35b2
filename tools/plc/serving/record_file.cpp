#include "serving/record_file.h"

#include "serving/refusal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace plc {

namespace {

// A recording begins by emptying its file, under whatever name that is read as well.
bool isOneOf(const std::string &file, const std::vector<std::string> &inputs)
{
    return std::any_of(inputs.begin(), inputs.end(), [&file](const std::string &input) {
        std::error_code absent;
        return !input.empty() && std::filesystem::equivalent(file, input, absent);
    });
}

} // namespace

bool openRecording(const Options &options, const std::vector<std::string> &played, ConnectionOptions *connection)
{
    const std::string &file = options.recordFile;
    if (file.empty())
        return true;
    const char *const reader = isOneOf(file, {options.replayFile, options.projectFile}) ? "--replay or --project"
                               : isOneOf(file, {options.plant})                         ? "--plant"
                               : isOneOf(file, played)                                  ? "a signal of the plant"
                                                                                        : nullptr;
    if (reader)
        return refuse("--record: " + file + " is the file of " + reader + " and would be lost; choose another one");
    errno = 0;
    connection->recorder = makeRecorder(file, options.recordLimitKiB * 1024ull);
    if (connection->recorder)
        return true;
    return refuse("--record: cannot write " + file + ": " + std::strerror(errno));
}

} // namespace plc
