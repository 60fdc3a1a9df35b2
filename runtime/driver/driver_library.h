#ifndef RUNTIME_DRIVER_DRIVER_LIBRARY_H
#define RUNTIME_DRIVER_DRIVER_LIBRARY_H

#include "omron_fins_ethernet.h"

#include "common/descriptor.h"

#include <memory>
#include <string>

// The driver as a runtime has it: a library loaded by file name, its functions looked up by their names. Nothing of the
// driver is linked into the program.

class DriverLibrary {
public:
    /// Loads `file`, or the driver that belongs to this runtime if `file` is empty: the one beside libfins_runtime.so, in
    /// the library folder beside the program's folder, in the build folder, or wherever the system's loader finds it.
    /// Throws UsageError, which names the file, or the function that it lacks.
    explicit DriverLibrary(const std::string &file);

    /// The same as a copy of its own: with data that no other copy in the process shares, so that it serves a PLC of its
    /// own. Throws std::runtime_error, too, if the system lacks memory or descriptors.
    static std::unique_ptr<DriverLibrary> copyOf(const std::string &file);

private:
    struct Unload {
        void operator()(void *handle) const;
    };
    // A function of whatever type.
    struct Symbol {
        void *address;
        template <typename Function>
        operator Function *() const
        {
            return reinterpret_cast<Function *>(address);
        }
    };

    DriverLibrary(const std::string &file, const std::string &path, int copy);
    Symbol lookUp(const char *name) const;

    const std::string                   file_;
    const Descriptor                    copy_; // the memory file of a copy
    const std::unique_ptr<void, Unload> handle_;

public:
    decltype(&intf_getProtocolType) getProtocolType = lookUp("intf_getProtocolType");
    decltype(&intf_getDriverParameter) getDriverParameter = lookUp("intf_getDriverParameter");
    decltype(&intf_getDriverPropertyPage) getDriverPropertyPage = lookUp("intf_getDriverPropertyPage");
    decltype(&intf_SetDriverPropertyPage) setDriverPropertyPage = lookUp("intf_SetDriverPropertyPage");
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack = lookUp("intf_setAddrValueChangeCallBack");
    decltype(&intf_initProperty) initProperty = lookUp("intf_initProperty");
    decltype(&intf_checkAddrValidity) checkAddrValidity = lookUp("intf_checkAddrValidity");
    decltype(&intf_checkAddr) checkAddr = lookUp("intf_checkAddr");
    decltype(&intf_getRegListByType) getRegListByType = lookUp("intf_getRegListByType");
    decltype(&intf_getRegDiscription) getRegDiscription = lookUp("intf_getRegDiscription");
    decltype(&intf_multiCopy) multiCopy = lookUp("intf_multiCopy");
    decltype(&intf_addrMerge) addrMerge = lookUp("intf_addrMerge");
    decltype(&intf_setRcpAddress) setRcpAddress = lookUp("intf_setRcpAddress");
    decltype(&intf_getSendFrame) getSendFrame = lookUp("intf_getSendFrame");
    decltype(&intf_dealRcvFrame) dealRcvFrame = lookUp("intf_dealRcvFrame");
    decltype(&intf_getData) getData = lookUp("intf_getData");
    decltype(&intf_setData) setData = lookUp("intf_setData");
    decltype(&intf_addConditionRead) addConditionRead = lookUp("intf_addConditionRead");
};

#endif
