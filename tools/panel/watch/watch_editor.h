#ifndef PANEL_WATCH_WATCH_EDITOR_H
#define PANEL_WATCH_WATCH_EDITOR_H

#include "session/watch_values.h"
#include "table/value_editor.h"
#include "watch/watch_writes.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// Edits of the watched values: checked as every write is, and made while the link is up.

class WatchEditor : public ValueEditor {
public:
    /// `values` watches `tags`, which `book` has resolved; all of it outlives this object.
    WatchEditor(const Runtime &runtime, const TagBook &book, const std::vector<Tag> &tags, const WatchValues &values,
                WatchWrites &writes);

    std::string name(std::size_t value) const override;
    std::string held(std::size_t value) const override;
    std::string allowed(std::size_t value) const override;
    std::string obstacle(std::size_t value) const override;
    std::string check(std::size_t value, const std::string &text) const override;
    void write(std::size_t value, const std::string &text) override;

    /// What became of the latest edit, if it was of this value, in a word or two; else "".
    std::string fate(std::size_t value) const;

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
    const WatchedValue &valueAt(std::size_t value) const { return values_.values()[value]; }

    const Runtime      &runtime_;
    const TagBook      &book_;
    const WatchValues  &values_;
    WatchWrites        &writes_;
    std::vector<Target> targets_;
    std::optional<std::size_t> edited_; // latest
};

#endif
