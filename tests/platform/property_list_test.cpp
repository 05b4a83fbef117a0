#include "platform/property_list.hpp"

#include <gtest/gtest.h>

#include "support/temp_dir.hpp"

namespace vx {
namespace {

TEST(PropertyList, EveryKindSurvivesTheXMLForm) {
    PropertyValue::Dictionary inner{{"flag", true}, {"off", false}, {"negative", int64_t{-42}},
                                    {"big", int64_t{1} << 40}, {"real", 2.5}, {"text", "héllo <&>"}};
    PropertyValue::Dictionary root{
        {"inner", inner},
        {"list", PropertyValue::Array{1, "two", PropertyValue::Array{}, PropertyValue::Dictionary{}}},
        {"bytes", PropertyValue::Data{0, 1, 254, 255}},
        {"when", PropertyValue::Date{700000000.0}},  // the XML form keeps whole seconds
        {"empty", ""}};
    auto back = propertyListFromBytes(propertyListXML(root));
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, PropertyValue(root));
    EXPECT_EQ(*back->find("inner")->find("negative")->integerValue(), -42);
}

TEST(PropertyList, MalformedOrMissingInputReadsAsNothing) {
    EXPECT_FALSE(propertyListFromBytes(""));
    EXPECT_FALSE(propertyListFromBytes("<plist><dict><key>a</key>"));
    EXPECT_FALSE(propertyListFromBytes("not a property list at all"));
    EXPECT_FALSE(readPropertyListFile("/nonexistent/defaults.plist"));
}

TEST(PropertyList, FilesAreWrittenWholeAndReadBack) {
    test::TempDir dir;
    const std::string path = dir.path() + "/settings.plist";
    ASSERT_TRUE(writePropertyListFile(path, PropertyValue::Dictionary{{"VXTabSize", 3}}));
    ASSERT_TRUE(writePropertyListFile(path, PropertyValue::Dictionary{{"VXTabSize", 8}}));
    auto back = readPropertyListFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->find("VXTabSize")->integerValue(), 8);
    EXPECT_FALSE(writePropertyListFile(dir.path() + "/missing/folder/x.plist", PropertyValue::Dictionary{}));
}

TEST(PropertyValue, LenientReadingsConvertBetweenKinds) {
    struct Case {
        PropertyValue value;
        std::optional<int64_t> integer;
        std::optional<bool> flag;
    };
    const Case cases[] = {
        {true, 1, true},           {int64_t{0}, 0, false},  {3.9, 3, true},       {"12", 12, true},
        {"-3", -3, true},          {"YES", 1, true},        {"false", 0, false},  {"words", std::nullopt, std::nullopt},
        {PropertyValue(), std::nullopt, std::nullopt},      {PropertyValue::Array{}, std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value.integerValue(), c.integer) << propertyListXML(c.value);
        EXPECT_EQ(c.value.boolValue(), c.flag) << propertyListXML(c.value);
    }
    EXPECT_DOUBLE_EQ(*PropertyValue("2.25").doubleValue(), 2.25);
    EXPECT_EQ(PropertyValue(5).find("x"), nullptr);
}

}  // namespace
}  // namespace vx
