#include "transcript.h"

#include <cstddef>
#include <sstream>
#include <stdexcept>

namespace {

void appendHexGroup(Bytes &bytes, const std::string &group)
{
    if (group.size() % 2 != 0)
        throw std::invalid_argument("half a byte in " + group);
    for (std::size_t at = 0; at < group.size(); at += 2) {
        const std::string digits = group.substr(at, 2);
        if (digits.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
            throw std::invalid_argument("no hex digits: " + digits);
        bytes.push_back(static_cast<unsigned char>(std::stoul(digits, nullptr, 16)));
    }
}

TranscriptStep parseStep(const std::string &line)
{
    TranscriptStep step{line.at(0), Bytes(), 1, line};
    if (std::string("><.").find(step.kind) == std::string::npos)
        throw std::invalid_argument("no transcript line: " + line);
    std::string hex = line.substr(1);
    const std::size_t equals = hex.find('=');
    if (equals != std::string::npos) {
        step.result = std::stoi(hex.substr(equals + 1));
        hex.resize(equals);
    }
    step.bytes = fromHex(hex);
    return step;
}

} // namespace

Bytes fromHex(const std::string &text)
{
    Bytes bytes;
    std::istringstream groups(text);
    for (std::string group; groups >> group;)
        appendHexGroup(bytes, group == "FINS" ? "46494E53" : group);
    return bytes;
}

std::string toHex(const Bytes &bytes)
{
    static const char DIGITS[] = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += DIGITS[byte / 16];
        text += DIGITS[byte % 16];
    }
    return text;
}

std::vector<TranscriptStep> parseTranscript(const std::string &transcript)
{
    std::vector<TranscriptStep> steps;
    std::istringstream lines(transcript);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        if (begin != std::string::npos)
            steps.push_back(parseStep(line.substr(begin)));
    }
    return steps;
}
