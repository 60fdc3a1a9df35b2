#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "elf_file.h"
#include "support/loaded_driver.h"

// The distribution's hardening, read from the library's file.

namespace {

ElfW(Xword) dynamicFlags(const ElfFile &file, ElfW(Sxword) tag)
{
    for (const ElfW(Dyn) &entry : file.dynamicEntries()) {
        if (entry.d_tag == tag)
            return entry.d_un.d_val;
    }
    return 0;
}

bool hasDynamicEntry(const ElfFile &file, ElfW(Sxword) tag)
{
    for (const ElfW(Dyn) &entry : file.dynamicEntries()) {
        if (entry.d_tag == tag)
            return true;
    }
    return false;
}

std::vector<ElfW(Phdr)> segmentsOfType(const ElfFile &file, ElfW(Word) type)
{
    std::vector<ElfW(Phdr)> found;
    for (const ElfW(Phdr) &segment : file.segments()) {
        if (segment.p_type == type)
            found.push_back(segment);
    }
    return found;
}

} // namespace

TEST(HardeningAbi, StackIsNotExecutable)
{
    const ElfFile file(driverPath());
    const std::vector<ElfW(Phdr)> stack = segmentsOfType(file, PT_GNU_STACK);
    ASSERT_EQ(1U, stack.size()) << "without this entry the stack is executable";
    EXPECT_EQ(0U, stack[0].p_flags & PF_X);
}

TEST(HardeningAbi, NoSegmentIsWritableAndExecutable)
{
    const ElfFile file(driverPath());
    const std::vector<ElfW(Phdr)> loaded = segmentsOfType(file, PT_LOAD);
    ASSERT_FALSE(loaded.empty());
    for (const ElfW(Phdr) &segment : loaded)
        EXPECT_NE(ElfW(Word)(PF_W | PF_X), segment.p_flags & (PF_W | PF_X));
}

TEST(HardeningAbi, RelocatedDataBecomeReadOnly)
{
    EXPECT_EQ(1U, segmentsOfType(ElfFile(driverPath()), PT_GNU_RELRO).size());
}

TEST(HardeningAbi, EverythingIsBoundAtLoad)
{
    const ElfFile file(driverPath());
    EXPECT_TRUE((dynamicFlags(file, DT_FLAGS) & DF_BIND_NOW) != 0 || hasDynamicEntry(file, DT_BIND_NOW)
                || (dynamicFlags(file, DT_FLAGS_1) & DF_1_NOW) != 0);
}

TEST(HardeningAbi, CodeNeedsNoRelocation)
{
    const ElfFile file(driverPath());
    EXPECT_FALSE(hasDynamicEntry(file, DT_TEXTREL));
    EXPECT_EQ(0U, dynamicFlags(file, DT_FLAGS) & DF_TEXTREL);
}

TEST(HardeningAbi, StaysUnloadable)
{
    EXPECT_EQ(0U, dynamicFlags(ElfFile(driverPath()), DT_FLAGS_1) & DF_1_NODELETE);
}

TEST(HardeningAbi, StackBuffersAreGuarded)
{
    const std::vector<std::string> imported = ElfFile(driverPath()).importedNames();
    EXPECT_TRUE(std::binary_search(imported.begin(), imported.end(), std::string("__stack_chk_fail")));
}
