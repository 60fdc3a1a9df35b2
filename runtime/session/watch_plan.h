#ifndef RUNTIME_SESSION_WATCH_PLAN_H
#define RUNTIME_SESSION_WATCH_PLAN_H

#include "values/items.h"

#include <QtCore/QList>

// What the driver is asked to watch so that every word of every item is polled.

/// The tag under which all variables of this runtime are known to the driver: blocks of several tags would be stored
/// under the tag of their first item only.
constexpr qint32 VARIABLE_TAG = 1;

/// The items in pieces, sorted by their words. No piece is longer than `wordsPerFrame` words, since the driver never
/// cuts one. Where items share words the pieces are words: of two items of which one lies inside the other, the driver
/// would poll the words only up to the end of the inner one.
std::vector<Item> planPieces(const std::vector<Item> &items, qint32 wordsPerFrame);

/// The pieces for intf_addrMerge.
QList<KEY_ADDRESS> toAddresses(const std::vector<Item> &pieces);

/// Both at once.
QList<KEY_ADDRESS> planWatch(const std::vector<Item> &items, qint32 wordsPerFrame);

#endif
