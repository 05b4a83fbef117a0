#include "document/whitespace_trim.hpp"

#include "platform/unicode.hpp"

namespace vx {

std::u16string stripTrailingWhitespace(std::u16string_view text, bool keepEnd, int64_t amount) {
    if (text.size() > kTrimLimit) return std::u16string(text);
    const std::string bytes = utf8FromUtf16(text);
    std::string out;
    out.reserve(bytes.size());
    constexpr size_t kNone = std::string::npos;
    size_t whitespaceStart = kNone;  // where the run of spaces and tabs before this point began
    bool lineHasContent = false;
    auto dropRun = [&] {
        if (whitespaceStart != kNone && (lineHasContent || amount == 2)) out.resize(whitespaceStart);
    };
    for (char byte : bytes) {
        if (byte == ' ' || byte == '\t') {
            if (whitespaceStart == kNone) whitespaceStart = out.size();
            out += byte;
        } else if (byte == '\n' || byte == '\r') {
            dropRun();
            out += byte;
            whitespaceStart = kNone;
            lineHasContent = false;
        } else {
            out += byte;
            whitespaceStart = kNone;
            lineHasContent = true;
        }
    }
    if (!keepEnd) dropRun();
    if (out.size() == bytes.size()) return std::u16string(text);
    return utf16FromUtf8(out);
}

std::optional<TrimPlan> planTrailingWhitespaceTrim(std::u16string_view text, Range selection, int64_t amount) {
    if (selection.location > kTrimLimit || selection.end() > text.size()) return std::nullopt;
    if (text.size() - selection.end() > kTrimLimit) return std::nullopt;
    const std::u16string_view before = text.substr(0, selection.location);
    const std::u16string_view selected = text.substr(selection.location, selection.length);
    const std::u16string_view after = text.substr(selection.end());
    const std::u16string strippedBefore = stripTrailingWhitespace(before, true, amount);
    const std::u16string strippedAfter = stripTrailingWhitespace(after, false, amount);
    if (strippedBefore.size() == before.size() && strippedAfter.size() == after.size()) return std::nullopt;
    TrimPlan plan;
    plan.text.reserve(strippedBefore.size() + selected.size() + strippedAfter.size());
    plan.text.append(strippedBefore).append(selected).append(strippedAfter);
    plan.selection = {selection.location - (before.size() - strippedBefore.size()), selection.length};
    return plan;
}

}  // namespace vx
