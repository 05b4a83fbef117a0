#include "storage/sqlite.hpp"

#include "platform/log.hpp"

namespace vx {
namespace {

bool bind(sqlite3_stmt* statement, int index, const SqlValue& value) {
    struct Binder {
        sqlite3_stmt* statement;
        int index;
        int operator()(std::nullptr_t) const { return sqlite3_bind_null(statement, index); }
        int operator()(int64_t number) const { return sqlite3_bind_int64(statement, index, number); }
        int operator()(double number) const { return sqlite3_bind_double(statement, index, number); }
        int operator()(const std::string& text) const {
            return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
        }
        int operator()(const SqlBlob& blob) const {
            return sqlite3_bind_blob64(statement, index, blob.bytes.data(), blob.bytes.size(), SQLITE_TRANSIENT);
        }
    };
    return std::visit(Binder{statement, index}, value) == SQLITE_OK;
}

SqlValue valueOf(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
        return static_cast<int64_t>(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
        return sqlite3_value_double(value);
    case SQLITE_TEXT: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
        return std::string(text ? text : "", static_cast<size_t>(sqlite3_value_bytes(value)));
    }
    case SQLITE_BLOB: {
        const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
        return SqlBlob{std::string(bytes ? bytes : "", static_cast<size_t>(sqlite3_value_bytes(value)))};
    }
    default:
        return nullptr;
    }
}

void setResult(sqlite3_context* context, const SqlValue& value) {
    struct Setter {
        sqlite3_context* context;
        void operator()(std::nullptr_t) const { sqlite3_result_null(context); }
        void operator()(int64_t number) const { sqlite3_result_int64(context, number); }
        void operator()(double number) const { sqlite3_result_double(context, number); }
        void operator()(const std::string& text) const {
            sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
        }
        void operator()(const SqlBlob& blob) const {
            sqlite3_result_blob64(context, blob.bytes.data(), blob.bytes.size(), SQLITE_TRANSIENT);
        }
    };
    std::visit(Setter{context}, value);
}

void callFunction(sqlite3_context* context, int count, sqlite3_value** values) {
    auto* function = static_cast<SqliteConnection::Function*>(sqlite3_user_data(context));
    std::vector<SqlValue> arguments;
    arguments.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) arguments.push_back(valueOf(values[i]));
    setResult(context, (*function)(arguments));
}

}  // namespace

// --- Rows -------------------------------------------------------------------------------------

SqliteRows SqliteRows::borrowing(sqlite3_stmt* statement) {
    SqliteRows rows;
    rows.m_borrowed = statement;
    return rows;
}

bool SqliteRows::next() {
    sqlite3_stmt* statement = get();
    if (!statement) return false;
    const int rc = sqlite3_step(statement);
    if (rc == SQLITE_ROW) return true;
    if (rc != SQLITE_DONE) VX_LOG_DEBUG("storage", "query stopped: %s", sqlite3_errmsg(sqlite3_db_handle(statement)));
    m_statement.reset();
    m_borrowed = nullptr;
    return false;
}

int SqliteRows::columnCount() const { return get() ? sqlite3_column_count(get()) : 0; }

std::string SqliteRows::columnName(int column) const {
    const char* name = get() ? sqlite3_column_name(get(), column) : nullptr;
    return name ? name : "";
}

int SqliteRows::columnIndex(std::string_view name) const {
    for (int i = 0, n = columnCount(); i < n; ++i)
        if (columnName(i) == name) return i;
    return -1;
}

bool SqliteRows::isNull(int column) const { return !get() || sqlite3_column_type(get(), column) == SQLITE_NULL; }

int64_t SqliteRows::integer(int column) const { return get() ? sqlite3_column_int64(get(), column) : 0; }

double SqliteRows::real(int column) const { return get() ? sqlite3_column_double(get(), column) : 0; }

std::string SqliteRows::text(int column) const {
    if (!get()) return {};
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(get(), column));
    return text ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(get(), column))) : std::string();
}

SqlValue SqliteRows::value(int column) const {
    if (!get()) return nullptr;
    return valueOf(sqlite3_column_value(get(), column));
}

// --- Prepared statements ----------------------------------------------------------------------

bool SqlitePrepared::rebind(const SqlArguments& arguments) {
    if (!m_statement) return false;
    sqlite3_stmt* statement = m_statement.get();
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    const auto& values = arguments.values();
    if (static_cast<int>(values.size()) != sqlite3_bind_parameter_count(statement)) return false;
    for (size_t i = 0; i < values.size(); ++i)
        if (!bind(statement, static_cast<int>(i + 1), values[i])) return false;
    return true;
}

bool SqlitePrepared::execute(const SqlArguments& arguments) {
    if (!rebind(arguments)) return false;
    int rc;
    while ((rc = sqlite3_step(m_statement.get())) == SQLITE_ROW) {
    }
    if (rc != SQLITE_DONE) {
        VX_LOG_DEBUG("storage", "statement failed: %s (%s)", sqlite3_errmsg(sqlite3_db_handle(m_statement.get())),
                     sqlite3_sql(m_statement.get()));
        sqlite3_reset(m_statement.get());
        return false;
    }
    return true;
}

SqliteRows* SqlitePrepared::query(const SqlArguments& arguments) {
    m_rows = rebind(arguments) ? SqliteRows::borrowing(m_statement.get()) : SqliteRows();
    return &m_rows;
}

// --- Connection -------------------------------------------------------------------------------

std::optional<SqliteConnection> SqliteConnection::open(const std::string& path, Mode mode) {
    // SQLite counts every allocation under a global mutex for sqlite3_memory_used(), which
    // nothing here reads; the indexer's bulk inserts spent a tenth of their time on that lock.
    // It can only be turned off before the library first initialises (later it is refused).
    static const bool configured = [] { return sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK; }();
    (void)configured;
    const int flags = mode == Mode::ReadOnly ? SQLITE_OPEN_READONLY
                                             : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(path.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    SqliteHandle db(raw);  // owned before the result is checked: a failed open still allocates
    if (rc != SQLITE_OK) {
        VX_LOG_DEBUG("storage", "cannot open %s: %s", path.c_str(), raw ? sqlite3_errmsg(raw) : sqlite3_errstr(rc));
        return std::nullopt;
    }
    sqlite3_extended_result_codes(raw, 1);
    return SqliteConnection(std::move(db), path);
}

SqliteConnection::~SqliteConnection() = default;

void SqliteConnection::noteFailure(std::string_view sql) {
    m_lastError = m_db ? sqlite3_errmsg(m_db.get()) : "no connection";
    VX_LOG_DEBUG("storage", "statement failed: %s (%.*s)", m_lastError.c_str(), static_cast<int>(sql.size()), sql.data());
}

SqliteStatementHandle SqliteConnection::prepare(std::string_view sql, const SqlArguments& arguments) {
    if (!m_db) return {};
    sqlite3_stmt* raw = nullptr;
    const int rc = sqlite3_prepare_v2(m_db.get(), sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
    SqliteStatementHandle statement(raw);
    if (rc != SQLITE_OK || !statement) {
        noteFailure(sql);
        return {};
    }
    const auto& values = arguments.values();
    if (static_cast<int>(values.size()) != sqlite3_bind_parameter_count(raw)) {
        m_lastError = "wrong number of arguments";
        VX_LOG_DEBUG("storage", "statement failed: %s (%.*s)", m_lastError.c_str(), static_cast<int>(sql.size()), sql.data());
        return {};
    }
    for (size_t i = 0; i < values.size(); ++i) {
        if (!bind(raw, static_cast<int>(i + 1), values[i])) {
            noteFailure(sql);
            return {};
        }
    }
    return statement;
}

bool SqliteConnection::execute(std::string_view sql, const SqlArguments& arguments) {
    auto statement = prepare(sql, arguments);
    if (!statement) return false;
    int rc;
    while ((rc = sqlite3_step(statement.get())) == SQLITE_ROW) {
    }
    if (rc != SQLITE_DONE) {
        noteFailure(sql);
        return false;
    }
    return true;
}

bool SqliteConnection::executeScript(std::string_view sql) {
    if (!m_db) return false;
    const std::string text(sql);
    if (sqlite3_exec(m_db.get(), text.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        noteFailure(sql);
        return false;
    }
    return true;
}

SqlitePrepared SqliteConnection::prepared(std::string_view sql) {
    if (!m_db) return {};
    sqlite3_stmt* raw = nullptr;
    const int rc = sqlite3_prepare_v3(m_db.get(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
    SqliteStatementHandle statement(raw);
    if (rc != SQLITE_OK || !statement) {
        noteFailure(sql);
        return {};
    }
    return SqlitePrepared(std::move(statement));
}

SqliteRows SqliteConnection::query(std::string_view sql, const SqlArguments& arguments) {
    return SqliteRows(prepare(sql, arguments));
}

std::optional<int64_t> SqliteConnection::integerForQuery(std::string_view sql, const SqlArguments& arguments) {
    auto rows = query(sql, arguments);
    if (!rows.next()) return std::nullopt;
    return rows.integer(0);
}

bool SqliteConnection::tableExists(std::string_view table) {
    auto count = integerForQuery("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND lower(name) = lower(?)",
                                 {std::string(table)});
    return count && *count > 0;
}

bool SqliteConnection::attach(const std::string& path, const std::string& alias) {
    return execute("ATTACH DATABASE ? AS ?", {path, alias});
}

bool SqliteConnection::detach(const std::string& alias) { return execute("DETACH DATABASE ?", {alias}); }

bool SqliteConnection::createFunction(const std::string& name, int argumentCount, Function function) {
    if (!m_db) return false;
    auto owned = std::make_unique<Function>(std::move(function));
    const int rc = sqlite3_create_function_v2(m_db.get(), name.c_str(), argumentCount, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                              owned.get(), callFunction, nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) {
        noteFailure(name);
        return false;
    }
    m_functions.push_back(std::move(owned));
    return true;
}

void SqliteConnection::setBusyTimeout(int milliseconds) {
    if (m_db) sqlite3_busy_timeout(m_db.get(), milliseconds);
}

int64_t SqliteConnection::lastInsertRowId() const { return m_db ? sqlite3_last_insert_rowid(m_db.get()) : 0; }

int64_t SqliteConnection::changes() const { return m_db ? sqlite3_changes64(m_db.get()) : 0; }

}  // namespace vx
