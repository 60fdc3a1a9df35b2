#ifndef RUNTIME_VALUES_TAGS_H
#define RUNTIME_VALUES_TAGS_H

#include "values/codec.h"
#include "values/items.h"

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

// What a user can name on the command line, in a project or in a recipe: a tag of the project by its name, or an item
// TYPE:ADDRESS[:COUNT], each with an optional data type behind a slash: Level, DM:100:2, DM:100/f32, Level/hex; or an
// item and a data type of the PLC's manuals: D100:2, D100/REAL. A tag's name goes before an item that is written so.
// COUNT counts values of the data type; of a string it counts words, two characters each.

struct Tag {
    std::string name;    // as results name it, and as it can be typed again
    Item        item;    // its words, or bits
    ValueFormat format;
    std::string comment;
    std::string screen;  // where the panel shows it
    std::string group = std::string(); // what it is chosen by together with others; "" for none
    std::optional<double> minimum = std::nullopt; // of its values as they are shown; numbers only
    std::optional<double> maximum = std::nullopt;
    bool readOnly = false;
    bool remoteWrites = false; // its access was given as rw: also for those who write through a program that passes it on
    double deadband = 0; // a logger of changes passes over smaller ones; as shown
    std::string plc = {}; // "press.": what stands before the names of a PLC among several; else empty

    qint32 valueCount() const { return item.count / wordsPerValue(format.type); }
};

/// A value for a tag or item, as bytes.
struct TagWrite {
    Tag                 tag;
    std::vector<quint8> data;
};

class TagBook {
public:
    explicit TagBook(const DriverLibrary &library) : library_(&library) {}

    /// The form of word items that have none of their own, and the orders of a data type named without one.
    void setDefaults(const ValueFormat &format, const OrderDefaults &orders);

    /// `source` is the file that the tags come from, for messages.
    void setSource(const std::string &source) { source_ = source; }

    /// The tags and items are those of a PLC among several: their names begin with its own, as in press.Level and
    /// press.DM:100. Without a name there is only one PLC.
    void setPlc(const std::string &name) { plc_ = name.empty() ? "" : name + "."; }

    /// What stands before each name: "press." or nothing.
    const std::string &plc() const { return plc_; }

    /// Returns false if there is a tag of that name already.
    bool add(const Tag &tag);

    /// The tag of that name, or null.
    const Tag *find(const std::string &name) const;

    const std::vector<Tag> &tags() const { return tags_; }
    const DriverLibrary &library() const { return *library_; }
    const OrderDefaults &orders() const { return orders_; }

    /// The tag or item that `text` names. Throws UsageError.
    Tag resolve(const std::string &text, Access access) const;

    /// The item that `text` names, whatever the tags are called. Throws UsageError.
    Tag resolveItem(const std::string &text, Access access) const;

    /// The same with the bytes of its values, as many as it holds: one without COUNT, and of a string as many words as
    /// it needs. All that is to be written passes here: a tag's right and limits hold, also where its words are named
    /// in another data type, and not for an item of the same address.
    Tag resolveWithValues(const std::string &text, Access access, const std::vector<std::string> &texts,
                          std::vector<quint8> &bytes) const;

    /// The same for ITEM=VALUE[,VALUE...]; a string is all that stands behind the =.
    TagWrite resolveWrite(const std::string &text) const;

    /// The form in which the values of the tag or item are written. Throws UsageError.
    ValueFormat formatFor(const std::string &text) const;

    std::vector<Tag> resolveAll(const std::vector<std::string> &texts, Access access) const;

private:
    struct Parts {
        std::string name;      // without the data type
        std::string base;      // the same without the PLC's name
        std::string type;      // behind the slash
        bool        hasType;
    };
    Parts split(const std::string &text) const;
    ValueFormat formatOf(const Parts &parts) const;
    Tag namedTag(const Tag &tag, const Parts &parts) const;
    Tag itemTag(const Parts &parts, const ValueFormat &format, Access access) const;
    std::string hint(const std::string &name) const;
    void refuseTagOf(const Parts &parts) const;
    bool namesATag(const Item &item) const;
    void noteAddress(const std::string &name);

    const DriverLibrary                *library_;
    std::string                         source_;
    std::string                         plc_;
    ValueFormat                         format_;
    OrderDefaults                       orders_;
    std::vector<Tag>                    tags_;
    std::map<std::string, std::size_t>  places_; // of names in tags_
    std::shared_ptr<std::atomic<int>>   hintsLeft_ = std::make_shared<std::atomic<int>>(20); // of a book and its copies
    std::set<std::pair<std::string, qint32>> addresses_; // that are names of tags, of whatever words
};

/// "DM:100:2/f32" or "D100:2/REAL": what names an item of this form on the command line.
std::string itemName(const Item &item, const ValueFormat &format);

/// The same in the driver's notation, however it was named.
std::string driverName(Item item, ValueFormat format);

/// True for what can only be an item, in either notation, with a data type or not.
bool isItemText(const std::string &text);

/// `text` with the unit behind it, if it has one.
std::string withUnit(const std::string &text, const ValueFormat &format);

/// "a value from 0 to 100 %", what the limits of the tag allow; "" if it has none.
std::string allowedText(const Tag &tag);

/// The values in `bytes` as texts, with their unit.
std::string shownValue(const ValueFormat &format, const std::vector<quint8> &bytes);

/// True for a name that no address, data type, value list or comment can be mistaken for: letters, digits, _ . and -,
/// where the first is a letter or _. Letters of other alphabets are letters too.
bool isTagName(const std::string &text);

std::vector<Item> itemsOf(const std::vector<Tag> &tags);

#endif
