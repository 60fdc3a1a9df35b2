#include "driver/driver_library.h"

#include "base/usage_error.h"

#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <fstream>
#include <iterator>
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

// A bare name would be searched on the loader's path; a file that the user names is that file.
static std::string pathOf(const std::string &file)
{
    if (file.empty())
        return ownLibrary();
    return (file.find('/') == std::string::npos ? "./" : "") + file;
}

DriverLibrary::DriverLibrary(const std::string &file)
    : handle_(nullptr), file_(file.empty() ? ownLibrary() : file)
{
    load(pathOf(file));
}

DriverLibrary::DriverLibrary(const std::string &file, int copy) : handle_(nullptr), copy_(copy), file_(file)
{
    try {
        load("/proc/self/fd/" + std::to_string(copy));
    } catch (...) {
        close(copy_);
        throw;
    }
}

// The bytes of the library; where the loader alone finds it, those of the file that it finds.
static std::string contentOf(const std::string &file)
{
    std::string path = pathOf(file);
    if (path.find('/') == std::string::npos) {
        const DriverLibrary found(file);
        Dl_info info = {};
        if (dladdr(reinterpret_cast<const void *>(found.getSendFrame), &info) != 0)
            path = info.dli_fname;
    }
    std::ifstream input(path, std::ios::binary);
    std::string content((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    if (!input || content.empty())
        throw UsageError("cannot read the driver " + path + "; name the library's file");
    return content;
}

// The loader takes a file that it has already loaded for the same library, by its name or by its number in the file
// system. So each copy is a memory file of its own, which stays open as long as the copy is loaded: the next one would
// get its name otherwise.
std::unique_ptr<DriverLibrary> DriverLibrary::copyOf(const std::string &file)
{
    const std::string content = contentOf(file);
    const int copy = memfd_create("omron_fins_ethernet", MFD_CLOEXEC);
    if (copy < 0)
        throw std::runtime_error("the system has no file descriptor left for a copy of the driver");
    for (std::size_t done = 0; done < content.size();) {
        const ssize_t written = write(copy, content.data() + done, content.size() - done);
        if (written <= 0) {
            close(copy);
            throw std::runtime_error("the system has no memory left for a copy of the driver");
        }
        done += static_cast<std::size_t>(written);
    }
    return std::unique_ptr<DriverLibrary>(new DriverLibrary(file.empty() ? LIBRARY_NAME : file, copy));
}

void DriverLibrary::load(const std::string &path)
{
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
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
    if (copy_ >= 0)
        close(copy_);
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
