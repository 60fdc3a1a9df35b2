#include "driver/driver_library.h"

#include "common/usage_error.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <fstream>
#include <sstream>
#include <vector>

static const char LIBRARY_NAME[] = "libomron_fins_ethernet.so";

static std::string folderOf(const std::string &file)
{
    return file.substr(0, file.rfind('/') + 1);
}

// The folder of the shared library that this code is a part of; empty if it is a part of the program itself.
static std::string ownFolder()
{
    Dl_info   information;
    link_map *module = nullptr;
    if (dladdr1(LIBRARY_NAME, &information, reinterpret_cast<void **>(&module), RTLD_DL_LINKMAP) == 0 || !module)
        return "";
    return folderOf(module->l_name);
}

static std::string programFolder()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return folderOf(std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0));
}

// Where the driver that belongs to this library or program is looked for, in this order.
static std::string ownLibrary()
{
    std::vector<std::string> candidates;
    const std::string own = ownFolder();
    if (!own.empty())
        candidates = {own + LIBRARY_NAME, own + "../src/" + LIBRARY_NAME}; // installed, and in the build folder
    const std::string folder = programFolder();
    for (const char *place : {"", "../" FINS_PANEL_LIBDIR "/", "../lib/", "../../src/"}) // the last in the build folder
        candidates.push_back(folder + place + LIBRARY_NAME);
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

static void *load(const std::string &file, const std::string &path)
{
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle)
        return handle;
    const char *reason = dlerror();
    throw UsageError("cannot load the driver: " + std::string(reason ? reason : file)
                     + "; name the library with --library FILE");
}

DriverLibrary::DriverLibrary(const std::string &file)
    : DriverLibrary(file.empty() ? ownLibrary() : file, pathOf(file), -1)
{
}

DriverLibrary::DriverLibrary(const std::string &file, const std::string &path, int copy)
    : file_(file), copy_(copy), handle_(load(file, path))
{
}

void DriverLibrary::Unload::operator()(void *handle) const
{
    dlclose(handle);
}

DriverLibrary::Symbol DriverLibrary::lookUp(const char *name) const
{
    void *address = dlsym(handle_.get(), name);
    if (!address)
        throw UsageError(file_ + " is not a driver for this program: it lacks the function " + name);
    return {address};
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
    std::ostringstream content; // takes whole blocks, and nothing of a folder
    content << std::ifstream(path, std::ios::binary).rdbuf();
    if (!content)
        throw UsageError("cannot read the driver " + path + "; name the library's file");
    return content.str();
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
    if (!writeAll(copy, content)) {
        close(copy);
        throw std::runtime_error("the system has no memory left for a copy of the driver");
    }
    const std::string path = "/proc/self/fd/" + std::to_string(copy);
    return std::unique_ptr<DriverLibrary>(new DriverLibrary(file.empty() ? LIBRARY_NAME : file, path, copy));
}
