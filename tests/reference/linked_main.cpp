// The reference against the driver's own sources, inner state included.

#include <algorithm>
#include <new>

#include "library_subject.h"

namespace {

using reference::Area;
using reference::Frame;
using reference::Int;
using reference::RecipeVar;
using reference::ReferenceDriver;
using reference::Text;
using reference::Variable;

bool sameText(const Text &expected, const QString &seen)
{
    const auto size = static_cast<std::size_t>(seen.size());
    if (expected.size() != size)
        return false;
    for (std::size_t i = 0; i < size; ++i)
        if (seen.at(static_cast<int>(i)).unicode() != static_cast<unsigned char>(expected[i]))
            return false;
    return true;
}

template <class Array> bool sameBytes(const Array &expected, const quint8 *seen)
{
    return std::equal(expected.begin(), expected.end(), seen);
}

bool same(const Variable &a, const VARIABLE &b)
{
    return a.requestId == b.requestId && a.requestTag == b.requestTag && sameText(a.regType, b.regType)
        && a.address == b.address && a.count == b.count && sameBytes(a.value, b.value);
}

bool same(const Frame &a, const FRAME_PRO &b)
{
    return a.sendLen == b.sendLen && a.rcvLen == b.rcvLen && a.dataPos == b.dataPos && a.dataLen == b.dataLen
        && a.reservedField == b.reservedField && a.requestId == b.requestId && a.requestTag == b.requestTag
        && sameText(a.regType, b.regType) && a.address == b.address && a.count == b.count
        && sameBytes(a.frame, b.frame) && sameBytes(a.value, b.value);
}

bool same(const Area &a, const _DATA_ &b)
{
    return a.rcvFlag == b.rcvFlag && a.writePending == b.writePending && a.pendingBits == b.pendingBits
        && a.wordMonitor == b.wordMonitor && a.bitMonitor == b.bitMonitor && a.requestTag == b.requestTag
        && a.address == b.address && sameText(a.regType, b.regType) && sameBytes(a.plcValue, b.plcValue)
        && sameBytes(a.writeValue, b.writeValue);
}

bool same(const RecipeVar &a, const _RCP_VAR_PRO &b)
{
    return a.stationNo == b.stationNo && a.requestTag == b.requestTag && sameText(a.regType, b.regType)
        && a.address == b.address && a.count == b.count && a.bufferOffset == b.bufferOffset
        && a.rcpField7 == b.rcpField7;
}

bool same(Int a, qint32 b) { return a == b; }

// What a difference shows of a record.
template <class Record> Text textOf(const Record &) { return Text(); }
template <class Bytes> Text wordText(const Bytes &bytes) { return std::to_string(bytes[0] + 256 * bytes[1]); }

template <class Record> Text areaText(const Record &a)
{
    return " [" + std::to_string(a.requestTag) + " at " + std::to_string(a.address) + " pending "
         + std::to_string(a.writePending) + "," + std::to_string(a.pendingBits) + " monitors "
         + std::to_string(a.wordMonitor) + "," + std::to_string(a.bitMonitor) + " values " + wordText(a.plcValue) + ","
         + wordText(a.writeValue) + "]";
}

Text textOf(const Area &a) { return areaText(a); }
Text textOf(const _DATA_ &a) { return areaText(a); }

// Collects the first difference.
class Difference {
public:
    template <class Expected, class Seen> void value(const char *name, const Expected &expected, const Seen &seen)
    {
        if (text_.empty() && !same(expected, seen))
            text_ = Text(name) + " differs: expected" + textOf(expected) + ", seen" + textOf(seen);
    }

    void number(const char *name, std::int64_t expected, std::int64_t seen)
    {
        if (text_.empty() && expected != seen)
            text_ = Text(name) + ": expected " + std::to_string(expected) + ", seen " + std::to_string(seen);
    }

    void place(const char *name, const void *expected, const void *seen)
    {
        if (text_.empty() && expected != seen)
            text_ = Text(name) + " points elsewhere";
    }

    template <class Expected, class Seen> void list(const char *name, const Expected &expected, const Seen &seen)
    {
        number((Text(name) + " size").c_str(), static_cast<std::int64_t>(expected.size()), seen.size());
        for (std::size_t i = 0; text_.empty() && i < expected.size(); ++i)
            value((Text(name) + "[" + std::to_string(i) + "]").c_str(), expected[i], seen.at(static_cast<int>(i)));
    }

    const Text &text() const { return text_; }

private:
    Text text_;
};

void compareLists(const ReferenceDriver &expected, Difference &difference)
{
    difference.list("frameList", expected.frameList, driver.frameList);
    difference.list("readList", expected.readList, driver.readList);
    difference.list("writeList", expected.writeList, driver.writeList);
    difference.list("conditionReadList", expected.conditionReadList, driver.conditionReadList);
    difference.list("dataAreas", expected.dataAreas, driver.dataAreas);
    difference.list("recipeVars", expected.recipeVars, driver.recipeVars);
    difference.list("recipeBlocks", expected.recipeBlocks, driver.recipeBlocks);
    difference.list("recipeBlockStart", expected.recipeBlockStart, driver.recipeBlockStart);
    difference.value("currentRead", expected.currentRead, driver.currentRead);
    difference.value("jobVar", expected.jobVar, driver.jobVar);
}

void compareNumbers(const ReferenceDriver &expected, Difference &difference)
{
    difference.number("stationNo", expected.stationNo, driver.stationNo);
    difference.number("writeDirect", expected.writeDirect, driver.writeDirect);
    difference.number("propertyField2", expected.propertyField2, driver.propertyField2);
    difference.number("retryLimit", expected.retryLimit, driver.retryLimit);
    difference.number("maxWordsPerFrame", expected.maxWordsPerFrame, driver.maxWordsPerFrame);
    difference.number("initArg2", expected.initArg2, driver.initArg2);
    difference.number("jobType", expected.jobType, driver.jobType);
    difference.number("jobCount", expected.jobCount, driver.jobCount);
    difference.number("errCount", expected.errCount, driver.errCount);
    difference.number("maxBitsPerFrame", expected.maxBitsPerFrame, driver.maxBitsPerFrame);
    difference.number("wordsPerFrame", expected.wordsPerFrame, driver.wordsPerFrame);
    difference.number("commFailed", expected.commFailed, driver.commFailed);
    difference.number("recipeIndex", expected.recipeIndex, driver.recipeIndex);
    difference.number("connected", expected.connected, driver.connected);
    difference.number("sid", expected.sid, driver.sid);
    difference.number("reserved0", expected.reserved0, driver.reserved0);
    difference.number("reserved1", expected.reserved1, driver.reserved1);
    difference.number("reserved2", expected.reserved2, driver.reserved2);
    difference.number("reserved3", 0, driver.reserved3);
    for (std::size_t i = 0; i < 3; ++i) {
        difference.number("srcNode", expected.srcNode[i], driver.srcNode[i]);
        difference.number("dstNode", expected.dstNode[i], driver.dstNode[i]);
    }
}

class LinkedSubject : public reference::LibrarySubject {
public:
    // The driver lives in zeroed static storage when it is constructed, so it is zeroed here too.
    reference::AnyDriver &fresh() override
    {
        end();
        driver.~omron_fins_ethernet();
        void *storage = &driver;
        std::fill_n(static_cast<unsigned char *>(storage), sizeof driver, static_cast<unsigned char>(0));
        new (storage) omron_fins_ethernet;
        return begin({&intf_getProtocolType, &intf_getDriverParameter, &intf_getDriverPropertyPage,
                      &intf_SetDriverPropertyPage, &intf_setAddrValueChangeCallBack, &intf_initProperty,
                      &intf_checkAddrValidity, &intf_checkAddr, &intf_getRegListByType, &intf_getRegDiscription,
                      &intf_multiCopy, &intf_addrMerge, &intf_setRcpAddress, &intf_getSendFrame,
                      &intf_dealRcvFrame, &intf_getData, &intf_setData, &intf_addConditionRead});
    }

    Text stateDifference(const ReferenceDriver &expected) override
    {
        Difference difference;
        compareNumbers(expected, difference);
        compareLists(expected, difference);
        difference.place("runtimeBlock", expected.runtimeBlock == nullptr ? nullptr : block.data(),
                         driver.runtimeBlock);
        difference.place("recipeBuffer", expected.recipeBuffer == nullptr ? nullptr : recipe.data(),
                         driver.recipeBuffer);
        difference.place("runtimeMutex", expected.hasMutex ? &*mutex : nullptr, driver.runtimeMutex);
        return difference.text();
    }
};

} // namespace

int main(int argc, char **argv) { return reference::runComparison<LinkedSubject>(argc, argv); }
