#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "support/loaded_driver.h"
#include "support/low_memory.h"

// The toolkit's types across the library's border: what comes by value is only looked at, what comes by reference is
// filled for the caller alone, and no hidden copy is left behind.

namespace {

int changes = 0;

void countChange(qint32, qint32, QString, qint32) { ++changes; }

class QtTypesAbi : public ::testing::Test {
protected:
    QtTypesAbi()
    {
        changes = 0;
        driver.setAddrValueChangeCallBack(&countChange);
        initialise();
    }

    void initialise()
    {
        qint32 status = 0;
        driver.initProperty(block.address(), 0, recipe.address(), &status, "1#0#0#3#64", mutex.address());
    }

    // A string that nobody shares, so that a copy left behind shows in isDetached().
    static QString own(const char *text) { return QString::fromLatin1(text); }

    LowMemory         block{60117};
    LowMemory         recipe{64, 2};
    LowObject<QMutex> mutex;
    LoadedDriver      driver;
};

} // namespace

TEST_F(QtTypesAbi, StringsByValueAreNeitherChangedNorKept)
{
    const QString type = own("DM_bit");
    const QString text = own("10.15");
    qint32 address = 0;
    EXPECT_EQ(0, driver.checkAddr(type, text, &address, -1, 1, 0));
    EXPECT_EQ(0, driver.checkAddrValidity(type, text, &address, 1, 0));
    QList<QString> fields;
    driver.getRegDiscription(type, fields);
    QVector<QString> texts;
    QVector<qint32> addresses;
    driver.multiCopy(type, 0, 2, 1, texts, addresses);
    EXPECT_EQ("DM_bit", type.toStdString());
    EXPECT_EQ("10.15", text.toStdString());
    EXPECT_TRUE(type.isDetached());
    EXPECT_TRUE(text.isDetached());
}

TEST_F(QtTypesAbi, TypeOfAReadIsNotKeptOnceItsWordIsKnown)
{
    quint8 out[2];
    driver.getData(7, own("DM"), 100, 1, out);
    const QString type = own("DM");
    driver.getData(7, type, 100, 1, out);
    EXPECT_TRUE(type.isDetached());
}

TEST_F(QtTypesAbi, QueuesReleaseTheirStringsWhenTheyAreEmptied)
{
    const QString type = own("DM_bit");
    const quint8 data[3] = {1, 0, 1};
    driver.setData(7, type, 1600, 3, data, 5);
    EXPECT_FALSE(type.isDetached()) << "the queued write has a copy";
    initialise();
    EXPECT_TRUE(type.isDetached());
    EXPECT_EQ("DM_bit", type.toStdString());
}

TEST_F(QtTypesAbi, EmptyAndNullStringsAreUnknownTypes)
{
    qint32 address = 77;
    EXPECT_EQ(0, driver.checkAddr(QString(), QString(), &address, 0, 1, 0));
    EXPECT_EQ(0, driver.checkAddrValidity(own(""), own(""), &address, 1, 1));
    EXPECT_EQ(77, address);
    quint8 out[2] = {0xEE, 0xEE};
    EXPECT_EQ(1, driver.getData(7, QString(), 100, 1, out));
    EXPECT_EQ(0, out[0]);
    EXPECT_EQ(0, out[1]);
}

TEST_F(QtTypesAbi, TextBeyondLatinIsAnUnknownType)
{
    QString type = own("DM");
    type.append(QChar(0x3042));
    qint32 address = 77;
    EXPECT_EQ(0, driver.checkAddr(type, own("1"), &address, 0, 1, 0));
    EXPECT_EQ(77, address);
    EXPECT_EQ(3, static_cast<int>(type.size()));
}

TEST_F(QtTypesAbi, AssignedStringIsTheCallersAlone)
{
    QString page = own("before");
    const QString copy = page;
    driver.getDriverPropertyPage(page);
    EXPECT_EQ("0_0", page.toStdString());
    EXPECT_EQ("before", copy.toStdString());
    page.append(QLatin1Char('x'));
    QString again;
    driver.getDriverPropertyPage(again);
    EXPECT_EQ("0_0", again.toStdString());
    driver.getDriverParameter(page);
    page.append(QLatin1Char('x'));
    driver.getDriverParameter(again);
    EXPECT_TRUE(again.endsWith(QLatin1String(",C,DM")));
}

TEST_F(QtTypesAbi, ListsGrowForTheCallerAlone)
{
    QList<QString> names;
    names.append(own("mine"));
    const QList<QString> copy = names;
    EXPECT_EQ(1, driver.getRegListByType(1, names));
    ASSERT_EQ(8, static_cast<int>(names.size()));
    EXPECT_EQ("mine", names.at(0).toStdString());
    EXPECT_EQ("CIO", names.at(1).toStdString());
    EXPECT_EQ("DM", names.at(7).toStdString());
    EXPECT_EQ(1, static_cast<int>(copy.size()));
}

TEST_F(QtTypesAbi, ChangingAReturnedNameLeavesTheTableAlone)
{
    QList<QString> names;
    driver.getRegListByType(1, names);
    names[0].append(QLatin1Char('x'));
    QList<QString> again;
    driver.getRegListByType(1, again);
    EXPECT_EQ("CIO", again.at(0).toStdString());
}

TEST_F(QtTypesAbi, VectorsGrowForTheCallerAlone)
{
    QVector<QString> texts(1, own("mine"));
    QVector<qint32> addresses(1, 5);
    const QVector<QString> textsCopy = texts;
    const QVector<qint32> addressesCopy = addresses;
    EXPECT_EQ(1, driver.multiCopy(own("CIO_bit"), 14, 3, -1, texts, addresses));
    ASSERT_EQ(4, static_cast<int>(texts.size()));
    EXPECT_EQ("mine", texts.at(0).toStdString());
    EXPECT_EQ("0.14", texts.at(1).toStdString());
    EXPECT_EQ("1.0", texts.at(3).toStdString());
    EXPECT_EQ((QVector<qint32>() << 5 << 14 << 15 << 16), addresses);
    EXPECT_EQ(1, static_cast<int>(textsCopy.size()));
    EXPECT_EQ(1, static_cast<int>(addressesCopy.size()));
}

TEST_F(QtTypesAbi, WatchListIsRewrittenForTheCallerAlone)
{
    QList<KEY_ADDRESS> list;
    for (const qint32 address : {16, 37}) {
        KEY_ADDRESS key;
        key.name = own("item");
        key.keyField6 = own("more");
        key.keyField2 = address;
        key.requestTag = 7;
        key.regType = own("CIO_bit");
        key.address = address;
        key.count = 1;
        std::memset(key.data, 0x5A, sizeof key.data);
        list.append(key);
    }
    const QList<KEY_ADDRESS> copy = list;
    EXPECT_EQ(1, driver.addrMerge(list));
    ASSERT_EQ(1, static_cast<int>(list.size()));
    EXPECT_EQ("CIO", list.at(0).regType.toStdString());
    EXPECT_EQ(1, list.at(0).address);
    EXPECT_EQ(2, list.at(0).count);
    EXPECT_EQ("item", list.at(0).name.toStdString());
    EXPECT_EQ("more", list.at(0).keyField6.toStdString());
    EXPECT_EQ(16, list.at(0).keyField2);
    EXPECT_EQ(0x5A, list.at(0).data[1023]);
    ASSERT_EQ(2, static_cast<int>(copy.size()));
    EXPECT_EQ("CIO_bit", copy.at(0).regType.toStdString());
    EXPECT_EQ(37, copy.at(1).address);
}

TEST_F(QtTypesAbi, RecipeListAndConditionReadStayAsTheyWere)
{
    QVector<_RCP_VAR_PRO> recipes;
    recipes.append(_RCP_VAR_PRO{1, 7, own("DM"), 9, 1, 0, 3});
    EXPECT_EQ(1, driver.setRcpAddress(recipes));
    EXPECT_EQ("DM", recipes.at(0).regType.toStdString());
    EXPECT_EQ(3, recipes.at(0).rcpField7);

    KEY_ADDRESS item;
    item.regType = own("DM_bit");
    item.address = 40;
    item.count = 100;
    item.dataKind = -1;
    EXPECT_EQ(1, driver.addConditionRead(item, 1));
    EXPECT_EQ("DM_bit", item.regType.toStdString());
    EXPECT_EQ(40, item.address);
    EXPECT_EQ(100, item.count);
}

TEST_F(QtTypesAbi, ReplyByReferenceIsNotChangedAndInfoIsReplaced)
{
    QList<KEY_ADDRESS> list;
    KEY_ADDRESS key;
    key.regType = own("DM");
    key.address = 100;
    key.count = 1;
    list.append(key);
    driver.addrMerge(list);
    FRAME_PRO frame = FRAME_PRO();
    ASSERT_EQ(1, driver.getSendFrame(&frame));
    QByteArray reply(24, '\x01');
    const QByteArray copy = reply;
    QString info = own("before");
    const QString infoCopy = info;
    EXPECT_EQ(1, driver.dealRcvFrame(reply, info));
    EXPECT_EQ(copy, reply);
    EXPECT_EQ("0#0(0)(24)", info.toStdString());
    EXPECT_EQ("before", infoCopy.toStdString());
    EXPECT_EQ(0, changes);
}

TEST_F(QtTypesAbi, RequestRecordIsTheCallersAlone)
{
    QList<KEY_ADDRESS> list;
    KEY_ADDRESS key;
    key.regType = own("DM");
    key.count = 1;
    list.append(key);
    driver.addrMerge(list);
    FRAME_PRO frame = FRAME_PRO();
    QString info;
    QByteArray reply(24, '\0');
    ASSERT_EQ(1, driver.getSendFrame(&frame));
    ASSERT_EQ(1, driver.dealRcvFrame(reply, info));
    ASSERT_EQ(1, driver.getSendFrame(&frame));
    frame.regType.append(QLatin1Char('x'));
    frame.frame[0] = 0;
    ASSERT_EQ(1, driver.getSendFrame(&frame));
    EXPECT_EQ("DM", frame.regType.toStdString());
    EXPECT_EQ('F', frame.frame[0]);
}

TEST(LowMemoryAbi, PiecesLieBelowFourGigabytesAndAreZeroed)
{
    LowMemory piece(60117);
    const auto begin = reinterpret_cast<std::uintptr_t>(piece.data());
    EXPECT_LE(static_cast<std::uint64_t>(begin) + 60117, std::uint64_t(1) << 32);
    EXPECT_EQ(begin, static_cast<std::uintptr_t>(static_cast<quint32>(piece.address())));
    EXPECT_EQ(0, piece.data()[0]);
    piece.data()[60116] = 1;
    LowMemory words(10, 4);
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(words.data()) % 4);
}
