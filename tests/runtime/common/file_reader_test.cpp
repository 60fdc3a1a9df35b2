#include "common/file_reader.h"

#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

namespace {

const char NO_FILE[] = "is not a regular file; name a file of text";

class FileReaderTest : public ::testing::Test {
protected:
    const TemporaryFolder folder;
    const std::string     file = folder.path("file");
};

} // namespace

TEST_F(FileReaderTest, ReadsAFileOfTheSizeThatIsAllowed)
{
    const std::string text(70000, 'x');
    std::ofstream(file, std::ios::binary) << text;
    EXPECT_EQ(readWholeFile(file, 70000).text, text);
    EXPECT_EQ(readWholeFile(file, 70000).problem, "");
    EXPECT_EQ(readWholeFile(file, 69999).text, "");
    EXPECT_EQ(readWholeFile(file, 69999).problem, "is larger than 68 KiB; use smaller files");
}

TEST_F(FileReaderTest, ReadsAnEmptyFile)
{
    std::ofstream(file).flush();
    EXPECT_EQ(readWholeFile(file, 10).text, "");
    EXPECT_EQ(readWholeFile(file, 10).problem, "");
}

// None of them is waited for, or read without end.
TEST_F(FileReaderTest, ReadsNoDevicesPipesAndFolders)
{
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    for (const std::string &name : {file, folder.path(), std::string("/dev/zero")})
        EXPECT_EQ(readWholeFile(name, 10).problem, NO_FILE) << name;
}

TEST_F(FileReaderTest, SaysThatThereIsNoFile)
{
    EXPECT_EQ(readWholeFile(file, 10).problem, "No such file or directory");
}
