#include <gtest/gtest.h>

#include "app/tui/key_bindings.hpp"
#include "selfml/sfonode.hpp"

namespace vx::tui {
namespace {

std::optional<std::string> commandFor(const KeyBindings& bindings, std::string_view name) {
    return bindings.commandForKey(*parseKeyName(name));
}

TEST(KeyBindings, DefaultsCoverTheDesktopConventions) {
    auto bindings = KeyBindings::defaults();
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"ctrl+s", "save"}, {"ctrl+z", "undo"}, {"ctrl+shift+z", "redo"}, {"ctrl+y", "redo"},
        {"ctrl+q", "quit"}, {"ctrl+w", "close-tab"}, {"ctrl+tab", "next-tab"}, {"alt+3", "tab-3"},
        {"ctrl+f", "find"}, {"f3", "find-next"}, {"shift+f3", "find-previous"}, {"shift+left", "select-left"},
    };
    for (auto [key, command] : cases) EXPECT_EQ(commandFor(bindings, key), command) << key;
    // Every default key is unique: a key bound twice in the defaults would silently lose one.
    size_t total = 0;
    for (const auto& command : bindings.commands()) total += bindings.keysForCommand(command).size();
    size_t written = 0;
    auto root = SFONode::nodeFromString(KeyBindings::defaultBindingsText());
    for (const auto& entry : root->nodeForKey("keys")->extractLists()) written += entry->extractStrings().size();
    EXPECT_EQ(total, written);
    EXPECT_GT(total, 60u);
}

TEST(KeyBindings, UserFileReplacesCommandsItNamesAndStealsTheirKeys) {
    auto bindings = KeyBindings::defaults();
    std::vector<std::string> problems;
    bindings.apply("(keys (save f2 ctrl+nothing) (quit) (find-next ctrl+s))", problems);
    EXPECT_EQ(problems.size(), 1u);               // ctrl+nothing
    EXPECT_EQ(commandFor(bindings, "f2"), "save");
    EXPECT_EQ(commandFor(bindings, "ctrl+s"), "find-next");  // taken from save
    EXPECT_FALSE(commandFor(bindings, "ctrl+q"));            // quit unbound
    EXPECT_FALSE(commandFor(bindings, "f3"));                // find-next has only what the file gives
    EXPECT_EQ(commandFor(bindings, "ctrl+z"), "undo");       // untouched command
}

TEST(KeyBindings, MistakesAreReportedWithTheirLineAndLoseNoKeys) {
    auto bindings = KeyBindings::defaults();
    std::vector<std::string> problems;
    const std::string text = "(keys\n    (sav ctrl+s)\n    (quit ctrl+banana)\n    (undo ctrl+banana f9))\n";
    bindings.apply(text, problems, [](std::string_view command) { return command != "sav"; });
    ASSERT_EQ(problems.size(), 3u);
    EXPECT_EQ(problems[0].rfind("line 2: ", 0), 0u) << problems[0];
    EXPECT_NE(problems[0].find("sav"), std::string::npos);
    EXPECT_EQ(problems[1].rfind("line 3: ", 0), 0u) << problems[1];
    EXPECT_NE(problems[1].find("ctrl+banana"), std::string::npos);
    EXPECT_EQ(problems[2].rfind("line 4: ", 0), 0u) << problems[2];
    EXPECT_EQ(commandFor(bindings, "ctrl+s"), "save");  // an unknown command takes no key
    EXPECT_EQ(commandFor(bindings, "ctrl+q"), "quit");  // no valid key given: the default stays
    EXPECT_EQ(commandFor(bindings, "f9"), "undo");      // the valid keys on the line are kept
    EXPECT_FALSE(commandFor(bindings, "ctrl+z"));
}

}  // namespace
}  // namespace vx::tui
