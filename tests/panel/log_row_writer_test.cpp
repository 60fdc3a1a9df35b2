#include "log/row_writer.h"

#include "support/temporary_folder.h"
#include "terminal/stop_flag.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <future>

namespace {

const SystemTime TIME = SystemTime(std::chrono::seconds(1795392000));

std::string rowOf(char letter)
{
    return std::string(99999, letter) + "\n"; // more than a pipe holds
}

// A pipe that nobody reads yet stands for a disk that does not obey.
class RowWriterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
        reader = open(name.c_str(), O_RDWR | O_CLOEXEC);
        ASSERT_GE(reader, 0);
        file = std::make_unique<RowFile>(name, "", Rotation(), [this](const std::string &line) { said.push_back(line); }, TIME);
    }

    void TearDown() override { close(reader); }

    std::string take(std::size_t size) const
    {
        std::string text(size, '\0');
        for (std::size_t done = 0; done < size;) {
            const ssize_t part = read(reader, text.data() + done, size - done);
            if (part <= 0)
                return "not readable";
            done += static_cast<std::size_t>(part);
        }
        return text;
    }

    TemporaryFolder          folder;
    const std::string        name = folder.path("pipe");
    int                      reader = -1;
    std::vector<std::string> said;
    std::unique_ptr<RowFile> file;
};

} // namespace

TEST_F(RowWriterTest, RowsWaitInTheirOrderForADiskThatDoesNotObey)
{
    RowWriter writer(*file, 250000);
    writer.add(TIME, rowOf('a'));
    writer.add(TIME, rowOf('b'));
    EXPECT_EQ(writer.lost(), 0U);
    writer.add(TIME, rowOf('c')); // 300,000 bytes
    EXPECT_EQ(writer.lost(), 1U);
    EXPECT_EQ(take(200000), rowOf('a') + rowOf('b'));
    writer.finish();
    EXPECT_TRUE(said.empty());
    EXPECT_EQ(file->lost(), 0U);
}

// In a process of its own, since the end is that of the program.
TEST_F(RowWriterTest, TheEndOfTheProgramWaitsForNobodyWhoReads)
{
    const auto end = [this] {
        RowWriter writer(*file, 250000);
        writer.add(TIME, rowOf('a'));
        programStop().stop();
        writer.finish();
        std::exit(file->lost() == 1 && said.size() == 1 ? 0 : 1);
    };
    EXPECT_EXIT(end(), ::testing::ExitedWithCode(0), "");
}

TEST_F(RowWriterTest, TheEndComesWhenAllIsWritten)
{
    RowWriter writer(*file, 250000);
    writer.add(TIME, rowOf('a'));
    writer.add(TIME, rowOf('b'));
    std::future<void> end = std::async(std::launch::async, [&writer] { writer.finish(); });
    EXPECT_EQ(take(200000), rowOf('a') + rowOf('b'));
    end.get();
}
