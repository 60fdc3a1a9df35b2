#include "publish/database.h"

#include <new>
#include <system_error>

namespace {

void checkResult(sqlite3 *database, int code)
{
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE)
        return;
    const int plain = code & 0xFF;
    const int error = sqlite3_system_errno(database);
    const bool isOfSystem = error != 0 && (plain == SQLITE_IOERR || plain == SQLITE_CANTOPEN || plain == SQLITE_FULL);
    throw DatabaseError(isOfSystem ? std::generic_category().message(error) : sqlite3_errmsg(database), plain);
}

} // namespace

// ---- Statement ---------------------------------------------------------------------------------------------------

Statement::Statement(sqlite3 *database, const std::string &sql) : database_(database)
{
    sqlite3_stmt *made = nullptr;
    const int code = sqlite3_prepare_v2(database, sql.c_str(), static_cast<int>(sql.size()), &made, nullptr);
    statement_.reset(made);
    checkResult(database_, code);
}

bool Statement::step()
{
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW)
        return true;
    sqlite3_reset(statement_.get());
    checkResult(database_, code);
    return false;
}

void Statement::check(int code)
{
    checkResult(database_, code);
}

Statement &Statement::bind(int place, std::int64_t number)
{
    check(sqlite3_bind_int64(statement_.get(), place, number));
    return *this;
}

Statement &Statement::bind(int place, const std::string &text)
{
    check(sqlite3_bind_text(statement_.get(), place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
    return *this;
}

std::string Statement::text(int column)
{
    const void *bytes = sqlite3_column_blob(statement_.get(), column);
    const int   size  = sqlite3_column_bytes(statement_.get(), column);
    return bytes ? std::string(static_cast<const char *>(bytes), static_cast<std::size_t>(size)) : "";
}

// ---- Database ----------------------------------------------------------------------------------------------------

Database::Database(const std::string &file)
{
    sqlite3 *made = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXRESCODE;
    const int code  = sqlite3_open_v2(file.c_str(), &made, flags, nullptr);
    database_.reset(made);
    if (!made)
        throw std::bad_alloc();
    checkResult(made, code);
}

std::int64_t Database::number(const std::string &sql)
{
    Statement statement = prepare(sql);
    return statement.step() ? statement.number(0) : 0;
}

void Database::rollBack()
{
    if (sqlite3_get_autocommit(database_.get()) == 0)
        sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}
