#include "session/recipe_transfer.h"

#include "common/usage_error.h"
#include "session/step_until.h"
#include "session/watch_plan.h"

#include <algorithm>

void planRecipe(const DriverLibrary &library, const std::vector<RecipeEntry> &pieces, qint32 station)
{
    QVector<_RCP_VAR_PRO> variables;
    qint32 offset = 0;
    for (const RecipeEntry &piece : pieces) {
        variables.append({station, VARIABLE_TAG, piece.item.regType, piece.item.address, piece.item.count, offset, 0});
        offset += piece.item.count;
    }
    if (static_cast<std::size_t>(offset) > RECIPE_BUFFER_WORDS)
        throw UsageError("the recipe has " + std::to_string(offset) + " words; a recipe holds at most "
                         + std::to_string(RECIPE_BUFFER_WORDS));
    library.setRcpAddress(variables);
}

void fillRecipeBuffer(LowMemory &memory, const std::vector<RecipeEntry> &pieces, bool withValues)
{
    quint8 *to = reinterpret_cast<quint8 *>(memory.recipeBuffer());
    for (const RecipeEntry &piece : pieces) {
        std::fill(to, to + piece.item.byteSize(), quint8(0));
        if (withValues)
            std::copy(piece.values.begin(), piece.values.end(), to);
        to += piece.item.byteSize();
    }
}

RecipeTransfer::RecipeTransfer(Runtime &runtime, const std::vector<RecipeEntry> &entries)
    : runtime_(runtime), pieces_(layOutRecipe(entries, runtime.options().wordsPerFrame)),
      probe_(pieces_.front().item), doneWords_(0), totalWords_(0), kind_(RequestKind::READ),
      running_(false), lost_(false), refused_(false), switched_(false)
{
    planRecipe(runtime.library(), pieces_, runtime.options().station);
    for (const RecipeEntry &piece : pieces_)
        totalWords_ += static_cast<std::size_t>(piece.item.count);
    probe_.count = 1;
    runtime.watch({probe_});
    calls_.push_back(runtime.onLost([this] { lost_ = true; }));
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { note(exchange); }));
}

void RecipeTransfer::note(const Exchange &exchange)
{
    const bool isModeChange = exchange.kind == RequestKind::MODE_CHANGE;
    const bool isRefused = exchange.judgement.verdict == Verdict::REFUSED && !exchange.switches;
    if (exchange.kind == RequestKind::READ ? exchange.leftOut : isRefused)
        refused_ = true;
    else if (isModeChange && exchange.accepted)
        switched_ = true;
    if (!running_ || !exchange.accepted || exchange.kind != kind_)
        return;
    const FRAME_PRO &request = exchange.request;
    if (kind_ == RequestKind::READ)
        unread_.settle(request.regType, request.address, request.count);
    doneWords_ += static_cast<std::size_t>(request.count);
    if (progress_)
        progress_(doneWords_, totalWords_);
}

std::vector<Item> RecipeTransfer::items() const
{
    std::vector<Item> items;
    for (const RecipeEntry &piece : pieces_)
        items.push_back(piece.item);
    return items;
}

TransferEnd RecipeTransfer::write(TimePoint giveUp)
{
    fillRecipeBuffer(runtime_.memory(), pieces_, true);
    kind_ = RequestKind::WRITE;
    TransferEnd end = run(RECIPE_WRITE_FLAG, giveUp);
    while (switched_)
        end = run(RECIPE_WRITE_FLAG, giveUp);
    return end;
}

TransferEnd RecipeTransfer::read(TimePoint giveUp)
{
    fillRecipeBuffer(runtime_.memory(), pieces_, false);
    kind_ = RequestKind::READ;
    unread_.expect(items());
    polled_.reset();
    TransferEnd end = TransferEnd::CUT_OFF;
    while (end == TransferEnd::CUT_OFF)
        end = run(RECIPE_READ_FLAG, giveUp);
    return end == TransferEnd::REFUSED ? poll(giveUp) : end;
}

template <typename Condition>
bool RecipeTransfer::stepUntilEnd(TimePoint giveUp, Condition done)
{
    bool goesOn = true;
    const bool ended = stepUntil(runtime_, giveUp, [&] {
        goesOn = !goesOn_ || goesOn_(running_);
        return !goesOn || done();
    });
    return ended && goesOn;
}

// The driver gives up a transfer for one word that is refused. The poll leaves out that word alone.
TransferEnd RecipeTransfer::poll(TimePoint giveUp)
{
    running_ = false;
    std::vector<Item> unread;
    for (const Item &item : items()) {
        if (unread_.awaits(item))
            unread.push_back(item);
    }
    polled_.emplace(runtime_, unread);
    if (!stepUntilEnd(giveUp, [this] { return polled_->complete(); }))
        return TransferEnd::NO_LINK;
    return polled_->anyRefused() ? TransferEnd::REFUSED : TransferEnd::DONE;
}

TransferEnd RecipeTransfer::run(std::size_t flag, TimePoint giveUp)
{
    refused_  = runtime_.leavesOut(probe_);
    running_  = false;
    switched_ = false;
    if (!stepUntilEnd(giveUp, [this] { return refused_ || runtime_.canWrite(); }))
        return TransferEnd::NO_LINK;
    if (refused_)
        return TransferEnd::REFUSED;
    lost_      = false;
    running_   = true;
    doneWords_ = 0;
    runtime_.startRecipe(flag);
    const bool isRead = flag == RECIPE_READ_FLAG;
    if (!stepUntilEnd(giveUp, [&] { return !runtime_.recipeRunning() || (isRead && refused_); }))
        return TransferEnd::NO_LINK;
    if (refused_)
        return TransferEnd::REFUSED;
    return lost_ ? TransferEnd::CUT_OFF : TransferEnd::DONE;
}

std::vector<quint8> RecipeTransfer::values(const Item &item)
{
    if (polled_)
        return runtime_.values(item);
    const quint8 *from = buffer();
    for (const RecipeEntry &piece : pieces_) {
        if (piece.item.regType == item.regType && piece.item.address == item.address)
            break;
        from += piece.item.byteSize();
    }
    return std::vector<quint8>(from, from + item.byteSize());
}
