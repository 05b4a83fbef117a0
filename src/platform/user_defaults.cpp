#include "platform/user_defaults.hpp"

#include "platform/log.hpp"
#include "platform/paths.hpp"

namespace vx {
namespace {

std::string defaultsPath() { return userConfigDirectory() + "/defaults.plist"; }

PropertyValue::Dictionary readDictionary(const std::string& path) {
    auto value = readPropertyListFile(path);
    if (value && value->dictionary()) return std::move(*value->dictionary());
    if (value) VX_LOG_DEBUG("defaults", "%s does not hold a dictionary; ignored", path.c_str());
    return {};
}

}  // namespace

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults defaults(defaultsPath());
    std::string path = defaultsPath();
    std::lock_guard lock(defaults.m_mutex);
    if (path != defaults.m_path) defaults.switchTo(std::move(path));
    return defaults;
}

UserDefaults::UserDefaults(std::string path) { switchTo(std::move(path)); }

void UserDefaults::switchTo(std::string path) {
    m_path = std::move(path);
    m_values = readDictionary(m_path);
}

void UserDefaults::reload() {
    std::lock_guard lock(m_mutex);
    m_values = readDictionary(m_path);
}

void UserDefaults::registerDefaults(const PropertyValue::Dictionary& defaults) {
    std::lock_guard lock(m_mutex);
    for (const auto& [key, value] : defaults) m_registered.insert_or_assign(key, value);
}

std::optional<PropertyValue> UserDefaults::objectForKey(std::string_view key) const {
    std::lock_guard lock(m_mutex);
    if (auto found = m_values.find(key); found != m_values.end()) return found->second;
    if (auto found = m_registered.find(key); found != m_registered.end()) return found->second;
    return std::nullopt;
}

int64_t UserDefaults::integerForKey(std::string_view key) const {
    auto value = objectForKey(key);
    return value ? value->integerValue().value_or(0) : 0;
}

double UserDefaults::doubleForKey(std::string_view key) const {
    auto value = objectForKey(key);
    return value ? value->doubleValue().value_or(0.0) : 0.0;
}

bool UserDefaults::boolForKey(std::string_view key) const {
    auto value = objectForKey(key);
    return value ? value->boolValue().value_or(false) : false;
}

std::string UserDefaults::stringForKey(std::string_view key) const {
    auto value = objectForKey(key);
    if (!value) return {};
    if (auto* text = value->string()) return *text;
    if (value->isInteger()) return std::to_string(*value->integerValue());
    return {};
}

bool UserDefaults::setObject(std::string_view key, PropertyValue value) {
    std::lock_guard lock(m_mutex);
    m_values.insert_or_assign(std::string(key), std::move(value));
    return writeLocked();
}

bool UserDefaults::removeObjectForKey(std::string_view key) {
    std::lock_guard lock(m_mutex);
    auto found = m_values.find(key);
    if (found == m_values.end()) return true;
    m_values.erase(found);
    return writeLocked();
}

bool UserDefaults::writeLocked() const {
    auto slash = m_path.rfind('/');
    if (slash != std::string::npos && slash > 0) makeDirectories(m_path.substr(0, slash));
    if (writePropertyListFile(m_path, PropertyValue(m_values))) return true;
    VX_LOG_DEBUG("defaults", "cannot write %s", m_path.c_str());
    return false;
}

}  // namespace vx
