#ifndef TESTS_REFERENCE_PLAIN_RECORDS_H
#define TESTS_REFERENCE_PLAIN_RECORDS_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The records of the interface in plain types, and the interface itself, so that the driver and the reference can be
// driven by the same code. Texts are Latin-1.

namespace reference {

using Int = std::int32_t;
using Byte = std::uint8_t;
using Bytes = std::vector<Byte>;
using Text = std::string;

enum { BUFFER_SIZE = 1024, BLOCK_SIZE = 60117, WRITE_FLAG = 60115, READ_FLAG = 60116, RECIPE_WORDS = 4096 };

using Buffer = std::array<Byte, BUFFER_SIZE>;

struct Variable {
    Int    requestId = 0;
    Int    requestTag = 0;
    Text   regType;
    Int    address = 0;
    Int    count = 0;
    Buffer value{};
};

struct KeyAddress {
    Text   name;
    Int    keyField2 = 0;
    Int    bufferOffset = 0;
    Int    requestTag = 0;
    Text   regType;
    Text   keyField6;
    Int    address = 0;
    Int    dataKind = 0;
    Int    count = 0;
    Buffer data{};
};

struct Frame {
    Buffer frame{};
    Int    sendLen = 0;
    Int    rcvLen = 0;
    Int    dataPos = 0;
    Int    dataLen = 0;
    Int    reservedField = 0;
    Int    requestId = 0;
    Int    requestTag = 0;
    Text   regType;
    Int    address = 0;
    Int    count = 0;
    Buffer value{};
};

struct Area {
    Byte                rcvFlag = 0;
    Byte                writePending = 0;
    Int                 pendingBits = 0;
    Int                 wordMonitor = 0;
    Int                 bitMonitor = 0;
    Int                 requestTag = 0;
    Text                regType;
    Int                 address = 0;
    std::array<Byte, 4> plcValue{};
    std::array<Byte, 4> writeValue{};
};

struct RecipeVar {
    Int  stationNo = 0;
    Int  requestTag = 0;
    Text regType;
    Int  address = 0;
    Int  count = 0;
    Int  bufferOffset = 0;
    Int  rcpField7 = 0;
};

/// What a runtime owns. `isLocked` tells whether somebody holds the runtime's mutex.
struct RuntimeMemory {
    Byte                 *block = nullptr;
    Byte                 *recipe = nullptr; // words, low byte first
    std::function<bool()> isLocked;
};

/// How intf_initProperty is called.
struct Property {
    bool hasBlock = true; // false: a null block
    bool hasMutex = true; // false: a null mutex
    Int  arg2 = 0;
    Text text;
};

using Callback = std::function<void(Int stationNo, Int requestTag, const Text &regType, Int address)>;

/// The exported functions in plain types. A parameter that a function may write is a reference.
class AnyDriver {
public:
    virtual ~AnyDriver() = default;

    virtual void setCallback(const Callback &callback) = 0;
    virtual Int  initProperty(const RuntimeMemory &memory, const Property &property, Int &status) = 0;

    virtual Int checkAddrValidity(const Text &regType, const Text &text, Int &address, Int count, Int wordAccess) = 0;
    virtual Int checkAddr(const Text &regType, const Text &text, Int &address, Int dataKind, Int count, Int mode) = 0;
    virtual Int getRegListByType(Int type, std::vector<Text> &names) = 0;
    virtual Int getRegDiscription(const Text &regType, std::vector<Text> &fields) = 0;
    virtual Int multiCopy(const Text &regType, Int start, Int copies, Int step, std::vector<Text> &texts,
                          std::vector<Int> &addresses) = 0;

    virtual Int addrMerge(std::vector<KeyAddress> &addresses) = 0;
    virtual Int setRcpAddress(std::vector<RecipeVar> &vars) = 0;
    virtual Int getSendFrame(Frame &out) = 0;
    virtual Int dealRcvFrame(Bytes &reply, Text &info) = 0;
    virtual Int getData(Int requestTag, const Text &regType, Int address, Int count, Byte *out) = 0;
    virtual Int setData(Int requestTag, const Text &regType, Int address, Int count, const Byte *data,
                        Int requestId) = 0;
    virtual Int addConditionRead(KeyAddress &item, Int requestId) = 0;
};

} // namespace reference

#endif
