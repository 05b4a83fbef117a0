// What the document asks of the layers above it. The document never includes the highlighter, the
// language definitions, the selection engine or the front end; each of those implements one of
// these interfaces and plugs itself into the document. Until they do, the document uses the
// plain-text language, no highlighting, and treats every view as having a single selection.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "document/text_attributes.hpp"
#include "platform/range.hpp"

namespace vx {

class VXTextStorage;

// The language a document is in: its name, its root scope and its identifier (whose components,
// separated by ".", tell for instance that it is a kind of "markdown").
struct DocumentLanguage {
    std::string name;
    std::string rootScope;
    std::string identifier;
    friend bool operator==(const DocumentLanguage&, const DocumentLanguage&) = default;
};

// Plain text: what a document is in when no language chooser is plugged in.
DocumentLanguage plainTextLanguage();

class LanguageChooser {
public:
    // The language for a file, from its path and its first characters; nothing when none fits.
    virtual std::optional<DocumentLanguage> detectLanguageForFilePath(const std::string& path,
                                                                      const VXTextStorage& contents) = 0;
    virtual DocumentLanguage plainTextLanguage() { return vx::plainTextLanguage(); }

protected:
    ~LanguageChooser() = default;
};

// The incremental highlighter of a document.
class HighlightingHook {
public:
    // Called before the text storage processes an edit: the edited range (in the new text), the
    // change in length, the edited mask and whether everything must be parsed again.
    virtual void recomputeCache(Range editedRange, int64_t changeInLength, unsigned editedMask, bool fully) = 0;
    // The scopes open at a character index, outermost first (the scripting surface shows these).
    virtual std::vector<std::string> scopesAtLocation(uint64_t location) = 0;
    // The active theme's attributes for its default zone; nothing when there is no theme.
    virtual std::optional<TextAttributes> defaultZoneAttributes() = 0;
    // Edits between these two (nested pairs count as one) make one change, such as a keystroke at
    // many carets: each still comes through recomputeCache, but the work may wait for the end.
    virtual void beginEditBatch() {}
    virtual void endEditBatch() {}
    // Called before the document replaces its text storage by another (opening, reverting): work
    // still reading the old storage must stop. recomputeCache with `fully` follows.
    virtual void willReplaceContents() {}

protected:
    ~HighlightingHook() = default;
};

// One split (text view) showing the document, as the front end implements it.
class DocumentView {
public:
    virtual Range selectedRange() const = 0;
    virtual void setSelectedRange(Range range) = 0;
    // True when the view has no secondary selections (the selection engine answers this).
    virtual bool isDecoherent() const { return true; }
    virtual bool isFolded() const { return false; }
    // The cached range of visible lines is stale.
    virtual void invalidateVisibleRange() {}
    // Sent after every character edit has been processed.
    virtual void textStorageWasChanged() {}
    // Sent on the run-loop turn after the document was opened.
    virtual void documentDidOpen() {}

protected:
    ~DocumentView() = default;
};

// The alert the changed-on-disk monitor shows; answers the index of the button chosen.
class AlertPresenter {
public:
    virtual size_t runCriticalAlert(const std::string& title, const std::string& message,
                                    const std::vector<std::string>& buttons) = 0;

protected:
    ~AlertPresenter() = default;
};

}  // namespace vx
