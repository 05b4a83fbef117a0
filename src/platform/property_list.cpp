#include "platform/property_list.hpp"

#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "platform/atomic_file.hpp"
#include "platform/file_cache.hpp"
#include "platform/unique_handle.hpp"

namespace vx {
namespace {

using PlistPtr = UniqueHandle<plist_t, plist_free>;

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) return false;
    return true;
}

plist_t toPlist(const PropertyValue& value);

plist_t dictionaryToPlist(const PropertyValue::Dictionary& dictionary) {
    plist_t dict = plist_new_dict();
    for (const auto& [key, item] : dictionary) plist_dict_set_item(dict, key.c_str(), toPlist(item));
    return dict;
}

plist_t toPlist(const PropertyValue& value) {
    if (value.isBool()) return plist_new_bool(*value.boolValue() ? 1 : 0);
    // libplist keeps integers as 64-bit patterns and writes them back signed.
    if (value.isInteger()) return plist_new_uint(static_cast<uint64_t>(*value.integerValue()));
    if (value.isReal()) return plist_new_real(*value.doubleValue());
    if (auto* text = value.string()) return plist_new_string(text->c_str());
    if (auto* bytes = value.data()) return plist_new_data(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    if (auto* date = value.date()) {
        double whole = std::floor(date->secondsSince2001);
        return plist_new_date(static_cast<int32_t>(whole), static_cast<int32_t>((date->secondsSince2001 - whole) * 1e6));
    }
    if (auto* items = value.array()) {
        plist_t array = plist_new_array();
        for (const auto& item : *items) plist_array_append_item(array, toPlist(item));
        return array;
    }
    if (auto* dictionary = value.dictionary()) return dictionaryToPlist(*dictionary);
    return plist_new_dict();
}

PropertyValue fromPlist(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return PropertyValue(flag != 0);
    }
    case PLIST_UINT: {
        uint64_t number = 0;
        plist_get_uint_val(node, &number);
        return PropertyValue(static_cast<int64_t>(number));
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return PropertyValue(number);
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return PropertyValue(std::string(text ? text : "", text ? length : 0));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(node, &length);
        return PropertyValue(PropertyValue::Data(bytes, bytes + length));
    }
    case PLIST_DATE: {
        int32_t seconds = 0, microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return PropertyValue(PropertyValue::Date{seconds + microseconds / 1e6});
    }
    case PLIST_ARRAY: {
        PropertyValue::Array items;
        const uint32_t count = plist_array_get_size(node);
        items.reserve(count);
        for (uint32_t i = 0; i < count; ++i) items.push_back(fromPlist(plist_array_get_item(node, i)));
        return PropertyValue(std::move(items));
    }
    case PLIST_DICT: {
        PropertyValue::Dictionary dictionary;
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        for (;;) {
            char* key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iterator, &key, &item);
            if (!item) {
                std::free(key);
                break;
            }
            dictionary.emplace(key ? key : "", fromPlist(item));
            std::free(key);
        }
        std::free(iterator);
        return PropertyValue(std::move(dictionary));
    }
    default:
        return PropertyValue();
    }
}

}  // namespace

std::optional<int64_t> PropertyValue::integerValue() const {
    if (auto* number = std::get_if<int64_t>(&m_value)) return *number;
    if (auto* number = std::get_if<double>(&m_value)) return static_cast<int64_t>(*number);
    if (auto* flag = std::get_if<bool>(&m_value)) return *flag ? 1 : 0;
    if (auto* text = std::get_if<std::string>(&m_value)) {
        char* end = nullptr;
        double number = std::strtod(text->c_str(), &end);
        if (end != text->c_str()) return static_cast<int64_t>(number);
        if (auto flag = boolValue()) return *flag ? 1 : 0;
    }
    return std::nullopt;
}

std::optional<double> PropertyValue::doubleValue() const {
    if (auto* number = std::get_if<double>(&m_value)) return *number;
    if (auto* number = std::get_if<int64_t>(&m_value)) return static_cast<double>(*number);
    if (auto* flag = std::get_if<bool>(&m_value)) return *flag ? 1.0 : 0.0;
    if (auto* text = std::get_if<std::string>(&m_value)) {
        char* end = nullptr;
        double number = std::strtod(text->c_str(), &end);
        if (end != text->c_str()) return number;
    }
    return std::nullopt;
}

std::optional<bool> PropertyValue::boolValue() const {
    if (auto* flag = std::get_if<bool>(&m_value)) return *flag;
    if (auto* number = std::get_if<int64_t>(&m_value)) return *number != 0;
    if (auto* number = std::get_if<double>(&m_value)) return *number != 0;
    if (auto* text = std::get_if<std::string>(&m_value)) {
        if (equalsIgnoringCase(*text, "yes") || equalsIgnoringCase(*text, "true")) return true;
        if (equalsIgnoringCase(*text, "no") || equalsIgnoringCase(*text, "false")) return false;
        char* end = nullptr;
        long long number = std::strtoll(text->c_str(), &end, 10);
        if (end != text->c_str()) return number != 0;
    }
    return std::nullopt;
}

const PropertyValue* PropertyValue::find(std::string_view key) const {
    auto* dictionary = this->dictionary();
    if (!dictionary) return nullptr;
    auto found = dictionary->find(key);
    return found == dictionary->end() ? nullptr : &found->second;
}

std::string propertyListXML(const PropertyValue& value) {
    PlistPtr root(toPlist(value));
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    std::string text(xml ? xml : "", xml ? length : 0);
    plist_to_xml_free(xml);
    return text;
}

std::optional<PropertyValue> propertyListFromBytes(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > UINT32_MAX) return std::nullopt;
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &raw);
    PlistPtr root(raw);
    if (!root) return std::nullopt;
    return fromPlist(root.get());
}

std::optional<PropertyValue> readPropertyListFile(const std::string& path) {
    auto bytes = readWholeFile(path);
    if (!bytes) return std::nullopt;
    return propertyListFromBytes(*bytes);
}

bool writePropertyListFile(const std::string& path, const PropertyValue& value) {
    return writeFileAtomically(path, propertyListXML(value)).ok;
}

}  // namespace vx
