#include "scenario_fixture.h"

#include <cstring>

const char HANDSHAKE[] = R"(
    > FINS 0000000C 00000000 00000000 00000000
    < FINS 00000010 00000001 00000000 0000000A 00000032
)";

ScenarioTest *ScenarioTest::current_ = nullptr;

namespace {

KEY_ADDRESS keyAddress(const Watched &item, int dataKind)
{
    KEY_ADDRESS key;
    key.requestTag = item.tag;
    key.regType = QString::fromLatin1(item.regType);
    key.address = item.address;
    key.count = item.count;
    key.dataKind = dataKind;
    std::memset(key.data, 0, sizeof key.data);
    return key;
}

} // namespace

ScenarioTest::ScenarioTest()
{
    current_ = this;
    reload();
}

ScenarioTest::~ScenarioTest()
{
    current_ = nullptr;
    EXPECT_TRUE(driver == nullptr || driver->unload()) << "the library stays in the process";
}

void ScenarioTest::reload()
{
    if (driver != nullptr) {
        ASSERT_TRUE(driver->unload()) << "the library stays in the process";
    }
    driver.reset();
    driver = std::make_unique<LoadedDriver>();
    driver->setAddrValueChangeCallBack(&ScenarioTest::onChange);
}

void ScenarioTest::initialise(const std::string &property)
{
    qint32 status = -1;
    EXPECT_EQ(1, driver->initProperty(block.address(), 77, recipe.address(), &status, property.c_str(),
                                      mutex.address()));
    EXPECT_EQ(2, status);
}

void ScenarioTest::connect()
{
    conditionRead({0, "DM", 0, 1});
    play(HANDSHAKE);
    play(".");
    EXPECT_EQ(Lines{"-1 -1 -1 0"}, takeChanges());
}

int ScenarioTest::watch(const std::vector<Watched> &addresses)
{
    QList<KEY_ADDRESS> list;
    for (const Watched &item : addresses)
        list.append(keyAddress(item, 0));
    return driver->addrMerge(list);
}

void ScenarioTest::conditionRead(const Watched &item, int dataKind, int requestId)
{
    KEY_ADDRESS key = keyAddress(item, dataKind);
    EXPECT_EQ(1, driver->addConditionRead(key, requestId));
}

void ScenarioTest::writeWords(int tag, const char *regType, int address, const Numbers &values, int requestId)
{
    Bytes data;
    for (const int value : values) {
        data.push_back(static_cast<unsigned char>(value % 256));
        data.push_back(static_cast<unsigned char>(value / 256));
    }
    EXPECT_EQ(1, driver->setData(tag, QString::fromLatin1(regType), address, static_cast<qint32>(values.size()),
                                 data.data(), requestId));
}

void ScenarioTest::writeBits(int tag, const char *regType, int address, const Numbers &values, int requestId)
{
    const Bytes data(values.begin(), values.end());
    EXPECT_EQ(1, driver->setData(tag, QString::fromLatin1(regType), address, static_cast<qint32>(values.size()),
                                 data.data(), requestId));
}

ScenarioTest::Numbers ScenarioTest::words(int tag, const char *regType, int address, int count)
{
    Bytes out(2 * static_cast<std::size_t>(count), 0xEE);
    EXPECT_EQ(1, driver->getData(tag, QString::fromLatin1(regType), address, count, out.data()));
    Numbers values;
    for (std::size_t i = 0; i < out.size(); i += 2)
        values.push_back(out[i] + 256 * out[i + 1]);
    return values;
}

ScenarioTest::Numbers ScenarioTest::bits(int tag, const char *regType, int address, int count)
{
    Bytes out(static_cast<std::size_t>(count), 0xEE);
    EXPECT_EQ(1, driver->getData(tag, QString::fromLatin1(regType), address, count, out.data()));
    return Numbers(out.begin(), out.end());
}

void ScenarioTest::expectMutexFree()
{
    const bool locked = mutex->tryLock();
    EXPECT_TRUE(locked) << "the driver holds the runtime's mutex";
    if (locked)
        mutex->unlock();
}

bool ScenarioTest::send()
{
    const qint32 result = driver->getSendFrame(&frame);
    expectMutexFree();
    EXPECT_TRUE(result == 0 || result == 1) << result;
    return result == 1;
}

Bytes ScenarioTest::sent() const
{
    EXPECT_GE(frame.sendLen, 20);
    EXPECT_LE(frame.sendLen, VALUE_BUFFER_SIZE);
    return Bytes(frame.frame, frame.frame + frame.sendLen);
}

int ScenarioTest::receive(const QByteArray &reply)
{
    QByteArray bytes = reply;
    QString text = QString::fromLatin1("left from before");
    const qint32 result = driver->dealRcvFrame(bytes, text);
    expectMutexFree();
    EXPECT_EQ(reply, bytes) << "the runtime's reply was changed";
    info = text.toStdString();
    return result;
}

int ScenarioTest::receive(const Bytes &reply)
{
    return receive(QByteArray(reinterpret_cast<const char *>(reply.data()), static_cast<int>(reply.size())));
}

void ScenarioTest::play(const std::string &transcript)
{
    for (const TranscriptStep &step : parseTranscript(transcript)) {
        SCOPED_TRACE(step.text);
        ASSERT_NO_FATAL_FAILURE(playStep(step));
    }
}

void ScenarioTest::playStep(const TranscriptStep &step)
{
    if (step.kind == '<') {
        ASSERT_EQ(step.result, receive(step.bytes));
        return;
    }
    const bool wanted = step.kind == '>';
    ASSERT_EQ(wanted, send());
    if (wanted) {
        ASSERT_EQ(toHex(step.bytes), toHex(sent()));
    }
}

bool ScenarioTest::exchange()
{
    if (!send())
        return false;
    EXPECT_EQ(1, receive(plc.answer(sent())));
    return true;
}

void ScenarioTest::exchange(int count)
{
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(exchange()) << "nothing to send after " << i << " exchanges";
}

int ScenarioTest::exchangeAll()
{
    int count = 0;
    while (count < MAX_EXCHANGES && exchange())
        ++count;
    EXPECT_LT(count, MAX_EXCHANGES) << "the driver never falls silent";
    return count;
}

ScenarioTest::Lines ScenarioTest::takeChanges()
{
    Lines changes;
    changes.swap(changes_);
    return changes;
}

int ScenarioTest::recipeWord(int index)
{
    return recipe.data()[2 * index] + 256 * recipe.data()[2 * index + 1];
}

void ScenarioTest::setRecipeWord(int index, int value)
{
    recipe.data()[2 * index] = static_cast<quint8>(value % 256);
    recipe.data()[2 * index + 1] = static_cast<quint8>(value / 256);
}

void ScenarioTest::onChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address)
{
    ASSERT_NE(nullptr, current_) << "a change was reported outside a test";
    if (!current_->mutexIsTaken)
        current_->expectMutexFree();
    current_->changes_.push_back(std::to_string(stationNo) + ' ' + std::to_string(requestTag) + ' '
                                 + regType.toStdString() + ' ' + std::to_string(address));
    if (current_->duringChange)
        current_->duringChange();
}
