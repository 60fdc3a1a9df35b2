#ifndef TESTS_REFERENCE_LIBRARY_DRIVER_H
#define TESTS_REFERENCE_LIBRARY_DRIVER_H

#include "plain_records.h"
#include "support/driver_functions.h"

// The driver behind the plain interface.

namespace reference {

/// Where the runtime's three objects lie, as intf_initProperty takes them.
struct LowAddresses {
    qint32 block;
    qint32 recipe;
    qint32 mutex;
};

/// There is at most one at a time, since the driver's callback carries no context.
class LibraryDriver : public AnyDriver {
public:
    LibraryDriver(const DriverFunctions &functions, const LowAddresses &addresses);
    ~LibraryDriver() override;

    LibraryDriver(const LibraryDriver &) = delete;
    LibraryDriver &operator=(const LibraryDriver &) = delete;

    void setCallback(const Callback &callback) override { callback_ = callback; }
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

private:
    static void onChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address);

    static LibraryDriver *current_;
    DriverFunctions       driver_;
    LowAddresses          addresses_;
    Callback              callback_;
};

} // namespace reference

#endif
