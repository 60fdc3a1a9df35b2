#ifndef TESTS_REFERENCE_REFERENCE_DRIVER_H
#define TESTS_REFERENCE_REFERENCE_DRIVER_H

#include "plain_records.h"

// The driver once more, as plainly as it can be said: vectors, linear searches, a bubble sort, no speed. It shares no
// line with the driver, so that a mistake in one of them shows as a difference. Members have the driver's names.

namespace reference {

class ReferenceDriver : public AnyDriver {
public:
    void setCallback(const Callback &callback) override { valueChangeCallback = callback; }
    Int  initProperty(const RuntimeMemory &memory, const Property &property, Int &status) override;

    Int checkAddrValidity(const Text &regType, const Text &text, Int &address, Int count, Int wordAccess) override;
    Int checkAddr(const Text &regType, const Text &text, Int &address, Int dataKind, Int count, Int mode) override;
    Int getRegListByType(Int type, std::vector<Text> &names) override;
    Int getRegDiscription(const Text &regType, std::vector<Text> &fields) override;
    Int multiCopy(const Text &regType, Int start, Int copies, Int step, std::vector<Text> &texts,
                  std::vector<Int> &addresses) override;

    Int addrMerge(std::vector<KeyAddress> &addresses) override;
    Int setRcpAddress(std::vector<RecipeVar> &vars) override;
    Int getSendFrame(Frame &out) override;
    Int dealRcvFrame(Bytes &reply, Text &info) override;
    Int getData(Int requestTag, const Text &regType, Int address, Int count, Byte *out) override;
    Int setData(Int requestTag, const Text &regType, Int address, Int count, const Byte *data,
                Int requestId) override;
    Int addConditionRead(KeyAddress &item, Int requestId) override;

    Callback               valueChangeCallback;
    Int                    stationNo = 0;
    Int                    writeDirect = 0;
    Int                    propertyField2 = 0;
    Int                    retryLimit = 0;
    Int                    maxWordsPerFrame = 0;
    Byte                  *runtimeBlock = nullptr;
    Int                    initArg2 = 0;
    Byte                  *recipeBuffer = nullptr;
    bool                   hasMutex = false;
    std::vector<Variable>  readList;
    std::vector<Variable>  writeList;
    std::vector<Variable>  conditionReadList;
    std::vector<Area>      dataAreas;
    std::vector<RecipeVar> recipeVars;
    std::vector<RecipeVar> recipeBlocks;
    std::vector<Int>       recipeBlockStart;
    Variable               currentRead;
    Variable               jobVar;
    Int                    jobType = 0;
    Int                    jobCount = 0;
    Int                    reserved0 = 0;
    Int                    errCount = 0;
    Int                    maxBitsPerFrame = 0;
    Int                    wordsPerFrame = 0;
    Int                    commFailed = 0;
    Int                    reserved1 = 0;
    Int                    reserved2 = 0;
    std::vector<Frame>     frameList;
    Int                    recipeIndex = 0;
    Byte                   connected = 0;
    Int                    srcNode[3] = {0, 0, 0};
    Int                    dstNode[3] = {0, 0, 0};
    Byte                   sid = 0;

private:
    // Plans.
    void markWatched(const KeyAddress &item);
    void joinTouching(std::vector<KeyAddress> &items, bool isRecipe);
    void joinOverGaps(std::vector<KeyAddress> &items) const;
    void put(std::vector<Variable> &queue, const Variable &request) const;

    // Frames.
    Byte  nextServiceId();
    Frame commandFrame(int bodyLength, Byte mainCode, Byte subCode);
    void  queueHandshake();
    void  queueRead();
    void  queueWrite();
    void  queueModeChange();

    // Jobs.
    bool startRecipeJob(bool isWrite);
    bool startJob();
    void finishJob();
    void finishWrite();
    void finishConditionRead();
    void finishRecipeBlock();
    void settleWord(const Variable &piece, Int address, bool isGood);
    void settleBit(const Variable &piece, Int bitAddress, bool isGood);

    // Replies.
    Int  judge(const Bytes &reply);
    Int  takeRejected();
    Int  retireHead();
    void takeWord(const Frame &head, Int index, const Bytes &reply);
    void takeRecipeWords(const Frame &head, const Bytes &reply);

    // The data image.
    std::size_t areaOf(Int requestTag, const Text &regType, Int address);
    void        wordChanges(Int before, Int after, Int requestTag, const Text &regType, Int address);
    void        showWord(Int requestTag, const Text &regType, Int address, Byte low, Byte high);
    void        showBit(Int requestTag, const Text &regType, Int bitAddress, bool isOn);
};

/// Into how many pieces a request of `count` units, at least 1, is cut. Limit 0 cuts nothing. A negative limit that is
/// no larger than the count leaves no piece at all.
Int pieceCount(Int count, Int limit);

/// Parses a decimal number as the toolkit does: white space around it and one sign are accepted. False when it is
/// malformed or no int32; `number` is then 0.
bool toNumber(const Text &text, Int &number);

} // namespace reference

#endif
