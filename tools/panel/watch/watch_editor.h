#ifndef PANEL_WATCH_WATCH_EDITOR_H
#define PANEL_WATCH_WATCH_EDITOR_H

#include "session/watch_values.h"
#include "table/table_order.h"
#include "table/value_editor.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// The watched values of a PLC as rows of the table, and edits of them: checked as every write is, and made while the link
// is up.

/// How the edits of a PLC's values are sent, one at a time.
class EditWay {
public:
    EditWay() = default;
    EditWay(const EditWay &) = delete;
    EditWay &operator=(const EditWay &) = delete;
    virtual ~EditWay() = default;

    /// Why no edit can be sent now; "" if one can.
    virtual std::string obstacle() const = 0;

    /// Sends `write`, which was given as `text`. Only without an obstacle.
    virtual void edit(const TagWrite &write, const std::string &text) = 0;

    /// What became of the latest edit, in a word or two; "" before the first one.
    virtual std::string fateOfEdit() const = 0;
};

class WatchEditor : public ValueEditor {
public:
    /// `values` are those of `tags`, which `book` has resolved; all of it outlives this object.
    WatchEditor(const TagBook &book, const std::vector<Tag> &tags, const std::vector<WatchedValue> &values, EditWay &way);

    std::size_t size() const { return values_.size(); }
    std::string name(std::size_t value) const override;
    std::string held(std::size_t value) const override;
    std::string allowed(std::size_t value) const override;
    std::string obstacle(std::size_t value) const override;
    std::string check(std::size_t value, const std::string &text) const override;
    void write(std::size_t value, const std::string &text) override;

    /// The values as the table shows them, without their courses.
    std::vector<ValueRow> rows() const;

private:
    // What is written to a value. A value that is not all of what was named has a book of its own, with one tag.
    struct Target {
        std::string              name;     // in the book
        std::unique_ptr<TagBook> own;
        std::string              allowed;
        std::string              obstacle; // for good
    };

    Target targetOf(const WatchedValue &value, const Tag &tag) const;
    std::string lastingObstacle(const WatchedValue &value, const Tag &tag) const;
    TagWrite resolve(std::size_t value, const std::string &text) const;
    ValueRow row(std::size_t value) const;

    const TagBook      &book_;
    const std::vector<Tag>          &tags_;
    const std::vector<WatchedValue> &values_;
    EditWay            &way_;
    std::vector<Target> targets_;
    std::optional<std::size_t> edited_; // latest
};

#endif
