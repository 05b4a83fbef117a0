// A settings context loaded from any property-list bytes (a hand-edited settings file): lookups and
// changes must work whatever shapes the strata have, and what is written reads back.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/property_list.hpp"
#include "settings/settings_context.hpp"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto value = vx::propertyListFromBytes(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!value || !value->dictionary()) return 0;
    vx::VXSettingsContext context;
    context.stopPeriodicWriter();
    context.loadFromSerializedRepresentation(*value->dictionary());

    const vx::VXSettingsContext::Dictionary ruby{{"__language__", "source.ruby"}};
    (void)context.valueForKey("VXTabSize");
    (void)context.valueForKey("VXTabSize", 1, &ruby);
    const size_t before = context.strata().size();
    context.setValue(int64_t{3}, "VXTabSize", 1, &ruby);
    check(context.valueForKey("VXTabSize", 1, &ruby).has_value());
    check(context.strata().size() <= before + 1);
    context.setRegisteredValue(true, "VXUseSoftTabs", 0, nullptr);

    vx::VXSettingsContext reread;
    reread.stopPeriodicWriter();
    auto back = vx::propertyListFromBytes(vx::propertyListXML(vx::PropertyValue(context.serialize())));
    check(back && back->dictionary() && reread.loadFromSerializedRepresentation(*back->dictionary()));
    check(reread.strata().size() == context.strata().size());
    return 0;
}
