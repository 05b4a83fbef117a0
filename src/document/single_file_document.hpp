// VXSingleFileDocument: one open file. It owns the text storage every edit goes through, the
// encoding and line-ending style the file was read in and will be written in, its language and
// indentation, its undo manager, and the hooks by which edits reach the highlighter and the views.
//
//   untitled --read--> open (encoding, language, line endings known) --edit--> unsaved
//       ^                   |                                                     |
//       +-- revert from disk+<------------------------- save (trim, write, repair)-+
//
// Reading and saving report failures by answering false with a message for the user; a failed
// save leaves the file on disk and the text in memory exactly as they were. Changes of encoding
// and line-ending style are undoable and post "com.vellumexapp.fileencodingchanged" and
// "com.vellumexapp.lineendingchanged" (object: the document) on the default notification centre.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document/document_hooks.hpp"
#include "document/document_settings.hpp"
#include "document/encodings.hpp"
#include "document/indentation_context.hpp"
#include "document/line_endings.hpp"
#include "document/text_reader.hpp"
#include "document/text_storage.hpp"
#include "platform/file_stamp.hpp"
#include "platform/undo_manager.hpp"

namespace vx {

inline constexpr const char* kFileEncodingChangedNotification = "com.vellumexapp.fileencodingchanged";
inline constexpr const char* kLineEndingChangedNotification = "com.vellumexapp.lineendingchanged";

class VXSingleFileDocument : public TextStorageDelegate {
public:
    using Clock = std::chrono::system_clock;
    enum class SaveOperation { Save, SaveAs, SaveTo };

    VXSingleFileDocument();
    ~VXSingleFileDocument();
    VXSingleFileDocument(const VXSingleFileDocument&) = delete;
    VXSingleFileDocument& operator=(const VXSingleFileDocument&) = delete;

    // --- the layers above ---
    void setLanguageChooser(LanguageChooser* chooser) { m_languageChooser = chooser; }
    void setHighlighter(HighlightingHook* highlighter) { m_highlighter = highlighter; }
    // The edits until endEditBatch make one change (a keystroke at many carets), for the highlighter.
    void beginEditBatch() {
        if (m_highlighter) m_highlighter->beginEditBatch();
    }
    void endEditBatch() {
        if (m_highlighter) m_highlighter->endEditBatch();
    }
    void setSyntaxHighlightingEnabled(bool enabled) { m_highlightingEnabled = enabled; }
    // Views showing the document; the last one added is the current one.
    void addView(DocumentView* view);
    void removeView(DocumentView* view);
    DocumentView* currentView() const { return m_views.empty() ? nullptr : m_views.back(); }

    // --- reading ---
    // Opens a file: text and encoding, language, indentation, theme attributes, line endings.
    bool readFromURL(const std::string& path, const std::string& type, std::string* error);
    // The same over bytes already read (standard input); `path` names the file for the language.
    bool readFromData(std::string_view bytes, const std::string& path, std::string* error);
    std::unique_ptr<VXTextStorage> textStorageFromURL(const std::string& path, uint64_t* encoding);
    std::unique_ptr<VXTextStorage> textStorageFromURL(const std::string& path, uint64_t* encoding,
                                                      bool authenticateIfNecessary, bool shouldSetStat);
    bool revertToContentsOfURL(const std::string& path, const std::string& type, std::string* error);
    // A document for a file that does not exist yet: its language and indentation are chosen from
    // the name now, so that it is coloured before its first save.
    void prepareForNewFile(const std::string& path);
    bool revertFromDiskAfterDiskChanged();
    bool revertFromDiskAfterDiskChangedToURL(const std::string& path, const std::string& data);

    // --- saving ---
    // Writes the text to `path`, keeping what the file on disk is (owner, group, mode bits, extended
    // attributes, hard links; see replaceFileContents). Refuses, with the reason in `error`, a text
    // that cannot be written in its encoding, a path that is not a regular file, and a text that
    // was valid in no encoding until acceptSavingAsUTF8 is called.
    bool saveToURL(const std::string& path, const std::string& type, SaveOperation operation, std::string* error);

    // The file's bytes were valid in no encoding: its text is their Mac Roman reading, and saving
    // writes it as UTF-8, which changes the bytes. The user is asked before the first save.
    bool wasValidInNoEncoding() const { return m_validInNoEncoding; }
    bool needsConfirmationToSave() const { return m_validInNoEncoding && !m_savingAsUTF8Accepted; }
    void acceptSavingAsUTF8() { m_savingAsUTF8Accepted = true; }

    // The version of the file last read or written (modification time, size, inode, device);
    // anything else on disk is another program's change.
    const std::optional<FileStamp>& diskStamp() const { return m_diskStamp; }
    // Takes the version now on disk as seen (the user chose to keep the text in memory).
    void setDiskStamp(std::optional<FileStamp> stamp) { m_diskStamp = stamp; }
    // Whether the file on disk is another version than the one last read or written.
    bool fileChangedOnDisk() const;

    // --- state ---
    VXTextStorage& contents() { return *m_contents; }
    const VXTextStorage& contents() const { return *m_contents; }
    const std::optional<std::string>& fileURL() const { return m_fileURL; }
    const std::string& fileType() const { return m_fileType; }
    std::optional<Clock::time_point> lastReadStat() const { return m_lastReadStat; }

    uint64_t fileEncoding() const { return m_contentsEncoding; }
    // False (and nothing changes) when the text cannot be written in `encoding`.
    bool setFileEncoding(uint64_t encoding);
    ByteOrder byteOrder() const { return m_byteOrder; }
    // UTF-8 with a byte-order mark: a file read with one is written with one; a new file has none.
    // (UTF-16 and UTF-32 are always written with their mark.)
    bool hasByteOrderMark() const { return m_byteOrderMark; }

    NewlineType lineEndingType() const { return m_contentsNewlineType; }
    void setLineEndingType(NewlineType type);
    // Replaces the whole text by a plain copy with every line break in the given style (undoable).
    void convertToLineEndings(NewlineType type);
    // Whether some line break in the text is not of the given style.
    bool lineBreaksDifferFrom(NewlineType type) const;
    void recalculateLineEnding();

    const DocumentLanguage& language() const { return m_language; }
    VXIndentationContext& indentationContext() { return m_indentation; }
    // Whether the text is fit to be highlighted (no text of 2M units or more, not too many very
    // long lines; see shouldHighlight in tabdetection).
    bool shouldHighlight() const;
    bool userHasChangedIndentationContext = false;

    // --- scoped settings and tab information (document_tab_info.cpp) ---
    // The settings contexts asked, in order: the global one unless others were given (tests).
    void setSettingsContexts(std::vector<VXSettingsContext*> contexts) { m_settingsContexts = std::move(contexts); }
    DocumentSettings settings() const;
    std::optional<PropertyValue> settingForKey(std::string_view key, int64_t* fromStratum = nullptr) const;
    void setSetting(const PropertyValue& value, std::string_view key, bool languageSpecific);
    // The language the default detector gives the file's extension (or its name).
    std::optional<std::string> defaultDetectorLanguage() const;
    // Chooses tab size and soft tabs from the text, the scoped settings and the language's defaults.
    void setUpTabInfoWithDDLang(const std::optional<std::string>& language);
    void setTabInfo(const VXIndentationContext& context) { m_indentation = context; }

    UndoManager& undoManager() { return m_undoManager; }
    bool hasUnsavedChanges() const { return m_changeCount != 0; }
    // Replaces a range as one undoable step (the redo puts the new text back).
    void replaceCharactersUndoably(Range range, std::u16string_view text);
    // Where the last edits happened, newest last (for jumping back to them).
    const std::vector<uint64_t>& recentEditLocations() const { return m_recentEdits; }

    // --- scripting surface ---
    std::optional<std::string> js_path() const { return m_fileURL; }
    std::string js_filename() const;
    std::string js_rootScope() const { return m_language.rootScope; }
    std::vector<std::string> js_contextAtLocation(uint64_t location);
    uint64_t js_length() const { return m_contents->length(); }
    std::u16string js_text() const { return m_contents->string(); }
    void js_setText(std::u16string_view text) { replaceCharactersUndoably({0, m_contents->length()}, text); }
    std::u16string js_textInRange(Range range) const;
    void js_replaceTextInRange(Range range, std::u16string_view text);
    bool js_isUntitled() const { return !m_fileURL.has_value(); }
    bool js_isUnsaved() const { return hasUnsavedChanges(); }

    // --- edit hooks (the text storage calls these) ---
    void textStorageWillProcessEditing(VXTextStorage& storage) override;
    void textStorageDidProcessEditing(VXTextStorage& storage) override;

private:
    void setContents(std::unique_ptr<VXTextStorage> storage);
    bool finishOpening(ReadResult read, const std::string& path, std::string* error);
    std::optional<DocumentLanguage> chooseLanguage(const std::string& path, const VXTextStorage& text);
    void dealWithNewDoc();
    void cycleEdit(Range editedRange);
    void postEncodingChanged();
    bool trimTrailingWhitespaceApplies() const;
    std::optional<std::string> encodedContents(std::u16string_view replacement, bool useReplacement) const;

    std::unique_ptr<VXTextStorage> m_contents;
    uint64_t m_contentsEncoding = encoding::kUTF8;
    ByteOrder m_byteOrder = ByteOrder::Little;
    bool m_byteOrderMark = false;
    bool m_validInNoEncoding = false;
    bool m_savingAsUTF8Accepted = false;
    std::optional<FileStamp> m_diskStamp;
    NewlineType m_contentsNewlineType = NewlineType::LF;
    std::optional<Clock::time_point> m_lastReadStat;
    std::optional<std::string> m_fileURL;
    std::string m_fileType;
    DocumentLanguage m_language;
    VXIndentationContext m_indentation;
    std::vector<VXSettingsContext*> m_settingsContexts;
    UndoManager m_undoManager;
    int64_t m_changeCount = 0;
    std::vector<uint64_t> m_recentEdits;

    LanguageChooser* m_languageChooser = nullptr;
    HighlightingHook* m_highlighter = nullptr;
    bool m_highlightingEnabled = true;
    std::vector<DocumentView*> m_views;
    // Lets a block scheduled on the run loop find out that the document has gone.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

// "~/..." for paths inside the home folder, as shown to the user.
std::string abbreviatingWithTildeInPath(const std::string& path);

}  // namespace vx
