// Constructs are built in text order, the order in which their "%{" appear, so a construct is
// built before those nested in its quoted text. That order decides the kinds: the first
// construct of a number is its tab stop; a later one, or one whose first filter is a regex
// filter, is a mirror.
//
// The expanded text holds each construct's starting value passed through its filters: a tab
// stop's or-else default, a string constant's expanded text, nothing for variables and shell
// commands (the session resolves them) and nothing for mirrors (the session copies their tab
// stop). Regex filters are left to the session.
#include "snippets/snippet_builder.hpp"

#include <set>

#include "snippets/regex_filter.hpp"

namespace vx {
namespace {

class Builder {
public:
    CompiledSnippet build(const syntax::Sequence& root) {
        expandSequence(root, m_result.string, nullptr, true, nullptr);
        return std::move(m_result);
    }

private:
    // Appends the sequence's text to `out` and builds its constructs. `placed` says whether `out`
    // is the snippet's expanded text: only then do the constructs get places and join the result.
    void expandSequence(const syntax::Sequence& sequence, std::u16string& out, const std::shared_ptr<SNConstruct>& parent,
                        bool placed, std::vector<std::shared_ptr<SNConstruct>>* children) {
        for (const auto& piece : sequence.pieces) {
            if (!piece.construct) {
                out += piece.text;
                continue;
            }
            auto construct = buildConstruct(*piece.construct, out, parent, placed);
            if (children) children->push_back(std::move(construct));
        }
    }

    std::shared_ptr<SNConstruct> makeConstruct(const syntax::Construct& node) {
        if (!node.numbered) return std::make_shared<SNConstantConstruct>();
        bool regexFirst = !node.filters.empty() && node.filters.front()->isRegex;
        std::shared_ptr<SNNumberedConstruct> construct;
        if (regexFirst || m_tabStops.contains(node.number)) {
            construct = std::make_shared<SNMirrorConstruct>();
        } else {
            construct = std::make_shared<SNTabStopConstruct>();
            m_tabStops.insert(node.number);
        }
        construct->number = node.number;
        return construct;
    }

    std::shared_ptr<SNConstruct> buildConstruct(const syntax::Construct& node, std::u16string& out,
                                                const std::shared_ptr<SNConstruct>& parent, bool placed) {
        auto construct = makeConstruct(node);
        construct->setParentConstruct(parent);
        if (placed) m_result.constructs.push_back(construct);
        size_t start = out.size();
        if (node.constant) {
            static_cast<SNConstantConstruct&>(*construct).constant = buildConstant(*node.constant, out, construct, placed);
        }
        for (const syntax::Filter* filter : node.filters) {
            if (filter->isRegex) {
                construct->filters.push_back(std::make_shared<SNRegexFilter>(filter->pattern, filter->replace, filter->options));
                continue;
            }
            // An or-else filter supplies the text only while the value is still empty; a
            // mirror's value is empty until the session fills it, so its defaults stay unused.
            bool used = construct->kind() != SNConstruct::Kind::Mirror && out.size() == start;
            std::u16string unused;
            auto constant = buildConstant(*filter->constant, used ? out : unused, construct, placed && used);
            construct->filters.push_back(std::make_shared<SNConstantFilter>(std::move(constant)));
        }
        construct->range = {placed ? start : kNotFound, out.size() - start};
        return construct;
    }

    std::shared_ptr<SNConstant> buildConstant(const syntax::Constant& node, std::u16string& out,
                                              const std::shared_ptr<SNConstruct>& owner, bool placed) {
        switch (node.kind) {
        case syntax::Constant::Kind::String: {
            auto constant = std::make_shared<SNStringConstant>();
            size_t start = out.size();
            expandSequence(*node.string, out, owner, placed, &constant->constructs);
            constant->resolvedValue = out.substr(start);
            return constant;
        }
        case syntax::Constant::Kind::Shell: {
            auto constant = std::make_shared<SNShellConstant>();
            std::u16string_view command = node.text;
            if (command.starts_with(u"#!")) {  // an interpreter line chooses what runs the rest
                size_t lineEnd = command.find(u'\n');
                constant->prefix = command.substr(2, lineEnd == command.npos ? command.npos : lineEnd - 2);
                command = lineEnd == command.npos ? std::u16string_view{} : command.substr(lineEnd + 1);
            }
            constant->script = command;
            return constant;
        }
        case syntax::Constant::Kind::Variable: break;
        }
        auto constant = std::make_shared<SNVariableConstant>();
        constant->variable = node.text;
        return constant;
    }

    CompiledSnippet m_result;
    std::set<int64_t> m_tabStops;
};

}  // namespace

CompiledSnippet buildCompiledSnippet(const syntax::Sequence& root) { return Builder().build(root); }

}  // namespace vx
