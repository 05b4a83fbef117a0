// VXIndentationContext: how one document indents. A level is `tabSize` columns wide and is typed
// as `tabSize` spaces when soft tabs are on, else as one tab character.
#pragma once

#include <cstdint>
#include <string>

namespace vx {

struct VXIndentationContext {
    static constexpr uint64_t kDefaultTabSize = 4;
    static constexpr int64_t kMaxTabSize = 18;

    uint64_t tabSize = kDefaultTabSize;
    bool useSoftTabs = false;

    std::u16string tabString() const {
        return useSoftTabs ? std::u16string(tabSize, u' ') : std::u16string(1, u'\t');
    }

    // The editor-wide default, from the user defaults "VXTabSize" and "VXUseSoftTabs".
    static VXIndentationContext defaultContext();
    // The same rule over given values: a tab size outside 1..18 becomes 4.
    static VXIndentationContext contextWithDefaults(int64_t tabSize, int64_t useSoftTabs);

    friend bool operator==(const VXIndentationContext&, const VXIndentationContext&) = default;
};

}  // namespace vx
