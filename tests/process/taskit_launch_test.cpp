// Launching: refusals, argument zero, environment, working directory, input, priority and the
// descriptors the child starts with.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include <gtest/gtest.h>

#include "child_helpers.hpp"
#include "process/taskit.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

using test::shellTask;

std::string runToOutput(Taskit& task) {
    EXPECT_TRUE(task.launch());
    std::string output = task.waitForOutput();
    task.waitUntilExit();
    return output;
}

TEST(TaskitLaunch, RefusesWithoutStartingAProcess) {
    test::TempDir dir;
    const std::string plainFile = dir.write("plain", "#!/bin/sh\necho hi\n");  // not executable
    for (const std::string& path : {std::string(), plainFile, dir.path() + "/missing", dir.path()}) {
        auto task = Taskit::task();
        task->setLaunchPath(path);
        EXPECT_FALSE(task->launch()) << path;
        EXPECT_EQ(task->pid(), 0) << path;
        EXPECT_FALSE(task->isRunning()) << path;
    }

    // The limit counts the launch path, the arguments, the environment and 2.
    auto atLimit = Taskit::task();
    atLimit->setLaunchPath("/bin/true");
    atLimit->arguments().assign(Taskit::kArgumentLimit - 4, "a");
    atLimit->environment()["ONE"] = "1";
    auto overLimit = Taskit::task();
    overLimit->setLaunchPath("/bin/true");
    overLimit->arguments().assign(Taskit::kArgumentLimit - 3, "a");
    overLimit->environment()["ONE"] = "1";
    EXPECT_FALSE(overLimit->launch());
    EXPECT_EQ(overLimit->pid(), 0);
    EXPECT_EQ(overLimit->arguments().front(), "/bin/true");  // inserted before the refusal
    ASSERT_TRUE(atLimit->launch());
    atLimit->waitUntilExit();
}

TEST(TaskitLaunch, LaunchesOnlyOnce) {
    auto task = Taskit::task();
    task->setLaunchPath("/bin/true");
    ASSERT_TRUE(task->launch());
    EXPECT_FALSE(task->launch());
    EXPECT_EQ(task->arguments().size(), 1u);
    task->waitUntilExit();
}

TEST(TaskitLaunch, ArgumentZeroIsTheStandardizedLaunchPath) {
    auto task = Taskit::task();
    task->setLaunchPath("/bin//./cat/");
    task->arguments() = {"/proc/self/cmdline"};
    EXPECT_EQ(runToOutput(*task), std::string("/bin/cat\0/proc/self/cmdline\0", 28));
    EXPECT_EQ(task->launchPath(), "/bin/cat");
    EXPECT_EQ(task->arguments(), (std::vector<std::string>{"/bin/cat", "/proc/self/cmdline"}));
}

TEST(TaskitLaunch, ChildGetsOnlyTheGivenEnvironment) {
    auto bare = Taskit::task();
    bare->setLaunchPath("/usr/bin/env");
    EXPECT_EQ(runToOutput(*bare), "");

    auto given = Taskit::task();
    given->setLaunchPath("/usr/bin/env");
    given->environment() = {{"A", "1"}, {"", "no name"}, {"B", std::nullopt}, {"C", ""}, {"D", "x=y z"}};
    EXPECT_EQ(runToOutput(*given), "A=1\nC=\nD=x=y z\n");

    ASSERT_EQ(::setenv("VX_TASKIT_PROBE", "from the editor", 1), 0);
    auto inherited = Taskit::task();
    inherited->setLaunchPath("/usr/bin/env");
    inherited->populateWithCurrentEnvironment();
    inherited->environment()["EXTRA"] = "added";
    const std::string output = runToOutput(*inherited);
    ::unsetenv("VX_TASKIT_PROBE");
    EXPECT_NE(output.find("\nVX_TASKIT_PROBE=from the editor\n"), std::string::npos) << output;
    EXPECT_NE(output.find("EXTRA=added\n"), std::string::npos) << output;
}

TEST(TaskitLaunch, RunsInTheWorkingDirectory) {
    test::TempDir dir;
    char* real = ::realpath(dir.path().c_str(), nullptr);
    ASSERT_NE(real, nullptr);
    const std::string resolved = real;
    std::free(real);
    char here[4096];
    ASSERT_NE(::getcwd(here, sizeof here), nullptr);

    auto byDefault = Taskit::task();
    byDefault->setLaunchPath("/bin/pwd");
    EXPECT_EQ(byDefault->workingDirectory(), here);
    EXPECT_EQ(runToOutput(*byDefault), std::string(here) + "\n");

    auto chosen = Taskit::task();
    chosen->setLaunchPath("/bin/pwd");
    chosen->arguments() = {"-P"};
    chosen->setWorkingDirectory(dir.path());
    EXPECT_EQ(runToOutput(*chosen), resolved + "\n");

    // A directory that does not exist is no reason not to run.
    auto missing = Taskit::task();
    missing->setLaunchPath("/bin/pwd");
    missing->setWorkingDirectory(dir.path() + "/missing");
    EXPECT_EQ(runToOutput(*missing), std::string(here) + "\n");
}

TEST(TaskitLaunch, FeedsInputFromDataTextOrFile) {
    test::TempDir dir;
    const std::string file = dir.write("input.txt", "from the file\n");

    auto data = Taskit::task();
    data->setLaunchPath("/bin/cat");
    data->setInput(std::string("bytes\0and more", 14));
    data->setInputString("ignored: data wins");
    EXPECT_EQ(runToOutput(*data), std::string("bytes\0and more", 14));

    auto text = Taskit::task();
    text->setLaunchPath("/bin/cat");
    text->setInputString("caf\xC3\xA9\n");
    EXPECT_EQ(runToOutput(*text), "caf\xC3\xA9\n");

    auto fromFile = Taskit::task();
    fromFile->setLaunchPath("/bin/cat");
    fromFile->setInputPath(file);
    fromFile->setInputString("not read: the file replaces the pipe");
    EXPECT_EQ(runToOutput(*fromFile), "from the file\n");

    // Without input the child sees the end of its input at once rather than waiting.
    auto none = Taskit::task();
    none->setLaunchPath("/bin/cat");
    EXPECT_EQ(runToOutput(*none), "");

    auto missingFile = Taskit::task();
    missingFile->setLaunchPath("/bin/cat");
    missingFile->setInputPath(dir.path() + "/missing");
    EXPECT_FALSE(missingFile->launch());
    EXPECT_EQ(missingFile->pid(), 0);
}

TEST(TaskitLaunch, ChildThatIgnoresItsInputDoesNotHurtTheEditor) {
    // More than a pipe holds, to a child that exits without reading: the write fails with a
    // broken pipe, which must neither kill this process nor hang the launch.
    auto task = shellTask("exit 7");
    task->setInput(std::string(4 << 20, 'x'));
    ASSERT_TRUE(task->launch());
    task->waitUntilExit();
    EXPECT_EQ(task->terminationStatus(), 7);
}

TEST(TaskitLaunch, PriorityIsOnlyEverLowered) {
    errno = 0;
    const int current = ::getpriority(PRIO_PROCESS, 0);
    ASSERT_EQ(errno, 0);
    const int64_t requests[] = {5, -5, 25, -25, Taskit::kNoPriority};
    for (const int64_t requested : requests) {
        const bool applies = requested >= -19 && requested <= 19 && requested > current;
        const int64_t expected = applies ? requested : current;
        auto task = Taskit::task();
        task->setLaunchPath("/usr/bin/nice");  // prints its niceness
        task->setPriority(requested);
        EXPECT_EQ(runToOutput(*task), std::to_string(expected) + "\n") << "requested " << requested;
    }
}

TEST(TaskitLaunch, ChildInheritsNoDescriptorAbove2) {
    // Descriptors this process holds without close-on-exec would be inherited by default.
    const int leaky = ::open("/dev/null", O_RDONLY);
    ASSERT_GE(leaky, 0);
    const int leakyCopy = ::dup(leaky);
    auto task = Taskit::task();
    task->setLaunchPath("/bin/ls");
    task->arguments() = {"/proc/self/fd"};
    // 3 is the folder ls itself opened to list.
    EXPECT_EQ(runToOutput(*task), "0\n1\n2\n3\n");
    ::close(leaky);
    ::close(leakyCopy);
}

TEST(TaskitLaunch, FailedExecExitsWithStatus0) {
    test::TempDir dir;
    const std::string bogus = dir.write("bogus", std::string("\x7f" "ELF not really", 15));
    ASSERT_EQ(::chmod(bogus.c_str(), 0755), 0);
    auto task = Taskit::task();
    task->setLaunchPath(bogus);
    task->arguments() = {"x"};
    ASSERT_TRUE(task->launch());
    EXPECT_EQ(task->waitForOutput(), "");
    task->waitUntilExit();
    EXPECT_EQ(task->terminationReason(), 1);
    EXPECT_EQ(task->terminationStatus(), 0);
}

}  // namespace
}  // namespace vx
