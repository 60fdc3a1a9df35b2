#include "poll/address_merge.h"

#include "address/register_table.h"
#include "address/wrapping.h"

#include <algorithm>
#include <numeric>

/// Makes a bit item cover the whole words that hold its bits.
static void foldBits(KEY_ADDRESS &item)
{
    if (!isBitType(item.regType))
        return;

    item.regType.chop(4);
    item.count = wrapAdd(item.count, item.address % 16);
    item.count = item.count % 16 == 0 ? item.count / 16 : item.count / 16 + 1;
    item.address = item.address / 16;
}

/// The items in the order in which they are merged, first to last.
typedef std::vector<const KEY_ADDRESS *> ItemOrder;

static ItemOrder orderAsGiven(const QList<KEY_ADDRESS> &items)
{
    ItemOrder order;
    for (int i = 0; i < items.size(); ++i)
        order.push_back(&items.at(i));
    return order;
}

static ItemOrder orderByAddress(const QList<KEY_ADDRESS> &items)
{
    std::vector<quint32> weights;
    weights.reserve(static_cast<size_t>(items.size()));
    for (int i = 0; i < items.size(); ++i)
        weights.push_back(static_cast<quint32>(getRegAddressWeight(items.at(i).regType, items.at(i).address, 0)));

    ItemOrder order;
    for (int i : sortedByWeight(weights))
        order.push_back(&items.at(i));
    return order;
}

/// One merge pass over items in order. An item joins the open block if it has the same type, leaves a gap of at most
/// `largestGap` words, and the span stays within the frame; else it opens the next block. Appends to `starts` the
/// position of each item that opened a block.
/// Deliberate: tags are not compared, so words of several tags share a block, which carries the tag of its first item.
static QList<KEY_ADDRESS> mergePass(const ItemOrder &items, qint32 largestGap, QList<qint32> &starts)
{
    QList<KEY_ADDRESS> blocks;
    qint32 position = 0;
    for (const KEY_ADDRESS *item : items) {
        const KEY_ADDRESS *block = blocks.isEmpty() ? nullptr : &blocks.last();
        const qint32 end = wrapAdd(item->address, item->count);
        if (block != nullptr && block->regType == item->regType
            && wrapSub(item->address, wrapAdd(block->address, block->count)) <= largestGap
            && wrapSub(end, block->address) <= driver.maxWordsPerFrame) {
            // Deliberate: an item inside the block shortens it to the item's end.
            blocks.last().count = wrapSub(end, block->address);
        } else {
            blocks.append(*item);
            starts.append(position);
        }
        ++position;
    }
    return blocks;
}

std::vector<int> sortedByWeight(const std::vector<quint32> &weights)
{
    std::vector<int> order(weights.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&weights](int a, int b) {
        return weights[static_cast<size_t>(a)] < weights[static_cast<size_t>(b)];
    });
    return order;
}

void addrMerge(QList<KEY_ADDRESS> &items, int mode)
{
    if (mode == MERGE_RECIPE) {
        items = mergePass(orderAsGiven(items), 0, driver.recipeBlockStart);
        return;
    }

    for (int i = 0; i < items.size(); ++i)
        foldBits(items[i]);
    QList<qint32> starts;
    const QList<KEY_ADDRESS> touching = mergePass(orderByAddress(items), 0, starts);
    items = mergePass(orderAsGiven(touching), driver.maxWordsPerFrame, starts);
}
