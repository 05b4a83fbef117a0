// VXRecipe: a command object over one text view and its document, made for one run and dropped.
// A recipe reads and changes the text only through the operations below, so each run is one
// undoable change however many replacements it makes. With several selections the view runs a
// recipe once per selection (selection() is then that one).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "editing/text_buffer.hpp"
#include "platform/range.hpp"

namespace vx {

// What a recipe sees of a text view and its document.
class RecipeTarget {
public:
    virtual ~RecipeTarget() = default;
    virtual TextBuffer& buffer() = 0;
    // Every change a recipe makes goes through here (a text view records it for undo).
    virtual void replaceText(Range range, std::u16string_view text) { buffer().replace(range, text); }
    // The selection the recipe runs on.
    virtual Range targetSelection() const = 0;
    virtual void setTargetSelection(Range range) = 0;
    virtual int tabSize() const = 0;
    virtual bool softTabs() const = 0;
    // What a new line break is in this document (LF, CRLF or CR).
    virtual std::u16string lineBreak() const = 0;
    // The language's comment markers; empty when it has none.
    virtual std::u16string lineCommentMarker() const { return {}; }
    virtual std::pair<std::u16string, std::u16string> blockCommentMarkers() const { return {}; }
};

class VXRecipe {
public:
    explicit VXRecipe(RecipeTarget& target) : m_target(target) {}
    virtual ~VXRecipe() = default;
    VXRecipe(const VXRecipe&) = delete;
    VXRecipe& operator=(const VXRecipe&) = delete;

    // Runs the recipe; whether it changed the text.
    virtual bool main() = 0;

    Range selection() const { return m_target.targetSelection(); }
    void setSelection(Range range) { m_target.setTargetSelection(range); }
    uint64_t length() const { return m_target.buffer().length(); }
    std::u16string textInRange(Range range) const { return m_target.buffer().substring(range); }
    // False (and nothing changes) for a range outside the text.
    bool replaceTextInRange(Range range, std::u16string_view text);
    // The whole lines covering a range, with the last one's line break.
    Range rangeOfLineInRange(Range range) const;
    // The same without the last line break.
    Range contentRangeOfLinesInRange(Range range) const;
    int tabSize() const { return m_target.tabSize(); }
    bool softTabs() const { return m_target.softTabs(); }
    std::u16string lineBreak() const { return m_target.lineBreak(); }
    RecipeTarget& target() { return m_target; }

    // The lines of a range's text, split at LF, CRLF and CR, without their breaks.
    static std::vector<std::u16string> splitLines(std::u16string_view text);
    static std::u16string joinLines(const std::vector<std::u16string>& lines, std::u16string_view lineBreak);

private:
    std::pair<uint64_t, uint64_t> linesOf(Range range) const;

    RecipeTarget& m_target;
};

}  // namespace vx
