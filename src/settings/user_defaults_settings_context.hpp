// VXUserDefaultsSettingsContext: the application's own settings context, kept in the user
// defaults under "VXSettings" (the serialized form {"__strata__": [...]}).
#pragma once

#include "platform/user_defaults.hpp"
#include "settings/settings_context.hpp"

namespace vx {

class VXUserDefaultsSettingsContext : public VXSettingsContext {
public:
    static constexpr std::string_view kDefaultsKey = "VXSettings";

    // The one context of the process, over the standard user defaults, made on first use by the
    // thread whose run loop then writes it (the main thread).
    static VXUserDefaultsSettingsContext& globalContext();

    // A context over other defaults (tests give each case its own file).
    explicit VXUserDefaultsSettingsContext(UserDefaults& defaults);

    // Reads "VXSettings" again; a missing or malformed value leaves the context empty.
    void load() override;

protected:
    bool writeSerializedRepresentation() override;

private:
    UserDefaults& m_defaults;
};

}  // namespace vx
