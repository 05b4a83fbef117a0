#include "document/single_file_document.hpp"

#include <gtest/gtest.h>

#include "document/document_fakes.hpp"
#include "platform/notification_center.hpp"
#include "platform/run_loop.hpp"
#include "platform/scoped_home.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

using namespace std::chrono_literals;

struct Heard {
    int encoding = 0, lineEnding = 0;
    ObserverToken a, b;
    explicit Heard(const VXSingleFileDocument& document) {
        auto& center = NotificationCenter::defaultCenter();
        a = center.addObserver(kFileEncodingChangedNotification, &document, [this](const Notification&) { ++encoding; });
        b = center.addObserver(kLineEndingChangedNotification, &document, [this](const Notification&) { ++lineEnding; });
    }
};

TEST(Document, OpeningSetsEncodingLanguageLineEndingsAndNotifies) {
    test::ScopedHome home;
    const std::string path = home.dir.write("notes.txt", "one\r\ntwo\r\n");
    VXSingleFileDocument document;
    Heard heard(document);
    std::string error;
    ASSERT_TRUE(document.readFromURL(path, "txt", &error)) << error;
    EXPECT_EQ(document.fileEncoding(), encoding::kUTF8);
    EXPECT_EQ(document.lineEndingType(), NewlineType::CRLF);
    EXPECT_EQ(document.language(), plainTextLanguage());
    EXPECT_EQ(document.indentationContext().tabSize, 4u);
    EXPECT_EQ(heard.encoding, 1);
    EXPECT_EQ(heard.lineEnding, 1);
    EXPECT_FALSE(document.hasUnsavedChanges());
    EXPECT_TRUE(document.lastReadStat().has_value());
    EXPECT_EQ(document.js_filename(), "notes.txt");
    EXPECT_EQ(document.js_rootScope(), "txt");
    EXPECT_FALSE(document.js_isUntitled());

    // The view hears about the new document on the next turn of the run loop.
    struct Opened : test::FakeView {
        int opened = 0;
        void documentDidOpen() override { ++opened; }
    } opened;
    document.addView(&opened);
    RunLoop::main().runOnce(0ms);
    EXPECT_EQ(opened.opened, 1);
}

TEST(Document, FailedOpensLeaveTheDocumentAsItWas) {
    test::ScopedHome home;
    VXSingleFileDocument document;
    std::string error;
    ASSERT_TRUE(document.readFromURL(home.dir.write("a.txt", "kept"), "txt", &error));
    EXPECT_FALSE(document.readFromURL(home.dir.path() + "/missing.txt", "txt", &error));
    EXPECT_NE(error.find("missing.txt"), std::string::npos);
    EXPECT_EQ(document.contents().string(), u"kept");

    test::FakeChooser chooser;
    chooser.answer.reset();
    document.setLanguageChooser(&chooser);
    error.clear();
    EXPECT_FALSE(document.readFromURL(home.dir.write("b.xyz", "other"), "txt", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(document.contents().string(), u"kept");
    EXPECT_EQ(*document.fileURL(), home.dir.path() + "/a.txt");

    // With highlighting off the chooser is not asked for a language: plain text.
    document.setSyntaxHighlightingEnabled(false);
    EXPECT_TRUE(document.readFromURL(home.dir.path() + "/b.xyz", "txt", &error));
    EXPECT_EQ(document.language().name, "Plain Text");
}

TEST(Document, EncodingChangesAreUndoableAndRefusedWhenImpossible) {
    VXSingleFileDocument document;
    Heard heard(document);
    document.contents().replaceCharactersInRange({0, 0}, u"café");
    ASSERT_TRUE(document.setFileEncoding(encoding::kISOLatin1));
    EXPECT_EQ(document.fileEncoding(), encoding::kISOLatin1);
    EXPECT_EQ(heard.encoding, 1);
    EXPECT_TRUE(document.hasUnsavedChanges());

    EXPECT_FALSE(document.setFileEncoding(encoding::kASCII));  // é has no ASCII form
    EXPECT_FALSE(document.setFileEncoding(encoding::kSymbol));
    EXPECT_EQ(document.fileEncoding(), encoding::kISOLatin1);
    EXPECT_EQ(heard.encoding, 1);

    document.undoManager().undo();
    EXPECT_EQ(document.fileEncoding(), encoding::kUTF8);
    EXPECT_EQ(heard.encoding, 2);
    EXPECT_FALSE(document.hasUnsavedChanges());
    EXPECT_FALSE(document.undoManager().canUndo());
    document.undoManager().redo();
    EXPECT_EQ(document.fileEncoding(), encoding::kISOLatin1);
}

TEST(Document, LineEndingStyleAndConversionAreUndoable) {
    VXSingleFileDocument document;
    Heard heard(document);
    document.contents().replaceCharactersInRange({0, 0}, u"a\nb\r\nc");
    document.recalculateLineEnding();
    EXPECT_EQ(document.lineEndingType(), NewlineType::Mixed);

    document.setLineEndingType(NewlineType::CRLF);
    EXPECT_EQ(document.lineEndingType(), NewlineType::CRLF);
    EXPECT_EQ(document.contents().string(), u"a\nb\r\nc");  // the setter leaves the text alone
    document.undoManager().undo();
    EXPECT_EQ(document.lineEndingType(), NewlineType::Mixed);
    EXPECT_EQ(heard.lineEnding, 3);

    document.contents().setAttributes({{"bold", true}}, {0, 1});
    document.convertToLineEndings(NewlineType::CR);
    EXPECT_EQ(document.contents().string(), u"a\rb\rc");
    EXPECT_TRUE(document.contents().attributesAtIndex(0).empty());
    document.undoManager().undo();
    EXPECT_EQ(document.contents().string(), u"a\nb\r\nc");
}

TEST(Document, EditsReachTheHighlighterAndTheViews) {
    VXSingleFileDocument document;
    test::FakeHighlighter highlighter;
    test::FakeView view;
    document.setHighlighter(&highlighter);
    document.addView(&view);
    document.js_setText(u"hello");
    document.js_replaceTextInRange({1, 3}, u"EY");
    EXPECT_EQ(document.js_text(), u"hEYo");
    ASSERT_EQ(highlighter.calls.size(), 2u);
    EXPECT_EQ(highlighter.calls[1].range, (Range{1, 2}));
    EXPECT_EQ(highlighter.calls[1].change, -1);
    EXPECT_EQ(highlighter.calls[1].mask, unsigned{kTextStorageEditedCharacters});
    EXPECT_FALSE(highlighter.calls[1].fully);
    EXPECT_EQ(view.changes, 2);
    document.contents().setAttributes({{"x", 1}}, {0, 1});  // attributes only: the views are not told
    EXPECT_EQ(view.changes, 2);
    EXPECT_EQ(highlighter.calls.size(), 3u);
    EXPECT_EQ(document.recentEditLocations(), (std::vector<uint64_t>{0, 1}));

    EXPECT_EQ(document.js_textInRange({2, 100}), u"Yo");
    EXPECT_EQ(document.js_contextAtLocation(1), (std::vector<std::string>{"source.test", "string.quoted"}));
    EXPECT_TRUE(document.js_isUnsaved());
    EXPECT_TRUE(document.js_isUntitled());
    EXPECT_FALSE(document.js_path());
    document.undoManager().undo();
    document.undoManager().undo();
    EXPECT_EQ(document.js_length(), 0u);
    EXPECT_FALSE(document.js_isUnsaved());
}

}  // namespace
}  // namespace vx
