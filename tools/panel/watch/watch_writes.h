#ifndef PANEL_WATCH_WATCH_WRITES_H
#define PANEL_WATCH_WATCH_WRITES_H

#include "session/write_queue.h"
#include "session/write_report.h"
#include "watch/watch_editor.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The writes of a watch: those of the command line, and after them edits, one at a time. An edit is for now: it is not
// sent once the link was lost, while those of the command line wait for the next one.

/// What the table calls it.
std::string fateWord(Fate fate);

class WatchWrites : public EditWay {
public:
    /// `runtime` outlives this object.
    explicit WatchWrites(Runtime &runtime) : runtime_(runtime) {}

    /// The writes of the command line, which go out once, as soon as the link is up. Before any edit.
    void begin(const std::vector<TagWrite> &writes, bool keepGoing);

    std::string obstacle() const override;

    /// It begins with the next pump(), for which a pause ends: a tick may call this.
    void edit(const TagWrite &write, const std::string &text) override;

    /// To be called before every step. True if openItems() may have changed since the last call.
    bool pump();

    /// True if nothing more happens to the writes.
    bool settled() const { return !batch_ && !next_; }

    /// The writes of which nothing is known yet, sent or not.
    std::vector<Item> openItems() const { return batch_ ? batch_->report.openItems() : std::vector<Item>(); }

    std::string fateOfEdit() const override;

    /// Reports what is left; returns what holds for all writes together.
    WriteVerdict end(const std::string &reason);

private:
    struct Batch {
        Batch(Runtime &runtime, bool isEdit, bool keepGoing);

        const bool  isEdit;
        WriteQueue  queue;
        WriteReport report;
        bool        hadLoss; // of the link
        CallHandle  lost;
    };

    void start(const std::vector<TagWrite> &writes, bool isEdit, bool keepGoing);
    void beginEdit();
    void finish(const std::string &reason);

    Runtime                &runtime_;
    std::unique_ptr<Batch>  batch_;   // under way
    std::optional<TagWrite> next_;    // an edit that was not begun
    std::optional<Fate>     fate_;    // of the latest edit, once it is known
    bool                    hasEdit_ = false;
    WriteVerdict            verdict_ = WriteVerdict::DONE; // of all that is finished
};

#endif
