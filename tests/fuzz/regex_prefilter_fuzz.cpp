// The prefilter read from any expression never turns away a position where the expression
// matches, and answers the same with or without what it remembers between positions. The input is a flag byte (bit 0: ignore case), the expression, a NUL byte and the
// subject; expressions that do not compile are skipped.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "syntax/candidate_set.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/regex.hpp"
#include "syntax/regex_prefilter.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const bool caseInsensitive = data[0] & 1;
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const size_t split = input.find('\0');
    const std::u16string expression = vx::utf16FromUtf8(input.substr(0, split));
    const std::u16string subject = vx::utf16FromUtf8(split == std::string::npos ? std::string("a1 \"b\".c_d") : input.substr(split + 1));

    const auto filter = vx::VXRegexPrefilterForExpression(expression, caseInsensitive);
    if (!filter) return 0;
    const auto regex = vx::VXRegex::compile(expression, {caseInsensitive, false});
    if (!regex) return 0;
    auto region = vx::makeRegion();
    vx::VXRegexPrefilter::Memo memo;  // what one position learnt must not change the next's answer
    for (size_t p = 0; p < subject.size(); p = vx::VXSyntaxNextCharacter(subject, p)) {
        const bool admitted = filter->admits(subject, p);
        if (filter->admits(subject, p, &memo) != admitted) std::abort();
        if (regex->matchAt(subject, p, region.get()) && (!admitted || !filter->mayMatchIn(vx::VXCharFilter::of(subject))))
            std::abort();
    }
    return 0;
}
