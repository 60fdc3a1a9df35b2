#include "recipe_transfer.h"

#include "exit_codes.h"
#include "fresh_values.h"
#include "watch_plan.h"

#include <algorithm>

RecipeTransfer::RecipeTransfer(Runtime &runtime, const std::vector<RecipeEntry> &entries)
    : runtime_(runtime), pieces_(layOutRecipe(entries, runtime.options().wordsPerFrame)), lost_(false), refused_(false)
{
    QVector<_RCP_VAR_PRO> variables;
    qint32 offset = 0;
    for (const RecipeEntry &piece : pieces_) {
        variables.append({runtime.options().station, VARIABLE_TAG, piece.item.regType, piece.item.address,
                          piece.item.count, offset, 0});
        offset += piece.item.count;
    }
    if (static_cast<std::size_t>(offset) > RECIPE_BUFFER_WORDS)
        throw UsageError("the recipe has " + std::to_string(offset) + " words; a recipe holds at most "
                         + std::to_string(RECIPE_BUFFER_WORDS));
    runtime.library().setRcpAddress(variables);
    // The link is proved by polling one word of the recipe.
    Item probe = pieces_.front().item;
    probe.count = 1;
    runtime.watch({probe});
    runtime.onLost([this] { lost_ = true; });
    runtime.onExchange([this](const Exchange &exchange) {
        // A write that the operating mode forbids is sent again after the mode change.
        if (exchange.judgement.verdict == Verdict::REFUSED && (exchange.accepted || exchange.kind == RequestKind::READ))
            refused_ = true;
    });
}

TransferEnd RecipeTransfer::write(TimePoint giveUp)
{
    fillBuffer(true);
    return run(RECIPE_WRITE_FLAG, giveUp);
}

TransferEnd RecipeTransfer::read(TimePoint giveUp)
{
    fillBuffer(false);
    TransferEnd end = TransferEnd::CUT_OFF;
    while (end == TransferEnd::CUT_OFF)
        end = run(RECIPE_READ_FLAG, giveUp);
    return end;
}

TransferEnd RecipeTransfer::run(std::size_t flag, TimePoint giveUp)
{
    refused_ = false;
    if (!stepUntil(runtime_, giveUp, [this] { return refused_ || runtime_.canWrite(); }))
        return TransferEnd::NO_LINK;
    if (refused_)
        return TransferEnd::REFUSED;
    lost_ = false;
    runtime_.startRecipe(flag);
    const bool isRead = flag == RECIPE_READ_FLAG;
    if (!stepUntil(runtime_, giveUp, [&] { return !runtime_.recipeRunning() || (isRead && refused_); }))
        return TransferEnd::NO_LINK;
    if (refused_)
        return TransferEnd::REFUSED;
    return lost_ ? TransferEnd::CUT_OFF : TransferEnd::DONE;
}

void RecipeTransfer::fillBuffer(bool withValues)
{
    quint8 *to = buffer();
    for (const RecipeEntry &piece : pieces_) {
        std::fill(to, to + piece.item.byteSize(), quint8(0));
        if (withValues)
            std::copy(piece.values.begin(), piece.values.end(), to);
        to += piece.item.byteSize();
    }
}

std::vector<quint8> RecipeTransfer::values(const Item &item)
{
    const quint8 *from = buffer();
    for (const RecipeEntry &piece : pieces_) {
        if (piece.item.regType == item.regType && piece.item.address == item.address)
            break;
        from += piece.item.byteSize();
    }
    return std::vector<quint8>(from, from + item.byteSize());
}
