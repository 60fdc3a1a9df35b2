#ifndef PANEL_PUBLISH_DATABASE_H
#define PANEL_PUBLISH_DATABASE_H

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

// An SQLite database, as far as the spool needs it.

/// What SQLite says, with the name of the file.
struct DatabaseError : std::runtime_error {
    DatabaseError(const std::string &text, int resultCode) : std::runtime_error(text), code(resultCode) {}

    bool isDamage() const { return code == SQLITE_CORRUPT || code == SQLITE_NOTADB; }

    int code; // without the details of SQLite's extended codes
};

class Statement {
public:
    /// Runs to the next row. Returns false behind the last one, and is then ready for another run.
    bool step();

    /// Runs to the end.
    void run() { while (step()) {} }

    /// Values for the ?, the first of which is 1. They stay for all runs; a text is referred to.
    Statement &bind(int place, std::int64_t number);
    Statement &bind(int place, const std::string &text);

    // Of the present row; the first column is 0.
    std::int64_t number(int column) { return sqlite3_column_int64(statement_.get(), column); }
    std::string text(int column);

private:
    friend class Database;
    struct Finalize {
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    Statement(sqlite3 *database, const std::string &sql);
    void check(int code);

    sqlite3                                *database_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

class Database {
public:
    /// Opens the file, which is made if there is none. All of this throws DatabaseError.
    explicit Database(const std::string &file);

    Statement prepare(const std::string &sql) { return {database_.get(), sql}; }
    void run(const std::string &sql) { prepare(sql).run(); }

    /// The first column of the first row; 0 for no row.
    std::int64_t number(const std::string &sql);

    std::int64_t changedRows() { return sqlite3_changes(database_.get()); }

    /// Ends the transaction that has begun, if there is one, without a trace.
    void rollBack();

private:
    struct Close {
        void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
    };
    std::unique_ptr<sqlite3, Close> database_;
};

#endif
