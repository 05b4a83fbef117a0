// The runner's small helper that standardizes the launch path.
#include <stdlib.h>

#include <gtest/gtest.h>

#include "process/standardized_path.hpp"

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

}  // namespace
}  // namespace vx
