// A prefilter at work: the chain of runs along a line, and what the highlighter asks of it.
#include "syntax/regex_prefilter.hpp"

namespace vx {
namespace {

bool stageAdmits(const std::vector<VXRegexPrefilter::Stage>& chain, size_t n, std::u16string_view text, uint64_t at,
                 VXRegexPrefilter::Memo* memo) {
    const VXRegexPrefilter::Stage& stage = chain[n];
    auto* remembered = memo ? &memo->stages[n] : nullptr;
    if (remembered && remembered->from <= at && at <= remembered->runEnd) return remembered->admitted;
    const uint64_t start = at;
    while (at < text.size() && text[at] < 128 && stage.run.ascii[text[at]]) ++at;
    bool admitted;
    if (at == text.size()) admitted = false;
    else if (text[at] >= 128) admitted = true;  // beyond what the stages know exactly
    else if (!stage.required.ascii[text[at]]) admitted = false;
    else admitted = !stage.continues || n + 1 == chain.size() || stageAdmits(chain, n + 1, text, at + 1, memo);
    if (remembered) *remembered = {start, at, admitted};
    return admitted;
}

}  // namespace

bool VXRegexPrefilter::chainAdmits(std::u16string_view text, uint64_t position, Memo* memo) const {
    return stageAdmits(chain, 0, text, position, memo);
}

bool VXRegexPrefilter::mayMatchIn(const VXCharFilter& present) const {
    if (orLineEnd) return true;  // every line has an end
    if (!first.meets(present)) return false;
    for (const Stage& stage : chain)
        if (!stage.required.meets(present)) return false;
    return true;
}

bool VXRegexPrefilter::worthScanning() const {
    if (constrainsPrevious || !chain.empty()) return true;
    size_t letters = 0;
    for (char16_t c = u'a'; c <= u'z'; ++c) letters += first.ascii[c] ? 1 : 0;
    return letters < 10;
}

void VXRegexPrefilter::requireWordStart() {
    // Not an ASCII letter, digit or "_"; anything beyond ASCII may be.
    VXCharFilter notWord = VXCharFilter::everything();
    for (char16_t c = 0; c < 128; ++c)
        if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_') notWord.ascii[c] = false;
    if (constrainsPrevious) {
        previous.ascii &= notWord.ascii;
    } else {
        previous = notWord;
        constrainsPrevious = true;
    }
}

}  // namespace vx
