// VXScope: a scope name made of ordered components joined by "." ("string.quoted.double").
//
// Scopes are interned: building one from text that normalises to the same components gives the
// same shared record, so a VXScope is one pointer, copying it is free and equality of two scopes
// is a pointer comparison. Records live for the whole process (highlighters and selector literals
// keep asking for the same few hundred names). Interning is safe from any thread.
//
// Building from text lower-cases it (ASCII letters; other bytes are kept as they are), splits it
// at "." and drops empty components: "Source..JS." is the scope "source.js". A scope therefore
// never holds an empty component.
//
// Selectors match scopes by component-set inclusion: order and repetition are ignored, so the
// selector scope "string.quoted" matches the context scope "quoted.double.string".
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vx {

class VXSelector;

namespace detail {
struct ScopeData;
}

class VXScope {
public:
    // The nil scope: no record at all. It is not the empty scope VXScope("").
    VXScope() = default;
    explicit VXScope(std::string_view dotted);
    explicit VXScope(const char* dotted) : VXScope(std::string_view(dotted ? dotted : "")) {}
    explicit VXScope(const std::string& dotted) : VXScope(std::string_view(dotted)) {}

    // From an array of components, in order; each piece is normalised as dotted text is.
    static VXScope fromComponents(std::span<const std::string> components);
    static VXScope fromComponents(std::initializer_list<std::string_view> components);
    // From a set of components; a set has no order, so they are joined in sorted order.
    static VXScope fromSet(const std::set<std::string>& components);

    // The shared scope "*" that matches anything (see matches()).
    static VXScope wildcardZone();

    bool isNil() const { return m_data == nullptr; }
    explicit operator bool() const { return m_data != nullptr; }

    // The components in order (views into the interned record; valid for the process).
    std::span<const std::string_view> components() const;
    // The distinct components.
    std::set<std::string> componentsSet() const;
    // The normalised dotted text; "" for nil.
    std::string_view stringRepresentation() const;
    std::string toString() const { return std::string(stringRepresentation()); }

    // New scopes with more components after this one's. Appending to nil starts from nothing.
    VXScope appendComponent(std::string_view component) const;
    VXScope appendScope(const VXScope& other) const;
    VXScope concat(std::span<const VXScope> others) const;
    // Components are never empty (see above), so this answers the scope itself; it exists for
    // callers that normalise explicitly.
    VXScope removeEmptyStrings() const { return *this; }

    bool hasComponent(std::string_view component) const;
    // Number of distinct components: "a.b.a" counts 2.
    size_t count() const;

    // Every component of other is a component of this scope. Nil on either side answers false.
    bool isSupersetOf(const VXScope& other) const;
    bool isSubsetOf(const VXScope& other) const { return other.isSupersetOf(*this); }
    // Either side is the wildcard, or this scope is a superset of other.
    bool matches(const VXScope& other) const;
    // other's components are a proper prefix of this scope's, in order: "string.quoted.double"
    // is a child of "string.quoted" and of "string", but not of itself nor of "quoted".
    bool isChildOf(const VXScope& other) const;
    // Whether the selector matches a context made of this scope alone (defined by vx_selectors).
    bool matchSelector(const VXSelector& selector) const;

    // Same components in the same order (interning makes this identity).
    friend bool operator==(const VXScope& a, const VXScope& b) { return a.m_data == b.m_data; }
    // The scope that the text would build.
    friend bool operator==(const VXScope& a, std::string_view text);
    // The scope that the array would build (order matters).
    friend bool operator==(const VXScope& a, const std::vector<std::string>& components);
    // Same distinct components, in any order.
    friend bool operator==(const VXScope& a, const std::set<std::string>& components);

    size_t hash() const { return std::hash<const void*>()(m_data); }

private:
    explicit VXScope(const detail::ScopeData* data) : m_data(data) {}
    const detail::ScopeData* m_data = nullptr;
};

}  // namespace vx

template <>
struct std::hash<vx::VXScope> {
    size_t operator()(const vx::VXScope& scope) const noexcept { return scope.hash(); }
};
