// The data image: one record per word, and what the runtime reads from and writes into it.

#include "arithmetic.h"
#include "reference_driver.h"
#include "register_types.h"

namespace reference {

std::size_t ReferenceDriver::areaOf(Int requestTag, const Text &regType, Int address)
{
    for (std::size_t i = 0; i < dataAreas.size(); ++i)
        if (dataAreas[i].address == address && dataAreas[i].requestTag == requestTag
            && dataAreas[i].regType == regType)
            return i;
    Area area;
    area.requestTag = requestTag;
    area.regType = regType;
    area.address = address;
    dataAreas.push_back(area);
    return dataAreas.size() - 1;
}

void ReferenceDriver::wordChanges(Int before, Int after, Int requestTag, const Text &regType, Int address)
{
    const Area area = dataAreas[areaOf(requestTag, regType, address)];
    if (before == after)
        return;
    for (Int bit = 0; bit < 16; ++bit) {
        const bool isWatched = (area.bitMonitor >> bit & 1) != 0;
        if (isWatched && (before >> bit & 1) != (after >> bit & 1))
            valueChangeCallback(stationNo, requestTag, regType + "_bit", plus(times(address, 16), bit));
    }
    if (area.wordMonitor % 2 == 1)
        valueChangeCallback(stationNo, requestTag, regType, address);
}

static const Byte *shown(const Area &area)
{
    return area.writePending != 0 ? area.writeValue.data() : area.plcValue.data();
}

Int ReferenceDriver::getData(Int requestTag, const Text &regType, Int address, Int count, Byte *out)
{
    for (Int i = 0; i < count; ++i) {
        const Int at = plus(address, i);
        if (!isBitName(regType)) {
            const Byte *word = shown(dataAreas[areaOf(requestTag, regType, at)]);
            out[2 * i] = word[0];
            out[2 * i + 1] = word[1];
            continue;
        }
        const Byte *word = shown(dataAreas[areaOf(requestTag, wordName(regType), at / 16)]);
        const Int   bit = at % 16;
        out[i] = bit < 0 ? Byte(0) : static_cast<Byte>((word[0] + 256 * word[1]) >> bit & 1);
    }
    return 1;
}

Int ReferenceDriver::setData(Int requestTag, const Text &regType, Int address, Int count, const Byte *data,
                             Int requestId)
{
    const Int unitSize = isBitName(regType) ? 1 : 2;
    const Int pieces = count < 1 || writeDirect != 0 ? 0 : pieceCount(count, wordsPerFrame);
    for (Int k = 0; k < pieces; ++k) {
        const Int done = k * wordsPerFrame;
        Variable  piece;
        piece.requestId = requestId;
        piece.requestTag = requestTag;
        piece.regType = regType;
        piece.address = plus(address, done);
        piece.count = k == pieces - 1 ? count - done : wordsPerFrame;
        for (Int i = 0; i < piece.count * unitSize && i < BUFFER_SIZE; ++i)
            piece.value[static_cast<std::size_t>(i)] = data[done * unitSize + i];
        put(writeList, piece);
    }
    for (Int i = 0; i < count; ++i) {
        if (unitSize == 1)
            showBit(requestTag, regType, plus(address, i), data[i] == 1);
        else
            showWord(requestTag, regType, plus(address, i), data[2 * i], data[2 * i + 1]);
    }
    return 1;
}

void ReferenceDriver::showWord(Int requestTag, const Text &regType, Int address, Byte low, Byte high)
{
    const std::size_t at = areaOf(requestTag, regType, address);
    const Byte       *now = shown(dataAreas[at]);
    wordChanges(now[0] + 256 * now[1], low + 256 * high, requestTag, regType, address);
    dataAreas[at].writeValue[0] = low;
    dataAreas[at].writeValue[1] = high;
    dataAreas[at].writePending = 1;
}

void ReferenceDriver::showBit(Int requestTag, const Text &regType, Int bitAddress, bool isOn)
{
    const Text        word = wordName(regType);
    const std::size_t at = areaOf(requestTag, word, bitAddress / 16);
    const Int         bit = bitAddress % 16;
    if (bit < 0)
        return; // no bit of the word: nothing is stored
    const Byte *now = shown(dataAreas[at]);
    const Int   before = now[0] + 256 * now[1];
    const Int   after = isOn ? before | 1 << bit : before & ~(1 << bit);
    wordChanges(before, after, requestTag, word, bitAddress / 16);
    dataAreas[at].writeValue[0] = low8(after);
    dataAreas[at].writeValue[1] = high8(after);
    dataAreas[at].writePending = 1;
    dataAreas[at].pendingBits |= 1 << bit;
}

} // namespace reference
