#include "service/plc_errors.h"
#include "service/service_request.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

// Service requests and their answers, byte for byte.

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string &hex)
{
    Bytes bytes;
    std::string digits;
    for (const char c : hex) {
        if (c == ' ')
            continue;
        digits += c;
        if (digits.size() < 2)
            continue;
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
        digits.clear();
    }
    return bytes;
}

// From this node 239 (EF) to the PLC's node 1; the length counts what is behind it.
Bytes frameOf(const std::string &length, const std::string &command)
{
    return bytesOf("46494E53 000000" + length + " 00000002 00000000 80 00 02 00 01 00 00 EF 00 FF " + command);
}

// 80 bytes of names and system use, and the area data.
Bytes controllerBytes()
{
    Bytes bytes(92, 0);
    const std::string model = "CJ1M-CPU13          ";
    const std::string version = "04.00";
    std::copy(model.begin(), model.end(), bytes.begin());
    std::copy(version.begin(), version.end(), bytes.begin() + 20);
    const Bytes areas = bytesOf("0014 17 8000 08 03 0000 04 0040");
    std::copy(areas.begin(), areas.end(), bytes.begin() + 80);
    return bytes;
}

const char STATUS[] = "05 04 8100 0410 0000 80F1 4D454D4F5259204552524F5220202020"; // "MEMORY ERROR    "

} // namespace

TEST(ServiceRequests, AreTheBytesOfTheManual)
{
    const PlcTime time = {2026, 11, 23, 6, 5, 9}; // a Monday
    const struct {
        ServiceRequest request;
        std::string    length;
        std::string    command;
    } rows[] = {
        {askController(), "15", "0501 00"},
        {askStatus(), "14", "0601"},
        {askCycleTime(), "15", "0620 01"},
        {askClock(), "14", "0701"},
        {askErrorLog(0x0102, 20), "18", "2102 0102 0014"},
        {setClock(time), "1B", "0702 26 11 23 06 05 09 01"},
        {setMode(PlcMode::RUN), "17", "0401 FFFF 04"},
        {setMode(PlcMode::MONITOR), "17", "0401 FFFF 02"},
        {setMode(PlcMode::PROGRAM), "14", "0402"},
        {clearErrors(), "16", "2101 FFFF"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(serviceFrame(row.request, 239, 1), frameOf(row.length, row.command)) << row.command;
}

TEST(ControllerData, HasModelVersionAndMemory)
{
    const auto controller = decodeController(controllerBytes());
    ASSERT_TRUE(controller);
    EXPECT_EQ(controller->model, "CJ1M-CPU13");
    EXPECT_EQ(controller->version, "04.00");
    EXPECT_EQ(controller->programKwords, 20);
    EXPECT_EQ(controller->dmWords, 32768);
    EXPECT_EQ(controller->emBanks, 3);
    EXPECT_TRUE(controller->hasCard);
    EXPECT_EQ(controller->cardKbytes, 64);
}

TEST(ControllerData, MayBeWholeButNotShort)
{
    Bytes bytes = controllerBytes();
    bytes.resize(159);
    EXPECT_TRUE(decodeController(bytes));
    bytes.resize(91);
    EXPECT_FALSE(decodeController(bytes));
    EXPECT_FALSE(decodeController({}));
}

// What would move the cursor of a terminal is not shown.
TEST(ControllerData, TextOfAPlcIsShownAsFarAsItCanBe)
{
    const Bytes text = bytesOf("41 1B 5B 42 FF 20 20 00 43");
    EXPECT_EQ(plcText(text.data(), text.size()), "A?[B?");
    EXPECT_EQ(plcText(text.data(), 0), "");
}

TEST(Status, HasModeErrorsAndTheirText)
{
    const auto status = decodeStatus(bytesOf(STATUS));
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->isRunning);
    EXPECT_FALSE(status->writesFlash);
    EXPECT_TRUE(status->hasBattery);
    EXPECT_FALSE(status->isStandby);
    EXPECT_EQ(status->mode, 4);
    EXPECT_EQ(fatalTexts(status->fatal), (std::vector<std::string>{"memory error", "cycle time too long"}));
    EXPECT_EQ(nonFatalTexts(status->nonFatal), (std::vector<std::string>{"PLC setup error", "battery error"}));
    EXPECT_TRUE(hasBatteryError(*status));
    EXPECT_EQ(status->errorCode, 0x80F1);
    EXPECT_EQ(status->errorText, "MEMORY ERROR");
}

TEST(Status, HasTwentySixBytes)
{
    Bytes bytes = bytesOf(STATUS);
    bytes.pop_back();
    EXPECT_FALSE(decodeStatus(bytes));
    bytes.resize(27);
    EXPECT_FALSE(decodeStatus(bytes));
}

TEST(Status, EveryBitHasAWord)
{
    EXPECT_EQ(fatalTexts(0x0001), std::vector<std::string>{"bit 0"});
    EXPECT_EQ(fatalTexts(0xFF40).size(), 9u);
    EXPECT_EQ(nonFatalTexts(0xB7FC).size(), 12u);
    EXPECT_EQ(fatalTexts(0x0040), std::vector<std::string>{"FALS: the program has stopped the PLC"});
    EXPECT_EQ(nonFatalTexts(0x8000), std::vector<std::string>{"FAL: reported by the program"});
    EXPECT_TRUE(fatalTexts(0).empty());
}

TEST(Status, ModesHaveNames)
{
    EXPECT_EQ(modeText(0x00), "PROGRAM");
    EXPECT_EQ(modeText(0x02), "MONITOR");
    EXPECT_EQ(modeText(0x04), "RUN");
    EXPECT_EQ(modeText(0x07), "mode 07");
}

TEST(CycleTime, IsInTenthsOfAMillisecond)
{
    const auto cycle = decodeCycleTime(bytesOf("0000028A 00000301 00000007"));
    ASSERT_TRUE(cycle);
    EXPECT_EQ(cycleText(cycle->average), "65.0 ms");
    EXPECT_EQ(cycleText(cycle->longest), "76.9 ms");
    EXPECT_EQ(cycleText(cycle->shortest), "0.7 ms");
    EXPECT_FALSE(decodeCycleTime(bytesOf("0000028A 00000301 000000")));
}

TEST(Clock, IsDecimalDigits)
{
    const auto time = decodeClock(bytesOf("26 11 23 06 05 09 01"));
    ASSERT_TRUE(time);
    EXPECT_EQ(plcTimeText(*time), "2026-11-23 06:05:09");
    EXPECT_EQ(plcTimeText(decodeClock(bytesOf("98 01 01 00 00 00 04")).value()), "1998-01-01 00:00:00");
    EXPECT_EQ(plcTimeText(decodeClock(bytesOf("97 12 31 23 59 59 02")).value()), "2097-12-31 23:59:59");
}

TEST(Clock, RefusesWhatIsNoTime)
{
    for (const char *bytes : {"", "26 11 23 06 05 09", "26 11 23 06 05 09 01 00", "2A 11 23 06 05 09 01",
                              "26 00 23 06 05 09 01", "26 13 23 06 05 09 01", "26 11 00 06 05 09 01",
                              "26 11 32 06 05 09 01", "26 11 23 24 05 09 01", "26 11 23 06 60 09 01",
                              "26 11 23 06 05 60 01", "26 11 23 06 05 0A 01"})
        EXPECT_FALSE(decodeClock(bytesOf(bytes))) << bytes;
}

TEST(Clock, IsThisComputersLocalTime)
{
    std::tm calendar = {};
    calendar.tm_year  = 126;
    calendar.tm_mon   = 10;
    calendar.tm_mday  = 23;
    calendar.tm_hour  = 6;
    calendar.tm_min   = 5;
    calendar.tm_sec   = 9;
    calendar.tm_isdst = -1;
    const auto system = std::chrono::system_clock::from_time_t(std::mktime(&calendar));
    EXPECT_EQ(plcTimeText(localTime(system)), "2026-11-23 06:05:09");
    EXPECT_EQ(plcTimeText(localTime(system + std::chrono::milliseconds(999))), "2026-11-23 06:05:09");
}

TEST(Clock, IsAheadOfAnotherOne)
{
    const PlcTime newYear = {2026, 1, 1, 0, 0, 0};
    EXPECT_EQ(aheadBy({2026, 1, 2, 1, 2, 3}, newYear), std::chrono::seconds(86400 + 3723));
    EXPECT_EQ(aheadBy({2025, 12, 31, 23, 59, 59}, newYear), std::chrono::seconds(-1));
    EXPECT_EQ(aheadBy({2024, 3, 1, 0, 0, 0}, {2024, 2, 28, 0, 0, 0}), std::chrono::seconds(2 * 86400));
    EXPECT_FALSE(aheadBy({2026, 2, 30, 0, 0, 0}, newYear));
}

TEST(Log, HasRecordsWithTheirTimes)
{
    // Minute, second, day, hour, year, month.
    const auto log = decodeErrorLog(bytesOf("0014 0003 0002 00F7 0000 15 30 01 08 26 03 C101 0007 99 00 00 00 00 00"));
    ASSERT_TRUE(log);
    EXPECT_EQ(log->room, 20);
    EXPECT_EQ(log->stored, 3);
    ASSERT_EQ(log->records.size(), 2u);
    EXPECT_EQ(loggedText(log->records[0]), "2026-03-01 08:15:30  00F7 0000 (battery)");
    EXPECT_EQ(loggedText(log->records[1]), "without a time       C101 0007 (FALS 1)");
}

TEST(Log, CountsItsRecords)
{
    EXPECT_TRUE(decodeErrorLog(bytesOf("0014 0000 0000"))->records.empty());
    EXPECT_FALSE(decodeErrorLog(bytesOf("0014 0001 0001")));
    EXPECT_FALSE(decodeErrorLog(bytesOf("0014 0001 0000 00F7 0000 15 30 01 08 26 03")));
    EXPECT_FALSE(decodeErrorLog(bytesOf("0014 0001 0001 00F7 0000 15 30 01 08 26")));
    EXPECT_FALSE(decodeErrorLog(bytesOf("0014 0000 00")));
}

TEST(Log, CodesHaveWords)
{
    const struct {
        std::uint16_t code;
        std::string   text;
    } rows[] = {
        {0x00F7, "00F7 (battery)"},    {0x0203, "0203 (CPU bus unit 3)"}, {0x040F, "040F (setting of CPU bus unit 15)"},
        {0x4101, "4101 (FAL 1)"},      {0x42FF, "42FF (FAL 511)"},        {0x809F, "809F (cycle time too long)"},
        {0x80C2, "80C2 (I/O bus 2)"},  {0x80F0, "80F0 (program)"},        {0x80F1, "80F1 (memory)"},
        {0xC2FF, "C2FF (FALS 511)"},   {0x4100, "4100"},                  {0x1234, "1234"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(errorCodeText(row.code), row.text);
}
