#ifndef RUNTIME_DRIVER_DRIVER_LIBRARY_H
#define RUNTIME_DRIVER_DRIVER_LIBRARY_H

#include "omron_fins_ethernet.h"

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
    DriverLibrary(const std::string &file, int copy);
    void load(const std::string &path);
    void lookUpAll();
    template <typename Function> void lookUp(Function &function, const char *name);

    void       *handle_;
    int         copy_ = -1; // the memory file of a copy
    std::string file_;
};

#endif
