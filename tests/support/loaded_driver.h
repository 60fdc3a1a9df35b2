#ifndef TESTS_SUPPORT_LOADED_DRIVER_H
#define TESTS_SUPPORT_LOADED_DRIVER_H

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "support/driver_functions.h"

// The built library as a runtime sees it: loaded by name, its functions found by name, nothing linked.

/// The library under test: the one of this build, or the one that OMRON_FINS_TEST_LIBRARY names (an installed one).
inline std::string driverPath()
{
    const char *named = std::getenv("OMRON_FINS_TEST_LIBRARY");
    return named != nullptr ? named : OMRON_FINS_LIBRARY;
}

/// One loaded library with its functions. Destroying it unloads the library.
class LoadedDriver : public DriverFunctions {
public:
    explicit LoadedDriver(const std::string &path = driverPath(), int flags = RTLD_NOW)
        : path_(path), handle_(dlopen(path.c_str(), flags))
    {
        if (handle_ == nullptr)
            throw std::runtime_error(dlerror());
        resolve(getProtocolType, "intf_getProtocolType");
        resolve(getDriverParameter, "intf_getDriverParameter");
        resolve(getDriverPropertyPage, "intf_getDriverPropertyPage");
        resolve(setDriverPropertyPage, "intf_SetDriverPropertyPage");
        resolve(setAddrValueChangeCallBack, "intf_setAddrValueChangeCallBack");
        resolve(initProperty, "intf_initProperty");
        resolve(checkAddrValidity, "intf_checkAddrValidity");
        resolve(checkAddr, "intf_checkAddr");
        resolve(getRegListByType, "intf_getRegListByType");
        resolve(getRegDiscription, "intf_getRegDiscription");
        resolve(multiCopy, "intf_multiCopy");
        resolve(addrMerge, "intf_addrMerge");
        resolve(setRcpAddress, "intf_setRcpAddress");
        resolve(getSendFrame, "intf_getSendFrame");
        resolve(dealRcvFrame, "intf_dealRcvFrame");
        resolve(getData, "intf_getData");
        resolve(setData, "intf_setData");
        resolve(addConditionRead, "intf_addConditionRead");
    }

    ~LoadedDriver() { unload(); }

    LoadedDriver(const LoadedDriver &) = delete;
    LoadedDriver &operator=(const LoadedDriver &) = delete;

    /// Unloads the library; true when it has really left the process, so that loading it again starts afresh.
    bool unload()
    {
        if (handle_ != nullptr)
            dlclose(handle_);
        handle_ = nullptr;
        void *stillThere = dlopen(path_.c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (stillThere != nullptr)
            dlclose(stillThere);
        return stillThere == nullptr;
    }

    void *handle() const { return handle_; }

private:
    template <class Function> void resolve(Function &function, const char *name)
    {
        function = reinterpret_cast<Function>(dlsym(handle_, name));
        if (function == nullptr) {
            dlclose(handle_);
            throw std::runtime_error(path_ + " lacks the function " + name);
        }
    }

    std::string path_;
    void       *handle_;
};

#endif
