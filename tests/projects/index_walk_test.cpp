#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "projects/path_index.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

std::vector<std::string> paths(const path_collection& collection) {
    std::vector<std::string> out;
    for (const auto& item : collection.items) out.emplace_back(item.path());
    std::sort(out.begin(), out.end());
    return out;
}

std::vector<std::string> build(const std::string& root, bool directories, bool honorIgnoreFiles = true) {
    path_collection collection;
    VXBuildQuickOpenIndexInto(root, collection, {directories, honorIgnoreFiles});
    return paths(collection);
}

class IndexWalk : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* file : {"src/View.c", "src/main.c", "README", "node_modules/lib/a.js", ".git/config",
                                 "build/out.c", "Foo.xcodeproj/project.pbxproj", "Foo.xcodeproj/inner/x.c", "log",
                                 "docs/tmp", "Cargo.lock", ".x.swp", "Thumbs.db", "Art~.nib/a.c", "pic.PNG",
                                 "real/deep/file.txt"})
            dir.write(file, "x");
        std::filesystem::create_directories(dir.path() + "/empty");
        std::filesystem::create_directory_symlink(dir.path() + "/real", dir.path() + "/linked");
        std::filesystem::create_symlink(dir.path() + "/README", dir.path() + "/readme-link");
        std::filesystem::create_symlink(dir.path() + "/nowhere", dir.path() + "/dangling");
    }
    test::TempDir dir;
};

TEST_F(IndexWalk, FilesIndexKeepsOnlyGoodPathsAndNeverEntersLinks) {
    EXPECT_EQ(build(dir.path(), false),
              (std::vector<std::string>{"README", "dangling", "readme-link", "real/deep/file.txt", "src/View.c", "src/main.c"}));
}

TEST_F(IndexWalk, FoldersIndexListsBundlesAndLinkedFoldersButNothingBelowLinks) {
    EXPECT_EQ(build(dir.path(), true),
              (std::vector<std::string>{"Foo.xcodeproj", "docs", "empty", "linked", "real", "real/deep", "src"}));
}

TEST_F(IndexWalk, IgnoreFilesLeaveOutWhatTheyNameUnlessSwitchedOff) {
    dir.write(".gitignore", "*.c\n!main.c\ngenerated/\n");
    dir.write("generated/g.h", "x");
    dir.write("real/.gitignore", "deep/\n");
    dir.write(".git/info/exclude", "README\n");
    EXPECT_EQ(build(dir.path(), false),
              (std::vector<std::string>{".gitignore", "dangling", "readme-link", "real/.gitignore", "src/main.c"}));
    EXPECT_EQ(build(dir.path(), true), (std::vector<std::string>{"Foo.xcodeproj", "docs", "empty", "linked", "real", "src"}));
    const auto all = build(dir.path(), false, false);
    EXPECT_TRUE(std::count(all.begin(), all.end(), "generated/g.h") == 1 && all.size() == 9) << all.size();
}

TEST(IndexStorage, ItemsKeepBothCasesAndCountComponents) {
    path_collection collection;
    for (int i = 0; i < 3000; ++i) {  // more than one block of text
        const std::string path = "Dir" + std::to_string(i) + "/" + std::string(400, 'X') + ".Cpp";
        collection.add(path, lowercasePath(path), 2);
    }
    const std::string longPath(2 << 20, 'L');  // longer than a block
    collection.add(longPath, lowercasePath(longPath), 1);
    ASSERT_EQ(collection.items.size(), 3001u);
    EXPECT_EQ(collection.items[2999].path(), "Dir2999/" + std::string(400, 'X') + ".Cpp");
    EXPECT_EQ(collection.items[2999].lower(), "dir2999/" + std::string(400, 'x') + ".cpp");
    EXPECT_EQ(collection.items[0].path().substr(0, 5), "Dir0/");
    EXPECT_EQ(collection.items[3000].lower(), std::string(2 << 20, 'l'));
    EXPECT_EQ(lowercasePath("ÄÖÜ/Straße/İ"), "äöü/straße/i̇");  // Unicode's mapping; İ grows a byte

    std::vector<std::string_view> seen;
    ReverseComponents components("a/bc//d/");
    for (std::string_view c; components.next(c);) seen.push_back(c);
    EXPECT_EQ(seen, (std::vector<std::string_view>{"d", "bc", "a"}));
}

}  // namespace
}  // namespace vx
