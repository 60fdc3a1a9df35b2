#ifndef RUNTIME_SESSION_RECIPE_TRANSFER_H
#define RUNTIME_SESSION_RECIPE_TRANSFER_H

#include "session/read_once.h"
#include "session/runtime.h"
#include "values/awaited_words.h"
#include "values/recipe.h"

#include <functional>
#include <optional>

// Moves the words of a recipe between the recipe buffer and the PLC. In the buffer they lie in the order of their
// addresses, without gaps.

enum class TransferEnd {
    DONE,
    REFUSED, // the PLC refused to write a block, and what is behind it was not sent; or to read some words
    CUT_OFF, // the link was lost: some blocks may have been written, others not
    NO_LINK  // not in time, or the program is asked to end
};

/// Gives the driver the plan of a transfer. Throws UsageError if the recipe does not fit the buffer.
void planRecipe(const DriverLibrary &library, const std::vector<RecipeEntry> &pieces, qint32 station);

/// Lays the words of the pieces into the recipe buffer, or zeros.
void fillRecipeBuffer(LowMemory &memory, const std::vector<RecipeEntry> &pieces, bool withValues);

class RecipeTransfer {
public:
    /// Plans the transfer of `entries` in `runtime`, which outlives this object.
    /// Throws UsageError if the recipe does not fit the buffer.
    RecipeTransfer(Runtime &runtime, const std::vector<RecipeEntry> &entries);
    RecipeTransfer(const RecipeTransfer &) = delete;
    RecipeTransfer &operator=(const RecipeTransfer &) = delete;

    /// A call with the words done so far and all words, after every block.
    void onProgress(std::function<void(std::size_t done, std::size_t total)> call) { progress_ = std::move(call); }

    /// Calls `goesOn` before each step, with hasBegun(); once it returns false the transfer ends as NO_LINK.
    void onStep(std::function<bool(bool)> goesOn) { goesOn_ = std::move(goesOn); }

    /// True if a request of the latest transfer was handed to the driver.
    bool hasBegun() const { return running_; }

    /// Writes the values of the entries, once; again from the start after a change of the PLC's operating mode.
    TransferEnd write(TimePoint giveUp);

    /// Reads all words, anew after a lost link; if the PLC refuses some, all others. Never ends with CUT_OFF.
    TransferEnd read(TimePoint giveUp);

    /// True if the latest read was refused a word of the item.
    bool refused(const Item &item) const { return polled_ && polled_->refused(item); }

    /// The words that the latest read has brought.
    std::vector<quint8> values(const Item &item);

private:
    TransferEnd run(std::size_t flag, TimePoint giveUp);
    template <typename Condition>
    bool stepUntilEnd(TimePoint giveUp, Condition done);
    TransferEnd poll(TimePoint giveUp);
    std::vector<Item> items() const;
    void note(const Exchange &exchange);
    quint8 *buffer() { return reinterpret_cast<quint8 *>(runtime_.memory().recipeBuffer()); }

    Runtime                       &runtime_;
    const std::vector<RecipeEntry> pieces_;      // as they lie in the buffer
    Item                           probe_;       // one word of the recipe, whose poll proves the link
    AwaitedWords                       unread_;      // words that the read has not brought
    std::optional<ReadOnce>     polled_;      // the poll of the latest read, if one was needed
    std::function<void(std::size_t, std::size_t)> progress_;
    std::function<bool(bool)>      goesOn_;      // empty: always
    std::size_t                    doneWords_;
    std::size_t                    totalWords_;
    RequestKind                    kind_;        // of the transfer's requests
    bool                           running_;
    bool                           lost_;        // since the transfer began
    bool                           refused_;     // since the transfer began
    bool                           switched_;    // the transfer was cut off by a change of the PLC's operating mode
    std::vector<CallHandle>        calls_;
};

#endif
