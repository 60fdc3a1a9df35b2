#include "log/row_file.h"

#include "common/usage_error.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <zlib.h>

#include <algorithm>
#include <csignal>

using namespace std::chrono_literals;

namespace {

const SystemTime DAY = SystemTime(1795392000s); // 2026-11-23T00:00:00Z

// What a compressed file holds.
std::string unzipped(const std::string &file)
{
    std::string text(100000, '\0');
    const gzFile stream = gzopen(file.c_str(), "rb");
    const int size = stream ? gzread(stream, text.data(), static_cast<unsigned>(text.size())) : -1;
    gzclose(stream);
    return size < 0 ? "not readable" : text.substr(0, static_cast<std::size_t>(size));
}

class RowFileTest : public ::testing::Test {
protected:
    std::unique_ptr<RowFile> open(const Rotation &rotation = {}, const std::string &heading = "head\n")
    {
        return std::make_unique<RowFile>(folder.path("log.csv"), heading, rotation,
                                         [this](const std::string &line) { said.push_back(line); }, DAY);
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path()))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

    using Names = std::vector<std::string>;

    TemporaryFolder          folder;
    std::vector<std::string> said;
};

} // namespace

TEST_F(RowFileTest, AHeadingStandsOnceAndRowsOfAnEarlierRunStay)
{
    open()->write(DAY, "1\n");
    open()->write(DAY, "2\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n1\n2\n");
    EXPECT_TRUE(said.empty());
}

TEST_F(RowFileTest, ATornLineIsCutOff)
{
    folder.put("log.csv", "head\n1,2\n3,4");
    open()->write(DAY, "5,6\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n1,2\n5,6\n");
    EXPECT_EQ(said, Names{folder.path("log.csv") + ": its last line was not whole; 3 bytes of it are cut off"});
}

TEST_F(RowFileTest, ALongTornLineIsCutOffToo)
{
    folder.put("log.csv", "head\n1\n" + std::string(200000, 'x'));
    open()->write(DAY, "2\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n1\n2\n");
}

TEST_F(RowFileTest, WhatBeginsOtherwiseIsClosedAndKept)
{
    folder.put("log.csv", "other\n1\n");
    open()->write(DAY, "2\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n2\n");
    EXPECT_EQ(folder.content("log-20261123T000000.000Z.csv"), "other\n1\n");
    folder.put("log.csv", "no line at all");
    open({}, "")->write(DAY, "3\n");
    EXPECT_EQ(folder.content("log-20261123T000000.000Z-2.csv"), "no line at all");
    EXPECT_EQ(folder.content("log.csv"), "3\n");
}

TEST_F(RowFileTest, AFileIsClosedBeforeItGetsTooLarge)
{
    Rotation rotation;
    rotation.size = 11; // the heading and three rows
    const auto file = open(rotation);
    for (const char *row : {"1\n", "2\n", "3\n", "4\n"})
        file->write(DAY + 1234ms, row);
    EXPECT_EQ(folder.content("log-20261123T000001.234Z.csv"), "head\n1\n2\n3\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n4\n");
}

// A row that is larger alone still has a file.
TEST_F(RowFileTest, ARowIsNeverDivided)
{
    Rotation rotation;
    rotation.size = 6;
    const auto file = open(rotation);
    file->write(DAY, "too long\n");
    file->write(DAY, "too long\n");
    EXPECT_EQ(folder.content("log-20261123T000000.000Z.csv"), "head\ntoo long\n");
    EXPECT_EQ(folder.content("log.csv"), "head\ntoo long\n");
}

TEST_F(RowFileTest, AFileIsClosedOnTheGridOfTheClock)
{
    Rotation rotation;
    rotation.every = 1h;
    const auto file = open(rotation);
    file->write(DAY + 59min, "1\n");
    file->write(DAY + 1h - 1ms, "2\n");
    file->write(DAY + 1h, "3\n");
    EXPECT_EQ(folder.content("log-20261123T010000.000Z.csv"), "head\n1\n2\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n3\n");
}

TEST_F(RowFileTest, ClosedFilesAreCompressedWhole)
{
    Rotation rotation;
    rotation.size = 7;
    rotation.gzip = true;
    const auto file = open(rotation);
    file->write(DAY, "1\n");
    file->write(DAY, "2\n");
    file->finish(false);
    EXPECT_EQ(names(), (Names{"log-20261123T000000.000Z.csv.gz", "log.csv"}));
    EXPECT_EQ(unzipped(folder.path("log-20261123T000000.000Z.csv.gz")), "head\n1\n");
}

TEST_F(RowFileTest, WhatAKillHasLeftIsCompressedAtTheNextStart)
{
    folder.put("log-20261122T000000.000Z.csv", "head\n1\n");
    folder.put("log-20261122T000000.000Z.csv.gz.tmp", "half");
    folder.put("log-other.csv", "not of this log");
    Rotation rotation;
    rotation.gzip = true;
    open(rotation)->finish(false);
    EXPECT_EQ(names(), (Names{"log-20261122T000000.000Z.csv.gz", "log-other.csv", "log.csv"}));
    EXPECT_EQ(unzipped(folder.path("log-20261122T000000.000Z.csv.gz")), "head\n1\n");
}

TEST_F(RowFileTest, OnlyTheLatestClosedFilesAreKept)
{
    Rotation rotation;
    rotation.every = 1s;
    rotation.keep  = 2;
    const auto file = open(rotation);
    folder.put("log-other.csv", "not of this log");
    for (int i = 0; i < 5; ++i)
        file->write(DAY + std::chrono::seconds(i), "1\n");
    EXPECT_EQ(names(), (Names{"log-20261123T000003.000Z.csv", "log-20261123T000004.000Z.csv", "log-other.csv", "log.csv"}));
}

TEST_F(RowFileTest, TwoLogsDoNotShareAFile)
{
    const auto file = open();
    EXPECT_THROW(open(), UsageError);
}

TEST_F(RowFileTest, AFileThatCannotBeOpenedIsRefused)
{
    EXPECT_THROW(RowFile(folder.path("none/log.csv"), "", {}, [](const std::string &) {}, DAY), UsageError);
}

// The limit of the size of files stands for a disk that is full.
TEST_F(RowFileTest, AFullDiskIsSaidOnceAndTheLogGoesOn)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const auto file = open();
    file->write(DAY, "1\n");
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full = {10, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    file->write(DAY, "2,3,4,5,6\n"); // of which three bytes have room
    file->write(DAY, "7,8,9,10\n");
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(folder.content("log.csv"), "head\n1\n");
    file->write(DAY, "11\n");
    EXPECT_EQ(folder.content("log.csv"), "head\n1\n11\n");
    const std::string name = folder.path("log.csv");
    EXPECT_EQ(said, (Names{name + " cannot be written: File too large; rows are lost until it can",
                           name + " is written again; 2 rows were lost"}));
    EXPECT_EQ(file->lost(), 2u);
}

TEST_F(RowFileTest, RowsThatAreLostToTheEndAreCounted)
{
    RowFile file("/dev/full", "head\n", {}, [this](const std::string &line) { said.push_back(line); }, DAY);
    file.write(DAY, "1\n");
    file.write(DAY, "2\n");
    file.finish(false);
    EXPECT_EQ(said, (Names{"/dev/full cannot be written: No space left on device; rows are lost until it can",
                           "/dev/full could not be written any more; 2 rows were lost"}));
}
