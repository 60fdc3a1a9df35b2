#include "publish/spool.h"

#include "common/usage_error.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <memory>

// What waits for the broker, on disk.

namespace {

BrokerMessage messageAt(std::int64_t at, const std::string &payload = "{}")
{
    return {"fins/press/Level", payload, at};
}

std::vector<std::int64_t> idsOf(Spool &spool)
{
    std::vector<BrokerMessage> messages;
    EXPECT_TRUE(spool.next(0, 1000000, messages)) << spool.problem();
    std::vector<std::int64_t> ids;
    for (const BrokerMessage &message : messages)
        ids.push_back(message.id);
    return ids;
}

} // namespace

using Ids = std::vector<std::int64_t>;

class SpoolTest : public ::testing::Test {
protected:
    std::unique_ptr<Spool> open(const Spool::Limits &limits = {})
    {
        return std::make_unique<Spool>(file, limits, [this](const std::string &line) { said += line + "\n"; });
    }

    TemporaryFolder   folder;
    const std::string file = folder.path("spool");
    std::string       said;
};

TEST_F(SpoolTest, KeepsAllOfAMessage)
{
    auto spool = open();
    const BrokerMessage message = {"fins/press/Level", "{\"value\":1}", 1767225600123, false, true};
    ASSERT_TRUE(spool->commit({message}, {}, 0, 1767225600123));
    std::vector<BrokerMessage> read;
    ASSERT_TRUE(spool->next(0, 10, read));
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].id, 1);
    EXPECT_EQ(read[0].topic, "fins/press/Level");
    EXPECT_EQ(read[0].payload, "{\"value\":1}");
    EXPECT_EQ(read[0].at, 1767225600123);
    EXPECT_FALSE(read[0].retain);
    EXPECT_TRUE(read[0].repeated);
}

TEST_F(SpoolTest, MessagesMarkAndClientAreThereAgain)
{
    auto spool = open();
    const std::string client = spool->clientId();
    EXPECT_EQ(client.substr(0, 5), "fins-");
    ASSERT_TRUE(spool->commit({messageAt(5), messageAt(6), messageAt(7)}, {}, 0, 7));
    ASSERT_TRUE(spool->setMark(2));
    spool.reset();
    spool = open();
    EXPECT_EQ(idsOf(*spool), (Ids{1, 2, 3}));
    EXPECT_EQ(spool->mark(), 2);
    EXPECT_EQ(spool->last(), 3);
    EXPECT_EQ(spool->count(), 3);
    EXPECT_EQ(spool->clientId(), client);
    EXPECT_EQ(said, "");
}

// A number that was used once may be in a mark, or on its way to the broker.
TEST_F(SpoolTest, NoNumberIsUsedTwice)
{
    auto spool = open();
    ASSERT_TRUE(spool->commit({messageAt(5), messageAt(6)}, {}, 0, 6));
    ASSERT_TRUE(spool->setMark(2));
    ASSERT_TRUE(spool->commit({}, {1, 2}, 0, 6));
    EXPECT_EQ(spool->count(), 0);
    spool.reset();
    spool = open();
    ASSERT_TRUE(spool->commit({messageAt(7)}, {}, 0, 7));
    EXPECT_EQ(idsOf(*spool), Ids{3});
}

TEST_F(SpoolTest, ForgetsWhatIsDoneAlone)
{
    auto spool = open();
    ASSERT_TRUE(spool->commit({messageAt(1), messageAt(2), messageAt(3)}, {}, 0, 3));
    ASSERT_TRUE(spool->commit({}, {2}, 0, 3));
    EXPECT_EQ(idsOf(*spool), (Ids{1, 3}));
    EXPECT_EQ(spool->count(), 2);
    EXPECT_EQ(spool->dropped(), 0);
}

// Without its mark any of them may have been handed over.
TEST_F(SpoolTest, WhereTheMarkIsMissingAllAreMarked)
{
    auto spool = open();
    ASSERT_TRUE(spool->commit({messageAt(1), messageAt(2)}, {}, 0, 2));
    ASSERT_TRUE(spool->setMark(1));
    spool.reset();
    folder.put("spool.mark", "");
    spool = open();
    EXPECT_EQ(spool->mark(), 2);
}

TEST_F(SpoolTest, DropsWhatIsTooOld)
{
    auto spool = open({std::chrono::seconds(10), 1 << 30});
    ASSERT_TRUE(spool->commit({messageAt(1000), messageAt(2000), messageAt(3000)}, {}, 0, 3000));
    EXPECT_EQ(spool->count(), 3);
    ASSERT_TRUE(spool->commit({}, {}, 0, 12000)); // 10 s later is not too old yet
    EXPECT_EQ(idsOf(*spool), (Ids{2, 3}));
    EXPECT_EQ(spool->dropped(), 1);
}

TEST_F(SpoolTest, KeepsWhatIsOnItsWay)
{
    auto spool = open({std::chrono::seconds(10), 1 << 30});
    ASSERT_TRUE(spool->commit({messageAt(1000), messageAt(2000), messageAt(3000)}, {}, 0, 3000));
    ASSERT_TRUE(spool->commit({}, {}, 1, 60000));
    EXPECT_EQ(idsOf(*spool), Ids{1});
    EXPECT_EQ(spool->dropped(), 2);
}

TEST_F(SpoolTest, DropsTheOldestOfTooMany)
{
    auto spool = open({std::chrono::hours(1), 1 << 20});
    const std::string payload(1000, 'x');
    std::int64_t added = 0;
    for (int batch = 0; batch < 30; ++batch) {
        std::deque<BrokerMessage> messages(100, messageAt(1, payload));
        ASSERT_TRUE(spool->commit(messages, {}, 0, 1)) << spool->problem();
        added += 100;
    }
    const Ids ids = idsOf(*spool);
    ASSERT_FALSE(ids.empty());
    EXPECT_EQ(ids.back(), added);
    EXPECT_EQ(ids.back() - ids.front() + 1, static_cast<std::int64_t>(ids.size())); // without a gap
    EXPECT_EQ(spool->dropped() + spool->count(), added);
    EXPECT_EQ(spool->count(), static_cast<std::int64_t>(ids.size()));
    EXPECT_GT(spool->count(), 300);
    EXPECT_LT(spool->count(), 1100);
}

TEST_F(SpoolTest, NextGoesOnBehindANumber)
{
    auto spool = open();
    ASSERT_TRUE(spool->commit({messageAt(1), messageAt(2), messageAt(3), messageAt(4)}, {}, 0, 4));
    std::vector<BrokerMessage> read;
    ASSERT_TRUE(spool->next(1, 2, read));
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[0].id, 2);
    EXPECT_EQ(read[1].id, 3);
}

TEST_F(SpoolTest, ADamagedFileIsSetAside)
{
    const std::string text = "this is no database, but something that somebody may want to have back";
    folder.put("spool", text);
    auto spool = open();
    EXPECT_EQ(said, "the spool " + file + " is damaged (file is not a database); it is set aside as " + file
                        + ".damaged-1, and what waited in it is not sent\n");
    EXPECT_EQ(folder.content("spool.damaged-1"), text);
    EXPECT_TRUE(spool->commit({messageAt(1)}, {}, 0, 1));
    EXPECT_EQ(spool->count(), 1);
}

TEST_F(SpoolTest, DamageInTheMiddleIsFoundAtTheStart)
{
    auto spool = open();
    ASSERT_TRUE(spool->commit(std::deque<BrokerMessage>(500, messageAt(1, std::string(200, 'x'))), {}, 0, 1));
    spool.reset();
    std::string bytes = folder.content("spool");
    ASSERT_GT(bytes.size(), 8 * 4096u);
    std::fill(bytes.begin() + 4096, bytes.end(), '\x5A');
    folder.put("spool", bytes);
    spool = open();
    EXPECT_NE(said.find("is damaged ("), std::string::npos) << said;
    EXPECT_EQ(folder.content("spool.damaged-1"), bytes);
    EXPECT_EQ(spool->count(), 0);
}

TEST_F(SpoolTest, OneProgramHasIt)
{
    const auto spool = open();
    try {
        open();
        FAIL() << "it was opened twice";
    } catch (const UsageError &error) {
        EXPECT_EQ(error.what(),
                  "the spool " + file + " is in use by another program; give each its own with --spool FILE");
    }
}

TEST_F(SpoolTest, TheDatabaseOfAnotherProgramIsLeftAlone)
{
    Database(file).run("CREATE TABLE notes (text TEXT)");
    const std::string bytes = folder.content("spool");
    EXPECT_THROW(open(), UsageError);
    EXPECT_EQ(folder.content("spool"), bytes);
}

TEST_F(SpoolTest, AFolderThatIsNotThereIsSaid)
{
    const std::string missing = folder.path("missing/spool");
    try {
        const Spool spool(missing, {}, [](const std::string &) {});
        FAIL() << "it was opened";
    } catch (const UsageError &error) {
        EXPECT_EQ(std::string(error.what()), "the spool " + missing + " cannot be used: No such file or directory"
                                                 + "; name a file that can be written with --spool FILE");
    }
}
