#include "intelligence/kind_map.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace vx {
namespace {

using Pair = std::pair<std::string_view, std::string_view>;

// Kinds that keep their name or take a shared one; everything not here is "misc".
constexpr std::array kPlainKinds = {
    Pair{"function", "function"},       Pair{"subroutine", "function"},   Pair{"procedure", "function"},
    Pair{"func", "function"},           Pair{"method", "method"},         Pair{"singletonMethod", "method"},
    Pair{"prototype", "prototype"},     Pair{"class", "class"},           Pair{"struct", "struct"},
    Pair{"union", "union"},             Pair{"enum", "enum"},             Pair{"interface", "interface"},
    Pair{"trait", "trait"},             Pair{"protocol", "protocol"},     Pair{"namespace", "namespace"},
    Pair{"module", "module"},           Pair{"package", "package"},       Pair{"macro", "macro"},
    Pair{"typedef", "type"},            Pair{"type", "type"},             Pair{"alias", "type"},
    Pair{"enumerator", "enum_constant"}, Pair{"member", "field"},         Pair{"field", "field"},
    Pair{"variable", "variable"},       Pair{"externvar", "variable"},    Pair{"var", "variable"},
    Pair{"constant", "constant"},       Pair{"const", "constant"},        Pair{"property", "property"},
    Pair{"local", "local"},             Pair{"parameter", "local"},
};

bool isInterfaceScope(std::string_view scopeKind) { return scopeKind == "interface" || scopeKind == "protocol"; }

template <size_t N>
bool contains(const std::array<std::string_view, N>& list, std::string_view value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

constexpr std::array<std::string_view, 5> kHiddenFromCompletion = {
    "misc", "class_method_implementation", "method_implementation", "method_interface", "class_method_interface"};
constexpr std::array<std::string_view, 5> kHiddenFromJump = {
    "misc", "method_interface", "class_method_interface", "implementation", "category_implementation"};

}  // namespace

std::string VXTypeCodeForCtagsKind(std::string_view language, std::string_view kind, std::string_view scopeKind,
                                   bool hasSignature) {
    if (language == "ObjectiveC") {
        // Its parser calls class methods "class" and reports methods with their container's kind
        // as scope: an @interface or @protocol declares, an @implementation defines.
        const bool interface = isInterfaceScope(scopeKind);
        if (kind == "method") return interface ? "method_interface" : "method_implementation";
        if (kind == "class") return interface ? "class_method_interface" : "class_method_implementation";
        if (kind == "implementation") return "implementation";
        if (kind == "category") return "category_implementation";
    }
    // Python reports methods as members with a signature.
    if (kind == "member" && hasSignature) return "method";
    for (auto [from, to] : kPlainKinds)
        if (from == kind) return std::string(to);
    return "misc";
}

bool VXTypeCodeIsHiddenFromSymbolList(std::string_view typeCode) { return typeCode == "local"; }

bool VXTypeCodeIsHiddenFromCompletion(std::string_view typeCode) { return contains(kHiddenFromCompletion, typeCode); }

bool VXTypeCodeIsHiddenFromJumpToDefinition(std::string_view typeCode) { return contains(kHiddenFromJump, typeCode); }

}  // namespace vx
