// The requests, and which of them is due.

#include <cstring>

#include "arithmetic.h"
#include "reference_driver.h"
#include "register_types.h"

namespace reference {

enum { KIND_NONE = 0, KIND_WRITE = 2, KIND_CONDITION_READ = 3, KIND_POLL = 4, KIND_RECIPE_WRITE = 5,
       KIND_RECIPE_READ = 6 };

Byte ReferenceDriver::nextServiceId()
{
    sid = sid >= 254 ? Byte(0) : static_cast<Byte>(sid + 1);
    return sid;
}

static void startFrame(Frame &frame, Int lengthByte, Byte command)
{
    const Byte header[16] = {'F', 'I', 'N', 'S', 0, 0, 0, low8(lengthByte), 0, 0, 0, command, 0, 0, 0, 0};
    std::memcpy(frame.frame.data(), header, sizeof header);
}

void ReferenceDriver::queueHandshake()
{
    Frame handshake;
    startFrame(handshake, 12, 0);
    handshake.sendLen = 20;
    handshake.rcvLen = 24;
    frameList.push_back(handshake);
}

// A FINS command up to its command code. `lengthByte` counts from byte 8 on.
Frame ReferenceDriver::commandFrame(Int lengthByte, Byte mainCode, Byte subCode)
{
    Frame command;
    startFrame(command, lengthByte, 2);
    const Byte header[12] = {0x80, 0x00, 0x02, low8(dstNode[0]), low8(dstNode[1]), low8(dstNode[2]),
                             low8(srcNode[0]), low8(srcNode[1]), low8(srcNode[2]), nextServiceId(),
                             mainCode, subCode};
    std::memcpy(command.frame.data() + 16, header, sizeof header);
    command.rcvLen = 30;
    return command;
}

// The variable that the frame serves, its area code, and its place and count in bytes 29 to 33.
static void describe(Frame &frame, const Variable &variable, bool isByBit)
{
    frame.requestId = variable.requestId;
    frame.requestTag = variable.requestTag;
    frame.regType = variable.regType;
    frame.address = variable.address;
    frame.count = variable.count;
    frame.value = variable.value;
    const RegisterType *type = findType(variable.regType);
    frame.frame[28] = type == nullptr ? Byte(0) : type->areaCode;
    const Int word = isByBit ? variable.address / 16 : variable.address;
    frame.frame[29] = high8(word);
    if (variable.regType == "C")
        frame.frame[29] = static_cast<Byte>(frame.frame[29] ^ 0x80);
    frame.frame[30] = low8(word);
    frame.frame[31] = isByBit ? low8(variable.address % 16) : Byte(0);
    frame.frame[32] = high8(variable.count);
    frame.frame[33] = low8(variable.count);
}

void ReferenceDriver::queueRead()
{
    if (connected == 0)
        return queueHandshake();
    Frame read = commandFrame(26, 0x01, 0x01);
    describe(read, jobVar, false);
    read.sendLen = 34;
    read.rcvLen = plus(times(2, jobVar.count), 30);
    read.dataPos = 30;
    read.dataLen = times(2, jobVar.count);
    frameList.push_back(read);
}

void ReferenceDriver::queueWrite()
{
    if (connected == 0)
        return queueHandshake();
    const bool isBit = isBitName(jobVar.regType);
    const Int dataBytes = isBit ? jobVar.count : times(2, jobVar.count);
    Frame write = commandFrame(plus(26, dataBytes), 0x01, 0x02);
    describe(write, jobVar, isBit);
    write.sendLen = plus(34, dataBytes);
    const Int room = BUFFER_SIZE - 34;
    for (Int i = 0; jobVar.count > 0 && i < dataBytes && i < room; ++i) {
        const Int from = isBit ? i : (i % 2 == 0 ? i + 1 : i - 1); // words go out high byte first
        write.frame[static_cast<std::size_t>(34 + i)] = jobVar.value[static_cast<std::size_t>(from)];
    }
    frameList.push_back(write);
}

void ReferenceDriver::queueModeChange()
{
    Frame change = commandFrame(23, 0x04, 0x01);
    change.frame[28] = 0xFF;
    change.frame[29] = 0xFF;
    change.frame[30] = 0x02;
    change.sendLen = 31;
    frameList.insert(frameList.begin(), change);
}

bool ReferenceDriver::startRecipeJob(bool isWrite)
{
    if (recipeIndex < static_cast<Int>(recipeBlocks.size())) {
        const RecipeVar &block = recipeBlocks[static_cast<std::size_t>(recipeIndex)];
        jobVar.requestTag = block.requestTag;
        jobVar.regType = block.regType;
        jobVar.address = block.address;
        jobVar.count = block.count;
        jobVar.value.fill(0);
        const Int bytes = block.count > 0 ? times(2, block.count) : 0;
        for (Int i = 0; isWrite && i < bytes && i < BUFFER_SIZE; ++i)
            jobVar.value[static_cast<std::size_t>(i)] = recipeBuffer[2 * block.bufferOffset + i];
        jobType = isWrite ? KIND_RECIPE_WRITE : KIND_RECIPE_READ;
    }
    // Past the last block the latest job is repeated.
    if (jobType == KIND_WRITE || jobType == KIND_RECIPE_WRITE)
        queueWrite();
    else if (jobType == KIND_CONDITION_READ || jobType == KIND_POLL || jobType == KIND_RECIPE_READ)
        queueRead();
    else
        return false;
    return true;
}

bool ReferenceDriver::startJob()
{
    if (!writeList.empty() && jobCount < 5) {
        jobVar = writeList.front();
        jobType = KIND_WRITE;
        ++jobCount;
        queueWrite();
        return true;
    }
    if (!conditionReadList.empty() && jobCount < 3) {
        jobVar = conditionReadList.front();
        jobType = KIND_CONDITION_READ;
        ++jobCount;
        queueRead();
        return true;
    }
    jobCount = 0;
    if (!readList.empty()) {
        jobVar = readList.front();
        jobType = KIND_POLL;
        queueRead();
        return true;
    }
    jobType = KIND_NONE;
    return false;
}

Int ReferenceDriver::getSendFrame(Frame &out)
{
    if (frameList.empty()) {
        const bool hasFlags = runtimeBlock != nullptr && hasMutex;
        const bool isWrite = hasFlags && runtimeBlock[WRITE_FLAG] == 1;
        const bool isRead = hasFlags && runtimeBlock[READ_FLAG] == 1;
        if (!(isWrite || isRead ? startRecipeJob(isWrite) : startJob()))
            return 0;
    }
    out = frameList.front();
    return 1;
}

} // namespace reference
