#include <gtest/gtest.h>

#include <cstddef>

#include "omron_fins_ethernet.h"

// Where a runtime's compiler finds the fields of the five records: sizes and offsets in bytes, per pointer width and
// string size. A string is one pointer in Qt 4 and 5 and three in Qt 6.

namespace {

enum { WIDE_ONE, WIDE_THREE, NARROW_ONE, NARROW_THREE };

constexpr int STRING_POINTERS = QT_VERSION >= 0x060000 ? 3 : 1;
constexpr int LAYOUT = sizeof(void *) == 8 ? (STRING_POINTERS == 1 ? WIDE_ONE : WIDE_THREE)
                                           : (STRING_POINTERS == 1 ? NARROW_ONE : NARROW_THREE);

// One number for 64 bits with Qt 4 or 5, 64 bits with Qt 6, 32 bits with Qt 4 or 5, 32 bits with Qt 6.
struct Offset {
    std::size_t of[4];
    constexpr operator std::size_t() const { return of[LAYOUT]; }
};

} // namespace

TEST(RecordLayoutAbi, StringHasTheSizeThatTheTablesAreMadeFor)
{
    constexpr Offset SIZE = {{8, 24, 4, 12}};
    EXPECT_EQ(std::size_t(SIZE), sizeof(QString));
}

TEST(RecordLayoutAbi, Variable)
{
    constexpr Offset REQUEST_ID  = {{0, 0, 0, 0}};
    constexpr Offset REQUEST_TAG = {{4, 4, 4, 4}};
    constexpr Offset REG_TYPE    = {{8, 8, 8, 8}};
    constexpr Offset ADDRESS     = {{16, 32, 12, 20}};
    constexpr Offset COUNT       = {{20, 36, 16, 24}};
    constexpr Offset VALUE       = {{24, 40, 20, 28}};
    constexpr Offset SIZE        = {{1048, 1064, 1044, 1052}};
    EXPECT_EQ(std::size_t(REQUEST_ID), offsetof(VARIABLE, requestId));
    EXPECT_EQ(std::size_t(REQUEST_TAG), offsetof(VARIABLE, requestTag));
    EXPECT_EQ(std::size_t(REG_TYPE), offsetof(VARIABLE, regType));
    EXPECT_EQ(std::size_t(ADDRESS), offsetof(VARIABLE, address));
    EXPECT_EQ(std::size_t(COUNT), offsetof(VARIABLE, count));
    EXPECT_EQ(std::size_t(VALUE), offsetof(VARIABLE, value));
    EXPECT_EQ(1024U, sizeof(VARIABLE::value));
    EXPECT_EQ(std::size_t(SIZE), sizeof(VARIABLE));
}

TEST(RecordLayoutAbi, KeyAddress)
{
    constexpr Offset NAME          = {{0, 0, 0, 0}};
    constexpr Offset KEY_FIELD_2   = {{8, 24, 4, 12}};
    constexpr Offset BUFFER_OFFSET = {{12, 28, 8, 16}};
    constexpr Offset REQUEST_TAG   = {{16, 32, 12, 20}};
    constexpr Offset REG_TYPE      = {{24, 40, 16, 24}};
    constexpr Offset KEY_FIELD_6   = {{32, 64, 20, 36}};
    constexpr Offset ADDRESS       = {{40, 88, 24, 48}};
    constexpr Offset DATA_KIND     = {{44, 92, 28, 52}};
    constexpr Offset COUNT         = {{48, 96, 32, 56}};
    constexpr Offset DATA          = {{52, 100, 36, 60}};
    constexpr Offset SIZE          = {{1080, 1128, 1060, 1084}};
    EXPECT_EQ(std::size_t(NAME), offsetof(KEY_ADDRESS, name));
    EXPECT_EQ(std::size_t(KEY_FIELD_2), offsetof(KEY_ADDRESS, keyField2));
    EXPECT_EQ(std::size_t(BUFFER_OFFSET), offsetof(KEY_ADDRESS, bufferOffset));
    EXPECT_EQ(std::size_t(REQUEST_TAG), offsetof(KEY_ADDRESS, requestTag));
    EXPECT_EQ(std::size_t(REG_TYPE), offsetof(KEY_ADDRESS, regType));
    EXPECT_EQ(std::size_t(KEY_FIELD_6), offsetof(KEY_ADDRESS, keyField6));
    EXPECT_EQ(std::size_t(ADDRESS), offsetof(KEY_ADDRESS, address));
    EXPECT_EQ(std::size_t(DATA_KIND), offsetof(KEY_ADDRESS, dataKind));
    EXPECT_EQ(std::size_t(COUNT), offsetof(KEY_ADDRESS, count));
    EXPECT_EQ(std::size_t(DATA), offsetof(KEY_ADDRESS, data));
    EXPECT_EQ(1024U, sizeof(KEY_ADDRESS::data));
    EXPECT_EQ(std::size_t(SIZE), sizeof(KEY_ADDRESS));
}

TEST(RecordLayoutAbi, FramePro)
{
    constexpr Offset REG_TYPE = {{1056, 1056, 1052, 1052}};
    constexpr Offset ADDRESS  = {{1064, 1080, 1056, 1064}};
    constexpr Offset COUNT    = {{1068, 1084, 1060, 1068}};
    constexpr Offset VALUE    = {{1072, 1088, 1064, 1072}};
    constexpr Offset SIZE     = {{2096, 2112, 2088, 2096}};
    EXPECT_EQ(0U, offsetof(FRAME_PRO, frame));
    EXPECT_EQ(1024U, sizeof(FRAME_PRO::frame));
    EXPECT_EQ(1024U, offsetof(FRAME_PRO, sendLen));
    EXPECT_EQ(1028U, offsetof(FRAME_PRO, rcvLen));
    EXPECT_EQ(1032U, offsetof(FRAME_PRO, dataPos));
    EXPECT_EQ(1036U, offsetof(FRAME_PRO, dataLen));
    EXPECT_EQ(1040U, offsetof(FRAME_PRO, reservedField));
    EXPECT_EQ(1044U, offsetof(FRAME_PRO, requestId));
    EXPECT_EQ(1048U, offsetof(FRAME_PRO, requestTag));
    EXPECT_EQ(std::size_t(REG_TYPE), offsetof(FRAME_PRO, regType));
    EXPECT_EQ(std::size_t(ADDRESS), offsetof(FRAME_PRO, address));
    EXPECT_EQ(std::size_t(COUNT), offsetof(FRAME_PRO, count));
    EXPECT_EQ(std::size_t(VALUE), offsetof(FRAME_PRO, value));
    EXPECT_EQ(1024U, sizeof(FRAME_PRO::value));
    EXPECT_EQ(std::size_t(SIZE), sizeof(FRAME_PRO));
}

TEST(RecordLayoutAbi, Data)
{
    constexpr Offset REG_TYPE    = {{24, 24, 20, 20}};
    constexpr Offset ADDRESS     = {{32, 48, 24, 32}};
    constexpr Offset PLC_VALUE   = {{36, 52, 28, 36}};
    constexpr Offset WRITE_VALUE = {{40, 56, 32, 40}};
    constexpr Offset SIZE        = {{48, 64, 36, 44}};
    EXPECT_EQ(0U, offsetof(_DATA_, rcvFlag));
    EXPECT_EQ(1U, offsetof(_DATA_, writePending));
    EXPECT_EQ(4U, offsetof(_DATA_, pendingBits));
    EXPECT_EQ(8U, offsetof(_DATA_, wordMonitor));
    EXPECT_EQ(12U, offsetof(_DATA_, bitMonitor));
    EXPECT_EQ(16U, offsetof(_DATA_, requestTag));
    EXPECT_EQ(std::size_t(REG_TYPE), offsetof(_DATA_, regType));
    EXPECT_EQ(std::size_t(ADDRESS), offsetof(_DATA_, address));
    EXPECT_EQ(std::size_t(PLC_VALUE), offsetof(_DATA_, plcValue));
    EXPECT_EQ(std::size_t(WRITE_VALUE), offsetof(_DATA_, writeValue));
    EXPECT_EQ(4U, sizeof(_DATA_::plcValue));
    EXPECT_EQ(4U, sizeof(_DATA_::writeValue));
    EXPECT_EQ(std::size_t(SIZE), sizeof(_DATA_));
}

TEST(RecordLayoutAbi, RcpVarPro)
{
    constexpr Offset ADDRESS       = {{16, 32, 12, 20}};
    constexpr Offset COUNT         = {{20, 36, 16, 24}};
    constexpr Offset BUFFER_OFFSET = {{24, 40, 20, 28}};
    constexpr Offset RCP_FIELD_7   = {{28, 44, 24, 32}};
    constexpr Offset SIZE          = {{32, 48, 28, 36}};
    EXPECT_EQ(0U, offsetof(_RCP_VAR_PRO, stationNo));
    EXPECT_EQ(4U, offsetof(_RCP_VAR_PRO, requestTag));
    EXPECT_EQ(8U, offsetof(_RCP_VAR_PRO, regType));
    EXPECT_EQ(std::size_t(ADDRESS), offsetof(_RCP_VAR_PRO, address));
    EXPECT_EQ(std::size_t(COUNT), offsetof(_RCP_VAR_PRO, count));
    EXPECT_EQ(std::size_t(BUFFER_OFFSET), offsetof(_RCP_VAR_PRO, bufferOffset));
    EXPECT_EQ(std::size_t(RCP_FIELD_7), offsetof(_RCP_VAR_PRO, rcpField7));
    EXPECT_EQ(std::size_t(SIZE), sizeof(_RCP_VAR_PRO));
}

TEST(RecordLayoutAbi, NewKeyAddressIsEmpty)
{
    const KEY_ADDRESS key;
    EXPECT_TRUE(key.name.isEmpty());
    EXPECT_TRUE(key.regType.isEmpty());
    EXPECT_TRUE(key.keyField6.isEmpty());
    EXPECT_EQ(0, key.keyField2);
    EXPECT_EQ(0, key.bufferOffset);
    EXPECT_EQ(0, key.requestTag);
    EXPECT_EQ(0, key.address);
    EXPECT_EQ(0, key.dataKind);
    EXPECT_EQ(0, key.count);
}
