// Strata order, lookups and changes of a settings context.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "settings/settings_context.hpp"

using vx::PropertyValue;
using vx::VXSettingsContext;
using Dictionary = VXSettingsContext::Dictionary;

namespace {

const Dictionary kRuby{{"__language__", "source.ruby"}};
const Dictionary kPython{{"__language__", "source.python"}};
const Dictionary kGo{{"__language__", "source.go"}};
const Dictionary kRb{{"__extension__", "rb"}};

// Each stratum as "<level><u|r>:<the value of key "id">", in order.
std::vector<std::string> layout(VXSettingsContext& context) {
    std::vector<std::string> out;
    for (const PropertyValue& stratum : context.strata()) {
        std::string entry = std::to_string(*stratum.find("__stratum__")->integerValue());
        entry += *stratum.find("__is_registered__")->boolValue() ? "r" : "u";
        const PropertyValue* id = stratum.find("id");
        entry += ":" + (id && id->string() ? *id->string() : std::string("-"));
        out.push_back(entry);
    }
    return out;
}

using Layout = std::vector<std::string>;

TEST(SettingsContext, StrataOrder) {
    {
        // Most specific level first, whatever order they were set in.
        VXSettingsContext c;
        c.setValue("g", "id", 0, nullptr);
        c.setValue("ruby", "id", 1, &kRuby);
        c.setValue("rb", "id", 2, &kRb);
        EXPECT_EQ(layout(c), (Layout{"2u:rb", "1u:ruby", "0u:g"}));
    }
    {
        // A new stratum goes right behind the first of its level, not behind the last.
        VXSettingsContext c;
        c.setValue("ruby", "id", 1, &kRuby);
        c.setValue("python", "id", 1, &kPython);
        c.setValue("go", "id", 1, &kGo);
        c.setValue("g", "id", 0, nullptr);
        EXPECT_EQ(layout(c), (Layout{"1u:ruby", "1u:go", "1u:python", "0u:g"}));
    }
    {
        // A user stratum goes in front of a registered first one; a registered one never does.
        VXSettingsContext c;
        c.setRegisteredValue("default", "id", 0, nullptr);
        c.setValue("user", "id", 0, nullptr);
        c.setRegisteredValue("ruby default", "id", 1, &kRuby);
        c.setRegisteredValue("python default", "id", 1, &kPython);
        c.setValue("ruby", "id", 1, &kRuby);
        EXPECT_EQ(layout(c), (Layout{"1u:ruby", "1r:ruby default", "1r:python default", "0u:user", "0r:default"}));
        // Behind a user first stratum, even a user stratum only follows it.
        c.setValue("go", "id", 1, &kGo);
        EXPECT_EQ(layout(c)[1], "1u:go");
    }
}

TEST(SettingsContext, LookupsAndReplacement) {
    VXSettingsContext c;
    EXPECT_FALSE(c.hasChanged());
    EXPECT_EQ(c.valueForKey("VXTabSize"), std::nullopt);

    // Without a context, any stratum answers: here a language stratum of another language.
    c.setValue(int64_t{2}, "VXTabSize", 1, &kRuby);
    EXPECT_TRUE(c.hasChanged());
    EXPECT_EQ(c.valueForKey("VXTabSize"), PropertyValue(2));
    EXPECT_EQ(c.valueForKey("VXTabSize", 1, &kPython), std::nullopt);
    EXPECT_EQ(c.valueForKey("VXTabSize", 0, nullptr), std::nullopt);
    EXPECT_EQ(c.valueForKey("VXTabSize", 1, &kRuby), PropertyValue(2));

    // Setting the same key at the same level and context replaces the value in place.
    c.setValue(int64_t{3}, "VXTabSize", 1, &kRuby);
    c.setValue(true, "VXUseSoftTabs", 1, &kRuby);
    EXPECT_EQ(c.strata().size(), 1u);
    EXPECT_EQ(c.valueForKey("VXTabSize", 1, &kRuby), PropertyValue(3));

    // An empty context dictionary and no context are the same thing.
    const Dictionary empty;
    c.setValue(int64_t{8}, "VXTabSize", 0, &empty);
    EXPECT_EQ(c.valueForKey("VXTabSize", 0, nullptr), PropertyValue(8));
    // The language stratum comes first in order, so it answers the context-free lookup.
    EXPECT_EQ(c.valueForKey("VXTabSize"), PropertyValue(3));

    // A registered default and a user value of one level and context live in separate strata;
    // the user's comes first.
    c.setRegisteredValue(int64_t{4}, "VXTabSize", 0, nullptr);
    c.setValue(int64_t{6}, "VXTabSize", 0, nullptr);
    EXPECT_EQ(c.strata().size(), 3u);
    EXPECT_EQ(c.valueForKey("VXTabSize", 0, nullptr), PropertyValue(6));

    // The reserved keys are no settings: they can neither be read nor overwritten as one.
    c.setValue(int64_t{0}, "__stratum__", 1, &kRuby);
    EXPECT_EQ(c.valueForKey("__stratum__", 1, &kRuby), std::nullopt);
    EXPECT_EQ(c.valueForKey("__context__"), std::nullopt);
    EXPECT_EQ(c.valueForKey("VXUseSoftTabs", 1, &kRuby), PropertyValue(true));
}

TEST(SettingsContext, SerializedRepresentation) {
    VXSettingsContext c;
    EXPECT_FALSE(c.loadFromSerializedRepresentation({}));

    c.setValue("x", "id", 2, &kRb);
    Dictionary serialized = c.serialize();
    ASSERT_EQ(serialized.size(), 1u);
    ASSERT_TRUE(serialized.at("__strata__").array());
    const PropertyValue& stratum = serialized.at("__strata__").array()->front();
    EXPECT_EQ(*stratum.find("__context__"), PropertyValue(kRb));
    EXPECT_EQ(*stratum.find("__is_registered__"), PropertyValue(false));

    // An empty dictionary changes nothing; one without strata (or with junk there) empties.
    EXPECT_FALSE(c.loadFromSerializedRepresentation({}));
    EXPECT_EQ(c.strata().size(), 1u);
    EXPECT_TRUE(c.loadFromSerializedRepresentation({{"__strata__", "junk"}}));
    EXPECT_TRUE(c.strata().empty());

    VXSettingsContext other;
    EXPECT_TRUE(other.loadFromSerializedRepresentation(serialized));
    EXPECT_EQ(other.valueForKey("id", 2, &kRb), PropertyValue("x"));
    // Strata that are no dictionaries (a hand-edited file) are passed over.
    EXPECT_TRUE(other.loadFromSerializedRepresentation(
        {{"__strata__", PropertyValue::Array{PropertyValue(int64_t{7}), stratum}}}));
    EXPECT_EQ(other.valueForKey("id"), PropertyValue("x"));
    other.setValue("y", "id", 2, &kRb);
    EXPECT_EQ(other.strata().size(), 2u);
    EXPECT_EQ(other.valueForKey("id", 2, &kRb), PropertyValue("y"));
}

}  // namespace
