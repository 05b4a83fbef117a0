#include "syntax/zone_walk.hpp"

#include "syntax/zone_definition.hpp"

namespace vx {

VXLineZoneStack::VXLineZoneStack(const VXContext& start) {
    for (const VXSyntaxZone& zone : start) {
        push(zone);
        if (zone.definition && !zone.definition->innerScope.isNil()) {
            VXSyntaxZone inner = zone;
            inner.scope = zone.definition->innerScope;
            inner.semanticType = VXSXZoneSemanticTypeInner;
            push(inner);
        }
    }
}

void VXLineZoneStack::pop(const VXSyntaxZone& zone) {
    for (size_t i = m_entries.size(); i-- > 0;) {
        const VXSyntaxZone& entry = m_entries[i];
        if (entry.scope == zone.scope && entry.definition == zone.definition && entry.semanticType == zone.semanticType) {
            m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(i));
            return;
        }
    }
}

VXContext VXLineZoneStack::context() const {
    VXContext out;
    for (const VXSyntaxZone& entry : m_entries) out.push(entry);
    return out;
}

std::vector<VXScope> VXLineZoneStack::scopes() const {
    std::vector<VXScope> out;
    scopesInto(out);
    return out;
}

void VXLineZoneStack::scopesInto(std::vector<VXScope>& out) const {
    out.clear();
    out.reserve(m_entries.size());
    for (const VXSyntaxZone& entry : m_entries) out.push_back(entry.scope);
}

}  // namespace vx
