#include <gtest/gtest.h>

#include "app/tui/input_decoder.hpp"

namespace vx::tui {
namespace {

// Events written compactly: keys by name, "paste:<text>", "mouse:<action> <button> <x>,<y>".
std::string describe(const InputEvent& event) {
    if (auto* key = std::get_if<KeyEvent>(&event)) return keyName(*key);
    if (auto* paste = std::get_if<PasteEvent>(&event)) return "paste:" + paste->text;
    if (auto* mouse = std::get_if<MouseEvent>(&event)) {
        static const char* kActions[] = {"press", "release", "drag", "move", "wheelup", "wheeldown", "wheelleft", "wheelright"};
        std::string text = std::string("mouse:") + kActions[static_cast<int>(mouse->action)] + " " +
                           std::to_string(mouse->button) + " " + std::to_string(mouse->x) + "," + std::to_string(mouse->y);
        if (mouse->modifiers & kShift) text += " shift";
        if (mouse->modifiers & kCtrl) text += " ctrl";
        return text;
    }
    return "resize";
}

std::vector<std::string> decodeAll(std::string_view bytes, bool byteAtATime) {
    InputDecoder decoder;
    if (byteAtATime) {
        for (char c : bytes) decoder.feed(std::string_view(&c, 1));
    } else {
        decoder.feed(bytes);
    }
    decoder.flushPending();
    std::vector<std::string> names;
    for (const auto& event : decoder.takeEvents()) names.push_back(describe(event));
    return names;
}

using Names = std::vector<std::string>;

TEST(InputDecoder, KeysFromEverySequenceFormDecodeAlikeWholeOrByteByByte) {
    const std::pair<std::string_view, Names> cases[] = {
        {"ab", {"a", "b"}},
        {"\x13", {"ctrl+s"}},
        {"\r\t\x7f", {"enter", "tab", "backspace"}},
        {"\x08", {"ctrl+backspace"}},
        {"\x1b", {"escape"}},
        {"\x1bx", {"alt+x"}},
        {"\x1b" "1", {"alt+1"}},
        {"\x1b\x7f", {"alt+backspace"}},
        {"\x1b[A\x1b[B\x1b[C\x1b[D", {"up", "down", "right", "left"}},
        {"\x1bOA\x1bOH\x1bOF\x1bOR", {"up", "home", "end", "f3"}},
        {"\x1b[1;5C", {"ctrl+right"}},
        {"\x1b[1;6D", {"ctrl+shift+left"}},
        {"\x1b[1;2H", {"shift+home"}},
        {"\x1b[3~\x1b[5~\x1b[6;5~", {"delete", "pageup", "ctrl+pagedown"}},
        {"\x1b[13;2~", {"shift+f3"}},
        {"\x1b[Z", {"shift+tab"}},
        // ctrl+shift+z in the two extended forms; plain ctrl+z for comparison
        {"\x1b[122;6u", {"ctrl+shift+z"}},
        {"\x1b[27;6;90~", {"ctrl+shift+z"}},
        {"\x1a", {"ctrl+z"}},
        {"\x1b[9;5u", {"ctrl+tab"}},
        {"\x1b[27;5;9~", {"ctrl+tab"}},
        {"\x1b[13u", {"enter"}},
        // UTF-8, including a four-byte character, and bad bytes as U+FFFD
        {"\xc3\xa9\xf0\x9f\x98\x80", {"\xc3\xa9", "\xf0\x9f\x98\x80"}},
        {"\xff" "a", {"\xef\xbf\xbd", "a"}},
        // replies the editor never asked for are dropped
        {"\x1b[I\x1b[?1;2c" "x", {"x"}},
    };
    for (const auto& [bytes, want] : cases) {
        EXPECT_EQ(decodeAll(bytes, false), want) << "whole: " << testing::PrintToString(std::string(bytes));
        EXPECT_EQ(decodeAll(bytes, true), want) << "split: " << testing::PrintToString(std::string(bytes));
    }
}

TEST(InputDecoder, IncompleteSequencesWaitForMoreBytesUntilFlushed) {
    InputDecoder decoder;
    decoder.feed("\x1b[1;5");
    EXPECT_TRUE(decoder.takeEvents().empty());
    EXPECT_TRUE(decoder.hasPendingSequence());
    decoder.feed("A");
    auto events = decoder.takeEvents();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(describe(events[0]), "ctrl+up");

    decoder.feed("\xe2\x82");  // the first two bytes of the euro sign
    EXPECT_TRUE(decoder.takeEvents().empty());
    decoder.feed("\xac");
    events = decoder.takeEvents();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(describe(events[0]), "\xe2\x82\xac");

    // A lone ESC becomes the Escape key only on the time-out; ESC [ then reads as alt+[.
    decoder.feed("\x1b");
    EXPECT_TRUE(decoder.takeEvents().empty());
    decoder.flushPending();
    events = decoder.takeEvents();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(describe(events[0]), "escape");
    decoder.feed("\x1b[");
    decoder.flushPending();
    events = decoder.takeEvents();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(describe(events[0]), "alt+[");
    EXPECT_FALSE(decoder.hasPendingSequence());
}

TEST(InputDecoder, BracketedPasteKeepsEverythingUpToItsEndMarkVerbatim) {
    // Escape sequences and control characters inside a paste are text, not keys.
    std::string_view bytes = "x\x1b[200~line 1\r\x1b[A\ttab\x1b[201~y";
    Names want = {"x", "paste:line 1\r\x1b[A\ttab", "y"};
    EXPECT_EQ(decodeAll(bytes, false), want);
    EXPECT_EQ(decodeAll(bytes, true), want);
    // The end mark split across reads is still found; a paste cut off is kept rather than lost.
    EXPECT_EQ(decodeAll("\x1b[200~abc\x1b[20", false), Names({"paste:abc\x1b[20"}));
}

TEST(InputDecoder, SgrMouseReportsPressDragReleaseAndWheel) {
    const std::pair<std::string_view, Names> cases[] = {
        {"\x1b[<0;5;3M", {"mouse:press 0 4,2"}},
        {"\x1b[<32;6;3M", {"mouse:drag 0 5,2"}},
        {"\x1b[<0;6;3m", {"mouse:release 0 5,2"}},
        {"\x1b[<2;1;1M", {"mouse:press 2 0,0"}},
        {"\x1b[<4;10;20M", {"mouse:press 0 9,19 shift"}},
        {"\x1b[<64;1;1M\x1b[<65;1;1M", {"mouse:wheelup 0 0,0", "mouse:wheeldown 0 0,0"}},
        {"\x1b[<35;7;8M", {"mouse:move 0 6,7"}},
    };
    for (const auto& [bytes, want] : cases) EXPECT_EQ(decodeAll(bytes, true), want) << testing::PrintToString(std::string(bytes));
}

TEST(KeyNames, ParseAndPrintAgreeWhateverTheSpelling) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"ctrl+s", "ctrl+s"},      {"Ctrl-S", "ctrl+s"},          {"c-s", "ctrl+s"},
        {"shift+ctrl+Z", "ctrl+shift+z"}, {"ctrl+shift+z", "ctrl+shift+z"},
        {"alt+1", "alt+1"},        {"Alt+Left", "alt+left"},      {"esc", "escape"},
        {"ctrl+-", "ctrl+minus"},  {"ctrl+plus", "ctrl+plus"},    {"space", "space"},
        {"F3", "f3"},              {"shift+f3", "shift+f3"},      {"pgdn", "pagedown"},
        {"shift+a", "A"},          {"é", "é"},
    };
    for (auto [text, want] : cases) {
        auto key = parseKeyName(text);
        ASSERT_TRUE(key) << text;
        EXPECT_EQ(keyName(*key), want) << text;
        EXPECT_EQ(parseKeyName(keyName(*key)), key) << text;
    }
    for (std::string_view bad : {"", "ctrl+", "hyper+x", "ctrl+nothing", "f13"})
        EXPECT_FALSE(parseKeyName(bad)) << bad;
}

}  // namespace
}  // namespace vx::tui
