#include "settings/settings_context.hpp"

#include <utility>

namespace vx {
namespace {

const VXSettingsContext::Dictionary kEmptyContext;

int64_t levelOf(const PropertyValue& stratum) {
    const PropertyValue* level = stratum.find(VXSettingsContext::kStratumKey);
    return level ? level->integerValue().value_or(0) : 0;
}

bool isRegistered(const PropertyValue& stratum) {
    const PropertyValue* flag = stratum.find(VXSettingsContext::kRegisteredKey);
    return flag && flag->boolValue().value_or(false);
}

// A stratum without a context (or with something else in its place) applies to the empty one.
const VXSettingsContext::Dictionary& contextOf(const PropertyValue& stratum) {
    const PropertyValue* context = stratum.find(VXSettingsContext::kContextKey);
    const VXSettingsContext::Dictionary* dictionary = context ? context->dictionary() : nullptr;
    return dictionary ? *dictionary : kEmptyContext;
}

}  // namespace

VXSettingsContext::VXSettingsContext() : m_strata(PropertyValue::Array{}) { startPeriodicWriter(); }

VXSettingsContext::VXSettingsContext(std::string url, bool loadLazily) : m_url(std::move(url)) {
    if (!loadLazily) load();
    startPeriodicWriter();
}

VXSettingsContext::~VXSettingsContext() { stopPeriodicWriter(); }

bool VXSettingsContext::isReservedKey(std::string_view key) {
    return key == kStratumKey || key == kContextKey || key == kRegisteredKey;
}

const PropertyValue::Array& VXSettingsContext::strata() {
    loadIfNeeded();
    return *m_strata;
}

void VXSettingsContext::resetStrata(PropertyValue::Array strata) { m_strata = std::move(strata); }

void VXSettingsContext::load() {
    resetStrata({});
    if (m_url.empty()) return;
    std::optional<PropertyValue> stored = readPropertyListFile(m_url);
    if (stored && stored->dictionary()) loadFromSerializedRepresentation(*stored->dictionary());
}

void VXSettingsContext::loadIfNeeded() {
    if (!m_strata) load();
}

bool VXSettingsContext::loadFromSerializedRepresentation(const Dictionary& representation) {
    if (representation.empty()) return false;
    auto found = representation.find(kStrataKey);
    const PropertyValue::Array* strata = found == representation.end() ? nullptr : found->second.array();
    resetStrata(strata ? *strata : PropertyValue::Array{});
    return true;
}

VXSettingsContext::Dictionary VXSettingsContext::serialize() {
    return Dictionary{{std::string(kStrataKey), PropertyValue(strata())}};
}

bool VXSettingsContext::serializeToURL(const std::string& url) {
    if (strata().empty()) return false;
    return writePropertyListFile(url, PropertyValue(serialize()));
}

std::optional<PropertyValue> VXSettingsContext::valueForKey(std::string_view key) {
    if (isReservedKey(key)) return std::nullopt;
    for (const PropertyValue& stratum : strata())
        if (const PropertyValue* value = stratum.find(key)) return *value;
    return std::nullopt;
}

std::optional<PropertyValue> VXSettingsContext::valueForKey(std::string_view key, int64_t stratum,
                                                            const Dictionary* context) {
    if (isReservedKey(key)) return std::nullopt;
    const Dictionary& wanted = context ? *context : kEmptyContext;
    for (const PropertyValue& candidate : strata()) {
        if (levelOf(candidate) != stratum || contextOf(candidate) != wanted) continue;
        if (const PropertyValue* value = candidate.find(key)) return *value;
    }
    return std::nullopt;
}

void VXSettingsContext::setValue(PropertyValue value, std::string_view key, int64_t stratum, const Dictionary* context) {
    setValue(std::move(value), key, stratum, context, false);
}

void VXSettingsContext::setRegisteredValue(PropertyValue value, std::string_view key, int64_t stratum,
                                           const Dictionary* context) {
    setValue(std::move(value), key, stratum, context, true);
}

void VXSettingsContext::setValue(PropertyValue value, std::string_view key, int64_t stratum, const Dictionary* context,
                                 bool registered) {
    // The reserved keys say where a stratum applies; a setting of that name would corrupt it.
    if (isReservedKey(key)) return;
    const Dictionary& wanted = context ? *context : kEmptyContext;
    loadIfNeeded();
    m_hasChanged = true;
    for (PropertyValue& candidate : *m_strata) {
        Dictionary* settings = candidate.dictionary();
        if (!settings || levelOf(candidate) != stratum || isRegistered(candidate) != registered ||
            contextOf(candidate) != wanted)
            continue;
        settings->insert_or_assign(std::string(key), std::move(value));
        return;
    }
    insertStratum(PropertyValue(Dictionary{
        {std::string(kStratumKey), PropertyValue(stratum)},
        {std::string(kContextKey), PropertyValue(wanted)},
        {std::string(kRegisteredKey), PropertyValue(registered)},
        {std::string(key), std::move(value)},
    }));
}

void VXSettingsContext::insertStratum(PropertyValue stratum) {
    PropertyValue::Array& strata = *m_strata;
    const int64_t level = levelOf(stratum);
    const bool registered = isRegistered(stratum);
    for (auto it = strata.begin(); it != strata.end(); ++it) {
        const int64_t other = levelOf(*it);
        if (other < level) {
            strata.insert(it, std::move(stratum));
            return;
        }
        if (other == level) {
            // A user stratum goes in front of a registered one so that it overrides it; in every
            // other case the new stratum follows the first of its level (not the last).
            if (isRegistered(*it) && !registered) strata.insert(it, std::move(stratum));
            else strata.insert(std::next(it), std::move(stratum));
            return;
        }
    }
    strata.push_back(std::move(stratum));
}

bool VXSettingsContext::writeSerializedRepresentation() { return !m_url.empty() && serializeToURL(m_url); }

bool VXSettingsContext::write() {
    if (!writeSerializedRepresentation()) return false;
    m_hasChanged = false;
    return true;
}

void VXSettingsContext::startPeriodicWriter(std::chrono::milliseconds interval) {
    stopPeriodicWriter();
    m_writerLoop = &RunLoop::current();
    m_timer = m_writerLoop->scheduleRepeatingTimer(interval, [this] {
        if (m_hasChanged) write();
    });
}

void VXSettingsContext::stopPeriodicWriter() {
    if (m_timer) m_writerLoop->cancelTimer(*m_timer);
    m_timer.reset();
}

}  // namespace vx
