// Configuration, and the plans: what is polled, read once and transferred as a recipe.

#include <utility>

#include "arithmetic.h"
#include "reference_driver.h"
#include "register_types.h"

namespace reference {

enum { POLL_REQUEST_ID = 4, QUEUE_LAST = 512 };

static std::vector<Text> splitAtHashes(const Text &text)
{
    std::vector<Text> parts(1);
    for (const char c : text) {
        if (c == '#')
            parts.push_back(Text());
        else
            parts.back() += c;
    }
    return parts;
}

Int ReferenceDriver::initProperty(const RuntimeMemory &memory, const Property &property, Int &status)
{
    status = 2;
    const std::vector<Text> parts = splitAtHashes(property.text);
    if (parts.size() > 4) {
        toNumber(parts[0], stationNo);
        toNumber(parts[1], writeDirect);
        toNumber(parts[2], propertyField2);
        toNumber(parts[3], retryLimit);
        toNumber(parts[4], maxWordsPerFrame);
    }
    runtimeBlock = property.hasBlock ? memory.block : nullptr;
    initArg2 = property.arg2;
    recipeBuffer = memory.recipe;
    hasMutex = property.hasMutex;
    readList.clear();
    writeList.clear();
    conditionReadList.clear();
    dataAreas.clear();
    frameList.clear();
    jobType = jobCount = errCount = commFailed = reserved0 = reserved1 = 0;
    reserved2 = 1;
    wordsPerFrame = maxWordsPerFrame;
    maxBitsPerFrame = times(maxWordsPerFrame, 8);
    return 1;
}

// ---- The cyclic poll ------------------------------------------------------------------------------------------------

void ReferenceDriver::markWatched(const KeyAddress &item)
{
    for (Int i = 0; i < item.count; ++i) {
        const Int address = plus(item.address, i);
        if (!isBitName(item.regType)) {
            dataAreas[areaOf(item.requestTag, item.regType, address)].wordMonitor |= 1;
            continue;
        }
        Area &area = dataAreas[areaOf(item.requestTag, wordName(item.regType), address / 16)];
        if (address % 16 >= 0)
            area.bitMonitor |= 1 << (address % 16);
    }
}

// Bit items become the words that hold their bits.
static void foldBits(KeyAddress &item)
{
    if (!isBitName(item.regType))
        return;
    item.regType = item.regType.substr(0, item.regType.size() - 4);
    const Int bits = plus(item.count, item.address % 16);
    item.count = bits % 16 == 0 ? bits / 16 : bits / 16 + 1;
    item.address = item.address / 16;
}

template <class Item> static void bubbleSort(std::vector<Item> &items)
{
    for (std::size_t pass = 0; pass + 1 < items.size(); ++pass)
        for (std::size_t j = 0; j + pass + 1 < items.size(); ++j)
            if (weight(items[j].regType, items[j].address) > weight(items[j + 1].regType, items[j + 1].address))
                std::swap(items[j], items[j + 1]);
}

static Int gapBetween(const KeyAddress &block, const KeyAddress &next)
{
    return minus(next.address, plus(block.address, block.count));
}

static Int spanOf(const KeyAddress &block, const KeyAddress &next)
{
    return minus(plus(next.address, next.count), block.address);
}

void ReferenceDriver::joinTouching(std::vector<KeyAddress> &items, bool isRecipe)
{
    std::vector<KeyAddress> blocks;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const KeyAddress &next = items[i];
        if (!blocks.empty() && next.regType == blocks.back().regType && gapBetween(blocks.back(), next) <= 0
            && spanOf(blocks.back(), next) <= maxWordsPerFrame) {
            blocks.back().count = spanOf(blocks.back(), next); // shorter than before if `next` lies inside
            continue;
        }
        blocks.push_back(next);
        if (isRecipe)
            recipeBlockStart.push_back(static_cast<Int>(i));
    }
    items = blocks;
}

void ReferenceDriver::joinOverGaps(std::vector<KeyAddress> &items) const
{
    std::vector<KeyAddress> blocks;
    for (const KeyAddress &next : items) {
        if (!blocks.empty() && next.regType == blocks.back().regType
            && gapBetween(blocks.back(), next) <= maxWordsPerFrame
            && spanOf(blocks.back(), next) <= maxWordsPerFrame)
            blocks.back().count = spanOf(blocks.back(), next);
        else
            blocks.push_back(next);
    }
    items = blocks;
}

Int ReferenceDriver::addrMerge(std::vector<KeyAddress> &addresses)
{
    for (Area &area : dataAreas)
        area.wordMonitor = area.bitMonitor = 0;
    for (const KeyAddress &item : addresses)
        markWatched(item);
    for (KeyAddress &item : addresses)
        foldBits(item);
    bubbleSort(addresses);
    joinTouching(addresses, false);
    joinOverGaps(addresses);
    readList.clear();
    for (const KeyAddress &block : addresses) {
        Variable poll;
        poll.requestId = POLL_REQUEST_ID;
        poll.requestTag = block.requestTag;
        poll.regType = block.regType;
        poll.address = block.address;
        poll.count = block.count;
        readList.push_back(poll);
    }
    return static_cast<Int>(readList.size());
}

// ---- Conditional reads ------------------------------------------------------------------------------------------

Int pieceCount(Int count, Int limit)
{
    if (limit == 0)
        return 1;
    return count % limit == 0 ? count / limit : count / limit + 1;
}

static Variable requestFor(const KeyAddress &item, Int requestId, Int address, Int count)
{
    Variable request;
    request.requestId = requestId;
    request.requestTag = item.requestTag;
    request.regType = item.regType;
    request.address = address;
    request.count = count;
    if (isBitName(item.regType)) {
        request.regType = wordName(item.regType);
        request.address = address / 16;
        request.count = count % 16 == 0 ? count / 16 : count / 16 + 1; // without the first bit's number in its word
    }
    return request;
}

Int ReferenceDriver::addConditionRead(KeyAddress &item, Int requestId)
{
    const Int limit = item.dataKind == -1 ? maxBitsPerFrame : wordsPerFrame;
    const Int pieces = item.count < 1 ? 1 : pieceCount(item.count, limit);
    for (Int k = 0; k < pieces; ++k) {
        const Int units = k == pieces - 1 ? item.count - k * limit : limit;
        currentRead = requestFor(item, requestId, plus(item.address, k * limit), units);
        put(conditionReadList, currentRead);
    }
    return 1;
}

static bool isSame(const Variable &a, const Variable &b)
{
    return a.requestTag == b.requestTag && a.regType == b.regType && a.address == b.address && a.count == b.count;
}

void ReferenceDriver::put(std::vector<Variable> &queue, const Variable &request) const
{
    for (std::size_t i = queue.size(); i > 1; --i) { // never the head, which is in progress
        if (isSame(queue[i - 1], request)) {
            queue[i - 1] = request;
            return;
        }
    }
    if (queue.size() > QUEUE_LAST)
        queue[QUEUE_LAST] = request;
    else
        queue.push_back(request);
}

// ---- Recipes --------------------------------------------------------------------------------------------------------

Int ReferenceDriver::setRcpAddress(std::vector<RecipeVar> &vars)
{
    recipeVars.clear();
    for (const RecipeVar &var : vars)
        if (var.stationNo == stationNo)
            recipeVars.push_back(var);
    bubbleSort(recipeVars);
    std::vector<KeyAddress> items;
    for (const RecipeVar &var : recipeVars) {
        KeyAddress item;
        item.requestTag = var.requestTag;
        item.regType = var.regType;
        item.address = var.address;
        item.count = var.count;
        item.bufferOffset = var.bufferOffset;
        items.push_back(item);
    }
    recipeBlockStart.clear();
    recipeBlocks.clear();
    joinTouching(items, true);
    for (const KeyAddress &item : items)
        recipeBlocks.push_back({0, item.requestTag, item.regType, item.address, item.count, item.bufferOffset, 0});
    return static_cast<Int>(recipeVars.size());
}

} // namespace reference
