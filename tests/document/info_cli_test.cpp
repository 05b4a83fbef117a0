// vx info: the encoding, line endings and language a file opens with, as scripts read them.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/scoped_home.hpp"
#include "support/run_command.hpp"

using vx::test::runCommand;

namespace {

TEST(InfoCommand, ReportsEncodingLineEndingAndLanguage) {
    vx::test::ScopedHome home;
    struct Case {
        const char* name;
        std::string bytes;
        int encoding;
        int lineEnding;
        const char* language;
    };
    const Case cases[] = {
        {"notes.txt", "plain\r\ntext\r\n", 4, 2, "Plain Text"},
        {"latin.txt",
         "Le ma\xEEtre d'h\xF4tel a servi une cr\xE8me br\xFBl\xE9" "e tr\xE8s r\xE9ussie \xE0 la fin du d\xEEner.\n",
         5, 1, "Plain Text"},
        {"wide.py", std::string("\xFF\xFEx\0\r\0y\0", 8), 10, 3, "Python"},
        {"mixed.md", "# a\nb\r\n", 4, 4, "Markdown"},
    };
    for (const auto& c : cases) {
        auto result = runCommand({VX_BINARY, "info", home.dir.write(c.name, c.bytes)});
        ASSERT_EQ(result.status, 0) << c.name << ": " << result.err;
        const auto info = nlohmann::json::parse(result.out);
        EXPECT_EQ(info["encoding"], c.encoding) << c.name;
        EXPECT_FALSE(info["encodingName"].get<std::string>().empty()) << c.name;
        EXPECT_EQ(info["lineEnding"], c.lineEnding) << c.name;
        EXPECT_EQ(info["language"], c.language) << c.name;
    }
    auto piped = runCommand({VX_BINARY, "info", "-"}, "a\rb\r");
    ASSERT_EQ(piped.status, 0) << piped.err;
    EXPECT_EQ(nlohmann::json::parse(piped.out)["lineEnding"], 3);
}

TEST(InfoCommand, UnreadableFileIsOneErrorLine) {
    vx::test::ScopedHome home;
    auto result = runCommand({VX_BINARY, "info", home.dir.path() + "/missing.txt"});
    EXPECT_NE(result.status, 0);
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(result.err.rfind("vx: ", 0), 0u) << result.err;
    EXPECT_NE(result.err.find("missing.txt"), std::string::npos);
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
}

}  // namespace
