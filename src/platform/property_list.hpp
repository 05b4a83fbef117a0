// Property-list values (the shapes user defaults and settings files hold) and their XML form.
//
// A value is one of: nothing, a boolean, an integer, a real, a string, bytes, a date, an array
// of values or a dictionary from strings to values. The XML form is the usual property-list
// document, read and written through libplist.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vx {

class PropertyValue {
public:
    using Array = std::vector<PropertyValue>;
    using Dictionary = std::map<std::string, PropertyValue, std::less<>>;
    using Data = std::vector<uint8_t>;
    // A moment as seconds since 2001-01-01 00:00:00 UTC, as property lists count time.
    struct Date {
        double secondsSince2001 = 0;
        friend bool operator==(const Date&, const Date&) = default;
    };

    PropertyValue() = default;
    PropertyValue(bool value) : m_value(value) {}
    PropertyValue(int value) : m_value(int64_t{value}) {}
    PropertyValue(int64_t value) : m_value(value) {}
    PropertyValue(uint64_t value) : m_value(static_cast<int64_t>(value)) {}
    PropertyValue(double value) : m_value(value) {}
    PropertyValue(const char* value) : m_value(std::string(value)) {}
    PropertyValue(std::string value) : m_value(std::move(value)) {}
    PropertyValue(Data value) : m_value(std::move(value)) {}
    PropertyValue(Date value) : m_value(value) {}
    PropertyValue(Array value) : m_value(std::move(value)) {}
    PropertyValue(Dictionary value) : m_value(std::move(value)) {}

    bool isNull() const { return std::holds_alternative<std::monostate>(m_value); }
    bool isBool() const { return std::holds_alternative<bool>(m_value); }
    bool isInteger() const { return std::holds_alternative<int64_t>(m_value); }
    bool isReal() const { return std::holds_alternative<double>(m_value); }

    // Exact views: null when the value holds another kind.
    const std::string* string() const { return std::get_if<std::string>(&m_value); }
    const Data* data() const { return std::get_if<Data>(&m_value); }
    const Date* date() const { return std::get_if<Date>(&m_value); }
    const Array* array() const { return std::get_if<Array>(&m_value); }
    Array* array() { return std::get_if<Array>(&m_value); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&m_value); }
    Dictionary* dictionary() { return std::get_if<Dictionary>(&m_value); }

    // Lenient scalar readings, as a defaults reader wants them: numbers convert into each other,
    // booleans read as 0/1, strings are parsed ("12", "2.5", "YES"/"true"); anything else is empty.
    std::optional<int64_t> integerValue() const;
    std::optional<double> doubleValue() const;
    std::optional<bool> boolValue() const;

    // The value under a key of a dictionary; null when this is no dictionary or lacks the key.
    const PropertyValue* find(std::string_view key) const;

    friend bool operator==(const PropertyValue&, const PropertyValue&) = default;

private:
    std::variant<std::monostate, bool, int64_t, double, std::string, Data, Date, Array, Dictionary> m_value;
};

// The XML property-list document for a value (a null value writes an empty dictionary).
std::string propertyListXML(const PropertyValue& value);
// Reads an XML (or binary) property list; nothing when the bytes are not one.
std::optional<PropertyValue> propertyListFromBytes(std::string_view bytes);

// Reads a property-list file; nothing when it is missing or malformed.
std::optional<PropertyValue> readPropertyListFile(const std::string& path);
// Writes a value as an XML property list, replacing the file atomically; false on failure.
bool writePropertyListFile(const std::string& path, const PropertyValue& value);

}  // namespace vx
