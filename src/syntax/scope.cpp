// Interning of scope records and the set operations selectors use.
#include "syntax/scope.hpp"

#include <algorithm>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace vx {
namespace detail {

// One interned scope. Immutable once published; lives for the process.
struct ScopeData {
    std::string text;                           // normalised dotted text
    std::vector<std::string_view> components;   // in order, views into text
    std::vector<uint32_t> atoms;                // distinct component ids, sorted
    uint64_t mask = 0;                          // bit (id % 64) per atom: a quick subset reject
    bool wildcard = false;
};

}  // namespace detail

namespace {

struct TransparentHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
};

template <class Value>
using StringMap = std::unordered_map<std::string, Value, TransparentHash, std::equal_to<>>;

constexpr std::string_view kWildcardText = "*";

// The process-wide tables: scope text to record, component text to id. Lookups take the shared
// lock, so highlighting threads that ask for known scopes do not wait on each other.
class Interner {
public:
    const detail::ScopeData* find(std::string_view normalised) {
        std::shared_lock lock(m_mutex);
        auto it = m_scopes.find(normalised);
        return it == m_scopes.end() ? nullptr : it->second.get();
    }

    const detail::ScopeData* intern(std::string_view normalised) {
        if (const detail::ScopeData* found = find(normalised)) return found;
        std::unique_lock lock(m_mutex);
        auto it = m_scopes.find(normalised);
        if (it != m_scopes.end()) return it->second.get();

        auto data = std::make_unique<detail::ScopeData>();
        data->text.assign(normalised);
        data->wildcard = normalised == kWildcardText;
        std::string_view text = data->text;
        for (size_t start = 0; start < text.size();) {
            size_t dot = std::min(text.find('.', start), text.size());
            data->components.push_back(text.substr(start, dot - start));  // never empty after normalising
            start = dot + 1;
        }
        for (std::string_view component : data->components) {
            uint32_t id = atomLocked(component);
            data->atoms.push_back(id);
            data->mask |= uint64_t{1} << (id % 64);
        }
        std::sort(data->atoms.begin(), data->atoms.end());
        data->atoms.erase(std::unique(data->atoms.begin(), data->atoms.end()), data->atoms.end());

        const detail::ScopeData* result = data.get();
        m_scopes.emplace(std::string(normalised), std::move(data));
        return result;
    }

    // The id of a component, or -1 when no scope has ever used it.
    int64_t atomIfKnown(std::string_view component) {
        std::shared_lock lock(m_mutex);
        auto it = m_atoms.find(component);
        return it == m_atoms.end() ? -1 : int64_t{it->second};
    }

private:
    uint32_t atomLocked(std::string_view component) {
        auto it = m_atoms.find(component);
        if (it != m_atoms.end()) return it->second;
        auto id = static_cast<uint32_t>(m_atoms.size());
        m_atoms.emplace(std::string(component), id);
        return id;
    }

    std::shared_mutex m_mutex;
    StringMap<std::unique_ptr<detail::ScopeData>> m_scopes;
    StringMap<uint32_t> m_atoms;
};

Interner& interner() {
    static Interner instance;
    return instance;
}

bool isUpperAscii(char c) { return c >= 'A' && c <= 'Z'; }

// Already lower-case with no empty component: the common case, looked up without copying.
bool isNormalised(std::string_view text) {
    if (text.empty()) return true;
    if (text.front() == '.' || text.back() == '.') return false;
    char previous = 0;
    for (char c : text) {
        if (isUpperAscii(c) || (c == '.' && previous == '.')) return false;
        previous = c;
    }
    return true;
}

void appendNormalised(std::string& out, std::string_view text) {
    for (size_t start = 0; start <= text.size();) {
        size_t dot = std::min(text.find('.', start), text.size());
        if (dot > start) {
            if (!out.empty()) out.push_back('.');
            for (char c : text.substr(start, dot - start)) out.push_back(isUpperAscii(c) ? char(c - 'A' + 'a') : c);
        }
        start = dot + 1;
    }
}

template <class Range>
std::string joinNormalised(const Range& pieces) {
    std::string text;
    for (const auto& piece : pieces) appendNormalised(text, std::string_view(piece));
    return text;
}

// The distinct components of the pieces, normalised (a piece with "." gives several). Case folding
// may change the order, hence a new set.
std::set<std::string> normalisedComponentSet(const std::set<std::string>& pieces) {
    std::set<std::string> result;
    for (const std::string& piece : pieces) {
        std::string text;
        appendNormalised(text, piece);
        for (size_t start = 0; start < text.size();) {
            size_t dot = std::min(text.find('.', start), text.size());
            result.insert(text.substr(start, dot - start));
            start = dot + 1;
        }
    }
    return result;
}

}  // namespace

VXScope::VXScope(std::string_view dotted) {
    if (isNormalised(dotted)) {
        m_data = interner().intern(dotted);
    } else {
        std::string text;
        appendNormalised(text, dotted);
        m_data = interner().intern(text);
    }
}

VXScope VXScope::fromComponents(std::span<const std::string> components) {
    return VXScope(joinNormalised(components));
}

VXScope VXScope::fromComponents(std::initializer_list<std::string_view> components) {
    return VXScope(joinNormalised(components));
}

VXScope VXScope::fromSet(const std::set<std::string>& components) {
    return VXScope(joinNormalised(normalisedComponentSet(components)));
}

VXScope VXScope::wildcardZone() {
    static const VXScope wildcard(kWildcardText);
    return wildcard;
}

std::span<const std::string_view> VXScope::components() const {
    if (!m_data) return {};
    return m_data->components;
}

std::set<std::string> VXScope::componentsSet() const {
    std::set<std::string> result;
    for (std::string_view component : components()) result.emplace(component);
    return result;
}

std::string_view VXScope::stringRepresentation() const { return m_data ? std::string_view(m_data->text) : std::string_view(); }

VXScope VXScope::appendComponent(std::string_view component) const {
    std::string text(stringRepresentation());
    text.push_back('.');
    text.append(component);
    return VXScope(text);
}

VXScope VXScope::appendScope(const VXScope& other) const { return appendComponent(other.stringRepresentation()); }

VXScope VXScope::concat(std::span<const VXScope> others) const {
    std::string text(stringRepresentation());
    for (const VXScope& other : others) {
        text.push_back('.');
        text.append(other.stringRepresentation());
    }
    return VXScope(text);
}

bool VXScope::hasComponent(std::string_view component) const {
    if (!m_data) return false;
    std::string normalised;
    appendNormalised(normalised, component);
    if (normalised.empty() || normalised.find('.') != std::string::npos) return false;
    int64_t id = interner().atomIfKnown(normalised);
    return id >= 0 && std::binary_search(m_data->atoms.begin(), m_data->atoms.end(), uint32_t(id));
}

size_t VXScope::count() const { return m_data ? m_data->atoms.size() : 0; }

bool VXScope::isSupersetOf(const VXScope& other) const {
    if (!m_data || !other.m_data) return false;
    if (other.m_data->mask & ~m_data->mask) return false;
    return std::includes(m_data->atoms.begin(), m_data->atoms.end(), other.m_data->atoms.begin(),
                         other.m_data->atoms.end());
}

bool VXScope::matches(const VXScope& other) const {
    if (!m_data || !other.m_data) return false;
    return m_data->wildcard || other.m_data->wildcard || isSupersetOf(other);
}

bool VXScope::isChildOf(const VXScope& other) const {
    if (!m_data || !other.m_data) return false;
    const auto& mine = m_data->components;
    const auto& theirs = other.m_data->components;
    return theirs.size() < mine.size() && std::equal(theirs.begin(), theirs.end(), mine.begin());
}

// Comparisons normalise the other side without interning it, so comparing with arbitrary text
// does not grow the tables.
bool operator==(const VXScope& a, std::string_view text) {
    if (a.isNil()) return false;
    if (isNormalised(text)) return a.stringRepresentation() == text;
    std::string normalised;
    appendNormalised(normalised, text);
    return a.stringRepresentation() == normalised;
}

bool operator==(const VXScope& a, const std::vector<std::string>& components) {
    return !a.isNil() && a.stringRepresentation() == joinNormalised(components);
}

bool operator==(const VXScope& a, const std::set<std::string>& components) {
    return !a.isNil() && a.componentsSet() == normalisedComponentSet(components);
}

}  // namespace vx
