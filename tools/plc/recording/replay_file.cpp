#include "recording/replay_file.h"

#include "recording/capture_reader.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

namespace plc {

namespace {

std::string loadCapture(const std::string &name, Replay *replay)
{
    FileOwner file(std::fopen(name.c_str(), "rbe"));
    if (!file)
        return "cannot read " + name + ": " + std::strerror(errno);
    std::string remark;
    const std::string wrong = readCapture(
        std::move(file), [replay](const RecordedFrame &frame) { replay->take(frame); }, &remark);
    if (!wrong.empty())
        return name + ": " + wrong;
    if (!remark.empty())
        std::cerr << "fins_plc: --replay: " << name << ": " << remark << std::endl;
    return replay->isEmpty() ? name + ": there is no FINS command in this capture; make one with --record"
                             : std::string();
}

} // namespace

std::string loadReplay(const std::string &file, Replay *replay)
{
    errno = 0;
    std::ifstream text(file, std::ios::binary);
    std::string start(4, '\0');
    text.read(&start[0], 4);
    if (text.gcount() == 0)
        return "cannot read " + file + ": " + (errno != 0 ? std::strerror(errno) : "it is empty");
    if (isCapture(start))
        return loadCapture(file, replay);
    text.clear();
    text.seekg(0);
    return replay->load(text, file);
}

} // namespace plc
