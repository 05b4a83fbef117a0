#include "document/indentation_context.hpp"

#include "platform/user_defaults.hpp"

namespace vx {

VXIndentationContext VXIndentationContext::contextWithDefaults(int64_t tabSize, int64_t useSoftTabs) {
    VXIndentationContext context;
    context.tabSize = tabSize >= 1 && tabSize <= kMaxTabSize ? uint64_t(tabSize) : kDefaultTabSize;
    context.useSoftTabs = useSoftTabs != 0;
    return context;
}

VXIndentationContext VXIndentationContext::defaultContext() {
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    return contextWithDefaults(defaults.integerForKey("VXTabSize"), defaults.integerForKey("VXUseSoftTabs"));
}

}  // namespace vx
