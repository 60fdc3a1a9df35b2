#include "driver/low_memory.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

std::uint64_t numberOf(const void *memory)
{
    return reinterpret_cast<std::uintptr_t>(memory);
}

const std::uint64_t FOUR_GIB = 0x100000000ull;

} // namespace

class MapLow : public testing::TestWithParam<bool> {};

TEST_P(MapLow, GivesZeroedMemoryBelowFourGib)
{
    const std::size_t size = 300000;
    void *memory = mapLow(size, GetParam());
    ASSERT_NE(memory, nullptr);
    EXPECT_LE(numberOf(memory) + size, FOUR_GIB);
    unsigned char *bytes = static_cast<unsigned char *>(memory);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[size - 1], 0);
    bytes[0] = bytes[size - 1] = 1;
    unmapLow(memory, size);
}

TEST_P(MapLow, DoesNotGiveTheSameMemoryTwice)
{
    void *first  = mapLow(4096, GetParam());
    void *second = mapLow(4096, GetParam());
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    unmapLow(first, 4096);
    unmapLow(second, 4096);
}

INSTANTIATE_TEST_SUITE_P(Ways, MapLow, testing::Values(false, true));

TEST(LowMemory, HoldsTheThreeObjectsBelowFourGib)
{
    const LowMemory memory;
    EXPECT_LE(numberOf(memory.sharedBlock()) + 60117, FOUR_GIB);
    EXPECT_LE(numberOf(memory.recipeBuffer()) + 2 * RECIPE_BUFFER_WORDS, FOUR_GIB);
    EXPECT_LE(numberOf(memory.mutex()) + sizeof(QMutex), FOUR_GIB);
    EXPECT_EQ(numberOf(memory.recipeBuffer()) % sizeof(quint16), 0u);
    EXPECT_EQ(numberOf(memory.mutex()) % alignof(QMutex), 0u);
}

TEST(LowMemory, TheAddressIsTheLow32Bits)
{
    const LowMemory memory;
    const std::uint32_t number = static_cast<std::uint32_t>(LowMemory::address(memory.sharedBlock()));
    EXPECT_EQ(number, numberOf(memory.sharedBlock()));
}

TEST(LowMemory, SetsAndClearsTheRequestFlags)
{
    LowMemory memory;
    EXPECT_FALSE(memory.flag(RECIPE_WRITE_FLAG));
    EXPECT_FALSE(memory.flag(RECIPE_READ_FLAG));
    memory.setFlag(RECIPE_WRITE_FLAG, true);
    EXPECT_EQ(memory.sharedBlock()[60115], 1);
    EXPECT_EQ(memory.sharedBlock()[60116], 0);
    EXPECT_TRUE(memory.flag(RECIPE_WRITE_FLAG));
    memory.setFlag(RECIPE_READ_FLAG, true);
    EXPECT_EQ(memory.sharedBlock()[60116], 1);
    memory.setFlag(RECIPE_WRITE_FLAG, false);
    EXPECT_EQ(memory.sharedBlock()[60115], 0);
    EXPECT_TRUE(memory.flag(RECIPE_READ_FLAG));
}

TEST(LowMemory, LeavesTheMutexUnlocked)
{
    LowMemory memory;
    memory.setFlag(RECIPE_READ_FLAG, true);
    EXPECT_TRUE(memory.flag(RECIPE_READ_FLAG));
    EXPECT_TRUE(memory.mutex()->tryLock());
    memory.mutex()->unlock();
}
