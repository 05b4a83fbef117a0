// vx info: the indentation the document chose and the detection behind it, as scripts read them.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/scoped_home.hpp"
#include "support/run_command.hpp"

using vx::test::runCommand;

namespace {

nlohmann::json info(const std::string& path, const std::string& input = "") {
    auto result = runCommand({VX_BINARY, "info", path}, input);
    EXPECT_EQ(result.status, 0) << result.err;
    return nlohmann::json::parse(result.out);
}

TEST(InfoCommand, ReportsDetectionAndTheChosenIndentation) {
    vx::test::ScopedHome home;  // the child reads its defaults and settings from here
    auto spaces = info(home.dir.write("a.py", "def f():\n  if x:\n    return 1\n  return 2\n"));
    EXPECT_EQ(spaces["tabSize"], 2);
    EXPECT_EQ(spaces["softTabs"], true);
    EXPECT_EQ(spaces["detection"], nlohmann::json::parse(
        R"({"undecided": 0, "usesSpaces": 1, "ratio": 1.0, "width": 2, "widthConfidence": 1.0})"));
    EXPECT_EQ(spaces["shouldHighlight"], true);

    auto tabs = info(home.dir.write("b.c", "f() {\n\ta;\n\tb;\n}\n"));
    EXPECT_EQ(tabs["softTabs"], false);
    EXPECT_EQ(tabs["detection"]["usesSpaces"], 0);
    EXPECT_EQ(tabs["detection"]["undecided"], 0);

    // Nothing to detect in a YAML file: its default of 2; one long line is too heavy to highlight.
    auto plain = info(home.dir.write("c.yml", "k: " + std::string(5000, 'v') + "\n"));
    EXPECT_EQ(plain["detection"]["undecided"], 1);
    EXPECT_EQ(plain["tabSize"], 2);
    EXPECT_EQ(plain["shouldHighlight"], false);
}

}  // namespace
