#ifndef PLC_OPTIONS_SETTINGS_H
#define PLC_OPTIONS_SETTINGS_H

#include "options/options.h"

#include <array>
#include <cstdint>
#include <string>

// The settings that the command line and a project file have in common: names, ranges, help, and what they set.

namespace plc {

enum class SettingKind {
    NUMBER,
    TEXT,
    FLAG,     // without a value; in a project file true or false
    END_CODE, // in a project file also true or false
    LIST      // repeatable; in a project file a text or a list of texts
};

struct Setting {
    const char   *key;    // in a project file
    const char   *option; // on the command line
    SettingKind   kind;
    const char   *meaning;
    const char   *note;   // behind the range; may be null
    std::uint32_t least;  // of a number
    std::uint32_t most;
    const char   *alone;  // the value of an option without one; null: it needs one
    void (*setNumber)(std::uint32_t number, Options *options);
    std::string (*setText)(const std::string &text, Options *options); // returns what is wrong
    std::string (*preset)(const Options &options);                      // null: nothing is set at the start
};

enum : std::size_t { SETTING_COUNT = 14 };

extern const std::array<Setting, SETTING_COUNT> SETTINGS;

/// Meaning, range and note in a line.
std::string settingHelp(const Setting &setting);

/// Sets `text`. Returns an empty text, or what is wrong with it and how to mend it; then `options` is as it was.
std::string applySetting(const Setting &setting, const std::string &text, Options *options);

} // namespace plc

#endif
