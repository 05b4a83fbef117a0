// Settings contexts kept in property-list files and in the user defaults.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/file_cache.hpp"
#include "platform/run_loop.hpp"
#include "platform/user_defaults.hpp"
#include "settings/settings_context.hpp"
#include "settings/user_defaults_settings_context.hpp"
#include "support/temp_dir.hpp"

using namespace vx;
using Dictionary = VXSettingsContext::Dictionary;

namespace {

const Dictionary kRuby{{"__language__", "source.ruby"}};
const Dictionary kRb{{"__extension__", "rb"}};

// A context with one stratum of each level, user and registered, and values of several kinds.
void fill(VXSettingsContext& c) {
    c.setValue(int64_t{2}, "VXTabSize", 2, &kRb);
    c.setValue(true, "VXUseSoftTabs", 1, &kRuby);
    c.setRegisteredValue(int64_t{-1}, "VXTabSize", 0, nullptr);
    c.setValue(PropertyValue::Array{"a", 2.5}, "list", 0, nullptr);
}

TEST(SettingsFile, RoundTripThroughAPropertyListFile) {
    test::TempDir dir;
    const std::string path = dir.path() + "/settings.plist";
    VXSettingsContext c;
    EXPECT_FALSE(c.serializeToURL(path));  // nothing to write
    EXPECT_FALSE(std::filesystem::exists(path));

    fill(c);
    ASSERT_TRUE(c.serializeToURL(path));
    std::string xml = *readWholeFile(path);
    EXPECT_NE(xml.find("<key>__strata__</key>"), std::string::npos);

    VXSettingsContext loaded(path, false);
    EXPECT_EQ(loaded.strata(), c.strata());
    EXPECT_EQ(loaded.valueForKey("VXTabSize", 0, nullptr), PropertyValue(-1));

    // A file-backed context writes itself back to its own file.
    loaded.setValue(int64_t{3}, "VXTabSize", 2, &kRb);
    EXPECT_TRUE(loaded.write());
    EXPECT_FALSE(loaded.hasChanged());
    VXSettingsContext again(path, false);
    EXPECT_EQ(again.valueForKey("VXTabSize", 2, &kRb), PropertyValue(3));
    // Reloading drops what was not written.
    again.setValue(int64_t{5}, "VXTabSize", 2, &kRb);
    again.load();
    EXPECT_EQ(again.valueForKey("VXTabSize", 2, &kRb), PropertyValue(3));

    // Missing, malformed and non-dictionary files give empty contexts.
    EXPECT_TRUE(VXSettingsContext(dir.path() + "/missing.plist", false).strata().empty());
    EXPECT_TRUE(VXSettingsContext(dir.write("bad.plist", "<plist><dict><key>"), false).strata().empty());
    VXSettingsContext fromArray(dir.write("array.plist", propertyListXML(PropertyValue::Array{1})), false);
    EXPECT_TRUE(fromArray.strata().empty());
    EXPECT_FALSE(fromArray.write());  // nothing to write
}

TEST(SettingsFile, LazyContextTouchesNoFileBeforeFirstAccess) {
    test::TempDir dir;
    const std::string path = dir.path() + "/lazy.plist";
    VXSettingsContext lazy(path, true);
    EXPECT_FALSE(lazy.isLoaded());

    // The file appears only after construction: a lazy context must still see it.
    VXSettingsContext writer;
    fill(writer);
    ASSERT_TRUE(writer.serializeToURL(path));
    EXPECT_FALSE(lazy.isLoaded());
    EXPECT_EQ(lazy.valueForKey("VXUseSoftTabs", 1, &kRuby), PropertyValue(true));
    EXPECT_TRUE(lazy.isLoaded());

    // Once loaded it keeps what it read, even if the file goes away.
    std::filesystem::remove(path);
    EXPECT_EQ(lazy.strata().size(), writer.strata().size());
}

TEST(SettingsFile, PeriodicWriterWritesOnlyWhatChanged) {
    test::TempDir dir;
    const std::string path = dir.path() + "/pulse.plist";
    VXSettingsContext c(path, false);
    EXPECT_TRUE(c.isPulsing());
    c.startPeriodicWriter(std::chrono::milliseconds(5));
    auto& loop = RunLoop::current();

    c.setValue(int64_t{7}, "VXTabSize", 0, nullptr);
    EXPECT_TRUE(loop.runUntil([&] { return !c.hasChanged(); }, std::chrono::milliseconds(2000)));
    EXPECT_EQ(VXSettingsContext(path, false).valueForKey("VXTabSize"), PropertyValue(7));

    // Unchanged since: the writer leaves the file alone (it does not come back once removed).
    std::filesystem::remove(path);
    loop.runUntil([] { return false; }, std::chrono::milliseconds(30));
    EXPECT_FALSE(std::filesystem::exists(path));
    c.setValue(int64_t{7}, "VXTabSize", 0, nullptr);  // setting a value, even the same, is a change
    EXPECT_TRUE(loop.runUntil([&] { return std::filesystem::exists(path); }, std::chrono::milliseconds(2000)));

    c.stopPeriodicWriter();
    EXPECT_FALSE(c.isPulsing());
    c.setValue(int64_t{8}, "VXTabSize", 0, nullptr);
    loop.runUntil([] { return false; }, std::chrono::milliseconds(30));
    EXPECT_TRUE(c.hasChanged());
    EXPECT_EQ(VXSettingsContext(path, false).valueForKey("VXTabSize"), PropertyValue(7));
}

TEST(SettingsUserDefaults, RoundTripThroughTheDefaults) {
    test::TempDir dir;
    const std::string path = dir.path() + "/defaults.plist";
    {
        UserDefaults defaults(path);
        VXUserDefaultsSettingsContext c(defaults);
        EXPECT_TRUE(c.strata().empty());
        fill(c);
        ASSERT_TRUE(c.write());
        // Stored under "VXSettings" in the serialized form.
        auto stored = defaults.objectForKey("VXSettings");
        ASSERT_TRUE(stored && stored->find("__strata__"));
        EXPECT_EQ(*stored->find("__strata__")->array(), c.strata());
    }
    UserDefaults reread(path);
    VXUserDefaultsSettingsContext c(reread);
    EXPECT_EQ(c.valueForKey("VXTabSize", 2, &kRb), PropertyValue(2));
    EXPECT_EQ(c.valueForKey("list"), PropertyValue(PropertyValue::Array{"a", 2.5}));

    // A value of the wrong shape under the key reads as an empty context.
    reread.setObject("VXSettings", PropertyValue("not a dictionary"));
    c.load();
    EXPECT_TRUE(c.strata().empty());
}

}  // namespace
