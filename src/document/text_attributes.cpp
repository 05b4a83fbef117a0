#include "document/text_attributes.hpp"

#include <cstring>

namespace vx {
namespace {

// A byte string that two values share exactly when they are equal.
void appendKey(std::string& key, const PropertyValue& value) {
    auto appendNumber = [&key](const void* bytes, size_t size) { key.append(static_cast<const char*>(bytes), size); };
    auto appendLength = [&](size_t length) { appendNumber(&length, sizeof length); };
    if (value.isNull()) {
        key += 'n';
    } else if (value.isBool()) {
        key += *value.boolValue() ? 'T' : 'F';
    } else if (value.isInteger()) {
        key += 'i';
        int64_t number = *value.integerValue();
        appendNumber(&number, sizeof number);
    } else if (value.isReal()) {
        key += 'r';
        double number = *value.doubleValue();
        appendNumber(&number, sizeof number);
    } else if (auto* text = value.string()) {
        key += 's';
        appendLength(text->size());
        key += *text;
    } else if (auto* bytes = value.data()) {
        key += 'b';
        appendLength(bytes->size());
        key.append(bytes->begin(), bytes->end());
    } else if (auto* date = value.date()) {
        key += 'd';
        appendNumber(&date->secondsSince2001, sizeof date->secondsSince2001);
    } else if (auto* items = value.array()) {
        key += 'a';
        appendLength(items->size());
        for (const auto& item : *items) appendKey(key, item);
    } else if (auto* dictionary = value.dictionary()) {
        key += 'D';
        appendLength(dictionary->size());
        for (const auto& [name, item] : *dictionary) {
            appendLength(name.size());
            key += name;
            appendKey(key, item);
        }
    }
}

std::string keyFor(const TextAttributes& attributes) {
    std::string key;
    for (const auto& [name, item] : attributes) {
        key += std::to_string(name.size());
        key += ':';
        key += name;
        appendKey(key, item);
    }
    return key;
}

}  // namespace

TextAttributeTable::TextAttributeTable() {
    m_entries.emplace_back();
    m_ids.emplace(std::string(), 0);
}

uint32_t TextAttributeTable::intern(const TextAttributes& attributes) {
    auto [found, inserted] = m_ids.try_emplace(keyFor(attributes), static_cast<uint32_t>(m_entries.size()));
    if (inserted) m_entries.push_back(attributes);
    return found->second;
}

}  // namespace vx
