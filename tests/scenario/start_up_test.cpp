#include "scenario_fixture.h"

// The order in which a runtime starts the driver, up to the first poll read.

class StartUpScenario : public ScenarioTest {};

TEST_F(StartUpScenario, DescriptorFunctionsAnswerBeforeConfiguration)
{
    qint32 type = -1;
    driver->getProtocolType(&type);
    EXPECT_EQ(1, type);

    QString parameter = QString::fromLatin1("old");
    driver->getDriverParameter(parameter);
    EXPECT_EQ("0,9600,8,NONE,1,0,1,192.168.1.99,9600,omron_fins_ethernet,"
              "CIO_bit,WR_bit,HR_bit,AR_bit,DM_bit,CIO,WR,HR,AR,T,C,DM", parameter.toStdString());

    QString page = QString::fromLatin1("anything");
    driver->getDriverPropertyPage(page);
    EXPECT_EQ("0_0", page.toStdString());
    driver->setDriverPropertyPage(page);
    EXPECT_EQ("", page.toStdString());
}

TEST_F(StartUpScenario, AddressEntryAnswersBeforeConfiguration)
{
    qint32 address = -1;
    EXPECT_EQ(0, driver->checkAddr(QString::fromLatin1("DM_bit"), QString::fromLatin1("10.15"), &address, -1, 1, 1));
    EXPECT_EQ(175, address);
    EXPECT_EQ(2, driver->checkAddrValidity(QString::fromLatin1("DM"), QString::fromLatin1("32767"), &address, 2, 1));

    QList<QString> names;
    EXPECT_EQ(1, driver->getRegListByType(0, names));
    EXPECT_EQ(5, static_cast<int>(names.size()));

    QList<QString> fields;
    EXPECT_EQ(0, driver->getRegDiscription(QString::fromLatin1("AR_bit"), fields));
    ASSERT_EQ(5, static_cast<int>(fields.size()));
    EXPECT_EQ("448.0", fields.at(1).toStdString());

    QVector<QString> texts;
    QVector<qint32> addresses;
    EXPECT_EQ(2, driver->multiCopy(QString::fromLatin1("DM"), 32766, 3, 1, texts, addresses));
    ASSERT_EQ(3, static_cast<int>(addresses.size()));
    EXPECT_EQ(32767, addresses.at(2));
}

TEST_F(StartUpScenario, NothingIsSentBeforeConfiguration)
{
    frame.sendLen = 4711;
    EXPECT_FALSE(send());
    EXPECT_EQ(4711, frame.sendLen) << "the record was touched although there is no request";
}

TEST_F(StartUpScenario, MissingSharedBlockOrMutexMeansNoRecipeRequest)
{
    flag(RECIPE_WRITE_REQUEST) = 1;
    flag(RECIPE_READ_REQUEST) = 1;
    for (const bool hasBlock : {true, false}) {
        SCOPED_TRACE(hasBlock ? "no mutex" : "no block");
        qint32 status = 0;
        driver->initProperty(hasBlock ? block.address() : 0, 0, recipe.address(), &status, "1#0#0#3#64",
                             hasBlock ? 0 : mutex.address());
        QVector<_RCP_VAR_PRO> variables;
        variables.append(_RCP_VAR_PRO{1, 7, QString::fromLatin1("DM"), 0x300, 1, 0, 0});
        driver->setRcpAddress(variables);
        EXPECT_FALSE(send());
    }
}

TEST_F(StartUpScenario, ReplyWithoutRequestIsAnsweredWithZeroAndNoInfo)
{
    EXPECT_EQ(0, receive(fromHex("FINS 00000010 00000001 00000000 0000000A 00000032")));
    EXPECT_EQ("", info);
}

TEST_F(StartUpScenario, FirstRequestIsTheHandshakeAndThenThePoll)
{
    initialise("1#0#0#3#64");
    EXPECT_EQ(1, watch({{7, "DM", 100, 10}}));
    ASSERT_TRUE(send());
    EXPECT_EQ(20, frame.sendLen);
    EXPECT_EQ(24, frame.rcvLen);
    EXPECT_EQ(0, frame.dataLen);
    EXPECT_TRUE(frame.regType.isEmpty());
    play(R"(
        > FINS 0000000C 00000000 00000000 00000000
        < FINS 00000010 00000001 00000000 00000011 00000022 = 1
        > FINS 0000001A 00000002 00000000  800002 002200 001100 01  0101 82 0064 00 000A
    )");
}

TEST_F(StartUpScenario, PollRequestCarriesItsVariableAndTheExpectedReply)
{
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 10}});
    play(HANDSHAKE);
    ASSERT_TRUE(send());
    EXPECT_EQ(34, frame.sendLen);
    EXPECT_EQ(50, frame.rcvLen);
    EXPECT_EQ(30, frame.dataPos);
    EXPECT_EQ(20, frame.dataLen);
    EXPECT_EQ(4, frame.requestId);
    EXPECT_EQ(7, frame.requestTag);
    EXPECT_EQ("DM", frame.regType.toStdString());
    EXPECT_EQ(100, frame.address);
    EXPECT_EQ(10, frame.count);
}

TEST_F(StartUpScenario, HandshakeAnswerSetsOnlyTheLowBytesOfTheNodes)
{
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000000C 00000000 00000000 00000000
        < FINS 00000010 00000001 00000000 010203FE 040506EF
        > FINS 0000001A 00000002 00000000  800002 00EF00 00FE00 01  0101 82 0064 00 0001
    )");
}

TEST_F(StartUpScenario, AnyReplyOfTwentyFourBytesCompletesTheHandshake)
{
    initialise("1#0#0#9#64");
    watch({{7, "DM", 100, 1}});
    play(R"(
        > FINS 0000000C 00000000 00000000 00000000
        < 000000000000000000000000000000000000000A000000 = 8
        < 000000000000000000000000000000000000000A0000003200 = 8
        > FINS 0000000C 00000000 00000000 00000000
        < 000000000000000000000000000000000000000A00000032 = 1
        > FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001
    )");
}

TEST_F(StartUpScenario, HandshakeInfoDescribesTheEmptyRecord)
{
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 1}});
    play(HANDSHAKE);
    EXPECT_EQ("0#0(0)(24)", info);
}

TEST_F(StartUpScenario, LoadingAgainStartsAfresh)
{
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 1}});
    play(HANDSHAKE);
    ASSERT_TRUE(exchange());
    ASSERT_NO_FATAL_FAILURE(reload());
    EXPECT_FALSE(send()) << "a request outlived the library";
    initialise("1#0#0#3#64");
    watch({{7, "DM", 100, 1}});
    play(HANDSHAKE);
    play("> FINS 0000001A 00000002 00000000  800002 003200 000A00 01  0101 82 0064 00 0001");
}
