#ifndef SCREENS_SCREEN_H
#define SCREENS_SCREEN_H

#include "documents/problems.h"

#include <fins_runtime/config.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// What a project file says of a graphical panel: its screens, each a grid of elements, and the alarms of its tags.
// Columns, rows and sizes count grid cells; places in the file count from 1, here from 0.

struct DataNode;

enum class ElementKind { TEXT, NUMBER, BAR, LAMP, TREND, BUTTON, SET_POINT, CHOICE, RECIPE, ALARMS, GROUP, SCREEN };
enum class ButtonMode { SET, MOMENTARY, TOGGLE };
enum class ValueKind { BIT, NUMBER, TEXT };

/// One value of a tag: Level, or Temperatures[2] of a tag with several.
struct TagValue {
    std::string tag;
    std::size_t index = 0;
};

/// What a value of a lamp or choice is called.
struct ValueText {
    double      value = 0;
    std::string text;
    int         priority = 0; // of a lamp: 0 normal, else as abnormal as an alarm of that priority, 1 to 3
};

struct ScreenElement {
    ElementKind kind = ElementKind::TEXT;
    Place       place;                  // in the file
    int         column = 0, row = 0, columns = 1, rows = 1;
    std::string label;                  // "": the tag's comment, else its name
    std::vector<TagValue> tags;         // one; of a trend 1 to 8; of a fixed text, recipe, list, group and switch none
    std::string text;                   // fixed text, or a button's caption; of a toggle the caption while it is 0
    std::string textOn;                 // a toggle's caption while it is 1
    std::optional<double> minimum;      // of a bar; both are set once it was read
    std::optional<double> maximum;
    std::vector<ValueText> states;      // of a lamp or choice
    ButtonMode  mode  = ButtonMode::SET;
    double      value = 1;              // what a set or momentary button writes; a momentary one writes 0 when released
    std::string recipe;                 // "": every recipe of the project
    std::string screen;                 // to switch to
    std::chrono::minutes span{10};      // of a trend
};

struct Screen {
    std::string name;
    std::string title;
    int         columns = 8;            // 1 to 32
    int         rows    = 5;            // 1 to 32
    std::vector<ScreenElement> elements;
};

struct AlarmRule {
    enum class Condition { HIGH, LOW, VALUE };
    std::string name;
    TagValue    value;
    Condition   condition = Condition::HIGH;
    double      limit      = 0;         // the alarm comes at it and above, or below, or when the value equals it
    double      hysteresis = 0;         // it goes when the value is as far back behind the limit
    std::chrono::milliseconds delay{0}; // for which it must last before the alarm comes
    std::string text;
    int         priority = 2;           // 1 to 3, 1 the most urgent
};

struct ScreenBook {
    std::vector<Screen>    screens;
    std::vector<AlarmRule> alarms;
};

/// What the values of a tag are: BIT of a bit type; TEXT of strings, hex and bits; else NUMBER.
ValueKind kindOf(const fins::TagConfig &tag);

/// How many values it has; a string is one.
std::size_t valueCountOf(const fins::TagConfig &tag);

/// Reads the tables [screens.NAME] and [alarms.NAME] of a project file. All that is wrong becomes a problem with its
/// place. `tags` and `recipes` are those of the same file.
ScreenBook readScreens(const DataNode &root, const std::string &file, const std::vector<fins::TagConfig> &tags,
                       const std::vector<std::string> &recipes, Problems &problems);

#endif
