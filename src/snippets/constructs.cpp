#include "snippets/constructs.hpp"

#include "snippets/shell_constant_runner.hpp"

namespace vx {

std::optional<std::u16string> SNShellConstant::resolve(const SnippetEnvironment& environment) const {
    if (!environment.runShellCommands) return std::nullopt;
    return runShellConstant(prefix, script, environment);
}

std::u16string SNConstantFilter::apply(std::u16string_view value, const SnippetEnvironment& environment) const {
    if (!value.empty()) return std::u16string(value);
    return constant->resolve(environment).value_or(std::u16string());
}

std::u16string SNConstruct::applyFilters(std::u16string value, const SnippetEnvironment& environment) const {
    for (const auto& filter : filters) value = filter->apply(value, environment);
    return value;
}

}  // namespace vx
