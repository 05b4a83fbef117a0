#include "storage/database.hpp"

#include <unistd.h>

#include <random>

#include "platform/log.hpp"

namespace vx {
namespace {

// How long a statement waits for another process's lock (the indexer writing the same file)
// before it gives up; with write-ahead logging readers never wait, so only writers meet this.
constexpr int kBusyTimeoutMilliseconds = 10'000;

// Runs the block inside BEGIN ... COMMIT unless a transaction is already open on the connection
// (a transaction block that calls another on the same queue joins the outer one).
void inTransaction(SqliteConnection& db, const std::function<void(SqliteConnection&)>& block) {
    const bool outermost = sqlite3_get_autocommit(db.handle()) != 0;
    if (outermost && !db.execute("BEGIN")) {
        block(db);  // no transaction to be had (a busy file); the statements still run one by one
        return;
    }
    block(db);
    if (outermost && !db.execute("COMMIT")) db.execute("ROLLBACK");
}

}  // namespace

VXXDatabase::VXXDatabase() : m_queue(std::make_unique<SerialQueue>("yunoqueue")) {}

VXXDatabase::~VXXDatabase() {
    m_queue.reset();  // lets queued work finish while the connection is still open
}

void VXXDatabase::openConnection() {
    m_db = SqliteConnection::open(m_dbpath, isReadonly() ? SqliteConnection::Mode::ReadOnly
                                                         : SqliteConnection::Mode::ReadWriteCreate);
    if (m_db) m_db->setBusyTimeout(kBusyTimeoutMilliseconds);
}

void VXXDatabase::initWithPath(std::string path) {
    m_version = kVersionNotRead;
    m_dbpath = std::move(path);
    onQueue([this] { openConnection(); });
    loadIfNecessary();
}

void VXXDatabase::initInMemory() { initWithPath(":memory:"); }

void VXXDatabase::onQueue(const std::function<void()>& work) {
    if (m_queue->isCurrent())
        work();
    else
        m_queue->sync(work);
}

void VXXDatabase::reopen() {
    onQueue([this] {
        m_db.reset();
        openConnection();
    });
}

void VXXDatabase::loadIfNecessary() {
    onQueue([this] {
        if (m_loaded || !m_db) return;
        m_loaded = true;
        willLoad(*m_db);
        // A read-only file cannot take a schema change; it is used as it stands.
        const auto records = isReadonly() ? std::vector<Migration>{} : migrations();
        for (size_t i = 0; i < records.size(); ++i) applyMigration(records[i], i + 1 == records.size());
        didLoad(*m_db);
    });
}

bool VXXDatabase::syncWithConnection(const std::function<void(SqliteConnection&)>& block) {
    bool ran = false;
    onQueue([&] {
        if (!m_db) return;
        block(*m_db);
        ran = true;
    });
    return ran;
}

bool VXXDatabase::syncTransaction(const std::function<void(SqliteConnection&)>& block) {
    return syncWithConnection([&](SqliteConnection& db) { inTransaction(db, block); });
}

void VXXDatabase::asyncTransaction(std::function<void(SqliteConnection&)> block) {
    m_queue->async([this, block = std::move(block)] {
        if (m_db) inTransaction(*m_db, block);
    });
}

void VXXDatabase::close() {
    onQueue([this] { m_db.reset(); });
}

bool VXXDatabase::isOpen() {
    bool open = false;
    onQueue([&] { open = m_db.has_value(); });
    return open;
}

// --- Versions ---------------------------------------------------------------------------------

int64_t VXXDatabase::readVersion() {
    if (m_version != kVersionNotRead) return m_version;
    if (!m_db || !m_db->tableExists("fvxmetadata") ||
        m_db->integerForQuery("SELECT COUNT(version) FROM fvxmetadata").value_or(0) == 0) {
        m_version = kNoVersion;
        return m_version;
    }
    // A version read from the table is not remembered: the table stays the authority.
    return m_db->integerForQuery("SELECT version FROM fvxmetadata LIMIT 1").value_or(kNoVersion);
}

int64_t VXXDatabase::version() {
    int64_t result = kNoVersion;
    onQueue([&] { result = readVersion(); });
    return result;
}

void VXXDatabase::setVersion(int64_t version, bool inDB) {
    onQueue([&] { m_version = version; });
    if (!inDB) return;
    syncWithConnection([&](SqliteConnection& db) {
        if (!db.tableExists("fvxmetadata"))
            db.execute("CREATE TABLE fvxmetadata (id INTEGER PRIMARY KEY AUTOINCREMENT, version INTEGER)");
        if (db.integerForQuery("SELECT COUNT(version) FROM fvxmetadata").value_or(0) == 0)
            db.execute("INSERT INTO fvxmetadata (version) VALUES (?)", {version});
        else
            db.execute("UPDATE fvxmetadata SET version = ?", {version});
    });
}

void VXXDatabase::applyMigration(const Migration& migration, bool setVersion) {
    if (!m_db || migration.version <= readVersion()) return;
    VX_LOG_DEBUG("storage", "migrating %s to %lld (%s)", m_dbpath.c_str(), static_cast<long long>(migration.version),
                 migration.selector.c_str());
    if (migration.perform) migration.perform(*m_db);
    if (setVersion) this->setVersion(migration.version, true);
}

size_t VXXDatabase::executeEach(SqliteConnection& db, const std::vector<std::string_view>& statements) {
    size_t succeeded = 0;
    for (auto statement : statements)
        if (db.execute(statement)) ++succeeded;
    return succeeded;
}

// --- Merging ----------------------------------------------------------------------------------

void VXXDatabase::mergeOutOf(VXXDatabase& other) {
    const std::string otherPath = other.dbpath();
    other.close();  // closed first, so that everything it wrote is in its file when it is attached
    syncWithConnection([&](SqliteConnection& db) {
        std::random_device random;
        const std::string alias = "bkup" + std::to_string(static_cast<unsigned>(random()));
        if (!db.attach(otherPath, alias)) return;
        for (const auto& table : tables())
            db.execute("INSERT INTO main." + table + " SELECT * FROM " + alias + "." + table);
        db.detach(alias);
    });
    if (otherPath != ":memory:" && !otherPath.empty()) ::unlink(otherPath.c_str());
}

}  // namespace vx
