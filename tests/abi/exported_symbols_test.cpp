#include <gtest/gtest.h>

#include <algorithm>

#include "elf_file.h"
#include "support/loaded_driver.h"

// What the library shows to the process that loads it, and what it needs.

namespace {

using Names = std::vector<std::string>;

bool startsWith(const std::string &text, const std::string &begin)
{
    return text.compare(0, begin.size(), begin) == 0;
}

// The C and C++ run-time libraries of a Linux system.
bool isRunTimeLibrary(const std::string &name)
{
    for (const char *begin : {"libc.so.", "libm.so.", "libstdc++.so.", "libgcc_s.so.", "libpthread.so.", "libdl.so.",
                              "librt.so.", "ld-linux"}) {
        if (startsWith(name, begin))
            return true;
    }
    return OMRON_FINS_SANITIZED && (startsWith(name, "libasan.so.") || startsWith(name, "libubsan.so.")
                                    || startsWith(name, "libtsan.so."));
}

std::string qtCoreName()
{
    switch (QT_VERSION >> 16) {
    case 4:  return "libQtCore.so.4";
    case 5:  return "libQt5Core.so.5";
    default: return "libQt6Core.so.6";
    }
}

} // namespace

TEST(ExportedSymbolsAbi, ExactlyTheEighteenFunctionsAreVisible)
{
    const Names expected = {
        "intf_SetDriverPropertyPage",
        "intf_addConditionRead",
        "intf_addrMerge",
        "intf_checkAddr",
        "intf_checkAddrValidity",
        "intf_dealRcvFrame",
        "intf_getData",
        "intf_getDriverParameter",
        "intf_getDriverPropertyPage",
        "intf_getProtocolType",
        "intf_getRegDiscription",
        "intf_getRegListByType",
        "intf_getSendFrame",
        "intf_initProperty",
        "intf_multiCopy",
        "intf_setAddrValueChangeCallBack",
        "intf_setData",
        "intf_setRcpAddress",
    };
    EXPECT_EQ(expected, ElfFile(driverPath()).exportedNames());
}

TEST(ExportedSymbolsAbi, NoSymbolVersions)
{
    EXPECT_EQ(0, ElfFile(driverPath()).versionDefinitions());
}

TEST(ExportedSymbolsAbi, ReaderSeesTheNamesOfAnotherLibrary)
{
    Dl_info place;
    ASSERT_NE(0, dladdr(dlsym(RTLD_DEFAULT, "malloc"), &place));
    const Names names = ElfFile(place.dli_fname).exportedNames();
    EXPECT_TRUE(std::binary_search(names.begin(), names.end(), std::string("malloc"))) << place.dli_fname;
    EXPECT_GT(names.size(), 18U);
}

TEST(ExportedSymbolsAbi, OnlyQtCoreAndTheRunTimeLibrariesAreNeeded)
{
    const Names needed = ElfFile(driverPath()).neededLibraries();
    EXPECT_EQ(1, std::count(needed.begin(), needed.end(), qtCoreName()));
    for (const std::string &name : needed)
        EXPECT_TRUE(name == qtCoreName() || isRunTimeLibrary(name)) << name;
}

TEST(ExportedSymbolsAbi, NoSystemServiceIsCalled)
{
    const Names imported = ElfFile(driverPath()).importedNames();
    ASSERT_FALSE(imported.empty());
    for (const char *service : {"socket", "connect", "send", "recv", "open", "open64", "fopen", "fopen64", "read",
                                "write", "getenv", "time", "clock_gettime", "pthread_create", "system", "printf"})
        EXPECT_FALSE(std::binary_search(imported.begin(), imported.end(), std::string(service))) << service;
}

TEST(ExportedSymbolsAbi, LoadsWithEverythingResolvedAndLeavesAgain)
{
    for (const int flags : {RTLD_NOW, RTLD_NOW | RTLD_GLOBAL, RTLD_LAZY}) {
        LoadedDriver library(driverPath(), flags);
        qint32 type = 0;
        library.getProtocolType(&type);
        EXPECT_EQ(1, type);
        EXPECT_TRUE(library.unload());
    }
}
