// VXContext: the zones open at a point, innermost last; the state one line hands to the next, and
// what scope selectors are matched against.
//
//     source.js  >  meta.function  >  string.quoted.double      (zones()[0] is the outermost)
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "syntax/zone.hpp"

namespace vx {

class VXContext {
public:
    // Room reserved at the first push: most contexts are a few zones deep.
    static constexpr size_t kInitialCapacity = 8;

    VXContext() = default;

    // The empty starting context.
    static VXContext basicContext() { return VXContext(); }
    // The context a document starts in: its language's root scope as the one outermost zone
    // (with the root definition when the caller has it). A nil root scope gives the empty context.
    static VXContext defaultContextForDocument(VXScope rootScope, const VXSyntaxZoneDefinition* rootDefinition = nullptr);
    // One zone per scope, the first scope outermost; the zones have no definition.
    static VXContext fromScopes(std::span<const VXScope> scopes);

    void push(const VXSyntaxZone& zone);
    void push(VXSyntaxZone&& zone);
    // Popping an empty context is a programming error.
    void pop();

    bool empty() const { return m_zones.empty(); }
    size_t size() const { return m_zones.size(); }
    size_t capacity() const { return m_zones.capacity(); }
    const VXSyntaxZone& operator[](size_t index) const { return m_zones[index]; }
    const VXSyntaxZone& innermost() const;
    std::span<const VXSyntaxZone> zones() const { return m_zones; }
    auto begin() const { return m_zones.begin(); }
    auto end() const { return m_zones.end(); }

    // For diagnostics: "<source.js > string.quoted>", a "?" marking zones without definition.
    std::string toString() const;
    // The scopes outermost first, separated by single spaces: the form handed to commands and read
    // back by VXSelector::matchesBasicContext ("source.js string.quoted").
    std::string environmentString() const;

    // Same definitions in the same order (scopes and ranges aside), and for a zone whose end refers
    // back to its start (a heredoc's delimiter) the same end pattern: whether highlighting on from
    // either context would go the same way. The incremental walk stops on it.
    bool equalZoneDefinitions(const VXContext& other) const;

    friend bool operator==(const VXContext&, const VXContext&) = default;

private:
    std::vector<VXSyntaxZone> m_zones;
};

}  // namespace vx
