// `vx edit` as scripts use it: the JSON it prints, the file it writes, and its refusals.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "app/editor/edit_script.hpp"

namespace vx::editor {
namespace {

struct VxRun {
    std::string out;
    int status;
};

VxRun vx(const std::string& arguments) {
    std::string command = std::string(VX_BINARY) + " edit " + arguments + " 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    VxRun run{{}, -1};
    if (!pipe) return run;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) run.out.append(buffer, n);
    run.status = ::pclose(pipe);
    return run;
}

TEST(EditCommand, PrintsTextAndSelectionsAfterEachCommand) {
    EXPECT_EQ(vx("--language c --do 'type:('").out, "{\"text\":\"()\",\"selections\":[[1,0]],\"primary\":0}\n");
    EXPECT_EQ(vx("--language txt --do 'type:('").out, "{\"text\":\"(\",\"selections\":[[1,0]],\"primary\":0}\n");
    // A caret added below the first: both type.
    EXPECT_EQ(vx("--do 'insert:ab\\ncd' --do move:doc-start --do key:ctrl+alt+down --do type:-").out,
              "{\"text\":\"-ab\\n-cd\",\"selections\":[[1,0],[5,0]],\"primary\":0}\n");
    EXPECT_EQ(vx("--do 'type:b\\na' --do command:select-all --do transform:vx.sort-lines-ascending").out,
              "{\"text\":\"a\\nb\",\"selections\":[[0,3]],\"primary\":0}\n");
    EXPECT_EQ(vx("--do type:abc --do backspace --do backspace --do undo").out,
              "{\"text\":\"abc\",\"selections\":[[3,0]],\"primary\":0}\n");
}

TEST(EditCommand, WritesTheFileAndRefusesWhatItDoesNotKnow) {
    auto path = std::filesystem::temp_directory_path() / "vx-edit-test.txt";
    std::ofstream(path) << "one\r\ntwo\r\n";
    EXPECT_EQ(vx(path.string() + " --select 5 --do 'key:alt+shift+d' --write").out,
              "{\"selections\":[[10,0]],\"primary\":0}\n");
    std::ifstream in(path, std::ios::binary);
    std::string written((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(written, "one\r\ntwo\r\ntwo\r\n");  // the duplicate takes the file's own line break
    std::filesystem::remove(path);

    for (const char* refused : {"--do 'replace:/a/b/'", "--do vi:dd", "--do command:no-such",
                                "--do move:sideways", "--select 9", "--select x", "--language nosuch"}) {
        VxRun run = vx(refused);
        EXPECT_NE(run.status, 0) << refused;
        EXPECT_EQ(run.out, "") << refused;
    }
}

TEST(EditCommand, SnippetsExpandAndWalkAsTheKeysDo) {
    // Mirrors through their filters at every selection; tab and backtab walk the fields.
    EXPECT_EQ(vx("--do 'insert:\\n' --do move:doc-start --do key:ctrl+alt+down "
                 "--do 'snippet:<%{1:\"a\"} %{1/(\\w+)-(\\w+)/$2:$1/g} %{1/x/y/gi}>%{0}' --do 'type:ab-cd ef-Xx' --do tab")
                  .out,
              "{\"text\":\"<ab-cd ef-Xx cd:ab Xx:ef ab-cd ef-yy>\\n<ab-cd ef-Xx cd:ab Xx:ef ab-cd ef-yy>\","
              "\"selections\":[[37,0],[75,0]],\"primary\":0}\n");
    EXPECT_EQ(vx("--do 'snippet:%{1:\"a\"}(%{2:\"b\"})' --do tab --do backtab --do type:f").out,
              "{\"text\":\"f(b)\",\"selections\":[[1,0]],\"primary\":0}\n");
    // A trigger before the caret expands with tab, in the language's snippets only.
    EXPECT_EQ(vx("--language python --do type:if --do tab --do type:ok").out,
              "{\"text\":\"if ok:\\n\\tpass\",\"selections\":[[5,0]],\"primary\":0}\n");
    EXPECT_EQ(vx("--language txt --do type:if --do tab").out, "{\"text\":\"if\\t\",\"selections\":[[3,0]],\"primary\":0}\n");
    // A conditional replacement chooses by whether its group took part.
    EXPECT_EQ(vx("--do 'snippet:%{1:\"x\"} %{1/^(https?:)?.*$/(?1:external:local)/i}' --do type:HTTPS://a --do tab").out,
              "{\"text\":\"HTTPS://a external\",\"selections\":[[18,0]],\"primary\":0}\n");
}

TEST(EditCommand, TextEscapesAndSelectionLists) {
    EXPECT_EQ(unescapeEditText("a\\nb\\tc\\\\n\\x"), u"a\nb\tc\\n\\x");
    auto selections = parseSelectionRanges("4,0:2,7", 10);
    ASSERT_EQ(selections.size(), 3u);
    EXPECT_EQ(selections[1], (Selection{0, 2}));
    EXPECT_THROW(parseSelectionRanges("4:7", 10), EditScriptError);
    EXPECT_THROW(parseSelectionRanges("1,", 10), EditScriptError);
}

}  // namespace
}  // namespace vx::editor
