// VXSettingsContext: editor settings that apply globally, to one language or to one file
// extension, kept as an ordered list of strata.
//
// A stratum is a dictionary of setting values plus three reserved keys saying where it applies:
//
//     { "__stratum__": 2, "__context__": {"__extension__": "rb"}, "__is_registered__": NO,
//       "VXTabSize": 2 }
//
// Levels are 0 global, 1 language ({"__language__": identifier}), 2 file extension
// ({"__extension__": lower-cased extension}). Strata are ordered most specific level first;
// within a level a user stratum goes in front of a registered (program default) one. A document
// asks the extension stratum, then the language stratum, then anything (see the document's
// settings operations).
//
// The serialized form is {"__strata__": [stratum, ...]}, stored in a property-list file or (for the
// application's own context) in the user defaults. Changes are written by a periodic writer on the
// run loop of the thread that created the context, every 20 seconds while something changed.
// A context has no locks: use it from the thread that created it.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.hpp"
#include "platform/run_loop.hpp"

namespace vx {

class VXSettingsContext {
public:
    using Dictionary = PropertyValue::Dictionary;

    static constexpr std::string_view kStratumKey = "__stratum__";
    static constexpr std::string_view kContextKey = "__context__";
    static constexpr std::string_view kRegisteredKey = "__is_registered__";
    static constexpr std::string_view kStrataKey = "__strata__";
    static constexpr std::string_view kLanguageKey = "__language__";
    static constexpr std::string_view kExtensionKey = "__extension__";

    static constexpr int64_t kGlobalStratum = 0;
    static constexpr int64_t kLanguageStratum = 1;
    static constexpr int64_t kExtensionStratum = 2;

    static constexpr std::chrono::milliseconds kWriteInterval{20'000};

    // An empty context (not backed by a file).
    VXSettingsContext();
    // A context kept in the property-list file at `url`. It is read now, or on first access when
    // `loadLazily` is set (until then the file is not touched at all).
    VXSettingsContext(std::string url, bool loadLazily);
    virtual ~VXSettingsContext();
    VXSettingsContext(const VXSettingsContext&) = delete;
    VXSettingsContext& operator=(const VXSettingsContext&) = delete;

    // The strata in lookup order (loads a lazy context first).
    const PropertyValue::Array& strata();
    bool isLoaded() const { return m_strata.has_value(); }
    const std::string& url() const { return m_url; }
    bool hasChanged() const { return m_hasChanged; }
    bool isPulsing() const { return m_timer.has_value(); }

    // Reads the file at url() again; a missing or unreadable file leaves the context empty.
    virtual void load();
    void loadIfNeeded();
    // Takes the strata from a serialized form; an empty dictionary changes nothing and answers false.
    bool loadFromSerializedRepresentation(const Dictionary& representation);

    Dictionary serialize();
    // Writes the serialized form atomically; false when there is no stratum or the write fails.
    bool serializeToURL(const std::string& url);

    // The value from the first stratum holding the key, whatever its level and context.
    std::optional<PropertyValue> valueForKey(std::string_view key);
    // The value from the first stratum of exactly this level and context (none means the empty one).
    std::optional<PropertyValue> valueForKey(std::string_view key, int64_t stratum, const Dictionary* context);

    // A value the user set, and a default the program registers. Both replace the value in an
    // existing stratum of the same level, kind and context, or add such a stratum in order.
    void setValue(PropertyValue value, std::string_view key, int64_t stratum, const Dictionary* context);
    void setRegisteredValue(PropertyValue value, std::string_view key, int64_t stratum, const Dictionary* context);
    void setValue(PropertyValue value, std::string_view key, int64_t stratum, const Dictionary* context, bool registered);

    // Persists the context now; the periodic writer calls it while hasChanged() is set, which a
    // successful write clears.
    bool write();

    // Restarts the periodic writer on the calling thread's run loop with another interval (the
    // tests use a short one); the interval is kWriteInterval otherwise.
    void startPeriodicWriter(std::chrono::milliseconds interval = kWriteInterval);
    void stopPeriodicWriter();

    static bool isReservedKey(std::string_view key);

protected:
    // Where write() puts the serialized form; the file at url() unless a subclass stores it elsewhere.
    virtual bool writeSerializedRepresentation();
    // Replaces the strata without marking a change (used by loading).
    void resetStrata(PropertyValue::Array strata);

private:
    void insertStratum(PropertyValue stratum);

    std::string m_url;
    std::optional<PropertyValue::Array> m_strata;  // empty until loaded
    bool m_hasChanged = false;
    RunLoop* m_writerLoop = nullptr;
    std::optional<RunLoop::TimerId> m_timer;
};

}  // namespace vx
