#ifndef RUNTIME_DRIVER_DRIVER_LIBRARY_H
#define RUNTIME_DRIVER_DRIVER_LIBRARY_H

#include "omron_fins_ethernet.h"

#include <string>

// The driver as a runtime has it: a library loaded by file name, its functions looked up by their names. Nothing of the
// driver is linked into the program.

class DriverLibrary {
public:
    /// Loads `file`, or the library that belongs to this program if `file` is empty: the one in the library folder
    /// beside the program's folder, in the build folder, or wherever the system's loader finds it. Throws UsageError,
    /// which names the file, or the function that it lacks.
    explicit DriverLibrary(const std::string &file);
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary &) = delete;
    DriverLibrary &operator=(const DriverLibrary &) = delete;

    decltype(&intf_getProtocolType)            getProtocolType;
    decltype(&intf_getDriverParameter)         getDriverParameter;
    decltype(&intf_getDriverPropertyPage)      getDriverPropertyPage;
    decltype(&intf_SetDriverPropertyPage)      setDriverPropertyPage;
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack;
    decltype(&intf_initProperty)               initProperty;
    decltype(&intf_checkAddrValidity)          checkAddrValidity;
    decltype(&intf_checkAddr)                  checkAddr;
    decltype(&intf_getRegListByType)           getRegListByType;
    decltype(&intf_getRegDiscription)          getRegDiscription;
    decltype(&intf_multiCopy)                  multiCopy;
    decltype(&intf_addrMerge)                  addrMerge;
    decltype(&intf_setRcpAddress)              setRcpAddress;
    decltype(&intf_getSendFrame)               getSendFrame;
    decltype(&intf_dealRcvFrame)               dealRcvFrame;
    decltype(&intf_getData)                    getData;
    decltype(&intf_setData)                    setData;
    decltype(&intf_addConditionRead)           addConditionRead;

private:
    void lookUpAll();
    template <typename Function> void lookUp(Function &function, const char *name);

    void       *handle_;
    std::string file_;
};

#endif
