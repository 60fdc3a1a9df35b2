#include "driver_fixture.h"

#include <QtCore/QStringList>

#include <limits>
#include <type_traits>

namespace {

const qint32 LOWEST  = std::numeric_limits<qint32>::min();
const qint32 HIGHEST = std::numeric_limits<qint32>::max();

void anotherCallback(qint32, qint32, QString, qint32) {}

/// Byte `i` of a test pattern that differs between `seed`s.
quint8 patternByte(int i, int seed)
{
    return static_cast<quint8>(i * 3 + i / 256 + seed);
}

void fillPattern(quint8 *bytes, int seed)
{
    for (int i = 0; i < VALUE_BUFFER_SIZE; ++i)
        bytes[i] = patternByte(i, seed);
}

void expectPattern(const quint8 *bytes, int seed)
{
    for (int i = 0; i < VALUE_BUFFER_SIZE; ++i)
        ASSERT_EQ(bytes[i], patternByte(i, seed)) << "byte " << i;
}

// ---- The driver object ---------------------------------------------------------------------------------------------

/// A driver as it is after loading: constructed in zeroed static storage.
const omron_fins_ethernet &loadedDriver()
{
    static omron_fins_ethernet loaded;
    return loaded;
}

TEST(LoadedDriver, IsAPlainClass)
{
    EXPECT_FALSE(std::is_polymorphic<omron_fins_ethernet>::value);
}

TEST(LoadedDriver, HasNoConfiguration)
{
    EXPECT_EQ(loadedDriver().stationNo, 0);
    EXPECT_EQ(loadedDriver().writeDirect, 0);
    EXPECT_EQ(loadedDriver().propertyField2, 0);
    EXPECT_EQ(loadedDriver().retryLimit, 0);
    EXPECT_EQ(loadedDriver().maxWordsPerFrame, 0);
    EXPECT_EQ(loadedDriver().wordsPerFrame, 0);
    EXPECT_EQ(loadedDriver().maxBitsPerFrame, 0);
    EXPECT_EQ(loadedDriver().initArg2, 0);
}

TEST(LoadedDriver, KnowsNothingOfTheRuntime)
{
    EXPECT_EQ(loadedDriver().runtimeBlock, nullptr);
    EXPECT_EQ(loadedDriver().recipeBuffer, nullptr);
    EXPECT_EQ(loadedDriver().runtimeMutex, nullptr);
    EXPECT_EQ(loadedDriver().valueChangeCallback, nullptr);
}

TEST(LoadedDriver, HasEmptyLists)
{
    EXPECT_TRUE(loadedDriver().readList.isEmpty());
    EXPECT_TRUE(loadedDriver().writeList.isEmpty());
    EXPECT_TRUE(loadedDriver().conditionReadList.isEmpty());
    EXPECT_TRUE(loadedDriver().dataAreas.isEmpty());
    EXPECT_TRUE(loadedDriver().recipeVars.isEmpty());
    EXPECT_TRUE(loadedDriver().recipeBlocks.isEmpty());
    EXPECT_TRUE(loadedDriver().recipeBlockStart.isEmpty());
    EXPECT_TRUE(loadedDriver().frameList.isEmpty());
    EXPECT_TRUE(loadedDriver().currentRead.regType.isEmpty());
    EXPECT_TRUE(loadedDriver().jobVar.regType.isEmpty());
}

TEST(LoadedDriver, HasNoJobAndNoLink)
{
    EXPECT_EQ(loadedDriver().jobType, 0);
    EXPECT_EQ(loadedDriver().jobCount, 0);
    EXPECT_EQ(loadedDriver().reserved0, 0);
    EXPECT_EQ(loadedDriver().errCount, 0);
    EXPECT_EQ(loadedDriver().commFailed, 0);
    EXPECT_EQ(loadedDriver().reserved1, 0);
    EXPECT_EQ(loadedDriver().reserved2, 0);
    EXPECT_EQ(loadedDriver().recipeIndex, 0);
    EXPECT_EQ(loadedDriver().connected, 0);
    EXPECT_EQ(loadedDriver().sid, 0);
    EXPECT_EQ(loadedDriver().reserved3, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(loadedDriver().srcNode[i], 0);
        EXPECT_EQ(loadedDriver().dstNode[i], 0);
    }
}

/// A driver constructed in storage that holds 0xAA.
class DriverInUsedStorage : public ::testing::Test {
protected:
    DriverInUsedStorage()
    {
        std::fill_n(storage, sizeof storage, static_cast<unsigned char>(0xAA));
        used = new (storage) omron_fins_ethernet;
    }

    ~DriverInUsedStorage() override
    {
        if (used)
            used->~omron_fins_ethernet();
    }

    alignas(omron_fins_ethernet) unsigned char storage[sizeof(omron_fins_ethernet)];
    omron_fins_ethernet *used;
};

TEST_F(DriverInUsedStorage, ConstructorResetsJobAndLink)
{
    EXPECT_EQ(used->jobCount, 0);
    EXPECT_EQ(used->commFailed, 0);
    EXPECT_EQ(used->recipeIndex, 0);
    EXPECT_EQ(used->connected, 0);
    EXPECT_EQ(used->sid, 0);
    EXPECT_EQ(used->reserved3, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(used->srcNode[i], 0);
        EXPECT_EQ(used->dstNode[i], 0);
    }
}

TEST_F(DriverInUsedStorage, ConstructorEmptiesListsAndStrings)
{
    EXPECT_TRUE(used->readList.isEmpty());
    EXPECT_TRUE(used->writeList.isEmpty());
    EXPECT_TRUE(used->conditionReadList.isEmpty());
    EXPECT_TRUE(used->dataAreas.isEmpty());
    EXPECT_TRUE(used->recipeVars.isEmpty());
    EXPECT_TRUE(used->recipeBlocks.isEmpty());
    EXPECT_TRUE(used->recipeBlockStart.isEmpty());
    EXPECT_TRUE(used->frameList.isEmpty());
    EXPECT_TRUE(used->currentRead.regType.isEmpty());
    EXPECT_TRUE(used->jobVar.regType.isEmpty());
}

TEST_F(DriverInUsedStorage, DestructorLeavesWhatTheRuntimeOwns)
{
    quint8  block[4] = {1, 2, 3, 4};
    quint16 words[2] = {5, 6};
    QMutex  mutex;
    used->runtimeBlock = block;
    used->recipeBuffer = words;
    used->runtimeMutex = &mutex;
    used->~omron_fins_ethernet();
    used = nullptr;

    EXPECT_EQ(std::vector<quint8>(block, block + 4), (std::vector<quint8>{1, 2, 3, 4}));
    EXPECT_EQ(std::vector<quint16>(words, words + 2), (std::vector<quint16>{5, 6}));
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
}

// ---- The records ---------------------------------------------------------------------------------------------------

TEST(Records, VariableIsCopiedWhole)
{
    VARIABLE original = VARIABLE();
    original.requestId = 1;
    original.requestTag = 2;
    original.regType = "DM";
    original.address = 3;
    original.count = 4;
    fillPattern(original.value, 5);
    VARIABLE copy = VARIABLE();
    copy = original;
    fillPattern(original.value, 6);

    EXPECT_EQ(copy.requestId, 1);
    EXPECT_EQ(copy.requestTag, 2);
    EXPECT_EQ(copy.regType.toStdString(), "DM");
    EXPECT_EQ(copy.address, 3);
    EXPECT_EQ(copy.count, 4);
    expectPattern(copy.value, 5);
}

TEST(Records, KeyAddressStartsEmpty)
{
    alignas(KEY_ADDRESS) unsigned char storage[sizeof(KEY_ADDRESS)];
    std::fill_n(storage, sizeof storage, static_cast<unsigned char>(0xAA));
    KEY_ADDRESS *item = new (storage) KEY_ADDRESS;

    EXPECT_TRUE(item->name.isEmpty());
    EXPECT_EQ(item->keyField2, 0);
    EXPECT_EQ(item->bufferOffset, 0);
    EXPECT_EQ(item->requestTag, 0);
    EXPECT_TRUE(item->regType.isEmpty());
    EXPECT_TRUE(item->keyField6.isEmpty());
    EXPECT_EQ(item->address, 0);
    EXPECT_EQ(item->dataKind, 0);
    EXPECT_EQ(item->count, 0);
    item->~KEY_ADDRESS();
}

TEST(Records, KeyAddressIsCopiedWhole)
{
    KEY_ADDRESS original;
    original.name = "name";
    original.keyField2 = 1;
    original.bufferOffset = 2;
    original.requestTag = 3;
    original.regType = "DM";
    original.keyField6 = "field 6";
    original.address = 4;
    original.dataKind = -1;
    original.count = 5;
    fillPattern(original.data, 6);
    KEY_ADDRESS copy;
    copy = original;
    fillPattern(original.data, 7);

    EXPECT_EQ(copy.name.toStdString(), "name");
    EXPECT_EQ(copy.keyField2, 1);
    EXPECT_EQ(copy.bufferOffset, 2);
    EXPECT_EQ(copy.requestTag, 3);
    EXPECT_EQ(copy.regType.toStdString(), "DM");
    EXPECT_EQ(copy.keyField6.toStdString(), "field 6");
    EXPECT_EQ(copy.address, 4);
    EXPECT_EQ(copy.dataKind, -1);
    EXPECT_EQ(copy.count, 5);
    expectPattern(copy.data, 6);
}

TEST(Records, FrameIsCopiedWhole)
{
    FRAME_PRO original = FRAME_PRO();
    fillPattern(original.frame, 1);
    original.sendLen = 2;
    original.rcvLen = 3;
    original.dataPos = 4;
    original.dataLen = 5;
    original.reservedField = 6;
    original.requestId = 7;
    original.requestTag = 8;
    original.regType = "DM";
    original.address = 9;
    original.count = 10;
    fillPattern(original.value, 11);
    FRAME_PRO copy = FRAME_PRO();
    copy = original;
    fillPattern(original.frame, 12);
    fillPattern(original.value, 13);

    expectPattern(copy.frame, 1);
    EXPECT_EQ(copy.sendLen, 2);
    EXPECT_EQ(copy.rcvLen, 3);
    EXPECT_EQ(copy.dataPos, 4);
    EXPECT_EQ(copy.dataLen, 5);
    EXPECT_EQ(copy.reservedField, 6);
    EXPECT_EQ(copy.requestId, 7);
    EXPECT_EQ(copy.requestTag, 8);
    EXPECT_EQ(copy.regType.toStdString(), "DM");
    EXPECT_EQ(copy.address, 9);
    EXPECT_EQ(copy.count, 10);
    expectPattern(copy.value, 11);
}

TEST(Records, DataIsCopiedWhole)
{
    _DATA_ original = {1, 1, 2, 3, 4, 5, "DM", 6, {7, 8, 9, 10}, {11, 12, 13, 14}};
    _DATA_ copy = _DATA_();
    copy = original;

    EXPECT_EQ(copy.rcvFlag, 1);
    EXPECT_EQ(copy.writePending, 1);
    EXPECT_EQ(copy.pendingBits, 2);
    EXPECT_EQ(copy.wordMonitor, 3);
    EXPECT_EQ(copy.bitMonitor, 4);
    EXPECT_EQ(copy.requestTag, 5);
    EXPECT_EQ(copy.regType.toStdString(), "DM");
    EXPECT_EQ(copy.address, 6);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(copy.plcValue[i], 7 + i);
        EXPECT_EQ(copy.writeValue[i], 11 + i);
    }
}

TEST(Records, RecipeVariableIsCopiedWhole)
{
    _RCP_VAR_PRO original = {1, 2, "DM", 3, 4, 5, 6};
    _RCP_VAR_PRO copy = _RCP_VAR_PRO();
    copy = original;

    EXPECT_EQ(copy.stationNo, 1);
    EXPECT_EQ(copy.requestTag, 2);
    EXPECT_EQ(copy.regType.toStdString(), "DM");
    EXPECT_EQ(copy.address, 3);
    EXPECT_EQ(copy.count, 4);
    EXPECT_EQ(copy.bufferOffset, 5);
    EXPECT_EQ(copy.rcpField7, 6);
}

TEST(Records, ListsHoldTheirOwnCopies)
{
    VARIABLE request = VARIABLE();
    request.address = 1;
    fillPattern(request.value, 2);
    QList<VARIABLE> list;
    list.append(request);
    request.address = 3;
    fillPattern(request.value, 4);

    EXPECT_EQ(list.at(0).address, 1);
    expectPattern(list.at(0).value, 2);
}

// ---- Description ---------------------------------------------------------------------------------------------------

TEST(DriverDescription, ProtocolTypeIs1)
{
    qint32 type = -1;
    intf_getProtocolType(&type);
    EXPECT_EQ(type, 1);
}

TEST(DriverDescription, DefaultParameterReplacesTheText)
{
    QString parameter = "something";
    intf_getDriverParameter(parameter);
    EXPECT_EQ(parameter.toStdString(), "0,9600,8,NONE,1,0,1,192.168.1.99,9600,omron_fins_ethernet,"
                                       "CIO_bit,WR_bit,HR_bit,AR_bit,DM_bit,CIO,WR,HR,AR,T,C,DM");
}

struct ParameterField {
    const char *name;
    int         position; // from 0
    const char *text;
};

std::ostream &operator<<(std::ostream &out, const ParameterField &field)
{
    return out << field.name;
}

class DefaultParameter : public ::testing::TestWithParam<ParameterField> {};

TEST_P(DefaultParameter, Field)
{
    QString parameter;
    intf_getDriverParameter(parameter);
    const QStringList fields = parameter.split(',');
    ASSERT_EQ(fields.size(), 22);
    EXPECT_EQ(fields.at(GetParam().position).toStdString(), GetParam().text);
}

const ParameterField PARAMETER_FIELDS[] = {
    {"runtime_setting_1", 0,  "0"},
    {"line_speed",        1,  "9600"},
    {"data_bits",         2,  "8"},
    {"parity",            3,  "NONE"},
    {"stop_bits",         4,  "1"},
    {"runtime_setting_6", 5,  "0"},
    {"runtime_setting_7", 6,  "1"},
    {"plc_address",       7,  "192.168.1.99"},
    {"plc_port",          8,  "9600"},
    {"driver_name",       9,  "omron_fins_ethernet"},
    {"CIO_bit",           10, "CIO_bit"},
    {"WR_bit",            11, "WR_bit"},
    {"HR_bit",            12, "HR_bit"},
    {"AR_bit",            13, "AR_bit"},
    {"DM_bit",            14, "DM_bit"},
    {"CIO",               15, "CIO"},
    {"WR",                16, "WR"},
    {"HR",                17, "HR"},
    {"AR",                18, "AR"},
    {"T",                 19, "T"},
    {"C",                 20, "C"},
    {"DM",                21, "DM"},
};

INSTANTIATE_TEST_SUITE_P(Rows, DefaultParameter, ::testing::ValuesIn(PARAMETER_FIELDS),
                         [](const ::testing::TestParamInfo<ParameterField> &row) { return row.param.name; });

TEST(DriverDescription, PropertyPageDeliberatelyHasNoEntries)
{
    const QString before[] = {QString(), "", "0_1,plc type_1_2_cs/cj,plc type_1_2_cv", "anything"};
    for (QString page : before) {
        intf_getDriverPropertyPage(page);
        EXPECT_EQ(page.toStdString(), "0_0");
    }
}

TEST(DriverDescription, StoredPropertyPageIsDeliberatelyEmptied)
{
    const QString before[] = {QString(), "0_0", "anything"};
    for (QString page : before) {
        intf_SetDriverPropertyPage(page);
        EXPECT_EQ(page.toStdString(), "");
    }
}

TEST_F(DriverTest, CallbackIsStored)
{
    intf_setAddrValueChangeCallBack(anotherCallback);
    EXPECT_EQ(driver.valueChangeCallback, &anotherCallback);
    intf_setAddrValueChangeCallBack(nullptr);
    EXPECT_EQ(driver.valueChangeCallback, nullptr);
}

// ---- Configuration -------------------------------------------------------------------------------------------------

/// The five settings of the property string.
struct Settings {
    qint32 stationNo;
    qint32 writeDirect;
    qint32 propertyField2;
    qint32 retryLimit;
    qint32 maxWordsPerFrame;
};

bool operator==(const Settings &a, const Settings &b)
{
    return a.stationNo == b.stationNo && a.writeDirect == b.writeDirect && a.propertyField2 == b.propertyField2
        && a.retryLimit == b.retryLimit && a.maxWordsPerFrame == b.maxWordsPerFrame;
}

std::ostream &operator<<(std::ostream &out, const Settings &s)
{
    return out << s.stationNo << '#' << s.writeDirect << '#' << s.propertyField2 << '#' << s.retryLimit << '#'
               << s.maxWordsPerFrame;
}

const Settings SETTINGS_BEFORE = {21, 22, 23, 24, 25};

class InitProperty : public DriverTest {
protected:
    // Nothing lies at these addresses: the call stores them only.
    enum { BLOCK_ADDRESS = 0x1000, BUFFER_ADDRESS = 0x2000, MUTEX_ADDRESS = 0x3000, ARG_2 = 0x4321 };

    InitProperty()
    {
        driver.stationNo = SETTINGS_BEFORE.stationNo;
        driver.writeDirect = SETTINGS_BEFORE.writeDirect;
        driver.propertyField2 = SETTINGS_BEFORE.propertyField2;
        driver.retryLimit = SETTINGS_BEFORE.retryLimit;
        driver.maxWordsPerFrame = SETTINGS_BEFORE.maxWordsPerFrame;
    }

    /// Configures the driver, and expects the answer that every call has.
    static void init(const char *property)
    {
        qint32 status = -1;
        EXPECT_EQ(intf_initProperty(BLOCK_ADDRESS, ARG_2, BUFFER_ADDRESS, &status, property, MUTEX_ADDRESS), 1);
        EXPECT_EQ(status, 2);
    }

    static Settings settings()
    {
        return {driver.stationNo, driver.writeDirect, driver.propertyField2, driver.retryLimit,
                driver.maxWordsPerFrame};
    }

    static void fillLists()
    {
        driver.readList.append(VARIABLE());
        driver.writeList.append(VARIABLE());
        driver.conditionReadList.append(VARIABLE());
        driver.dataAreas.append(_DATA_());
        driver.frameList.append(FRAME_PRO());
    }

    static void setCounters()
    {
        driver.jobType = 31;
        driver.jobCount = 32;
        driver.reserved0 = 33;
        driver.errCount = 34;
        driver.commFailed = 35;
        driver.reserved1 = 36;
        driver.reserved2 = 37;
    }

    static void expectListsCleared()
    {
        EXPECT_EQ(driver.readList.size(), 0);
        EXPECT_EQ(driver.writeList.size(), 0);
        EXPECT_EQ(driver.conditionReadList.size(), 0);
        EXPECT_EQ(driver.dataAreas.size(), 0);
        EXPECT_EQ(driver.frameList.size(), 0);
    }

    static void expectCountersReset()
    {
        EXPECT_EQ(driver.jobType, 0);
        EXPECT_EQ(driver.jobCount, 0);
        EXPECT_EQ(driver.reserved0, 0);
        EXPECT_EQ(driver.errCount, 0);
        EXPECT_EQ(driver.commFailed, 0);
        EXPECT_EQ(driver.reserved1, 0);
        EXPECT_EQ(driver.reserved2, 1);
    }
};

struct Property {
    const char *name;
    const char *text;
    Settings    settings;
    qint32      bitsPerFrame;
};

std::ostream &operator<<(std::ostream &out, const Property &property)
{
    return out << property.name;
}

class PropertyText : public InitProperty, public ::testing::WithParamInterface<Property> {};

TEST_P(PropertyText, GivesTheSettings)
{
    init(GetParam().text);
    EXPECT_EQ(settings(), GetParam().settings);
    EXPECT_EQ(driver.wordsPerFrame, GetParam().settings.maxWordsPerFrame);
    EXPECT_EQ(driver.maxBitsPerFrame, GetParam().bitsPerFrame);
}

const Property PROPERTIES[] = {
    {"five_numbers",           "1#0#0#3#64",            {1, 0, 0, 3, 64},        512},
    {"five_different_numbers", "1#2#3#4#5",             {1, 2, 3, 4, 5},         40},
    {"no_numbers",             "a#b#c#d#e",             {0, 0, 0, 0, 0},         0},
    {"one_without_number",     "1#2#x#4#5",             {1, 2, 0, 4, 5},         40},
    {"empty_parts",            "####",                  {0, 0, 0, 0, 0},         0},
    {"empty_part_between",     "1##3#4#5",              {1, 0, 3, 4, 5},         40},
    {"six_parts",              "1#2#3#4#5#6",           {1, 2, 3, 4, 5},         40},
    {"empty_sixth_part",       "1#2#3#4#5#",            {1, 2, 3, 4, 5},         40},
    {"four_parts",             "1#0#0#3",               {21, 22, 23, 24, 25},    200},
    {"four_empty_parts",       "###",                   {21, 22, 23, 24, 25},    200},
    {"one_part",               "64",                    {21, 22, 23, 24, 25},    200},
    {"other_separator",        "1,2,3,4,5",             {21, 22, 23, 24, 25},    200},
    {"empty",                  "",                      {21, 22, 23, 24, 25},    200},
    {"null",                   nullptr,                 {21, 22, 23, 24, 25},    200},
    {"spaces_and_signs",       " 1 #+2#\t-3#4 # 5",     {1, 2, -3, 4, 5},        40},
    {"fractions",              "1.5#2#3#4#5.0",         {0, 2, 3, 4, 0},         0},
    {"hexadecimal",            "0x10#2#3#4#0x5",        {0, 2, 3, 4, 0},         0},
    {"zeros_in_front",         "010#2#3#4#008",         {10, 2, 3, 4, 8},        64},
    {"text_behind_a_number",   "1a#2 2#--3#4#5",        {0, 0, 0, 4, 5},         40},
    {"limits_of_32_bits",      "2147483647#-2147483648#2#3#4", {HIGHEST, LOWEST, 2, 3, 4}, 32},
    {"beyond_32_bits",         "2147483648#-2147483649#99999999999#3#4", {0, 0, 0, 3, 4}, 32},
    {"negative_frame",         "1#2#3#4#-4",            {1, 2, 3, 4, -4},        -32},
    {"bits_wrap",              "1#2#3#4#268435456",     {1, 2, 3, 4, 268435456}, LOWEST},
    {"highest_frame",          "1#2#3#4#2147483647",    {1, 2, 3, 4, HIGHEST},   -8},
    {"latin1_not_utf8",        "\xC2\xA0" "1#2#3#4#5",  {0, 2, 3, 4, 5},         40},
    {"latin1_letters",         "\xE9#2#3\xB2#4#5",      {0, 2, 0, 4, 5},         40},
};

INSTANTIATE_TEST_SUITE_P(Texts, PropertyText, ::testing::ValuesIn(PROPERTIES),
                         [](const ::testing::TestParamInfo<Property> &row) { return row.param.name; });

TEST_F(InitProperty, StoresTheRuntimesAddresses)
{
    init("1#0#0#3#64");
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.runtimeBlock), quintptr{0x1000});
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.recipeBuffer), quintptr{0x2000});
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.runtimeMutex), quintptr{0x3000});
    EXPECT_EQ(driver.initArg2, 0x4321);
}

TEST_F(InitProperty, StoresTheRuntimesAddressesWithFewerParts)
{
    init("1#0#0#3");
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.runtimeBlock), quintptr{0x1000});
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.recipeBuffer), quintptr{0x2000});
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.runtimeMutex), quintptr{0x3000});
    EXPECT_EQ(driver.initArg2, 0x4321);
}

TEST_F(InitProperty, AddressesInTheUpperHalfAreZeroExtended)
{
    qint32 status = 0;
    intf_initProperty(-16, -1, LOWEST, &status, "", -4096);
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.runtimeBlock), quintptr{0xFFFFFFF0U});
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.recipeBuffer), quintptr{0x80000000U});
    EXPECT_EQ(reinterpret_cast<quintptr>(driver.runtimeMutex), quintptr{0xFFFFF000U});
    EXPECT_EQ(driver.initArg2, -1);
}

TEST_F(InitProperty, AddressesMayBeNull)
{
    qint32 status = 0;
    intf_initProperty(0, 0, 0, &status, "1#0#0#3#64", 0);
    EXPECT_EQ(driver.runtimeBlock, nullptr);
    EXPECT_EQ(driver.recipeBuffer, nullptr);
    EXPECT_EQ(driver.runtimeMutex, nullptr);
}

TEST_F(InitProperty, ClearsTheLists)
{
    fillLists();
    init("1#0#0#3#64");
    expectListsCleared();
}

TEST_F(InitProperty, ResetsTheCounters)
{
    setCounters();
    init("1#0#0#3#64");
    expectCountersReset();
}

TEST_F(InitProperty, SecondCallWithFourPartsKeepsTheSettingsAndStartsAfresh)
{
    init("1#2#3#4#64");
    fillLists();
    setCounters();
    driver.wordsPerFrame = -1;
    driver.maxBitsPerFrame = -1;

    init("9#9#9#9");
    EXPECT_EQ(settings(), (Settings{1, 2, 3, 4, 64}));
    EXPECT_EQ(driver.wordsPerFrame, 64);
    EXPECT_EQ(driver.maxBitsPerFrame, 512);
    expectListsCleared();
    expectCountersReset();
}

TEST_F(InitProperty, SecondCallReplacesTheSettings)
{
    init("1#2#3#4#64");
    init("5#6#7#8#9");
    EXPECT_EQ(settings(), (Settings{5, 6, 7, 8, 9}));
}

TEST_F(InitProperty, KeepsTheRecipePlan)
{
    driver.recipeVars.append(_RCP_VAR_PRO{1, 2, "DM", 3, 4, 5, 6});
    driver.recipeBlocks.append(_RCP_VAR_PRO{7, 8, "HR", 9, 10, 11, 12});
    driver.recipeBlockStart.append(13);
    driver.recipeIndex = 14;
    init("1#0#0#3#64");

    ASSERT_EQ(driver.recipeVars.size(), 1);
    EXPECT_EQ(driver.recipeVars.at(0).address, 3);
    ASSERT_EQ(driver.recipeBlocks.size(), 1);
    EXPECT_EQ(driver.recipeBlocks.at(0).address, 9);
    ASSERT_EQ(driver.recipeBlockStart.size(), 1);
    EXPECT_EQ(driver.recipeBlockStart.at(0), 13);
    EXPECT_EQ(driver.recipeIndex, 14);
}

TEST_F(InitProperty, KeepsTheRequestsInUse)
{
    for (VARIABLE *request : {&driver.currentRead, &driver.jobVar}) {
        request->requestId = 1;
        request->requestTag = 2;
        request->regType = "DM";
        request->address = 3;
        request->count = 4;
        fillPattern(request->value, 5);
    }
    init("1#0#0#3#64");

    for (const VARIABLE *request : {&driver.currentRead, &driver.jobVar}) {
        EXPECT_EQ(request->requestId, 1);
        EXPECT_EQ(request->requestTag, 2);
        EXPECT_EQ(request->regType.toStdString(), "DM");
        EXPECT_EQ(request->address, 3);
        EXPECT_EQ(request->count, 4);
        expectPattern(request->value, 5);
    }
}

TEST_F(InitProperty, KeepsTheLinkAndItsNodes)
{
    driver.connected = 1;
    driver.sid = 200;
    for (int i = 0; i < 3; ++i) {
        driver.srcNode[i] = 10 + i;
        driver.dstNode[i] = 20 + i;
    }
    init("1#0#0#3#64");

    EXPECT_EQ(driver.connected, 1);
    EXPECT_EQ(driver.sid, 200);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(driver.srcNode[i], 10 + i);
        EXPECT_EQ(driver.dstNode[i], 20 + i);
    }
}

TEST_F(InitProperty, KeepsCallbackAndLastReservedMember)
{
    driver.valueChangeCallback = anotherCallback;
    driver.reserved3 = 41;
    init("1#0#0#3#64");

    EXPECT_EQ(driver.valueChangeCallback, &anotherCallback);
    EXPECT_EQ(driver.reserved3, 41);
    EXPECT_TRUE(notifications().empty());
}

} // namespace
