// The objects a compiled snippet is made of: constructs, their filters and constants.
//
//     def %{1="foo"}(%{2}):        "def foo():"
//         ^ tab stop 1 at 4, length 3, with an or-else filter holding the string "foo"
//                   ^ tab stop 2 at 8, length 0
//
// A construct's range is its place in the expanded text, in UTF-16 code units from the start
// of the whole snippet (nested constructs too). A construct inside another construct's quoted
// text has that construct as its parent. Constructs in text that the expansion did not use (a
// second or-else filter after a non-empty value, a mirror's or-else text) exist in the object
// model but have no place: their location is kNotFound.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/range.hpp"
#include "snippets/snippet_environment.hpp"

namespace vx {

class SNConstruct;

class SNObject {
public:
    virtual ~SNObject() = default;

protected:
    SNObject() = default;
    SNObject(const SNObject&) = default;
    SNObject& operator=(const SNObject&) = default;
};

// A value: a quoted string, a shell command's output or a variable of the session.
class SNConstant : public SNObject {
public:
    enum class Kind { String, Shell, Variable };
    virtual Kind kind() const = 0;
    // The constant's value in an editing session, or nothing (an unknown variable, a failed command).
    virtual std::optional<std::u16string> resolve(const SnippetEnvironment& environment) const = 0;
};

class SNStringConstant final : public SNConstant {
public:
    Kind kind() const override { return Kind::String; }
    std::optional<std::u16string> resolve(const SnippetEnvironment&) const override { return resolvedValue; }

    std::u16string resolvedValue;                         // the expanded text of the string
    std::vector<std::shared_ptr<SNConstruct>> constructs;  // the constructs written inside it
};

class SNShellConstant final : public SNConstant {
public:
    Kind kind() const override { return Kind::Shell; }
    std::optional<std::u16string> resolve(const SnippetEnvironment& environment) const override;

    // The interpreter of a command whose first line is "#!interpreter" (without the "#!"), else
    // empty for /bin/sh; the script is the rest of the command.
    std::u16string prefix;
    std::u16string script;
};

class SNVariableConstant final : public SNConstant {
public:
    Kind kind() const override { return Kind::Variable; }
    std::optional<std::u16string> resolve(const SnippetEnvironment& environment) const override {
        return environment.variable(variable);
    }

    std::u16string variable;
};

// Turns a construct's value into another.
class SNFilter : public SNObject {
public:
    virtual std::u16string apply(std::u16string_view value, const SnippetEnvironment& environment) const = 0;
};

// The or-else filter: keeps a non-empty value, replaces an empty one by the constant's value.
class SNConstantFilter final : public SNFilter {
public:
    explicit SNConstantFilter(std::shared_ptr<SNConstant> c) : constant(std::move(c)) {}
    std::u16string apply(std::u16string_view value, const SnippetEnvironment& environment) const override;

    std::shared_ptr<SNConstant> constant;
};

class SNConstruct : public SNObject {
public:
    enum class Kind { TabStop, Mirror, Constant };
    virtual Kind kind() const = 0;

    // The value passed through every filter in order.
    std::u16string applyFilters(std::u16string value, const SnippetEnvironment& environment) const;
    std::shared_ptr<SNConstruct> parentConstruct() const { return m_parent.lock(); }
    void setParentConstruct(const std::shared_ptr<SNConstruct>& parent) { m_parent = parent; }
    bool isPlaced() const { return range.location != kNotFound; }

    Range range{kNotFound, 0};
    std::vector<std::shared_ptr<SNFilter>> filters;

private:
    std::weak_ptr<SNConstruct> m_parent;
};

class SNNumberedConstruct : public SNConstruct {
public:
    int64_t number = 0;
};

// The first construct of its number: where the caret goes for that number.
class SNTabStopConstruct final : public SNNumberedConstruct {
public:
    Kind kind() const override { return Kind::TabStop; }
};

// Repeats (through its filters) what the tab stop of its number holds.
class SNMirrorConstruct final : public SNNumberedConstruct {
public:
    Kind kind() const override { return Kind::Mirror; }
};

class SNConstantConstruct final : public SNConstruct {
public:
    Kind kind() const override { return Kind::Constant; }

    std::shared_ptr<SNConstant> constant;
};

// A compiled snippet: the expanded text and the constructs placed in it, in text order (a
// construct before those nested in it). When the text does not parse, `failed` is set, the
// string is the snippet's own text and there are no constructs.
struct CompiledSnippet {
    std::u16string string;
    std::vector<std::shared_ptr<SNConstruct>> constructs;
    bool failed = false;
};

}  // namespace vx
