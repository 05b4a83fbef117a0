#include "storage/database.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>

#include "support/temp_dir.hpp"

namespace vx {
namespace {

// A database whose schema is given by the test: version → statements, plus a log of what ran.
class ScriptedDatabase final : public VXXDatabase {
public:
    using Script = std::vector<std::pair<int64_t, std::vector<std::string_view>>>;
    ScriptedDatabase(std::string path, Script script, std::vector<std::string> tableNames = {}, bool readonly = false)
        : m_script(std::move(script)), m_tables(std::move(tableNames)), m_readonly(readonly) {
        initWithPath(std::move(path));
    }
    std::vector<std::string> tables() const override { return m_tables; }
    bool isReadonly() const override { return m_readonly; }
    void willLoad(SqliteConnection&) override { events.push_back("willLoad"); }
    void didLoad(SqliteConnection&) override { events.push_back("didLoad"); }
    std::vector<Migration> migrations() override {
        std::vector<Migration> records;
        for (const auto& [version, statements] : m_script)
            records.push_back({version, "step" + std::to_string(version), [this, version, statements](SqliteConnection& db) {
                                   events.push_back("migrate " + std::to_string(version));
                                   executeEach(db, statements);
                               }});
        return records;
    }

    std::vector<std::string> events;

private:
    Script m_script;
    std::vector<std::string> m_tables;
    bool m_readonly;
};

int64_t count(VXXDatabase& db, const std::string& sql) {
    int64_t n = -1;
    db.syncTransaction([&](SqliteConnection& c) { n = c.integerForQuery(sql).value_or(-1); });
    return n;
}

TEST(VXXDatabase, MigrationsRunOnceInOrderAndRecordTheLastVersion) {
    test::TempDir dir;
    const std::string path = dir.path() + "/s.db";
    const ScriptedDatabase::Script v0 = {{0, {"CREATE TABLE a (x)", "CREATE TABLE a (y)", "CREATE TABLE b (x)"}}};
    {
        ScriptedDatabase db(path, v0);
        EXPECT_EQ(db.events, (std::vector<std::string>{"willLoad", "migrate 0", "didLoad"}));
        EXPECT_EQ(db.version(), 0);
        // The failing second statement did not stop the third.
        EXPECT_EQ(count(db, "SELECT COUNT(*) FROM sqlite_master WHERE name IN ('a', 'b')"), 2);
        EXPECT_EQ(count(db, "SELECT COUNT(*) FROM fvxmetadata"), 1);
    }
    {
        ScriptedDatabase again(path, v0);
        EXPECT_EQ(again.events, (std::vector<std::string>{"willLoad", "didLoad"}));
    }
    // A later version adds only its own step; only the last record writes the version, once.
    ScriptedDatabase later(path, {{0, {"CREATE TABLE c (x)"}}, {1, {"CREATE TABLE d (x)"}}, {2, {"CREATE TABLE e (x)"}}});
    EXPECT_EQ(later.events, (std::vector<std::string>{"willLoad", "migrate 1", "migrate 2", "didLoad"}));
    EXPECT_EQ(later.version(), 2);
    EXPECT_EQ(count(later, "SELECT COUNT(*) FROM sqlite_master WHERE name = 'c'"), 0);
    EXPECT_EQ(count(later, "SELECT COUNT(*) FROM fvxmetadata"), 1);
}

TEST(VXXDatabase, VersionOfFilesWithoutMetadata) {
    test::TempDir dir;
    ScriptedDatabase empty(dir.path() + "/e.db", {});
    EXPECT_EQ(empty.version(), -1);
    empty.syncTransaction([](SqliteConnection& db) { db.execute("CREATE TABLE fvxmetadata (id INTEGER PRIMARY KEY AUTOINCREMENT, version INTEGER)"); });
    EXPECT_EQ(empty.version(), -1);  // an empty table reads as no version, and that is remembered
    empty.setVersion(5, true);
    EXPECT_EQ(empty.version(), 5);
    empty.setVersion(6, true);
    EXPECT_EQ(count(empty, "SELECT version FROM fvxmetadata"), 6);
    EXPECT_EQ(count(empty, "SELECT COUNT(*) FROM fvxmetadata"), 1);
}

TEST(VXXDatabase, UnopenableAndReadOnlyFiles) {
    test::TempDir dir;
    ScriptedDatabase missing(dir.path() + "/nowhere/x.db", {{0, {"CREATE TABLE a (x)"}}});
    EXPECT_FALSE(missing.isOpen());
    EXPECT_TRUE(missing.events.empty());  // nothing loads without a connection
    EXPECT_FALSE(missing.syncTransaction([](SqliteConnection&) { ADD_FAILURE() << "ran without a connection"; }));
    EXPECT_EQ(missing.version(), -1);

    const std::string path = dir.path() + "/r.db";
    { ScriptedDatabase writable(path, {{0, {"CREATE TABLE a (x)"}}}); }
    ScriptedDatabase readonly(path, {{1, {"CREATE TABLE b (x)"}}}, {}, true);
    ASSERT_TRUE(readonly.isOpen());
    EXPECT_EQ(count(readonly, "SELECT COUNT(*) FROM sqlite_master WHERE name = 'b'"), 0);
    EXPECT_EQ(readonly.version(), 0);
}

TEST(VXXDatabase, TransactionsRunOnTheQueueInOrder) {
    test::TempDir dir;
    ScriptedDatabase db(dir.path() + "/t.db", {{0, {"CREATE TABLE n (v INTEGER)"}}});
    for (int i = 0; i < 20; ++i)
        db.asyncTransaction([i](SqliteConnection& c) { c.execute("INSERT INTO n VALUES (?)", {i}); });
    // A transaction inside a transaction joins it instead of waiting for itself.
    db.syncTransaction([&](SqliteConnection& c) {
        EXPECT_TRUE(db.queue().isCurrent());
        db.syncTransaction([](SqliteConnection& inner) { inner.execute("INSERT INTO n VALUES (20)"); });
        EXPECT_EQ(c.integerForQuery("SELECT COUNT(*) FROM n"), 21);
    });
    std::vector<int64_t> values;
    db.syncTransaction([&](SqliteConnection& c) {
        for (auto rows = c.query("SELECT v FROM n ORDER BY rowid"); rows.next();) values.push_back(rows.integer(0));
    });
    ASSERT_EQ(values.size(), 21u);
    for (size_t i = 0; i < values.size(); ++i) EXPECT_EQ(values[i], static_cast<int64_t>(i));
    db.close();
    EXPECT_FALSE(db.isOpen());
}

TEST(VXXDatabase, MergeSkipsACollidingTableAndCopiesTheOthers) {
    test::TempDir dir;
    const ScriptedDatabase::Script schema = {{0, {"CREATE TABLE p (id INTEGER PRIMARY KEY, v TEXT)", "CREATE TABLE q (id INTEGER PRIMARY KEY, v TEXT)"}}};
    ScriptedDatabase into(dir.path() + "/into.db", schema, {"p", "q"});
    auto other = std::make_unique<ScriptedDatabase>(dir.path() + "/other.db", schema, std::vector<std::string>{"p", "q"});
    into.syncTransaction([](SqliteConnection& c) { c.execute("INSERT INTO p VALUES (1, 'mine')"); });
    other->syncTransaction([](SqliteConnection& c) {
        c.execute("INSERT INTO p VALUES (1, 'theirs'), (2, 'theirs')");
        c.execute("INSERT INTO q VALUES (7, 'theirs')");
    });
    into.mergeOutOf(*other);
    EXPECT_EQ(count(into, "SELECT COUNT(*) FROM p"), 1);  // p collided on id 1: nothing of it copied
    EXPECT_EQ(count(into, "SELECT COUNT(*) FROM q"), 1);
    EXPECT_EQ(count(into, "SELECT COUNT(*) FROM pragma_database_list"), 1);  // the alias is gone
    EXPECT_FALSE(other->isOpen());
    EXPECT_FALSE(std::filesystem::exists(dir.path() + "/other.db"));
}

}  // namespace
}  // namespace vx
