// VXXDatabase: the base of every SQLite database object (a project's symbol index, a library
// database, the project store). It owns one connection and a private serial queue on which every
// statement for that connection runs, and it brings the file's schema up to date with versioned
// migrations recorded in the table `fvxmetadata`.
//
// A subclass says what it is by overriding `tables` (what `mergeOutOf` copies), `migrations`,
// `isReadonly`, `willLoad` and `didLoad`, and opens itself at the end of its own constructor:
//
//     class StoreDatabase final : public VXXDatabase {
//     public:
//         explicit StoreDatabase(std::string path) { initWithPath(std::move(path)); }
//         std::vector<Migration> migrations() override {
//             return {{0, "baseMigration", [this](SqliteConnection& db) { baseMigration(db); }}};
//         }
//     };
//
// (The base cannot open from its own constructor: the overrides are not reachable yet there.)
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dispatch.hpp"
#include "storage/sqlite.hpp"

namespace vx {

class VXXDatabase {
public:
    // One step of the schema: performed once, when the file's version is below `version`.
    struct Migration {
        int64_t version = 0;
        std::string selector;  // the name of the operation, kept for diagnostics
        std::function<void(SqliteConnection&)> perform;
    };

    static constexpr int64_t kVersionNotRead = -2;
    static constexpr int64_t kNoVersion = -1;

    virtual ~VXXDatabase();
    VXXDatabase(const VXXDatabase&) = delete;
    VXXDatabase& operator=(const VXXDatabase&) = delete;

    // --- What a subclass says about itself ----------------------------------------------------
    virtual std::vector<std::string> tables() const { return {}; }
    virtual std::vector<Migration> migrations() { return {}; }
    virtual bool isReadonly() const { return false; }
    virtual void willLoad(SqliteConnection&) {}
    virtual void didLoad(SqliteConnection&) {}

    // --- Use ------------------------------------------------------------------------------------
    // Runs the block with the connection on this database's queue inside one transaction and
    // waits for it. Without a connection the block is not run (and false is answered).
    bool syncTransaction(const std::function<void(SqliteConnection&)>& block);
    // The same without waiting.
    void asyncTransaction(std::function<void(SqliteConnection&)> block);
    // Runs the block on the queue without a transaction around it (statements that cannot run
    // inside one, such as VACUUM or ATTACH, or reads that want no snapshot).
    bool syncWithConnection(const std::function<void(SqliteConnection&)>& block);

    // Copies the rows of every table in `tables` out of `other` into this database, then closes
    // `other` and removes its file. A table whose rows collide with rows already here is skipped
    // (its statement fails as a whole); the others are still copied.
    void mergeOutOf(VXXDatabase& other);

    // The schema version: -1 for a file without a version row (remembered), else the stored one.
    int64_t version();
    // Remembers the version and, when asked, writes it into `fvxmetadata`.
    void setVersion(int64_t version, bool inDB);
    // Performs the migration when its version is above the current one and then, when asked,
    // records its version. Must run on the queue.
    void applyMigration(const Migration& migration, bool setVersion);

    // Closes the connection (on the queue); later transactions do nothing.
    void close();
    bool isOpen();

    // Runs the statements one by one; a failing statement is logged and does not stop the later
    // ones. Answers how many succeeded.
    static size_t executeEach(SqliteConnection& db, const std::vector<std::string_view>& statements);

    const std::string& dbpath() const { return m_dbpath; }
    SerialQueue& queue() { return *m_queue; }

protected:
    VXXDatabase();
    // Opens the file (read-only when `isReadonly`) and loads it; subclasses call this last in
    // their constructors. A file that cannot be opened leaves the object without a connection,
    // which reads as an empty database.
    void initWithPath(std::string path);
    // A private in-memory database, loaded the same way.
    void initInMemory();
    // Runs willLoad, every migration in order and didLoad, once.
    void loadIfNecessary();
    // Reopens the same file (library databases do this after a download replaced it).
    void reopen();

    // Only on the queue.
    SqliteConnection* connection() { return m_db ? &*m_db : nullptr; }

private:
    int64_t readVersion();
    void openConnection();
    // Runs the work on the queue and waits; directly when already on it.
    void onQueue(const std::function<void()>& work);

    std::unique_ptr<SerialQueue> m_queue;
    std::optional<SqliteConnection> m_db;
    std::string m_dbpath;
    int64_t m_version = kVersionNotRead;
    bool m_loaded = false;
};

}  // namespace vx
