#include "syntax/zone_manager.hpp"

#include <algorithm>

#include "syntax/language_name.hpp"

namespace vx {
namespace {

bool sameLanguage(const VXSyntaxRuleset& ruleset, const std::string& normalized) {
    return normalizeLanguageName(ruleset.languageName) == normalized ||
           normalizeLanguageName(ruleset.languageIdentifier.toString()) == normalized;
}

void appendUnique(std::vector<VXZoneItem>& out, const VXZoneItem& item) {
    if (std::find(out.begin(), out.end(), item) == out.end()) out.push_back(item);
}

template <class F>
void forEachItemList(VXSyntaxRuleset& ruleset, F&& visit) {
    visit(ruleset.zones);
    for (auto& collection : ruleset.collections) visit(collection.zones);
    for (const auto& definition : ruleset.definitions()) visit(const_cast<VXSyntaxZoneDefinition&>(*definition).subzones);
}

}  // namespace

VXSyntaxZoneManager& VXSyntaxZoneManager::sharedManager() {
    static VXSyntaxZoneManager manager;
    return manager;
}

void VXSyntaxZoneManager::setLanguageLoader(LanguageLoader loader) {
    std::lock_guard lock(m_mutex);
    m_loader = std::move(loader);
}

VXSyntaxRuleset* VXSyntaxZoneManager::addRuleset(std::unique_ptr<VXSyntaxRuleset> ruleset) {
    std::lock_guard lock(m_mutex);
    VXSyntaxRuleset* added = addLocked(std::move(ruleset));
    resolvePendingLocked();
    return added;
}

VXSyntaxRuleset* VXSyntaxZoneManager::rulesetForLanguage(const std::string& name) {
    std::lock_guard lock(m_mutex);
    VXSyntaxRuleset* ruleset = loadLocked(name);
    resolvePendingLocked();
    return ruleset;
}

VXSyntaxRuleset* VXSyntaxZoneManager::findLocked(const std::string& name) const {
    const auto normalized = normalizeLanguageName(name);
    if (!normalized) return nullptr;
    for (const auto& ruleset : m_rulesets)
        if (sameLanguage(*ruleset, *normalized)) return ruleset.get();
    return nullptr;
}

VXSyntaxRuleset* VXSyntaxZoneManager::loadLocked(const std::string& name) {
    if (VXSyntaxRuleset* found = findLocked(name)) return found;
    const auto normalized = normalizeLanguageName(name);
    if (!normalized || !m_loader) return nullptr;
    if (std::find(m_missing.begin(), m_missing.end(), *normalized) != m_missing.end()) return nullptr;
    auto ruleset = m_loader(name, *this);
    if (!ruleset) {
        m_missing.push_back(*normalized);
        return nullptr;
    }
    return addLocked(std::move(ruleset));
}

VXSyntaxRuleset* VXSyntaxZoneManager::addLocked(std::unique_ptr<VXSyntaxRuleset> ruleset) {
    if (!ruleset) return nullptr;
    m_rulesets.push_back(std::move(ruleset));
    VXSyntaxRuleset* added = m_rulesets.back().get();
    // The languages its includes name are loaded now, so that resolving finds them.
    forEachItemList(*added, [&](const std::vector<VXZoneItem>& items) { loadIncludedLanguagesLocked(items, *added); });
    return added;
}

void VXSyntaxZoneManager::loadIncludedLanguagesLocked(const std::vector<VXZoneItem>& items, const VXSyntaxRuleset& from) {
    // Copies the names first: loading may add rulesets, but never changes `items`.
    std::vector<std::string> names;
    for (const auto& item : items)
        if (auto lookup = std::get_if<VXZoneDefinitionLookup>(&item); lookup && lookup->ruleset) names.push_back(*lookup->ruleset);
    for (const auto& name : names)
        if (!sameLanguage(from, normalizeLanguageName(name).value_or(""))) loadLocked(name);
}

void VXSyntaxZoneManager::externalManagerFinishedLoading() {
    std::lock_guard lock(m_mutex);
    resolvePendingLocked();
}

void VXSyntaxZoneManager::resolvePendingLocked() {
    // Resolving never loads (everything named was loaded with its includer), so the list is stable.
    for (const auto& ruleset : m_rulesets) {
        if (ruleset->m_resolved) continue;
        ruleset->m_resolved = true;
        std::vector<const VXSyntaxCollection*> resolving;
        resolveItemsLocked(ruleset->zones, *ruleset, resolving);
        for (const auto& definition : ruleset->definitions()) {
            resolving.clear();
            resolveItemsLocked(definition->subzones, *ruleset, resolving);
        }
        ruleset->m_root = VXSyntaxZoneDefinition::rootDefinition(*ruleset);
    }
}

void VXSyntaxZoneManager::resolveItemsLocked(std::vector<VXZoneItem>& items, const VXSyntaxRuleset& from,
                                             std::vector<const VXSyntaxCollection*>& resolving) {
    std::vector<VXZoneItem> resolved;
    resolved.reserve(items.size());
    for (const auto& item : items) {
        if (auto lookup = std::get_if<VXZoneDefinitionLookup>(&item)) resolveLookupLocked(*lookup, from, resolved, resolving);
        else appendUnique(resolved, item);
    }
    items = std::move(resolved);
}

void VXSyntaxZoneManager::resolveLookupLocked(const VXZoneDefinitionLookup& lookup, const VXSyntaxRuleset& from,
                                              std::vector<VXZoneItem>& out,
                                              std::vector<const VXSyntaxCollection*>& resolving) {
    const VXSyntaxRuleset* target = &from;
    if (lookup.ruleset) {
        target = findLocked(*lookup.ruleset);
        if (!target) return;  // a language that is not loaded: the include vanishes
    }
    if (!lookup.isCollection) {
        for (const auto* definition : zoneWithScope(lookup.selector, *target)) appendUnique(out, definition);
        return;
    }
    const VXSyntaxCollection* collection = target->collectionNamed(lookup.selector);
    if (!collection || std::find(resolving.begin(), resolving.end(), collection) != resolving.end()) return;
    // A collection is expanded afresh wherever it is included (collections that include each
    // other then each see all of the other's zones); the chain being expanded is skipped.
    resolving.push_back(collection);
    for (const auto& item : collection->zones) {
        if (auto nested = std::get_if<VXZoneDefinitionLookup>(&item)) resolveLookupLocked(*nested, *target, out, resolving);
        else appendUnique(out, item);
    }
    resolving.pop_back();
}

std::vector<const VXSyntaxZoneDefinition*> VXSyntaxZoneManager::zoneWithScope(const VXScope& scope,
                                                                              const VXSyntaxRuleset& ruleset) const {
    std::vector<const VXSyntaxZoneDefinition*> found;
    const VXScope qualified = scope.appendScope(ruleset.languageIdentifier);
    for (const auto& definition : ruleset.definitions())
        if (definition->scope == scope || definition->scope == qualified) found.push_back(definition.get());
    return found;
}

std::vector<const VXSyntaxZoneDefinition*> VXSyntaxZoneManager::zonesMatchingSelector(const VXScope& selector) const {
    std::lock_guard lock(m_mutex);
    std::vector<const VXSyntaxZoneDefinition*> found;
    for (const auto& ruleset : m_rulesets)
        for (const auto& definition : ruleset->definitions())
            if (definition->scope.isSupersetOf(selector)) found.push_back(definition.get());
    return found;
}

std::vector<const VXSyntaxZoneDefinition*> VXSyntaxZoneManager::globalLibrary() const {
    std::lock_guard lock(m_mutex);
    return m_library;
}

void VXSyntaxZoneManager::addToGlobalLibrary(const VXSyntaxZoneDefinition* definition) {
    std::lock_guard lock(m_mutex);
    m_library.push_back(definition);
}

std::vector<VXSyntaxRuleset*> VXSyntaxZoneManager::rulesets() const {
    std::lock_guard lock(m_mutex);
    std::vector<VXSyntaxRuleset*> all;
    for (const auto& ruleset : m_rulesets) all.push_back(ruleset.get());
    return all;
}

}  // namespace vx
