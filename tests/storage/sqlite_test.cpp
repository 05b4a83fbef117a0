#include "storage/sqlite.hpp"

#include <gtest/gtest.h>

#include "support/temp_dir.hpp"

namespace vx {
namespace {

TEST(SqliteConnection, BoundValuesRoundTripThroughEveryType) {
    auto db = SqliteConnection::open(":memory:");
    ASSERT_TRUE(db);
    ASSERT_TRUE(db->execute("CREATE TABLE t (a, b, c, d, e)"));
    const std::string withNul("x\0y", 3);
    ASSERT_TRUE(db->execute("INSERT INTO t VALUES (?, ?, ?, ?, ?)",
                            {int64_t{1} << 40, 2.5, std::string("héllo"), SqlBlob{withNul}, nullptr}));
    auto rows = db->query("SELECT a, b, c, d, e FROM t");
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.integer(0), int64_t{1} << 40);
    EXPECT_DOUBLE_EQ(rows.real(1), 2.5);
    EXPECT_EQ(rows.text(2), "héllo");
    EXPECT_EQ(std::get<SqlBlob>(rows.value(3)).bytes, withNul);
    EXPECT_TRUE(rows.isNull(4));
    EXPECT_EQ(rows.columnIndex("c"), 2);
    EXPECT_EQ(rows.columnIndex("zz"), -1);
    EXPECT_FALSE(rows.next());
    EXPECT_EQ(db->lastInsertRowId(), 1);
}

TEST(SqliteConnection, FailuresAreQuietAndLeaveTheConnectionUsable) {
    auto db = SqliteConnection::open(":memory:");
    ASSERT_TRUE(db);
    EXPECT_FALSE(db->execute("CREATE TABLE"));
    EXPECT_FALSE(db->lastError().empty());
    EXPECT_FALSE(db->query("SELECT * FROM missing").next());
    EXPECT_FALSE(db->integerForQuery("SELECT * FROM missing"));
    // Too few or too many arguments is a failure, not a silently unbound NULL.
    ASSERT_TRUE(db->execute("CREATE TABLE t (a)"));
    EXPECT_FALSE(db->execute("INSERT INTO t VALUES (?)"));
    EXPECT_FALSE(db->execute("INSERT INTO t VALUES (?)", {1, 2}));
    EXPECT_EQ(db->integerForQuery("SELECT COUNT(*) FROM t"), 0);
    EXPECT_TRUE(db->tableExists("t"));
    EXPECT_TRUE(db->tableExists("T"));
    EXPECT_FALSE(db->tableExists("u"));
}

TEST(SqliteConnection, ReadOnlyOpenRefusesWritesAndMissingFiles) {
    test::TempDir dir;
    const std::string path = dir.path() + "/a.db";
    EXPECT_FALSE(SqliteConnection::openReadOnly(path));  // read-only never creates
    {
        auto db = SqliteConnection::open(path);
        ASSERT_TRUE(db);
        ASSERT_TRUE(db->execute("CREATE TABLE t (a)"));
    }
    auto db = SqliteConnection::openReadOnly(path);
    ASSERT_TRUE(db);
    EXPECT_TRUE(db->tableExists("t"));
    EXPECT_FALSE(db->execute("INSERT INTO t VALUES (1)"));
    EXPECT_FALSE(SqliteConnection::open(dir.path() + "/no/such/folder/b.db"));
}

TEST(SqliteConnection, CustomFunctionsAndAttachedDatabases) {
    test::TempDir dir;
    const std::string other = dir.path() + "/other.db";
    {
        auto db = SqliteConnection::open(other);
        ASSERT_TRUE(db);
        ASSERT_TRUE(db->execute("CREATE TABLE names (n TEXT)"));
        ASSERT_TRUE(db->execute("INSERT INTO names VALUES ('Ab'), ('cD')"));
    }
    auto db = SqliteConnection::open(":memory:");
    ASSERT_TRUE(db);
    ASSERT_TRUE(db->createFunction("swapcase", 1, [](const std::vector<SqlValue>& arguments) -> SqlValue {
        auto text = std::get<std::string>(arguments[0]);
        for (char& c : text) c = std::isupper(static_cast<unsigned char>(c)) ? char(std::tolower(c)) : char(std::toupper(c));
        return text;
    }));
    ASSERT_TRUE(db->attach(other, "side"));
    std::vector<std::string> names;
    for (auto rows = db->query("SELECT swapcase(n) FROM side.names ORDER BY n"); rows.next();) names.push_back(rows.text(0));
    EXPECT_EQ(names, (std::vector<std::string>{"aB", "Cd"}));
    ASSERT_TRUE(db->detach("side"));
    EXPECT_FALSE(db->query("SELECT * FROM side.names").next());
}

}  // namespace
}  // namespace vx

namespace vx {
namespace {

TEST(SqlitePrepared, RunsManyTimesAndReportsBadArguments) {
    auto db = SqliteConnection::open(":memory:");
    ASSERT_TRUE(db);
    ASSERT_TRUE(db->execute("CREATE TABLE t (a INTEGER UNIQUE)"));
    auto insert = db->prepared("INSERT INTO t VALUES (?)");
    ASSERT_TRUE(insert.valid());
    for (int64_t i = 0; i < 5; ++i) EXPECT_TRUE(insert.execute({i}));
    EXPECT_FALSE(insert.execute({int64_t{3}}));  // the constraint fails; the statement stays usable
    EXPECT_TRUE(insert.execute({int64_t{9}}));
    EXPECT_FALSE(insert.execute({}));
    auto select = db->prepared("SELECT a FROM t WHERE a > ? ORDER BY a");
    std::vector<int64_t> seen;
    for (auto* rows = select.query({int64_t{2}}); rows->next();) seen.push_back(rows->integer(0));
    EXPECT_EQ(seen, (std::vector<int64_t>{3, 4, 9}));
    seen.clear();
    for (auto* rows = select.query({int64_t{4}}); rows->next();) seen.push_back(rows->integer(0));
    EXPECT_EQ(seen, (std::vector<int64_t>{9}));
    EXPECT_FALSE(db->prepared("SELEKT").valid());
}

}  // namespace
}  // namespace vx
