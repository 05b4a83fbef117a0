#include "document/single_file_document.hpp"

#include <algorithm>
#include <cstdlib>

#include "document/tabdetection.hpp"
#include "platform/notification_center.hpp"
#include "platform/run_loop.hpp"

namespace vx {
namespace {

constexpr size_t kRecentEditsKept = 32;

}  // namespace

VXSingleFileDocument::VXSingleFileDocument()
    : m_language(plainTextLanguage()), m_indentation(VXIndentationContext::defaultContext()) {
    setContents(std::make_unique<VXTextStorage>());
    // Undoing returns toward the saved state; doing or redoing leads away from it.
    m_undoManager.setChangeHandler([this](UndoManager::Change change) {
        m_changeCount += change == UndoManager::Change::Undone ? -1 : 1;
    });
}

VXSingleFileDocument::~VXSingleFileDocument() {
    *m_alive = false;
    m_contents->setVx_delegate(nullptr);
}

void VXSingleFileDocument::setContents(std::unique_ptr<VXTextStorage> storage) {
    if (m_contents) m_contents->setVx_delegate(nullptr);
    m_contents = std::move(storage);
    m_contents->setVx_delegate(this);
}

void VXSingleFileDocument::addView(DocumentView* view) {
    removeView(view);
    m_views.push_back(view);
}

void VXSingleFileDocument::removeView(DocumentView* view) { std::erase(m_views, view); }

// --- encoding ----------------------------------------------------------------------------------

bool VXSingleFileDocument::setFileEncoding(uint64_t encoding) {
    const uint64_t old = m_contentsEncoding;
    m_contentsEncoding = encoding;
    const bool convertible = encodedContents({}, false).has_value();
    m_contentsEncoding = old;
    if (!convertible) return false;
    const bool oldMark = m_byteOrderMark;
    m_undoManager.registerUndo(this, [this, old, oldMark] {
        setFileEncoding(old);
        m_byteOrderMark = oldMark;
    });
    // A text converted to UTF-8 from another encoding starts without a mark, as a new file does.
    if (encoding != old) m_byteOrderMark = false;
    m_contentsEncoding = encoding;
    postEncodingChanged();
    return true;
}

void VXSingleFileDocument::postEncodingChanged() {
    NotificationCenter::defaultCenter().postNotificationName(kFileEncodingChangedNotification, this);
}

std::optional<std::string> VXSingleFileDocument::encodedContents(std::u16string_view replacement,
                                                                 bool useReplacement) const {
    std::optional<std::string> bytes;
    if (useReplacement) {
        bytes = encodeStrictly(replacement, m_contentsEncoding, m_byteOrder);
    } else {
        // Hand the storage's pieces over one at a time, so the text is never copied whole.
        std::vector<std::u16string_view> pieces;
        m_contents->forEachSegment({0, m_contents->length()}, [&](std::u16string_view piece) { pieces.push_back(piece); });
        size_t next = 0;
        bytes = encodeStrictly(
            [&]() -> std::optional<std::u16string_view> {
                if (next == pieces.size()) return std::nullopt;
                return pieces[next++];
            },
            m_contentsEncoding, m_byteOrder);
    }
    if (bytes && m_byteOrderMark && m_contentsEncoding == encoding::kUTF8) bytes->insert(0, "\xEF\xBB\xBF");
    return bytes;
}

bool VXSingleFileDocument::shouldHighlight() const {
    const uint64_t length = m_contents->length();
    if (length >= kHighlightLengthLimit) return false;  // decided without looking at the text
    const std::u16string text = m_contents->string();
    return vx::shouldHighlight(text);
}

bool VXSingleFileDocument::fileChangedOnDisk() const {
    if (!m_fileURL || !m_diskStamp) return false;
    auto now = fileStampForPath(*m_fileURL);
    return now && *now != *m_diskStamp;
}

// --- line endings ------------------------------------------------------------------------------

void VXSingleFileDocument::setLineEndingType(NewlineType type) {
    const NewlineType old = m_contentsNewlineType;
    m_undoManager.registerUndo(this, [this, old] { setLineEndingType(old); });
    m_contentsNewlineType = type;
    NotificationCenter::defaultCenter().postNotificationName(kLineEndingChangedNotification, this);
}

bool VXSingleFileDocument::lineBreaksDifferFrom(NewlineType type) const {
    NewlineCounter counter;
    m_contents->forEachSegment({0, m_contents->length()}, [&](std::u16string_view piece) { counter.add(piece); });
    // A text without line breaks has none of another style.
    if (counter.lf() + counter.cr() + counter.crlf() == 0) return false;
    return counter.result() != type;
}

void VXSingleFileDocument::convertToLineEndings(NewlineType type) {
    std::u16string converted = vx::convertToLineEndings(m_contents->string(), type);
    if (converted.size() == m_contents->length() && converted == m_contents->string()) return;  // nothing to convert
    m_undoManager.beginUndoGrouping();
    replaceCharactersUndoably({0, m_contents->length()}, converted);
    m_undoManager.endUndoGrouping();
    if (m_contents->length() > 0) m_contents->setAttributes({}, {0, m_contents->length()});
}

void VXSingleFileDocument::recalculateLineEnding() {
    NewlineCounter counter;
    m_contents->forEachSegment({0, m_contents->length()}, [&](std::u16string_view piece) { counter.add(piece); });
    m_contentsNewlineType = counter.result();
    NotificationCenter::defaultCenter().postNotificationName(kLineEndingChangedNotification, this);
}

// --- edits -------------------------------------------------------------------------------------

void VXSingleFileDocument::replaceCharactersUndoably(Range range, std::u16string_view text) {
    std::u16string old = m_contents->substring(range);
    m_undoManager.registerUndo(this, [this, at = range.location, length = text.size(), old = std::move(old)] {
        replaceCharactersUndoably({at, length}, old);
    });
    m_contents->replaceCharactersInRange(range, text);
}

void VXSingleFileDocument::textStorageWillProcessEditing(VXTextStorage& storage) {
    for (auto* view : m_views) view->invalidateVisibleRange();
    if (m_highlighter)
        m_highlighter->recomputeCache(storage.editedRange(), storage.changeInLength(), storage.editedMask(), false);
}

void VXSingleFileDocument::textStorageDidProcessEditing(VXTextStorage& storage) {
    if (!(storage.editedMask() & kTextStorageEditedCharacters)) return;
    for (auto* view : m_views) view->invalidateVisibleRange();
    cycleEdit(storage.editedRange());
    for (auto* view : m_views) view->textStorageWasChanged();
}

void VXSingleFileDocument::cycleEdit(Range editedRange) {
    if (!m_recentEdits.empty() && m_recentEdits.back() == editedRange.location) return;
    m_recentEdits.push_back(editedRange.location);
    if (m_recentEdits.size() > kRecentEditsKept) m_recentEdits.erase(m_recentEdits.begin());
}

// --- scripting ---------------------------------------------------------------------------------

std::string VXSingleFileDocument::js_filename() const {
    if (!m_fileURL) return {};
    const auto slash = m_fileURL->rfind('/');
    return slash == std::string::npos ? *m_fileURL : m_fileURL->substr(slash + 1);
}

std::vector<std::string> VXSingleFileDocument::js_contextAtLocation(uint64_t location) {
    // Without a highlighter only the language's root scope is open anywhere.
    if (m_highlighter) return m_highlighter->scopesAtLocation(location);
    return {m_language.rootScope};
}

std::u16string VXSingleFileDocument::js_textInRange(Range range) const {
    if (range.location > m_contents->length()) return {};
    range.length = std::min(range.length, m_contents->length() - range.location);
    return m_contents->substring(range);
}

void VXSingleFileDocument::js_replaceTextInRange(Range range, std::u16string_view text) {
    if (range.location > m_contents->length()) return;
    range.length = std::min(range.length, m_contents->length() - range.location);
    replaceCharactersUndoably(range, text);
}

std::string abbreviatingWithTildeInPath(const std::string& path) {
    const char* home = std::getenv("HOME");
    if (!home || !*home) return path;
    std::string prefix = home;
    while (prefix.size() > 1 && prefix.back() == '/') prefix.pop_back();
    if (path == prefix) return "~";
    if (path.size() > prefix.size() && path.compare(0, prefix.size(), prefix) == 0 && path[prefix.size()] == '/')
        return "~" + path.substr(prefix.size());
    return path;
}

}  // namespace vx
