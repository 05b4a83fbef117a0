// Snippet compilation: a typical snippet, and a large one with many nested constructs; the
// snippet session at many carets (below).
#include <benchmark/benchmark.h>

#include <string>

#include "snippets/dollar_converter.hpp"
#include "platform/unicode.hpp"
#include "snippets/snippet_parser.hpp"
#include "snippets/snippet_session.hpp"
#include "text_view_fixture.hpp"

namespace {

const std::u16string kTypical = u"for (%{1:\"size_t\"} %{2:\"i\"} = 0; %{2} < %{3:\"count\"}; ++%{2}) {\n\t%{0:\"\"}\n}";

std::u16string largeSnippet() {
    std::u16string text;
    for (int i = 0; i < 2000; ++i) {
        text += u"line ";
        text += u"%{" + std::u16string(1, static_cast<char16_t>(u'1' + i % 9)) + u":\"default %{10:\"x\"} text\"}";
        text += u" %{VX_FILENAME/(\\w+)\\.(\\w+)/$2 (?1:$1:none)/g} 100% \\\"quoted\\\"\n";
    }
    return text;
}

void BM_CompileTypicalSnippet(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(VXNewSnippetParserCompile(kTypical));
}
BENCHMARK(BM_CompileTypicalSnippet);

void BM_CompileLargeSnippet(benchmark::State& state) {
    const std::u16string text = largeSnippet();
    if (VXNewSnippetParserCompile(text).failed) state.SkipWithError("the large snippet does not parse");
    for (auto _ : state) benchmark::DoNotOptimize(VXNewSnippetParserCompile(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size() * 2));
}
BENCHMARK(BM_CompileLargeSnippet);

void BM_ConvertDollarSnippet(benchmark::State& state) {
    const std::u16string text = u"for (${1:size_t} ${2:i} = 0; $2 < ${3:count}; ++$2) {\n\t${0:${TM_SELECTED_TEXT}}\n}";
    for (auto _ : state) benchmark::DoNotOptimize(vx::convertDollarSnippet(text));
}
BENCHMARK(BM_ConvertDollarSnippet);

}  // namespace

// The snippet session at many carets, in a document's text storage as in the editor: expanding
// an element snippet at every caret, and one keystroke in its first field, which every copy's
// mirror (through a regex filter) follows. Each iteration is undone outside the timing.
// Run: build/release/bench/snippets_bench --benchmark_filter=Carets --benchmark_repetitions=3

namespace {

using namespace vx;

using bench::Columns;
using bench::Host;
using bench::StorageBuffer;

const char16_t kElement[] = u"<%{1:\"div\"} class=\"%{2:\"name\"}\">\n\t%{0}\n</%{1/\\s.*//}>";

// A line of text per caret, the caret at the end of each.
struct SessionFixture {
    explicit SessionFixture(int carets) {
        std::u16string text;
        for (int i = 0; i < carets; ++i) text += u"    item " + utf16FromUtf8(std::to_string(i)) + u": \n";
        document.contents().replaceCharactersInRange({0, 0}, text);
        view.setIndentation(4, true);
        for (int i = 0; i < carets; ++i) {
            const Range line = buffer.lineContentRange(static_cast<uint64_t>(i));
            selections.push_back(Selection::caretAt(line.end()));
        }
        view.setSelections(selections);
    }
    std::unique_ptr<VXSnippetSession> expand() {
        auto session = VXSnippetSession::expand(view, compiled, SnippetEnvironment{});
        buffer.onReplace = [target = session.get()](Range range, int64_t change) { target->textDidChange(range, change); };
        return session;
    }
    void reset() {
        buffer.onReplace = nullptr;
        while (document.undoManager().canUndo()) view.undo();
        view.setSelections(selections);
    }
    VXSingleFileDocument document;
    StorageBuffer buffer{document};
    Host host;
    Columns columns;
    VXTextView view{buffer, document.undoManager(), host, columns};
    std::vector<Selection> selections;
    CompiledSnippet compiled = VXNewSnippetParserCompile(kElement);
};

void BM_ExpandSnippetAtCarets(benchmark::State& state) {
    SessionFixture f(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto session = f.expand();
        benchmark::DoNotOptimize(session.get());
        state.PauseTiming();
        f.reset();
        state.ResumeTiming();
    }
    state.counters["carets"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_ExpandSnippetAtCarets)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_TypeInMirroredFieldAtCarets(benchmark::State& state) {
    SessionFixture f(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto session = f.expand();
        state.ResumeTiming();
        f.view.typeText(u"p");
        session->commandDidFinish();
        state.PauseTiming();
        const bool reached = f.buffer.substring({f.selections.front().caret, 2}) == u"<p";
        f.reset();
        state.ResumeTiming();
        if (!reached) {
            state.SkipWithError("the keystroke did not reach the field");
            break;
        }
    }
    state.counters["carets"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_TypeInMirroredFieldAtCarets)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
