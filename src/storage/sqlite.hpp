// A thin RAII wrapper over one SQLite connection: open (read-write-create or read-only), execute
// with bound arguments, queries stepped row by row, an integer for a query, table-exists, the raw
// handle, ATTACH/DETACH and custom SQL functions.
//
//     auto db = SqliteConnection::open(path);
//     db->execute("INSERT INTO t (name, n) VALUES (?, ?)", {"one", 1});
//     for (auto rows = db->query("SELECT name FROM t WHERE n > ?", {0}); rows.next();)
//         use(rows.text(0));
//
// Failures are quiet, as the engine wants them: execute answers false, a failed query yields no
// rows, and the message of the last failure is kept (`lastError`) and logged for developers.
// A connection is used by one thread at a time; the database objects above guarantee that by
// running every statement on their own serial queue.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/unique_handle.hpp"

namespace vx {

inline void closeSqliteConnection(sqlite3* db) { sqlite3_close_v2(db); }
inline void finalizeSqliteStatement(sqlite3_stmt* statement) { sqlite3_finalize(statement); }
using SqliteHandle = UniqueHandle<sqlite3*, closeSqliteConnection>;
using SqliteStatementHandle = UniqueHandle<sqlite3_stmt*, finalizeSqliteStatement>;

// One value bound to a statement or handed to a custom function.
struct SqlBlob {
    std::string bytes;
};
using SqlValue = std::variant<std::nullptr_t, int64_t, double, std::string, SqlBlob>;

// Arguments written inline: {"name", 3, 1.5, nullptr}.
class SqlArguments {
public:
    SqlArguments() = default;
    SqlArguments(std::initializer_list<SqlValue> values) : m_values(values) {}
    SqlArguments(std::vector<SqlValue> values) : m_values(std::move(values)) {}
    const std::vector<SqlValue>& values() const { return m_values; }

private:
    std::vector<SqlValue> m_values;
};

// The rows of one query, stepped with next(); columns are read from the current row.
class SqliteRows {
public:
    SqliteRows() = default;
    explicit SqliteRows(SqliteStatementHandle statement) : m_statement(std::move(statement)) {}
    // Rows of a statement owned elsewhere (a prepared statement's run); never finalized here.
    static SqliteRows borrowing(sqlite3_stmt* statement);

    // Moves to the next row; false at the end or on an error (which ends the rows).
    bool next();
    bool valid() const { return static_cast<bool>(m_statement); }

    int columnCount() const;
    std::string columnName(int column) const;
    // The index of a named column, or -1.
    int columnIndex(std::string_view name) const;
    bool isNull(int column) const;
    int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const;
    SqlValue value(int column) const;

private:
    sqlite3_stmt* get() const { return m_statement ? m_statement.get() : m_borrowed; }
    SqliteStatementHandle m_statement;
    sqlite3_stmt* m_borrowed = nullptr;
};

// A statement prepared once and run many times (bulk inserts): each run resets it, binds the
// arguments and steps it to its end.
class SqlitePrepared {
public:
    SqlitePrepared() = default;
    explicit SqlitePrepared(SqliteStatementHandle statement) : m_statement(std::move(statement)) {}
    bool valid() const { return static_cast<bool>(m_statement); }
    // False when it could not be prepared, the arguments do not fit or the step failed.
    bool execute(const SqlArguments& arguments);
    // Runs it as a query; the rows stay valid until the next run.
    SqliteRows* query(const SqlArguments& arguments);

private:
    bool rebind(const SqlArguments& arguments);

    SqliteStatementHandle m_statement;
    SqliteRows m_rows;
};

class SqliteConnection {
public:
    enum class Mode { ReadWriteCreate, ReadOnly };

    // Opens a file (":memory:" for a private in-memory database); nothing when it cannot be opened.
    static std::optional<SqliteConnection> open(const std::string& path, Mode mode = Mode::ReadWriteCreate);
    static std::optional<SqliteConnection> openReadOnly(const std::string& path) { return open(path, Mode::ReadOnly); }

    SqliteConnection(SqliteConnection&&) noexcept = default;
    SqliteConnection& operator=(SqliteConnection&&) noexcept = default;
    ~SqliteConnection();

    sqlite3* handle() const { return m_db.get(); }
    const std::string& path() const { return m_path; }

    // Runs one statement to its end with the arguments bound in order; false on failure.
    bool execute(std::string_view sql, const SqlArguments& arguments = {});
    // Runs several statements separated by semicolons, without arguments.
    bool executeScript(std::string_view sql);
    // A statement for repeated runs; an invalid one when the text does not compile.
    SqlitePrepared prepared(std::string_view sql);
    // A prepared query, ready to step; an invalid (empty) one on failure.
    SqliteRows query(std::string_view sql, const SqlArguments& arguments = {});
    // The first column of the first row as an integer; nothing when there is no row or it failed.
    std::optional<int64_t> integerForQuery(std::string_view sql, const SqlArguments& arguments = {});
    bool tableExists(std::string_view table);

    // ATTACH DATABASE ? AS ? and DETACH DATABASE ?.
    bool attach(const std::string& path, const std::string& alias);
    bool detach(const std::string& alias);

    // A scalar SQL function with a fixed number of arguments (-1: any number).
    using Function = std::function<SqlValue(const std::vector<SqlValue>& arguments)>;
    bool createFunction(const std::string& name, int argumentCount, Function function);

    // How long a statement waits for another connection's lock before failing.
    void setBusyTimeout(int milliseconds);

    int64_t lastInsertRowId() const;
    int64_t changes() const;
    const std::string& lastError() const { return m_lastError; }

private:
    SqliteConnection(SqliteHandle db, std::string path) : m_db(std::move(db)), m_path(std::move(path)) {}
    SqliteStatementHandle prepare(std::string_view sql, const SqlArguments& arguments);
    void noteFailure(std::string_view sql);

    // Declared before the connection so that the functions outlive it.
    std::vector<std::unique_ptr<Function>> m_functions;
    SqliteHandle m_db;
    std::string m_path;
    std::string m_lastError;
};

}  // namespace vx
