#ifndef SCREENS_NAMES_H
#define SCREENS_NAMES_H

#include "documents/document.h"
#include "screens/screen.h"

#include <map>
#include <set>

// The tags, recipes and screens that a project file can name in its screens and alarms, and what can be wrong with such
// a name.

/// What the values of a tag have to be, and how to say so.
struct Kinds {
    bool        bits;
    bool        numbers;
    bool        texts;
    const char *text;
};

constexpr Kinds ANY_KIND         = {true, true, true, "a value"};
constexpr Kinds BITS             = {true, false, false, "a bit"};
constexpr Kinds NUMBERS          = {false, true, false, "a number"};
constexpr Kinds BITS_AND_NUMBERS = {true, true, false, "a bit or a number"};

/// A value of a tag that the file names.
struct NamedValue {
    TagValue               value;
    const fins::TagConfig *tag; // of those that Names was given
};

/// How the number breaks a limit of the tag, such as "below the tag's min of 5 %"; "" if it keeps them.
std::string brokenLimit(const fins::TagConfig &tag, double number);

class Names {
public:
    /// All arguments outlive this object.
    Names(const DataNode &root, const std::string &file, const std::vector<fins::TagConfig> &tags,
          const std::vector<std::string> &recipes, Problems &problems);

    /// The value that `node` names for `user`, such as "a bar". Nothing if that is wrong; it is then reported, unless the
    /// tag itself is what is wrong in the file.
    std::optional<NamedValue> value(const DataNode &node, const Kinds &kinds, const std::string &user);

    /// The same for a value that `user` writes.
    std::optional<NamedValue> writtenValue(const DataNode &node, const Kinds &kinds, const std::string &user);

    /// Reports a number that the named value cannot have; `number` is what `node` says, or follows from it.
    bool checkNumber(const DataNode &node, const NamedValue &named, double number);

    /// The same for a number that is written, which keeps the limits of the tag, too.
    bool checkWritten(const DataNode &node, const NamedValue &named, double number);

    /// The recipe or screen that `node` names; "" if there is none, which is then reported.
    std::string recipe(const DataNode &node);
    std::string screen(const DataNode &node);

    const std::string &file() const { return file_; }
    Problems &problems() { return problems_; }

private:
    void noteTags(const DataNode &parent, const std::string &prefix);
    bool report(const DataNode &node, const std::string &text);
    std::string hint(const std::string &name, const std::vector<std::string> &names, const std::string &otherwise);
    std::string listed(const DataNode &node, const char *what, const std::vector<std::string> &names);
    bool readIndex(const DataNode &node, std::size_t bracket, NamedValue &named);
    const fins::TagConfig *find(const DataNode &node, const std::string &name);

    const std::string &file_;
    Problems          &problems_;
    std::map<std::string, const fins::TagConfig *> tags_;
    std::set<std::string>    brokenTags_;
    bool                     lacksTags_ = false; // those of a file that is wrong
    std::vector<std::string> tagNames_;
    std::vector<std::string> recipes_;
    std::vector<std::string> screens_;
    int                      hintsLeft_ = 100; // each takes a look at every name
};

#endif
