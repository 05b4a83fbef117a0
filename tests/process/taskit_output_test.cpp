// Collecting output: both streams at once, children that finished before collection, text
// decoding, background reading and `end`.
#include <signal.h>

#include <gtest/gtest.h>

#include "child_helpers.hpp"
#include "process/taskit.hpp"

namespace vx {
namespace {

using test::shellTask;

std::string repeated(const std::string& line, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += line;
    return text;
}

TEST(TaskitOutput, CollectsLargeOutputOnBothStreamsWithoutDeadlock) {
    // Each stream gets several pipes' worth, one after the other in both orders: a reader that
    // drained one stream to its end before the other would never see the first one end.
    const std::string out = repeated("output line\n", 40'000);
    const std::string err = repeated("error line\n", 40'000);
    for (const char* script : {"yes 'error line' | head -n 40000 >&2; yes 'output line' | head -n 40000",
                               "yes 'output line' | head -n 40000; yes 'error line' | head -n 40000 >&2"}) {
        auto task = shellTask(script);
        ASSERT_TRUE(task->launch());
        std::string output, error;
        EXPECT_TRUE(task->waitForOutputData(&output, &error));
        task->waitUntilExit();
        EXPECT_EQ(output.size(), out.size()) << script;
        EXPECT_TRUE(output == out) << script;
        EXPECT_EQ(error.size(), err.size()) << script;
        EXPECT_TRUE(error == err) << script;
    }
}

TEST(TaskitOutput, OutputOfAChildThatAlreadyEndedIsKept) {
    auto task = shellTask("printf 'quick'; printf 'also' >&2");
    ASSERT_TRUE(task->launch());
    task->waitUntilExit();
    std::string output = "kept:", error;
    EXPECT_TRUE(task->waitForIntoOutputData(output, error));
    EXPECT_EQ(output, "kept:quick");
    EXPECT_EQ(error, "also");

    auto single = shellTask("printf 'only out'; printf 'only err' >&2");
    ASSERT_TRUE(single->launch());
    EXPECT_EQ(single->waitForOutput(), "only out");
    auto errorOnly = shellTask("printf 'only out'; printf 'only err' >&2");
    ASSERT_TRUE(errorOnly->launch());
    EXPECT_EQ(errorOnly->waitForErrorString(), "only err");
    single->waitUntilExit();
    errorOnly->waitUntilExit();
}

TEST(TaskitOutput, StringVariantsDecodeUtf8) {
    auto task = shellTask("printf 'caf\\303\\251 \\377!'; printf '\\342\\202' >&2");
    ASSERT_TRUE(task->launch());
    std::string output, error;
    EXPECT_TRUE(task->waitForOutputString(&output, &error));
    task->waitUntilExit();
    EXPECT_EQ(output, "caf\xC3\xA9 \xEF\xBF\xBD!");
    EXPECT_EQ(error, "\xEF\xBF\xBD\xEF\xBF\xBD");  // a truncated sequence, byte by byte
}

TEST(TaskitOutput, ReadsInTheBackground) {
    auto task = shellTask("yes out | head -c 200000; printf err >&2");
    ASSERT_TRUE(task->launch());
    task->readToEndInBackground();
    EXPECT_TRUE(task->waitForBackgroundReading(2));
    ASSERT_TRUE(task->hasFinishedReadingOutput());
    ASSERT_TRUE(task->hasFinishedReadingError());
    EXPECT_EQ(task->outputBuffer(), repeated("out\n", 50'000));
    EXPECT_EQ(task->errorBuffer(), "err");
    EXPECT_FALSE(task->outPipe().readEnd);  // closed once read to the end
    task->waitUntilExit();
}

TEST(TaskitOutput, EndClosesTheStreams) {
    // `end` while background reading is under way stops it; the child then writes into a
    // closed pipe and dies of SIGPIPE instead of blocking forever.
    auto task = shellTask("exec yes");
    ASSERT_TRUE(task->launch());
    task->readToEndInBackground();
    EXPECT_FALSE(task->waitForBackgroundReading(0.05));  // `yes` never stops writing
    task->end();
    EXPECT_FALSE(task->errPipe().readEnd);
    EXPECT_FALSE(task->waitUntilExitWithTimeout(2));
    EXPECT_EQ(task->terminationSignal(), SIGPIPE);
    std::string output, error;
    EXPECT_TRUE(task->waitForIntoOutputData(output, error));
    EXPECT_EQ(output, "");

    auto ended = shellTask("true");
    ended->end();
    EXPECT_FALSE(ended->launch());
    EXPECT_EQ(ended->pid(), 0);
}

}  // namespace
}  // namespace vx
