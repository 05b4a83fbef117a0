#include "platform/user_defaults.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/scoped_home.hpp"

namespace vx {
namespace {

using test::ScopedHome;

TEST(UserDefaults, ValuesPersistInTheConfigurationFolder) {
    ScopedHome home;
    auto& defaults = UserDefaults::standardUserDefaults();
    EXPECT_EQ(defaults.path(), home.dir.path() + "/defaults.plist");
    EXPECT_FALSE(defaults.objectForKey("VXTabSize"));
    EXPECT_EQ(defaults.integerForKey("VXTabSize"), 0);

    ASSERT_TRUE(defaults.setInteger("VXTabSize", 3));
    ASSERT_TRUE(defaults.setBool("VXUseSoftTabs", true));
    ASSERT_TRUE(defaults.setObject("VXSettings", PropertyValue::Dictionary{{"*", PropertyValue::Dictionary{}}}));

    UserDefaults reread(home.dir.path() + "/defaults.plist");
    EXPECT_EQ(reread.integerForKey("VXTabSize"), 3);
    EXPECT_TRUE(reread.boolForKey("VXUseSoftTabs"));
    ASSERT_TRUE(reread.objectForKey("VXSettings"));
    EXPECT_TRUE(reread.objectForKey("VXSettings")->dictionary());

    ASSERT_TRUE(defaults.removeObjectForKey("VXTabSize"));
    reread.reload();
    EXPECT_FALSE(reread.objectForKey("VXTabSize"));
}

TEST(UserDefaults, RegisteredValuesAreFallbacksAndAreNeverWritten) {
    ScopedHome home;
    UserDefaults defaults(home.dir.path() + "/defaults.plist");
    defaults.registerDefaults({{"VXTabSize", 4}, {"VXTrimTrailingWhitespaceAmount", "1"}});
    EXPECT_EQ(defaults.integerForKey("VXTabSize"), 4);
    EXPECT_EQ(defaults.integerForKey("VXTrimTrailingWhitespaceAmount"), 1);
    defaults.setInteger("VXTabSize", 2);
    EXPECT_EQ(defaults.integerForKey("VXTabSize"), 2);

    UserDefaults reread(home.dir.path() + "/defaults.plist");
    EXPECT_EQ(reread.integerForKey("VXTabSize"), 2);
    EXPECT_FALSE(reread.objectForKey("VXTrimTrailingWhitespaceAmount"));
}

TEST(UserDefaults, SharedInstanceFollowsTheHomeFolder) {
    std::string firstPath;
    {
        ScopedHome first;
        UserDefaults::standardUserDefaults().setInteger("VXTabSize", 7);
        firstPath = UserDefaults::standardUserDefaults().path();
        ScopedHome second;
        EXPECT_NE(UserDefaults::standardUserDefaults().path(), firstPath);
        EXPECT_FALSE(UserDefaults::standardUserDefaults().objectForKey("VXTabSize"));
    }
}

TEST(UserDefaults, UnwritableFolderKeepsTheValueInMemoryAndSaysSo) {
    if (::geteuid() == 0) GTEST_SKIP() << "root writes anywhere";
    ScopedHome home;
    const std::string locked = home.dir.path() + "/locked";
    ::mkdir(locked.c_str(), 0500);
    UserDefaults defaults(locked + "/defaults.plist");
    EXPECT_FALSE(defaults.setInteger("VXTabSize", 5));
    EXPECT_EQ(defaults.integerForKey("VXTabSize"), 5);
}

TEST(UserDefaults, MalformedFileReadsAsEmpty) {
    ScopedHome home;
    const std::string path = home.dir.write("defaults.plist", "<plist><array><integer>1");
    UserDefaults defaults(path);
    EXPECT_FALSE(defaults.objectForKey("anything"));
    EXPECT_TRUE(defaults.setInteger("VXTabSize", 2));
    EXPECT_EQ(UserDefaults(path).integerForKey("VXTabSize"), 2);
}

}  // namespace
}  // namespace vx
