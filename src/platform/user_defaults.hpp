// UserDefaults: the user's preferences, a dictionary of property-list values kept in
// `userConfigDirectory()/defaults.plist` (an XML property list).
//
// Reading looks in the user's own values first, then in the registered defaults (values the
// program supplies at start-up and never writes). Every change is written to the file at once,
// atomically, so a crash never leaves half a file. `standardUserDefaults()` follows the
// configuration folder: when VX_HOME changes (tests give each case its own folder), the next call
// reads the new folder's file. Safe from any thread.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "platform/property_list.hpp"

namespace vx {

class UserDefaults {
public:
    static UserDefaults& standardUserDefaults();

    // Defaults kept in the file at `path` (created on the first change).
    explicit UserDefaults(std::string path);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    // Values used when the user has none; merged over earlier registrations, never written.
    void registerDefaults(const PropertyValue::Dictionary& defaults);

    std::optional<PropertyValue> objectForKey(std::string_view key) const;
    // Lenient readings (numbers, booleans and numeric strings convert); 0 / false / empty when absent.
    int64_t integerForKey(std::string_view key) const;
    double doubleForKey(std::string_view key) const;
    bool boolForKey(std::string_view key) const;
    std::string stringForKey(std::string_view key) const;

    // Stores a value and writes the file; false when the file could not be written (the value is
    // kept in memory all the same).
    bool setObject(std::string_view key, PropertyValue value);
    bool setInteger(std::string_view key, int64_t value) { return setObject(key, PropertyValue(value)); }
    bool setBool(std::string_view key, bool value) { return setObject(key, PropertyValue(value)); }
    bool setDouble(std::string_view key, double value) { return setObject(key, PropertyValue(value)); }
    bool removeObjectForKey(std::string_view key);

    // Reads the file again, dropping unsaved state (there is none unless a write failed).
    void reload();
    const std::string& path() const { return m_path; }

private:
    bool writeLocked() const;
    void switchTo(std::string path);

    mutable std::mutex m_mutex;
    std::string m_path;
    PropertyValue::Dictionary m_values;
    PropertyValue::Dictionary m_registered;
};

}  // namespace vx
