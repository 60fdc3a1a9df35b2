// Replies, and the end of jobs.

#include "arithmetic.h"
#include "reference_driver.h"
#include "register_types.h"

namespace reference {

enum { REJECTED = 0, DATA = 1, ACKNOWLEDGED = 2 };

static Byte byteAt(const Bytes &bytes, Int offset)
{
    return offset >= 0 && offset < static_cast<Int>(bytes.size()) ? bytes[static_cast<std::size_t>(offset)] : Byte(0);
}

Int ReferenceDriver::judge(const Bytes &reply)
{
    const Frame head = frameList.front();
    if (static_cast<Int>(reply.size()) != head.rcvLen)
        return REJECTED;
    if (connected == 0) {
        connected = 1;
        srcNode[1] = byteAt(reply, 19);
        dstNode[1] = byteAt(reply, 23);
        return ACKNOWLEDGED;
    }
    if (byteAt(reply, 25) != sid)
        return REJECTED;
    if (head.dataLen != 0)
        return DATA;
    const Byte main = byteAt(reply, 28), sub = byteAt(reply, 29);
    if (main != 0x22 || (sub != 0x03 && sub != 0x04 && sub != 0x06))
        return ACKNOWLEDGED;
    if (frameList.size() <= 2)
        queueModeChange();
    return REJECTED;
}

Int ReferenceDriver::takeRejected()
{
    errCount = plus(errCount, 1);
    if (errCount < retryLimit)
        return 8;
    connected = 0;
    commFailed = 1;
    frameList.clear();
    errCount = 0;
    finishJob();
    return 2;
}

Int ReferenceDriver::retireHead()
{
    frameList.erase(frameList.begin());
    if (frameList.empty())
        finishJob();
    errCount = 0;
    return 1;
}

void ReferenceDriver::takeWord(const Frame &head, Int index, const Bytes &reply)
{
    const Int  address = plus(head.address, index);
    const Byte high = byteAt(reply, 30 + 2 * index), low = byteAt(reply, 31 + 2 * index);
    const std::size_t at = areaOf(head.requestTag, head.regType, address);
    dataAreas[at].rcvFlag = 0;
    const Int before = dataAreas[at].plcValue[0] + 256 * dataAreas[at].plcValue[1];
    if (before != low + 256 * high) {
        dataAreas[at].writePending = 0;
        wordChanges(before, low + 256 * high, head.requestTag, head.regType, address);
    }
    dataAreas[at].plcValue[0] = low;
    dataAreas[at].plcValue[1] = high;
}

void ReferenceDriver::takeRecipeWords(const Frame &head, const Bytes &reply)
{
    const Int blocks = static_cast<Int>(recipeBlockStart.size());
    if (recipeIndex >= blocks)
        return;
    const auto  block = static_cast<std::size_t>(recipeIndex);
    const Int   first = recipeBlockStart[block];
    const Int   end = recipeIndex + 1 < blocks ? recipeBlockStart[block + 1] : static_cast<Int>(recipeVars.size());
    for (Int k = first; k < end; ++k) {
        const RecipeVar &var = recipeVars[static_cast<std::size_t>(k)];
        const Int        apart = minus(var.address, recipeVars[static_cast<std::size_t>(first)].address);
        for (Int j = 0; j < var.count; ++j) {
            const Int at = plus(plus(head.dataPos, times(2, apart)), 2 * j);
            const Int word = plus(var.bufferOffset, j);
            recipeBuffer[2 * word] = byteAt(reply, plus(at, 1));
            recipeBuffer[2 * word + 1] = byteAt(reply, at);
            valueChangeCallback(0, -1, "RWI", word);
        }
    }
}

Int ReferenceDriver::dealRcvFrame(Bytes &reply, Text &info)
{
    info.clear();
    if (frameList.empty())
        return 0;
    const Frame head = frameList.front();
    Text address = std::to_string(head.address);
    if (head.regType.substr(0, 4) == "_bit")
        address = std::to_string(head.address / 16) + "." + std::to_string(head.address % 16);
    info = std::to_string(head.requestTag) + "#" + head.regType + address + "(" + std::to_string(head.count) + ")("
         + std::to_string(reply.size()) + ")";
    const Int kind = judge(reply);
    if (kind == REJECTED)
        return takeRejected();
    commFailed = 0;
    if (kind == DATA) {
        for (Int i = 0; i < head.dataLen / 2; ++i)
            takeWord(head, i, reply);
        if (jobType == 6)
            takeRecipeWords(head, reply);
    }
    return retireHead();
}

// ---- The end of a job ---------------------------------------------------------------------------------------------

void ReferenceDriver::finishJob()
{
    switch (jobType) {
    case 2: return finishWrite();
    case 3: return finishConditionRead();
    case 4:
        if (!readList.empty()) {
            readList.push_back(Variable(readList.front()));
            readList.erase(readList.begin());
        }
        return;
    case 5:
    case 6: return finishRecipeBlock();
    default: return;
    }
}

void ReferenceDriver::finishWrite()
{
    if (writeList.empty())
        return;
    const Variable piece = writeList.front();
    for (Int i = 0; i < piece.count; ++i) {
        if (isBitName(piece.regType))
            settleBit(piece, plus(piece.address, i), commFailed == 0);
        else
            settleWord(piece, plus(piece.address, i), commFailed == 0);
    }
    writeList.erase(writeList.begin());
}

void ReferenceDriver::settleWord(const Variable &piece, Int address, bool isGood)
{
    Area &area = dataAreas[areaOf(piece.requestTag, piece.regType, address)];
    area.writePending = 0;
    const Int plcWord = area.plcValue[0] + 256 * area.plcValue[1];
    const Int writtenWord = area.writeValue[0] + 256 * area.writeValue[1];
    if (isGood) {
        area.plcValue[0] = area.writeValue[0];
        area.plcValue[1] = area.writeValue[1];
        return;
    }
    wordChanges(plcWord, writtenWord, piece.requestTag, piece.regType, address);
}

static void settleValue(Area &area, Int bit, bool isGood)
{
    area.pendingBits &= ~(1 << bit);
    if (area.pendingBits == 0)
        area.writePending = 0;
    const auto at = static_cast<std::size_t>(bit / 8);
    const Int  mask = 1 << (bit % 8);
    if (isGood)
        area.plcValue[at] = static_cast<Byte>((area.plcValue[at] & ~mask) | (area.writeValue[at] & mask));
}

void ReferenceDriver::settleBit(const Variable &piece, Int bitAddress, bool isGood)
{
    const Int bit = bitAddress % 16;
    Area     &area = dataAreas[areaOf(piece.requestTag, wordName(piece.regType), bitAddress / 16)];
    if (bit >= 0) // else it is no bit of the word, and nothing was stored
        settleValue(area, bit, isGood);
    valueChangeCallback(stationNo, piece.requestTag, piece.regType, piece.address);
}

void ReferenceDriver::finishConditionRead()
{
    if (conditionReadList.empty())
        return;
    const Variable head = conditionReadList.front();
    if (head.requestTag == currentRead.requestTag && head.regType == currentRead.regType
        && head.address == currentRead.address && head.count == currentRead.count)
        valueChangeCallback(-1, -1, "-1", commFailed != 0 ? -1 : 0);
    if (commFailed != 0)
        conditionReadList.clear();
    else
        conditionReadList.erase(conditionReadList.begin());
}

void ReferenceDriver::finishRecipeBlock()
{
    if (commFailed == 0) {
        recipeIndex = plus(recipeIndex, 1);
        if (recipeIndex < static_cast<Int>(recipeBlocks.size()))
            return;
    }
    recipeIndex = 0;
    if (runtimeBlock != nullptr && hasMutex)
        runtimeBlock[jobType == 5 ? WRITE_FLAG : READ_FLAG] = 0;
}

} // namespace reference
