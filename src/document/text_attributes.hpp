// Text attributes: a dictionary of named values (colours as "#RRGGBBAA" strings or arrays of four
// reals, font traits, the paragraph style) attached to runs of characters. Each distinct
// dictionary is stored once in a table and runs carry its small id, so comparing the attributes
// of two runs is comparing two numbers. Id 0 is the empty dictionary.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/property_list.hpp"

namespace vx {

using TextAttributes = PropertyValue::Dictionary;

class TextAttributeTable {
public:
    TextAttributeTable();
    uint32_t intern(const TextAttributes& attributes);
    const TextAttributes& operator[](uint32_t id) const { return m_entries[id]; }
    size_t size() const { return m_entries.size(); }

private:
    std::vector<TextAttributes> m_entries;
    std::unordered_map<std::string, uint32_t> m_ids;  // keyed by a canonical encoding
};

}  // namespace vx
