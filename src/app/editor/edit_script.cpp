#include "app/editor/edit_script.hpp"

#include <charconv>
#include <map>

#include "app/editor/snippet_commands.hpp"
#include "app/tui/key.hpp"
#include "editing/line_transform_recipe.hpp"
#include "platform/unicode.hpp"

namespace vx::editor {
namespace {

uint64_t parseNumber(std::string_view text, std::string_view whole) {
    uint64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        throw EditScriptError("bad selection: " + std::string(whole));
    return value;
}

// The plain commands and the editor commands they are.
const std::map<std::string_view, std::string_view>& plainCommands() {
    static const std::map<std::string_view, std::string_view> commands = {
        {"backspace", "delete-backward"}, {"delete", "delete-forward"}, {"newline", "newline"},
        {"tab", "expand-snippet-or-indent"}, {"backtab", "previous-field-or-unindent"}, {"undo", "undo"}, {"redo", "redo"}};
    return commands;
}

// move:DIR and select:DIR: the direction's name in the editor's commands.
const std::map<std::string_view, std::string_view>& directions() {
    static const std::map<std::string_view, std::string_view> names = {
        {"left", "left"}, {"right", "right"}, {"up", "up"}, {"down", "down"},
        {"home", "line-start"}, {"end", "line-end"}, {"word-left", "word-left"}, {"word-right", "word-right"},
        {"line-start", "line-beginning"}, {"line-end", "line-end"}, {"doc-start", "document-start"},
        {"doc-end", "document-end"}};
    return names;
}

void runNamed(Editor& editor, const std::string& name, std::string_view command) {
    if (!editor.hasCommand(name)) throw EditScriptError("unknown command: " + std::string(command));
    editor.runCommand(name);
}

}  // namespace

std::vector<Selection> parseSelectionRanges(std::string_view text, uint64_t length) {
    std::vector<Selection> out;
    size_t start = 0;
    while (start <= text.size()) {
        size_t comma = std::min(text.find(',', start), text.size());
        std::string_view item = text.substr(start, comma - start);
        size_t colon = item.find(':');
        uint64_t location = parseNumber(item.substr(0, colon), item);
        uint64_t count = colon == std::string_view::npos ? 0 : parseNumber(item.substr(colon + 1), item);
        if (location > length || count > length - location)
            throw EditScriptError("selection outside the text: " + std::string(item));
        out.push_back({location, location + count});
        start = comma + 1;
    }
    return out;
}

std::u16string unescapeEditText(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            char next = text[i + 1];
            if (next == 'n' || next == 't' || next == '\\') {
                out += next == 'n' ? '\n' : next == 't' ? '\t' : '\\';
                ++i;
                continue;
            }
        }
        out += text[i];
    }
    return utf16FromUtf8(out);
}

void runEditCommand(Editor& editor, std::string_view command) {
    Tab* tab = editor.activeTab();
    if (!tab) throw EditScriptError("no text to edit");
    // The typing aids ask the highlighter for scope contexts; colour what is still uncoloured so
    // that every command sees the text as the editor would after a frame.
    while (editor.hasBackgroundWork()) editor.doBackgroundWork(std::chrono::milliseconds(100));

    size_t colon = command.find(':');
    std::string_view verb = command.substr(0, colon);
    std::string_view argument = colon == std::string_view::npos ? std::string_view() : command.substr(colon + 1);
    if (colon == std::string_view::npos) {
        auto plain = plainCommands().find(verb);
        if (plain == plainCommands().end()) throw EditScriptError("unknown command: " + std::string(command));
        return runNamed(editor, std::string(plain->second), command);
    }
    if (verb == "type") return editor.typeText(unescapeEditText(argument));
    if (verb == "insert") return editor.handleEvent(tui::PasteEvent{utf8FromUtf16(unescapeEditText(argument))});
    if (verb == "move" || verb == "select") {
        auto direction = directions().find(argument);
        if (direction == directions().end()) throw EditScriptError("unknown command: " + std::string(command));
        return runNamed(editor, std::string(verb == "move" ? "move-" : "select-") + std::string(direction->second), command);
    }
    if (verb == "transform") {
        if (VXLineTransformRecipe::typeForEvent(argument) == 0) throw EditScriptError("unknown command: " + std::string(command));
        return runNamed(editor, std::string(argument.substr(3)), command);
    }
    if (verb == "command") return runNamed(editor, std::string(argument), command);
    if (verb == "key") {
        auto key = tui::parseKeyName(argument);
        if (!key) throw EditScriptError("not a key: " + std::string(argument));
        return editor.handleKey(*key);
    }
    if (verb == "snippet") {
        insertSnippet(editor, unescapeEditText(argument));
        return editor.revealCaret();
    }
    // replace: and vi: arrive with find and replace and the vi mode.
    throw EditScriptError("unknown command: " + std::string(command));
}

}  // namespace vx::editor
