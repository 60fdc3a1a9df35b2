#ifndef POLL_ADDRESS_MERGE_H
#define POLL_ADDRESS_MERGE_H

#include "omron_fins_ethernet.h"

#include <vector>

// Merging of watched addresses and recipe variables into few blocks.

/// The recipe mode of addrMerge; the poll plan passes 1.
enum MergeMode {
    MERGE_POLL   = 1,
    MERGE_RECIPE = 2
};

/// Replaces `items` by blocks that span at most maxWordsPerFrame words; an item longer than that is never cut. A block
/// keeps every field but the count of the item that opened it. Poll mode folds bits into words, sorts, and reads over
/// gaps. Recipe mode joins only what touches, in the order given, and appends to recipeBlockStart the index of each
/// block's first item.
void addrMerge(QList<KEY_ADDRESS> &items, int mode);

/// Positions 0 to n - 1 in ascending order of their weights; equal weights keep their order.
std::vector<int> sortedByWeight(const std::vector<quint32> &weights);

#endif
