#include "publish/spool.h"

#include "common/usage_error.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>

namespace {

constexpr std::int64_t APPLICATION = 0x46494E53; // "FINS", by which SQLite files are told apart
constexpr std::int64_t DROPPED_AT_ONCE = 500;

const char MESSAGES[] =
    "CREATE TABLE messages (id INTEGER PRIMARY KEY, at INTEGER NOT NULL, topic TEXT NOT NULL, payload TEXT NOT NULL,"
    " retain INTEGER NOT NULL, repeated INTEGER NOT NULL)";

std::string newClientId()
{
    std::random_device random;
    char text[32];
    std::snprintf(text, sizeof text, "fins-%08x%08x", random(), random());
    return text;
}

// A name for what is set aside that nothing has yet.
std::string freeName(const std::string &file)
{
    for (int number = 1;; ++number) {
        const std::string name = file + ".damaged-" + std::to_string(number);
        if (!std::filesystem::exists(name))
            return name;
    }
}

} // namespace

Spool::Spool(const std::string &file, const Limits &limits, Say say)
    : file_(file), limits_(limits), say_(std::move(say)),
      markFile_(::open((file + ".mark").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666))
{
    open();
    readMark();
}

// Without a mark any of the messages may have been handed over.
void Spool::readMark()
{
    std::int64_t mark = 0;
    if (pread(markFile_.get(), &mark, sizeof mark, 0) != sizeof mark || mark < 0)
        mark = counters_.last;
    counters_.last = std::max(counters_.last, mark);
    if (!setMark(mark))
        throw UsageError("the spool's file " + file_ + ".mark cannot be written: " + std::strerror(errno)
                         + "; name a file that can be written with --spool FILE");
}

bool Spool::setMark(std::int64_t mark)
{
    if (pwrite(markFile_.get(), &mark, sizeof mark, 0) != sizeof mark)
        return false;
    mark_ = mark;
    return true;
}

void Spool::open()
{
    try {
        try {
            begin(database_.emplace(file_));
        } catch (const DatabaseError &error) {
            if (!error.isDamage())
                throw;
            setAside(error.what());
            begin(database_.emplace(file_));
        }
    } catch (const DatabaseError &error) {
        if (error.code == SQLITE_BUSY)
            throw UsageError("the spool " + file_
                             + " is in use by another program; give each its own with --spool FILE");
        throw UsageError("the spool " + file_ + " cannot be used: " + error.what()
                         + "; name a file that can be written with --spool FILE");
    }
}

void Spool::begin(Database &database)
{
    database.run("PRAGMA locking_mode = EXCLUSIVE");
    const bool isNew = database.number("SELECT count(*) FROM sqlite_master") == 0;
    if (!isNew && database.number("PRAGMA application_id") != APPLICATION)
        throw UsageError(file_
                         + " is a database of another program, and no spool; name another file with --spool FILE");
    database.run("PRAGMA journal_mode = WAL");
    database.run("PRAGMA synchronous = NORMAL");
    database.run("PRAGMA journal_size_limit = 16777216"); // bytes that the log keeps once it was longer
    if (isNew)
        makeTables(database);
    Statement check = database.prepare("PRAGMA quick_check(1)");
    if (check.step() && check.text(0) != "ok")
        throw DatabaseError(check.text(0), SQLITE_CORRUPT);
    readCounters(database);
}

void Spool::makeTables(Database &database)
{
    database.run("BEGIN IMMEDIATE");
    database.run("PRAGMA application_id = " + std::to_string(APPLICATION));
    database.run(MESSAGES);
    database.run("CREATE TABLE program (client TEXT NOT NULL)");
    const std::string client = newClientId();
    database.prepare("INSERT INTO program VALUES (?)").bind(1, client).run();
    database.run("COMMIT");
}

void Spool::readCounters(Database &database)
{
    Statement program = database.prepare("SELECT client FROM program");
    if (!program.step())
        throw DatabaseError("its own row is missing", SQLITE_CORRUPT);
    clientId_       = program.text(0);
    counters_.count = database.number("SELECT count(*) FROM messages");
    counters_.last  = std::max(counters_.last, database.number("SELECT max(id) FROM messages"));
}

// What it holds may still be saved by hand; so nothing of it is deleted.
void Spool::setAside(const std::string &why)
{
    database_.reset();
    const std::string name = freeName(file_);
    if (std::rename(file_.c_str(), name.c_str()) != 0)
        throw UsageError("the spool " + file_ + " is damaged (" + why
                         + ") and cannot be renamed: " + std::strerror(errno) + "; move it away");
    std::error_code none; // there may be no log
    std::filesystem::rename(file_ + "-wal", name + "-wal", none);
    say_("the spool " + file_ + " is damaged (" + why + "); it is set aside as " + name
         + ", and what waited in it is not sent");
}

// ---- What is stored ----------------------------------------------------------------------------------------------

bool Spool::commit(const std::deque<BrokerMessage> &added, const std::set<std::int64_t> &done, std::int64_t keep,
                   std::int64_t now)
{
    const Counters before = counters_;
    try {
        database_->run("BEGIN IMMEDIATE");
        forget(done);
        store(added);
        dropOld(keep, now - std::chrono::milliseconds(limits_.age).count());
        dropMost(keep);
        database_->run("COMMIT");
        problem_.clear();
        return true;
    } catch (const DatabaseError &error) {
        database_->rollBack();
        counters_ = before;
        noteProblem(error);
        return false;
    }
}

void Spool::noteProblem(const DatabaseError &error)
{
    problem_ = error.what();
    if (!error.isDamage())
        return;
    setAside(problem_);
    open();
}

void Spool::store(const std::deque<BrokerMessage> &added)
{
    if (added.empty())
        return;
    Statement insert = database_->prepare("INSERT INTO messages VALUES (?, ?, ?, ?, ?, ?)");
    for (const BrokerMessage &message : added) {
        insert.bind(1, ++counters_.last).bind(2, message.at).bind(3, message.topic).bind(4, message.payload);
        insert.bind(5, message.retain ? 1 : 0).bind(6, message.repeated ? 1 : 0).run();
    }
    counters_.count += static_cast<std::int64_t>(added.size());
}

void Spool::forget(const std::set<std::int64_t> &done)
{
    if (done.empty())
        return;
    Statement remove = database_->prepare("DELETE FROM messages WHERE id = ?");
    for (const std::int64_t id : done) {
        remove.bind(1, id).run();
        counters_.count -= database_->changedRows();
    }
}

void Spool::dropped(std::int64_t rows)
{
    counters_.count   -= rows;
    counters_.dropped += rows;
}

void Spool::dropOld(std::int64_t keep, std::int64_t before)
{
    Statement drop = database_->prepare("DELETE FROM messages WHERE id IN (SELECT id FROM (SELECT id, at FROM messages "
                                        "WHERE id > ? ORDER BY id LIMIT ?) WHERE at < ?)");
    for (std::int64_t rows = 1; rows > 0;) {
        drop.bind(1, keep).bind(2, DROPPED_AT_ONCE).bind(3, before).run();
        rows = database_->changedRows();
        dropped(rows);
    }
}

void Spool::dropMost(std::int64_t keep)
{
    const auto used = [this] {
        const std::int64_t pages = database_->number("PRAGMA page_count") - database_->number("PRAGMA freelist_count");
        return pages * database_->number("PRAGMA page_size");
    };
    Statement drop = database_->prepare("DELETE FROM messages WHERE id IN (SELECT id FROM messages WHERE id > ? "
                                        "ORDER BY id LIMIT ?)");
    for (std::int64_t rows = 1; rows > 0 && used() > limits_.bytes;) {
        drop.bind(1, keep).bind(2, DROPPED_AT_ONCE).run();
        rows = database_->changedRows();
        dropped(rows);
    }
}

// ---- What is read ------------------------------------------------------------------------------------------------

bool Spool::next(std::int64_t id, std::size_t most, std::vector<BrokerMessage> &messages)
{
    try {
        Statement read = database_->prepare("SELECT id, at, topic, payload, retain, repeated FROM messages "
                                            "WHERE id > ? ORDER BY id LIMIT ?");
        read.bind(1, id).bind(2, static_cast<std::int64_t>(most));
        while (read.step())
            messages.push_back({read.text(2), read.text(3), read.number(1), read.number(4) != 0, read.number(5) != 0,
                                read.number(0)});
        return true;
    } catch (const DatabaseError &error) {
        noteProblem(error);
        return false;
    }
}
