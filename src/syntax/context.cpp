#include "syntax/context.hpp"

#include <algorithm>

#include "platform/log.hpp"

namespace vx {

VXContext VXContext::defaultContextForDocument(VXScope rootScope, const VXSyntaxZoneDefinition* rootDefinition) {
    VXContext context;
    if (rootScope.isNil()) return context;
    VXSyntaxZone root;
    root.scope = rootScope;
    root.definition = rootDefinition;
    context.push(std::move(root));
    return context;
}

VXContext VXContext::fromScopes(std::span<const VXScope> scopes) {
    VXContext context;
    context.m_zones.reserve(std::max(scopes.size(), kInitialCapacity));
    for (const VXScope& scope : scopes) {
        VXSyntaxZone zone;
        zone.scope = scope;
        zone.parent = context.m_zones.empty() ? VXSyntaxZone::kNoParent : uint32_t(context.m_zones.size() - 1);
        context.m_zones.push_back(std::move(zone));
    }
    return context;
}

void VXContext::push(const VXSyntaxZone& zone) {
    if (m_zones.capacity() == 0) m_zones.reserve(kInitialCapacity);
    m_zones.push_back(zone);
}

void VXContext::push(VXSyntaxZone&& zone) {
    if (m_zones.capacity() == 0) m_zones.reserve(kInitialCapacity);
    m_zones.push_back(std::move(zone));
}

void VXContext::pop() {
    VX_ASSERT(!m_zones.empty());
    m_zones.pop_back();
}

const VXSyntaxZone& VXContext::innermost() const {
    VX_ASSERT(!m_zones.empty());
    return m_zones.back();
}

std::string VXContext::toString() const {
    std::string text = "<";
    for (size_t i = 0; i < m_zones.size(); ++i) {
        if (i) text += " > ";
        text += m_zones[i].scope.stringRepresentation();
        if (!m_zones[i].definition) text += '?';
    }
    return text + ">";
}

std::string VXContext::environmentString() const {
    std::string text;
    for (const VXSyntaxZone& zone : m_zones) {
        if (zone.scope.isNil()) continue;
        if (!text.empty()) text += ' ';
        text += zone.scope.stringRepresentation();
    }
    return text;
}

bool VXContext::equalZoneDefinitions(const VXContext& other) const {
    // End patterns built from a start match are shared per distinct text, so comparing the
    // pointers compares the texts; zones without one hold null on both sides.
    return std::equal(m_zones.begin(), m_zones.end(), other.m_zones.begin(), other.m_zones.end(),
                      [](const VXSyntaxZone& a, const VXSyntaxZone& b) {
                          return a.definition == b.definition && a.endPattern == b.endPattern;
                      });
}

}  // namespace vx
