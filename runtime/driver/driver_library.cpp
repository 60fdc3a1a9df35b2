#include "driver/driver_library.h"

#include "base/usage_error.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <vector>

static const char LIBRARY_NAME[] = "libomron_fins_ethernet.so";

static std::string programFolder()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string file(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return file.substr(0, file.rfind('/') + 1);
}

// Where the library that belongs to this program is looked for, in this order.
static std::string ownLibrary()
{
    const std::string folder = programFolder();
    const std::vector<std::string> candidates = {
        folder + LIBRARY_NAME,
        folder + "../" FINS_PANEL_LIBDIR "/" + LIBRARY_NAME,
        folder + "../lib/" + LIBRARY_NAME,
        folder + "../../src/" + LIBRARY_NAME, // the build folder
    };
    for (const std::string &candidate : candidates) {
        if (access(candidate.c_str(), R_OK) == 0)
            return candidate;
    }
    return LIBRARY_NAME; // the loader searches its own path
}

DriverLibrary::DriverLibrary(const std::string &file)
    : handle_(nullptr), file_(file.empty() ? ownLibrary() : file)
{
    // A bare name would be searched on the loader's path; a file that the user names is that file.
    const bool named = !file.empty() && file.find('/') == std::string::npos;
    handle_ = dlopen(((named ? "./" : "") + file_).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) {
        const char *reason = dlerror();
        throw UsageError("cannot load the driver: " + std::string(reason ? reason : file_)
                         + "; name the library with --library FILE");
    }
    try {
        lookUpAll();
    } catch (...) {
        dlclose(handle_);
        throw;
    }
}

DriverLibrary::~DriverLibrary()
{
    dlclose(handle_);
}

template <typename Function>
void DriverLibrary::lookUp(Function &function, const char *name)
{
    void *address = dlsym(handle_, name);
    if (!address)
        throw UsageError(file_ + " is not a driver for this program: it lacks the function " + name);
    function = reinterpret_cast<Function>(address);
}

void DriverLibrary::lookUpAll()
{
    lookUp(getProtocolType,            "intf_getProtocolType");
    lookUp(getDriverParameter,         "intf_getDriverParameter");
    lookUp(getDriverPropertyPage,      "intf_getDriverPropertyPage");
    lookUp(setDriverPropertyPage,      "intf_SetDriverPropertyPage");
    lookUp(setAddrValueChangeCallBack, "intf_setAddrValueChangeCallBack");
    lookUp(initProperty,               "intf_initProperty");
    lookUp(checkAddrValidity,          "intf_checkAddrValidity");
    lookUp(checkAddr,                  "intf_checkAddr");
    lookUp(getRegListByType,           "intf_getRegListByType");
    lookUp(getRegDiscription,          "intf_getRegDiscription");
    lookUp(multiCopy,                  "intf_multiCopy");
    lookUp(addrMerge,                  "intf_addrMerge");
    lookUp(setRcpAddress,              "intf_setRcpAddress");
    lookUp(getSendFrame,               "intf_getSendFrame");
    lookUp(dealRcvFrame,               "intf_dealRcvFrame");
    lookUp(getData,                    "intf_getData");
    lookUp(setData,                    "intf_setData");
    lookUp(addConditionRead,           "intf_addConditionRead");
}
