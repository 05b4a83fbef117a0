// Detection, the highlighting gate and the indentation string operations over any UTF-16 text.
// Besides memory safety under the sanitizers, it checks what must hold for every input: the
// detection result stays in range, outdenting removes exactly one level of columns, and
// normalizing is idempotent.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "document/indentation_strings.hpp"
#include "document/tabdetection.hpp"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    vx::VXIndentationContext context;
    context.tabSize = 1 + data[0] % 18;
    context.useSoftTabs = data[1] & 1;
    std::u16string text((size - 2) / 2, u'\0');
    for (size_t i = 0; i < text.size(); ++i) text[i] = char16_t(data[2 + 2 * i] | data[3 + 2 * i] << 8);

    vx::TabDetectionResult result = vx::detect(text);
    check(result.undecided <= 1 && result.usesSpaces <= 1);
    check(result.ratio >= 0 && result.ratio <= 1);
    check(result.widthConfidence >= 0 && result.widthConfidence <= 1);
    check(result.width == 0 || (result.width >= 1 && result.width <= 8));
    (void)vx::shouldHighlight(text);

    for (size_t start = 0; start <= text.size();) {
        size_t end = text.find(u'\n', start);
        if (end == std::u16string::npos) end = text.size();
        std::u16string_view line(text.data() + start, end - start);

        uint64_t width = vx::indentationLengthInSpacesWithContext(line, context);
        uint64_t outdented = vx::indentationLengthInSpacesWithContext(vx::indentBy(line, -1, context), context);
        check(outdented == (width > context.tabSize ? width - context.tabSize : 0));
        uint64_t indented = vx::indentationLengthInSpacesWithContext(vx::indentBy(line, 1, context), context);
        check(indented >= width);

        std::u16string normalized = vx::lineByNormalizingIndentationUsingContext(line, context);
        check(vx::lineByNormalizingIndentationUsingContext(normalized, context) == normalized);
        start = end + 1;
    }
    (void)vx::stringByHomogenizingIndentationInto(text, context, u"\t", {}, u"// ");
    return 0;
}
