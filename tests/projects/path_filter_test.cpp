#include <gtest/gtest.h>

#include "projects/path_filter.hpp"

namespace vx {
namespace {

bool good(std::string_view lowerPath) {
    std::vector<std::string_view> components;
    return pathIsGood(lowerPath, components);
}

TEST(PathFilter, EveryTableRejectsWhatItNames) {
    const std::pair<std::string_view, bool> cases[] = {
        // extensions, the odd ones included
        {"a.o", false}, {"lib/x.so", false}, {"x.pyc", false}, {"cargo.lock", false}, {".x.swp", false},
        {"a.out", false}, {"a.tmp", false}, {"f.classdescription", false}, {"p.mode1v3", false},
        {"icon.png", false}, {"a.jpeg", false}, {"a.7z", false}, {"a.oo", true}, {"a.c", true}, {"o", true},
        // file names, including ".ds_stor" and the bare "ico"
        {".ds_store", false}, {"x/.ds_stor", false}, {"thumbs.db", false}, {"ehthumbs.db", false},
        {"ico", false}, {"icon", false}, {"icons", true}, {"thumbs.dbx", true},
        // project bundles: the bundle passes, what is inside does not
        {"foo.xcodeproj", true}, {"foo.xcodeproj/project.pbx", false}, {"a/b.vxproj/c/d", false},
        {"x.nbproject/y", false}, {"x.tmproj", true},
        // exact folder names, the last component too
        {"node_modules/a/b.js", false}, {".git/config", false}, {"build/out.c", false}, {"src/build", false},
        {"log", false}, {"tmp", false}, {"a/cvs/x", false}, {"autom4te.cache/x", false}, {"builds/x", true},
        {"buildx", true}, {".github/ci.yml", true}, {"_build", false},
        // substrings of components
        {"a~.nib/x", false}, {"foo~.plst", false}, {"x~.dep.c", false}, {"a~.ni/x", true},
    };
    for (auto [path, want] : cases) EXPECT_EQ(good(path), want) << path;
}

TEST(PathFilter, HandsBackTheComponentsAndReadsExtensions) {
    std::vector<std::string_view> components;
    ASSERT_TRUE(pathIsGood("src/ui/view.c", components));
    EXPECT_EQ(components, (std::vector<std::string_view>{"src", "ui", "view.c"}));
    splitPathComponents("/a//b/", components);
    EXPECT_EQ(components, (std::vector<std::string_view>{"a", "b"}));

    EXPECT_EQ(pathExtension("a.tar.gz"), "gz");
    EXPECT_EQ(pathExtension(".profile"), "");  // a hidden name, not a type
    EXPECT_EQ(pathExtension(".a.lock"), "lock");
    EXPECT_EQ(pathExtension("make"), "");
    EXPECT_EQ(pathExtension("trailing."), "");
    EXPECT_TRUE(good(".lock"));  // its dot starts the name
}

}  // namespace
}  // namespace vx
