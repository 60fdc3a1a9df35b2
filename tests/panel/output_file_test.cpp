#include "commands/output_file.h"

#include "support/temporary_folder.h"
#include "support/usage_error.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <dirent.h>
#include <fstream>
#include <sys/resource.h>

namespace {

// A folder for the time of a test.
class OutputFileTest : public ::testing::Test {
protected:
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        DIR *const open = opendir(folder.c_str());
        while (const dirent *entry = readdir(open)) {
            if (std::string(entry->d_name) != "." && std::string(entry->d_name) != "..")
                found.push_back(entry->d_name);
        }
        closedir(open);
        return found;
    }

    std::string content(const std::string &name) const { return files.content(name); }

    mode_t modeOf(const std::string &name) const
    {
        struct stat status = {};
        EXPECT_EQ(stat((folder + name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    const TemporaryFolder files;
    const std::string     folder = files.path();
};

} // namespace

TEST_F(OutputFileTest, MakesAFile)
{
    const mode_t before = umask(027);
    replaceFile(folder + "a.txt", "one\n");
    umask(before);
    EXPECT_EQ(content("a.txt"), "one\n");
    EXPECT_EQ(modeOf("a.txt"), 0640u);
    EXPECT_EQ(names(), (std::vector<std::string>{"a.txt"}));
}

TEST_F(OutputFileTest, ReplacesAFileWithItsMode)
{
    std::ofstream(folder + "a.txt") << "a longer text than the new one\n";
    ASSERT_EQ(chmod((folder + "a.txt").c_str(), 0604), 0);
    replaceFile(folder + "a.txt", "two\n");
    EXPECT_EQ(content("a.txt"), "two\n");
    EXPECT_EQ(modeOf("a.txt"), 0604u);
    EXPECT_EQ(names(), (std::vector<std::string>{"a.txt"}));
}

TEST_F(OutputFileTest, ReplacesWhatALinkLeadsTo)
{
    std::ofstream(folder + "a.txt") << "old";
    ASSERT_EQ(symlink("a.txt", (folder + "link").c_str()), 0);
    replaceFile(folder + "link", "new");
    EXPECT_EQ(content("a.txt"), "new");
    struct stat status = {};
    ASSERT_EQ(lstat((folder + "link").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

// The size of a file is limited to what a full disk would still take.
TEST_F(OutputFileTest, KeepsTheOldContentWhenTheDiskIsFull)
{
    std::ofstream(folder + "a.txt") << "old";
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string refusal = usageError([&] { replaceFile(folder + "a.txt", std::string(2000, 'x')); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(refusal, folder + "a.txt: cannot be written: File too large");
    EXPECT_EQ(content("a.txt"), "old");
    EXPECT_EQ(names(), (std::vector<std::string>{"a.txt"}));
}

TEST_F(OutputFileTest, SaysWhyAFileCannotBeWritten)
{
    EXPECT_EQ(usageError([&] { replaceFile(folder + "none/a.txt", "x"); }),
              folder + "none/a.txt: cannot be written: No such file or directory");
    EXPECT_EQ(usageError([&] { replaceFile(folder, "x"); }), folder + ": cannot be written: Is a directory");
}

TEST_F(OutputFileTest, WritesToADevice)
{
    replaceFile("/dev/null", "x");
    struct stat status = {};
    ASSERT_EQ(stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(OutputFileTest, RefusesAnInputUnderEveryName)
{
    std::ofstream(folder + "in.txt") << "in";
    std::ofstream(folder + "other.txt") << "other";
    ASSERT_EQ(link((folder + "in.txt").c_str(), (folder + "hard").c_str()), 0);
    ASSERT_EQ(symlink("in.txt", (folder + "soft").c_str()), 0);
    const std::vector<std::string> inputs = {folder + "other.toml", folder + "in.txt"};
    for (const char *name : {"in.txt", "./in.txt", "hard", "soft"})
        EXPECT_EQ(usageError([&] { refuseInputs(folder + name, inputs); }),
                  folder + name + ": --output would replace a file that is read from; name another one");
    for (const char *name : {"other.txt", "none.txt"})
        EXPECT_EQ(usageError([&] { refuseInputs(folder + name, inputs); }), "");
    EXPECT_EQ(usageError([&] { refuseInputs("", inputs); }), "");
}
