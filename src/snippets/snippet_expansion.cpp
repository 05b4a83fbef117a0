#include "snippets/snippet_expansion.hpp"

namespace vx {
namespace {

SnippetField::Kind fieldKind(SNConstruct::Kind kind) {
    switch (kind) {
    case SNConstruct::Kind::TabStop: return SnippetField::Kind::TabStop;
    case SNConstruct::Kind::Mirror: return SnippetField::Kind::Mirror;
    case SNConstruct::Kind::Constant: break;
    }
    return SnippetField::Kind::Constant;
}

std::vector<SnippetField> placedFields(const CompiledSnippet& snippet) {
    std::vector<SnippetField> fields(1);
    fields[0].range = {0, snippet.string.size()};
    std::map<const SNConstruct*, int> indexOf;
    for (const auto& construct : snippet.constructs) {
        if (!construct->isPlaced()) continue;
        SnippetField field;
        field.kind = fieldKind(construct->kind());
        if (const auto* numbered = dynamic_cast<const SNNumberedConstruct*>(construct.get())) field.number = numbered->number;
        field.range = construct->range;
        auto parent = indexOf.find(construct->parentConstruct().get());
        field.parent = parent == indexOf.end() ? 0 : parent->second;
        field.construct = construct;
        indexOf[construct.get()] = static_cast<int>(fields.size());
        fields.push_back(std::move(field));
    }
    return fields;
}

void replaceField(SnippetExpansion& expansion, size_t index, const std::u16string& text) {
    const Range range = expansion.fields[index].range;
    if (expansion.text.compare(range.location, range.length, text) == 0) return;
    expansion.text.replace(range.location, range.length, text);
    adjustSnippetFields(expansion.fields, range, text.size(), static_cast<int>(index));
}

// Line breaks and tabs made the document's; every field's ends carried along.
void applyLayout(SnippetExpansion& expansion, const SnippetLayout& layout) {
    const std::u16string& text = expansion.text;
    const std::u16string tabUnit = layout.softTabs ? std::u16string(static_cast<size_t>(std::max(layout.tabSize, 1)), u' ') : u"\t";
    std::u16string out;
    std::vector<uint64_t> newOffset(text.size() + 1);
    for (size_t i = 0; i < text.size(); ++i) {
        newOffset[i] = out.size();
        char16_t c = text[i];
        if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;  // the LF of CRLF ends the break
        if (c == u'\n' || c == u'\r') {
            out += layout.lineBreak;
            out += layout.indentation;
        } else if (c == u'\t') {
            out += tabUnit;
        } else {
            out += c;
        }
    }
    newOffset[text.size()] = out.size();
    for (SnippetField& field : expansion.fields) {
        if (!field.alive) continue;
        const uint64_t start = newOffset[field.range.location], end = newOffset[field.range.end()];
        field.range = {start, end - start};
    }
    expansion.text = std::move(out);
}

}  // namespace

std::u16string constantText(const SnippetField& field, std::optional<std::u16string> value, const SnippetEnvironment& environment) {
    return field.construct->applyFilters(value.value_or(u""), environment);
}

std::u16string mirrorText(const SnippetField& mirror, std::u16string_view tabStopText, const SnippetEnvironment& environment) {
    return mirror.construct ? mirror.construct->applyFilters(std::u16string(tabStopText), environment) : std::u16string(tabStopText);
}

SnippetExpansion expandSnippet(const CompiledSnippet& snippet, const SnippetEnvironment& environment,
                               const SnippetLayout& layout, ShellCommands shell) {
    SnippetExpansion expansion{snippet.string, placedFields(snippet)};
    // Inner constructs first, so that a construct sees the resolved text of those inside it
    // and a value that replaces its text takes them away.
    for (size_t i = expansion.fields.size(); i-- > 1;) {
        SnippetField& field = expansion.fields[i];
        if (!field.alive) continue;
        if (field.kind == SnippetField::Kind::Constant) {
            const SNConstant& constant = *static_cast<const SNConstantConstruct&>(*field.construct).constant;
            const bool later = shell == ShellCommands::Defer && constant.kind() == SNConstant::Kind::Shell;
            field.awaitsShell = later;
            replaceField(expansion, i, constantText(field, later ? std::nullopt : constant.resolve(environment), environment));
        } else if (field.kind == SnippetField::Kind::TabStop && !field.construct->filters.empty()) {
            std::u16string current = expansion.text.substr(field.range.location, field.range.length);
            replaceField(expansion, i, field.construct->applyFilters(std::move(current), environment));
        }
    }
    for (size_t i = 1; i < expansion.fields.size(); ++i) {
        const SnippetField& mirror = expansion.fields[i];
        if (!mirror.alive || mirror.kind != SnippetField::Kind::Mirror) continue;
        std::u16string value;
        for (const SnippetField& stop : expansion.fields)
            if (stop.alive && stop.kind == SnippetField::Kind::TabStop && stop.number == mirror.number) {
                value = expansion.text.substr(stop.range.location, stop.range.length);
                break;
            }
        replaceField(expansion, i, mirrorText(mirror, value, environment));
    }
    applyLayout(expansion, layout);
    return expansion;
}

}  // namespace vx
