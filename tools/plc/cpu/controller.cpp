#include "cpu/controller.h"

namespace plc {

std::string modeName(Mode mode)
{
    if (mode == Mode::PROGRAM)
        return "program";
    return mode == Mode::MONITOR ? "monitor" : "run";
}

bool parseMode(const std::string &name, Mode *mode)
{
    for (const Mode candidate : {Mode::PROGRAM, Mode::MONITOR, Mode::RUN}) {
        if (modeName(candidate) != name)
            continue;
        *mode = candidate;
        return true;
    }
    return false;
}

} // namespace plc
