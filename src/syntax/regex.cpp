#include "syntax/regex.hpp"

#include "syntax/onig_handles.hpp"

#include <mutex>

#include "platform/log.hpp"
#include "syntax/mapped_string.hpp"

namespace vx {
namespace {

void initializeOniguruma() {
    static std::once_flag once;
    std::call_once(once, [] {
        OnigEncoding encodings[] = {ONIG_ENCODING_UTF16_LE};
        onig_initialize(encodings, 1);
    });
}

std::string onigErrorText(int code, OnigErrorInfo* info) {
    OnigUChar message[ONIG_MAX_ERROR_MESSAGE_LEN];
    onig_error_code_to_str(message, code, info);
    return reinterpret_cast<const char*>(message);
}

}  // namespace

void VXRegexRegionDeleter::operator()(VXRegexRegion* region) const { onig_region_free(onigRegion(region), 1); }
void VXRegexSetDeleter::operator()(VXRegexSet* set) const { onig_regset_free(onigSet(set)); }

VXRegexRegionPtr makeRegion() { return VXRegexRegionPtr(reinterpret_cast<VXRegexRegion*>(onig_region_new())); }

VXRegex::VXRegex(std::unique_ptr<Handle> handle) : m_handle(std::move(handle)) {}
VXRegex::~VXRegex() = default;

OnigOptionType regexCompileOptions(VXRegexOptions options) {
    OnigOptionType bits = ONIG_OPTION_MULTILINE | ONIG_OPTION_NEGATE_SINGLELINE | ONIG_OPTION_CAPTURE_GROUP;
    if (options.caseInsensitive) bits |= ONIG_OPTION_IGNORECASE;
    if (options.freeSpacing) bits |= ONIG_OPTION_EXTEND;
    return bits;
}

OnigRegexPtr compileOnigRegex(std::u16string_view pattern, VXRegexOptions options) {
    if (pattern.empty()) return {};
    initializeOniguruma();
    OnigRegex raw = nullptr;
    OnigErrorInfo info{};
    const OnigUChar* begin = onigBytes(pattern.data());
    const int rc = onig_new(&raw, begin, begin + pattern.size() * 2, regexCompileOptions(options),
                            ONIG_ENCODING_UTF16_LE, ONIG_SYNTAX_RUBY, &info);
    OnigRegexPtr regex(raw);  // owned before the result is looked at
    if (rc != ONIG_NORMAL) {
        VX_LOG_DEBUG("syntax", "pattern does not compile: %s (%s)", utf8FromUtf16(pattern).c_str(),
                     onigErrorText(rc, &info).c_str());
        return {};
    }
    return regex;
}

std::shared_ptr<const VXRegex> VXRegex::compile(std::u16string_view pattern, VXRegexOptions options) {
    OnigRegexPtr regex = compileOnigRegex(pattern, options);
    if (!regex) return nullptr;
    return std::make_shared<const VXRegex>(std::make_unique<VXRegex::Handle>(VXRegex::Handle{std::move(regex)}));
}

std::optional<uint64_t> VXRegex::matchAt(std::u16string_view subject, uint64_t at, VXRegexRegion* region) const {
    const OnigUChar* str = onigBytes(subject.data());
    const int r = onig_match(m_handle->regex.get(), str, str + subject.size() * 2, str + at * 2, onigRegion(region), ONIG_OPTION_NONE);
    if (r < 0) return std::nullopt;
    return static_cast<uint64_t>(r) / 2;
}

std::optional<uint64_t> VXRegex::search(std::u16string_view subject, uint64_t from, uint64_t lastStart,
                                        VXRegexRegion* region) const {
    // Oniguruma's range is exclusive, except that a range at the subject's end includes the end,
    // and some optimised expressions report a match at the range itself: the answer is checked.
    const OnigUChar* str = onigBytes(subject.data());
    const OnigUChar* end = str + subject.size() * 2;
    const OnigUChar* range = lastStart >= subject.size() ? end : str + (lastStart + 1) * 2;
    const int r = onig_search(m_handle->regex.get(), str, end, str + from * 2, range, onigRegion(region), ONIG_OPTION_NONE);
    if (r < 0 || static_cast<uint64_t>(r) / 2 > lastStart) return std::nullopt;
    return static_cast<uint64_t>(r) / 2;
}

int VXRegex::groupNumberForName(std::string_view name, VXRegexRegion* region) const {
    // Group names are stored in the pattern's encoding.
    const std::u16string wide = utf16FromUtf8(name);
    const OnigUChar* begin = onigBytes(wide.data());
    const int n = onig_name_to_backref_number(m_handle->regex.get(), begin, begin + wide.size() * 2, onigRegion(region));
    return n > 0 ? n : -1;
}

int VXRegex::groupCount() const { return onig_number_of_captures(m_handle->regex.get()); }

std::optional<std::pair<uint64_t, uint64_t>> regionGroup(const VXRegexRegion* vxRegion, int group) {
    const OnigRegion* region = onigRegion(vxRegion);
    if (!region || group < 0 || group >= region->num_regs) return std::nullopt;
    const int begin = region->beg[group];
    const int end = region->end[group];
    if (begin < 0 || end < begin) return std::nullopt;
    return std::pair<uint64_t, uint64_t>(static_cast<uint64_t>(begin) / 2, static_cast<uint64_t>(end - begin) / 2);
}

std::u16string VXEscapeRegex(std::u16string_view text) {
    std::u16string out;
    out.reserve(text.size() + 8);
    for (char16_t c : text) {
        switch (c) {
        case u'$': case u'(': case u')': case u'*': case u'+': case u'.':
        case u'?': case u'[': case u'\\': case u'^': case u'|':
            out += u'\\';
            break;
        default:
            break;
        }
        out += c;
    }
    return out;
}

bool regexHasBackrefs(std::u16string_view pattern) {
    for (size_t i = 0; i + 1 < pattern.size(); ++i) {
        if (pattern[i] != u'\\') continue;
        if (pattern[i + 1] >= u'0' && pattern[i + 1] <= u'9') return true;
        ++i;  // an escaped character, such as an escaped backslash
    }
    return false;
}

}  // namespace vx
