#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "elf_file.h"
#include "support/loaded_driver.h"

// No exception leaves the driver but that of an allocation that fails: what could throw another would have to be taken
// from the C++ run-time library, and is not.

namespace {

using Names = std::vector<std::string>;

bool imports(const std::string &name)
{
    const Names imported = ElfFile(driverPath()).importedNames();
    return std::binary_search(imported.begin(), imported.end(), name);
}

// The functions by which the templates of the standard library throw.
std::set<std::string> importedThrowers()
{
    std::set<std::string> found;
    for (const std::string &name : ElfFile(driverPath()).importedNames()) {
        if (name.find("__throw_") != std::string::npos)
            found.insert(name);
    }
    return found;
}

} // namespace

TEST(ExceptionsAbi, TheDriverThrowsNothingItself)
{
    EXPECT_FALSE(imports("__cxa_throw"));
    EXPECT_FALSE(imports("__cxa_allocate_exception"));
    EXPECT_FALSE(imports("_ZSt17rethrow_exceptionNSt15__exception_ptr13exception_ptrE"));
}

TEST(ExceptionsAbi, TheStandardLibraryThrowsOnlyWhereMemoryEnds)
{
    const std::set<std::string> allowed = {
        "_ZSt17__throw_bad_allocv",
        "_ZSt20__throw_length_errorPKc", // a list longer than memory can ever hold
        "_ZSt28__throw_bad_array_new_lengthv",
    };
    for (const std::string &name : importedThrowers())
        EXPECT_EQ(1U, allowed.count(name)) << name;
}
