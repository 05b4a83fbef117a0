#include "syntax/pattern_definition.hpp"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "syntax/mapped_string.hpp"
#include "selfml/sfwriter.hpp"

namespace vx {
namespace {

char16_t foldAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }
bool isAsciiLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
// \G means "where the search started", which differs between an anchored test and a search.
bool usesSearchStart(std::u16string_view expression) {
    for (size_t i = 0; i + 1 < expression.size(); ++i) {
        if (expression[i] != u'\\') continue;
        if (expression[i + 1] == u'G') return true;
        ++i;
    }
    return false;
}

// NSString's intValue: optional blanks and sign, then digits; anything else reads as 0.
long readIntValue(const std::string& text) { return std::strtol(text.c_str(), nullptr, 10); }

std::string quoted(std::u16string_view text) {
    std::string out;
    SFWriteQuotedString(utf8FromUtf16(text), out);
    return out;
}

}  // namespace

// --- flags and the two tests ------------------------------------------------------------

std::optional<uint64_t> VXSyntaxPatternDefinition::matchAt(const VXSyntaxLine& line, uint64_t position,
                                                           VXRegexRegion* region, const VXRegex* instanceRegex) const {
    const std::u16string_view text = line.text;
    if (beforeWordBoundary && position > 0 && isSyntaxWordCharacter(text[position - 1])) return std::nullopt;
    if (beforeAnchor && position != 0) return std::nullopt;
    const std::optional<uint64_t> length = kindMatchAt(line, position, region, instanceRegex);
    if (!length) return std::nullopt;
    const uint64_t end = position + *length;
    if (afterWordBoundary && end < text.size() && isSyntaxWordCharacter(text[end])) return std::nullopt;
    if (afterAnchor && end < line.contentLength) return std::nullopt;
    return length;
}

std::u16string expressionWithFlags(std::u16string body, bool freeSpacing,
                                   const VXSyntaxPatternDefinition& flags) {
    const bool after = flags.afterWordBoundary || flags.afterAnchor;
    if (!flags.beforeWordBoundary && !flags.beforeAnchor && !after) return body;
    std::u16string out;
    // Word characters are ASCII only, whatever the case option says.
    if (flags.beforeWordBoundary) out += u"(?-i:(?<![A-Za-z0-9_]))";
    if (flags.beforeAnchor) out += u"\\A";
    // The flags are tested on the match the pattern itself makes: an atomic group keeps a
    // failed right-hand test from backtracking into a different (shorter) match.
    out += after ? u"(?>" : u"(?:";
    out += body;
    if (freeSpacing) out += u'\n';  // ends a trailing comment
    out += u')';
    if (flags.afterWordBoundary) out += u"(?-i:(?![A-Za-z0-9_]))";
    if (flags.afterAnchor) out += u"(?=(?:\\r\\n|\\n|\\r)?\\z)";
    return out;
}

std::u16string VXSyntaxPatternDefinition::searchExpression() const {
    std::u16string body = kindExpression();
    if (body.empty()) return body;
    return expressionWithFlags(std::move(body), searchOptions().freeSpacing, *this);
}

VXRegexOptions VXSyntaxPatternDefinition::searchOptions() const {
    if (m_patternType != Regex) return {};
    const auto& regex = static_cast<const VXSyntaxPatternRegexDefinition&>(*this);
    return {caseInsensitive, regex.freeSpacing};
}

namespace {
std::atomic<uint32_t> nextSearchId{0};
}

uint32_t VXSyntaxPatternDefinition::searchIdCount() { return nextSearchId.load(); }

void VXSyntaxPatternDefinition::prepareSearch() const {
    std::call_once(m_searchOnce, [this] {
        m_shape = kindPrefilter();
        if (beforeAnchor) {
            m_searchable = true;  // only the line's start to try
        } else {
            m_prefilter = m_shape;
            // A match at the line's end is empty: no word can start there.
            if (m_prefilter && beforeWordBoundary && m_prefilter->orLineEnd) m_prefilter.reset();
            if (m_prefilter && beforeWordBoundary) m_prefilter->requireWordStart();
            if (m_prefilter && !kindAlwaysScans() && !m_prefilter->worthScanning()) m_prefilter.reset();
            if (!m_prefilter) {
                const std::u16string expression = searchExpression();
                if (!expression.empty()) m_searchRegex = compileSearch(expression);
            }
            m_searchable = m_prefilter || m_searchRegex;
        }
        if (m_searchable) m_searchId = nextSearchId++;
    });
    m_searchReady.store(true, std::memory_order_release);
}

std::shared_ptr<const VXRegex> VXSyntaxPatternDefinition::compileSearch(const std::u16string& expression) const {
    return VXRegex::compile(expression, searchOptions());
}

std::string VXSyntaxPatternDefinition::flagsRepresentation() const {
    std::string out;
    if (beforeWordBoundary) out += " (boundary.left)";
    if (afterWordBoundary) out += " (boundary.right)";
    if (beforeAnchor) out += " (anchor.left)";
    if (afterAnchor) out += " (anchor.right)";
    if (caseInsensitive) out += " (ignore-case)";
    return out;
}

// --- reading a pattern node -------------------------------------------------------------

std::unique_ptr<VXSyntaxPatternDefinition> VXSyntaxPatternDefinition::patternWithSFONode(const SFONodePtr& node) {
    if (!node) return nullptr;
    const bool both = node->nodeForKey("boundary.both") != nullptr;
    const bool anchorBoth = node->nodeForKey("anchor.both") != nullptr;
    const bool ignoreCase = node->nodeForKey("ignore-case") != nullptr;

    std::unique_ptr<VXSyntaxPatternDefinition> pattern;
    if (auto list = node->nodeForKey("list")) {
        std::vector<std::u16string> words;
        for (const auto& word : list->extractStrings())
            if (!word.empty()) words.push_back(utf16FromUtf8(word));
        if (words.empty()) return nullptr;
        pattern = std::make_unique<VXSyntaxPatternListDefinition>(std::move(words), ignoreCase);
    } else if (auto regex = node->nodeForKey("regex")) {
        const auto strings = regex->extractStrings();
        if (strings.empty() || strings.front().empty()) return nullptr;
        std::vector<VXSyntaxCaptureDefinition> captures;
        for (const auto& entry : regex->extractLists()) {
            const std::string key = entry->head();
            if (key.empty()) continue;
            VXSyntaxCaptureDefinition capture;
            const long index = readIntValue(key);
            if (index != 0 || key == "0") capture.captureIndex = static_cast<int>(index);
            else capture.captureName = key;
            if (auto scope = entry->firstIfString()) capture.scope = VXScope(*scope);
            captures.push_back(std::move(capture));
        }
        pattern = VXSyntaxPatternRegexDefinition::make(utf16FromUtf8(strings.front()), ignoreCase, std::move(captures));
    } else {
        const auto strings = node->extractStrings();
        if (strings.empty() || strings.front().empty()) return nullptr;
        pattern = std::make_unique<VXSyntaxPatternStringDefinition>(utf16FromUtf8(strings.front()), ignoreCase);
    }
    if (!pattern) return nullptr;
    pattern->beforeWordBoundary = both || node->nodeForKey("boundary.left") != nullptr;
    pattern->afterWordBoundary = both || node->nodeForKey("boundary.right") != nullptr;
    pattern->beforeAnchor = anchorBoth || node->nodeForKey("anchor.left") != nullptr;
    pattern->afterAnchor = anchorBoth || node->nodeForKey("anchor.right") != nullptr;
    pattern->caseInsensitive = ignoreCase;
    return pattern;
}

// --- finding the next match ---------------------------------------------------------------

uint64_t VXSyntaxPatternDefinition::findNext(const VXSyntaxLine& line, uint64_t from, VXRegexRegion* region,
                                             VXRegexPrefilter::Memo* memo) const {
    ensureSearch();
    if (beforeAnchor) return from == 0 && matchAt(line, 0, region) ? 0 : kNotFound;
    const std::u16string_view text = line.text;
    if (!m_prefilter) {
        const auto found = m_searchRegex->search(text, from, text.size(), region);
        return found ? *found : kNotFound;
    }
    // The pattern is tested only where its first character (and the one before) allow a
    // match; a match needs at least one character, so the text's end is never a candidate,
    // unless the expression also matches at the line's end (before an LF, or at the end).
    const VXCharFilter& first = m_prefilter->first;
    const bool lineEnd = m_prefilter->orLineEnd;
    for (uint64_t p = from; p < text.size();) {
        const char16_t c = text[p];
        if (lineEnd && c == u'\n' && matchAt(line, p, region)) return p;
        if (c < 128 && !first.ascii[c]) {  // most positions; never half of a surrogate pair
            ++p;
            continue;
        }
        if (m_prefilter->admits(text, p, memo) && matchAt(line, p, region)) return p;
        p = VXSyntaxNextCharacter(text, p);
    }
    if (lineEnd && from <= text.size() && matchAt(line, text.size(), region)) return text.size();
    return kNotFound;
}

void VXSyntaxLiteralPatternDefinition::addFirstCharacter(char16_t c, bool ignoringCase) {
    if (c >= 128) {
        m_first.other = true;
        return;
    }
    m_first.ascii[c] = true;
    if (ignoringCase && isAsciiLetter(c)) m_first.ascii[c ^ 0x20] = true;
}

std::optional<VXRegexPrefilter> VXSyntaxLiteralPatternDefinition::kindPrefilter() const {
    VXRegexPrefilter shape;
    shape.first = m_first;
    return shape;
}

// --- strings ----------------------------------------------------------------------------

VXSyntaxPatternStringDefinition::VXSyntaxPatternStringDefinition(std::u16string text, bool ignoringCase)
    : VXSyntaxLiteralPatternDefinition(String), string(std::move(text)) {
    if (!string.empty()) addFirstCharacter(string.front(), ignoringCase);
}

std::optional<uint64_t> VXSyntaxPatternStringDefinition::kindMatchAt(const VXSyntaxLine& line, uint64_t position,
                                                                     VXRegexRegion*, const VXRegex*) const {
    if (line.text.size() - position < string.size()) return std::nullopt;
    for (size_t i = 0; i < string.size(); ++i) {
        const char16_t a = line.text[position + i];
        const char16_t b = string[i];
        if (a != b && !(caseInsensitive && foldAscii(a) == foldAscii(b))) return std::nullopt;
    }
    return string.size();
}

std::string VXSyntaxPatternStringDefinition::selfmlDebuggingRepresentation() const {
    return quoted(string) + flagsRepresentation();
}

// --- lists ------------------------------------------------------------------------------

VXSyntaxPatternListDefinition::VXSyntaxPatternListDefinition(std::vector<std::u16string> words, bool ignoreCase)
    : VXSyntaxLiteralPatternDefinition(List), strings(std::move(words)), hashTrie(strings, ignoreCase) {
    for (const auto& word : strings)
        if (!word.empty()) addFirstCharacter(word.front(), ignoreCase);
}

std::optional<uint64_t> VXSyntaxPatternListDefinition::kindMatchAt(const VXSyntaxLine& line, uint64_t position,
                                                                   VXRegexRegion*, const VXRegex*) const {
    return hashTrie.longestMatchAt(line.text, position);
}

std::string VXSyntaxPatternListDefinition::selfmlDebuggingRepresentation() const {
    std::string out = "(list";
    for (const auto& word : strings) out += " " + quoted(word);
    return out + ")" + flagsRepresentation();
}

// --- regular expressions ----------------------------------------------------------------

std::unique_ptr<VXSyntaxPatternRegexDefinition> VXSyntaxPatternRegexDefinition::make(
    std::u16string expression, bool ignoreCase, std::vector<VXSyntaxCaptureDefinition> captures) {
    if (expression.empty()) return nullptr;
    std::unique_ptr<VXSyntaxPatternRegexDefinition> pattern(new VXSyntaxPatternRegexDefinition());
    pattern->caseInsensitive = ignoreCase;
    // An expression written over several lines is read in free-spacing mode.
    pattern->freeSpacing = expression.find_first_of(u"\r\n") != std::u16string::npos;
    pattern->hasBackrefs = regexHasBackrefs(expression);
    pattern->regexString = std::move(expression);
    pattern->captures = std::move(captures);
    pattern->regexObject = VXRegex::compile(pattern->regexString, {ignoreCase, pattern->freeSpacing});
    // An end pattern with back-references is compiled per zone instance, so it may stay
    // uncompiled here; the zone definition decides.
    if (!pattern->regexObject && !pattern->hasBackrefs) return nullptr;
    return pattern;
}

std::optional<uint64_t> VXSyntaxPatternRegexDefinition::kindMatchAt(const VXSyntaxLine& line, uint64_t position,
                                                                    VXRegexRegion* region,
                                                                    const VXRegex* instanceRegex) const {
    const VXRegex* regex = instanceRegex ? instanceRegex : regexObject.get();
    if (!regex) return std::nullopt;
    return regex->matchAt(line.text, position, region);
}

std::shared_ptr<const VXRegex> VXSyntaxPatternRegexDefinition::compileSearch(const std::u16string& expression) const {
    // Without flags the search expression is the pattern's own, already compiled.
    if (expression == regexString && regexObject) return regexObject;
    return VXSyntaxPatternDefinition::compileSearch(expression);
}

std::optional<VXRegexPrefilter> VXSyntaxPatternRegexDefinition::kindPrefilter() const {
    if (freeSpacing) return std::nullopt;  // blanks and comments would need reading as such
    return VXRegexPrefilterForExpression(regexString, caseInsensitive);
}

std::u16string VXSyntaxPatternRegexDefinition::kindExpression() const {
    return usesSearchStart(regexString) ? std::u16string() : regexString;
}

std::shared_ptr<const VXSyntaxEndPatternInstance> VXSyntaxPatternRegexDefinition::instanceForStartMatch(
    std::u16string_view line, const VXRegexRegion* startRegion) const {
    std::u16string expanded = VXExpandBackrefsInRegex(regexString, [&](int group) -> std::optional<std::u16string> {
        auto range = regionGroup(startRegion, group);
        if (!range) return std::nullopt;
        return std::u16string(line.substr(range->first, range->second));
    });
    std::lock_guard lock(m_instancesMutex);
    auto& slot = m_instances[expanded];
    if (!slot) {
        auto instance = std::make_shared<VXSyntaxEndPatternInstance>();
        const VXRegexOptions options{caseInsensitive, freeSpacing};
        instance->anchored = VXRegex::compile(expanded, options);
        if (instance->anchored && !usesSearchStart(expanded))
            instance->search = VXRegex::compile(expressionWithFlags(expanded, freeSpacing, *this), options);
        slot = std::move(instance);
    }
    return slot;
}

std::string VXSyntaxPatternRegexDefinition::selfmlDebuggingRepresentation() const {
    std::string out = "(regex " + quoted(regexString);
    for (const auto& capture : captures) {
        out += " (" + (capture.captureIndex ? std::to_string(*capture.captureIndex) : capture.captureName);
        if (!capture.scope.isNil()) out += " " + capture.scope.toString();
        out += ")";
    }
    return out + ")" + flagsRepresentation();
}

}  // namespace vx
