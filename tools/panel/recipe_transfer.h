#ifndef PANEL_RECIPE_TRANSFER_H
#define PANEL_RECIPE_TRANSFER_H

#include "recipe_file.h"
#include "runtime.h"

// Moves the words of a recipe between the recipe buffer and the PLC. In the buffer they lie in the order of their
// addresses, without gaps.

enum class TransferEnd {
    DONE,
    REFUSED, // the PLC refused a block
    CUT_OFF, // the link was lost: some blocks may have been written, others not
    NO_LINK  // not in time, or the program is asked to end
};

class RecipeTransfer {
public:
    /// Plans the transfer of `entries` in `runtime`, which calls back into this object: both live until the last step.
    /// Throws UsageError if the recipe does not fit the buffer.
    RecipeTransfer(Runtime &runtime, const std::vector<RecipeEntry> &entries);
    RecipeTransfer(const RecipeTransfer &) = delete;
    RecipeTransfer &operator=(const RecipeTransfer &) = delete;

    /// Writes the values of the entries, once.
    TransferEnd write(TimePoint giveUp);

    /// Reads all words, anew after a lost link. Never ends with CUT_OFF.
    TransferEnd read(TimePoint giveUp);

    /// The words that the latest read has brought.
    std::vector<quint8> values(const Item &item);

private:
    TransferEnd run(std::size_t flag, TimePoint giveUp);
    void fillBuffer(bool withValues);
    quint8 *buffer() { return reinterpret_cast<quint8 *>(runtime_.memory().recipeBuffer()); }

    Runtime                       &runtime_;
    const std::vector<RecipeEntry> pieces_;  // as they lie in the buffer
    bool                           lost_;    // since the transfer began
    bool                           refused_; // since the transfer began
};

#endif
