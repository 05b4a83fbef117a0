// The runner's small helpers: standardizing the launch path and decoding output as text.
#include <stdlib.h>

#include <gtest/gtest.h>

#include "process/standardized_path.hpp"
#include "process/utf8_text.hpp"

namespace vx {
namespace {

TEST(StandardizedPath, FoldsRedundantPartsAndExpandsHome) {
    const char* home = ::getenv("HOME");
    const std::string savedHome = home ? home : "";
    ::setenv("HOME", "/home/someone", 1);
    const std::pair<const char*, const char*> cases[] = {
        {"/bin//./cat/", "/bin/cat"},
        {"/usr/lib/../bin/env", "/usr/bin/env"},
        {"/../..", "/"},
        {"/", "/"},
        {"~", "/home/someone"},
        {"~/bin//tool", "/home/someone/bin/tool"},
        {"~root/x", "/root/x"},
        {"~no-such-user-here/x", "~no-such-user-here/x"},
        {"bin/../tool", "bin/../tool"},  // relative: ".." depends on where it is used
        {"./tool", "tool"},
        {".", "."},
        {"a/~", "a/~"},
    };
    for (auto [path, want] : cases) EXPECT_EQ(standardizedPath(path), want) << path;
    if (home)
        ::setenv("HOME", savedHome.c_str(), 1);
    else
        ::unsetenv("HOME");
}

TEST(Utf8Text, MalformedSequencesBecomeReplacementCharacters) {
    const std::string r = "\xEF\xBF\xBD";
    const std::pair<std::string, std::string> cases[] = {
        {"plain", "plain"},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},  // 2-, 3-, 4-byte
        {std::string("a\0b", 3), std::string("a\0b", 3)},
        {"\xFF", r},
        {"\xC3", r},                           // truncated at the end
        {"\xC3(", r + "("},                    // a lead byte without continuation
        {"\xC0\xAF", r + r},                   // overlong "/"
        {"\xE0\x80\xAF", r + r + r},           // overlong, three bytes
        {"\xED\xA0\x80", r + r + r},           // a UTF-16 surrogate
        {"\xF4\x90\x80\x80", r + r + r + r},   // above U+10FFFF
        {"\x80x", r + "x"},                    // a stray continuation byte
    };
    for (const auto& [bytes, want] : cases) EXPECT_EQ(decodeUtf8Lossy(bytes), want);
}

}  // namespace
}  // namespace vx
