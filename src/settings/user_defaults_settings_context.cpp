#include "settings/user_defaults_settings_context.hpp"

namespace vx {

VXUserDefaultsSettingsContext& VXUserDefaultsSettingsContext::globalContext() {
    static VXUserDefaultsSettingsContext context(UserDefaults::standardUserDefaults());
    return context;
}

VXUserDefaultsSettingsContext::VXUserDefaultsSettingsContext(UserDefaults& defaults) : m_defaults(defaults) {
    load();
}

void VXUserDefaultsSettingsContext::load() {
    resetStrata({});
    std::optional<PropertyValue> stored = m_defaults.objectForKey(kDefaultsKey);
    if (stored && stored->dictionary()) loadFromSerializedRepresentation(*stored->dictionary());
}

bool VXUserDefaultsSettingsContext::writeSerializedRepresentation() {
    return m_defaults.setObject(kDefaultsKey, PropertyValue(serialize()));
}

}  // namespace vx
