#ifndef PLC_CONSOLE_CPU_TEXTS_H
#define PLC_CONSOLE_CPU_TEXTS_H

#include "cpu/controller.h"

#include <array>
#include <string>

// The state of the CPU unit in words: as the console and a project file set it, and as the console tells it.

namespace plc {

struct CpuSetting {
    const char *key;     // in a project file
    bool        isList;  // there also a list of texts
    const char *meaning; // with what the text has to be
    std::string (*set)(const std::string &text, Controller &controller); // what is wrong; then nothing has changed
};

enum : std::size_t { CPU_SETTING_COUNT = 7 };

extern const std::array<CpuSetting, CPU_SETTING_COUNT> CPU_SETTINGS;

std::string setBattery(const std::string &text, Controller &controller);
std::string setClock(const std::string &text, Controller &controller);
std::string setCycle(const std::string &text, Controller &controller);
std::string setMessage(const std::string &text, Controller &controller);
std::string setError(const std::string &text, Controller &controller);

std::string batteryText(const Controller &controller);
std::string clockText(const Controller &controller);
std::string cycleText(const Controller &controller);
std::string messagesText(const Controller &controller);
std::string errorsText(const Controller &controller);
std::string logText(const Controller &controller);

} // namespace plc

#endif
