#include "languages/regex_check.hpp"

#include <oniguruma.h>

#include <memory>

namespace vx::test {

namespace {

// UTF-8 to UTF-16LE bytes, as the highlighter hands text to the regex engine.
std::string utf16le(const std::string& text) {
    std::string out;
    auto put = [&out](char32_t unit) {
        out += char(unit & 0xFF);
        out += char(unit >> 8);
    };
    for (size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const int length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        char32_t c = length == 1 ? byte : byte & (0x7F >> length);
        for (int k = 1; k < length && i + k < text.size(); ++k) c = (c << 6) | (text[i + k] & 0x3F);
        i += length;
        if (c >= 0x10000) {
            put(0xD800 + ((c - 0x10000) >> 10));
            put(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            put(c);
        }
    }
    return out;
}

std::string utf8(const OnigUChar* begin, const OnigUChar* end) {
    std::string out;
    for (const OnigUChar* p = begin; p + 1 < end; p += 2) {
        const unsigned unit = p[0] | (p[1] << 8);
        if (unit < 0x80) out += char(unit);
        else out += '?';  // group names in our definitions are ASCII
    }
    return out;
}

struct RegexDeleter {
    void operator()(regex_t* regex) const { onig_free(regex); }
};

}  // namespace

RegexCheck checkRegex(const std::string& expression) {
    static const bool initialised = [] {
        OnigEncoding encodings[] = {ONIG_ENCODING_UTF16_LE};
        return onig_initialize(encodings, 1) == ONIG_NORMAL;
    }();
    RegexCheck out;
    if (!initialised) {
        out.error = "the regex engine did not start";
        return out;
    }
    const std::string pattern = utf16le(expression);
    const auto* begin = reinterpret_cast<const OnigUChar*>(pattern.data());
    regex_t* raw = nullptr;
    OnigErrorInfo info;
    const int status = onig_new(&raw, begin, begin + pattern.size(),
                                ONIG_OPTION_MULTILINE | ONIG_OPTION_NEGATE_SINGLELINE | ONIG_OPTION_CAPTURE_GROUP,
                                ONIG_ENCODING_UTF16_LE, ONIG_SYNTAX_RUBY, &info);
    if (status != ONIG_NORMAL) {
        OnigUChar message[ONIG_MAX_ERROR_MESSAGE_LEN];
        onig_error_code_to_str(message, status, &info);
        out.error = reinterpret_cast<const char*>(message);
        return out;
    }
    const std::unique_ptr<regex_t, RegexDeleter> regex(raw);
    out.compiles = true;
    out.groups = onig_number_of_captures(regex.get());
    onig_foreach_name(
        regex.get(),
        [](const OnigUChar* name, const OnigUChar* nameEnd, int, int*, regex_t*, void* names) {
            static_cast<std::vector<std::string>*>(names)->push_back(utf8(name, nameEnd));
            return 0;
        },
        &out.names);
    return out;
}

}  // namespace vx::test
