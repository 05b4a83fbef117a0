// The built-in key bindings. `vx keys` prints them; a user's keys.selfml in the configuration
// folder overrides them command by command.
#include "app/tui/key_bindings.hpp"

namespace vx::tui {

std::string_view KeyBindings::defaultBindingsText() {
    return R"selfml(# Vellumex key bindings: (command key ...). Put your changes in keys.selfml in the
# configuration folder; each command named there gets exactly the keys listed there.
(keys
    # files and tabs
    (save ctrl+s)
    (save-as ctrl+shift+s alt+s)
    (open ctrl+o)
    (quick-open ctrl+p)
    (new-file ctrl+n)
    (close-tab ctrl+w)
    (quit ctrl+q)
    (next-tab ctrl+tab ctrl+pagedown)
    (previous-tab ctrl+shift+tab ctrl+pageup)
    (tab-1 alt+1) (tab-2 alt+2) (tab-3 alt+3) (tab-4 alt+4) (tab-5 alt+5)
    (tab-6 alt+6) (tab-7 alt+7) (tab-8 alt+8) (tab-9 alt+9)
    (encoding-menu alt+e f6)
    (line-ending-menu alt+l f7)
    (tab-settings f8)
    (check-disk f5)
    (help f1)

    # editing
    (undo ctrl+z)
    (redo ctrl+shift+z ctrl+y)
    (cut ctrl+x)
    (copy ctrl+c)
    (paste ctrl+v)
    (select-all ctrl+a)
    (newline enter)
    (expand-snippet-or-indent tab)
    (previous-field-or-unindent shift+tab)
    (insert-snippet ctrl+j)
    (delete-backward backspace shift+backspace)
    (delete-forward delete)
    (delete-word-backward ctrl+backspace alt+backspace)
    (delete-word-forward ctrl+delete alt+d)

    # finding
    (find ctrl+f)
    (find-next f3 ctrl+g)
    (find-previous shift+f3 ctrl+shift+g)
    (go-to-line ctrl+l)
    (go-to-symbol ctrl+r)
    (go-to-definition f12)
    (go-to-project-symbol ctrl+shift+r)

    # moving; the select- forms extend the selection
    (move-left left) (select-left shift+left)
    (move-right right) (select-right shift+right)
    (move-up up) (select-up shift+up)
    (move-down down) (select-down shift+down)
    (move-word-left ctrl+left alt+left alt+b) (select-word-left ctrl+shift+left)
    (move-word-right ctrl+right alt+right alt+f) (select-word-right ctrl+shift+right)
    (move-line-start home) (select-line-start shift+home)
    (move-line-end end) (select-line-end shift+end)
    (move-document-start ctrl+home) (select-document-start ctrl+shift+home)
    (move-document-end ctrl+end) (select-document-end ctrl+shift+end)
    (page-up pageup) (select-page-up shift+pageup)
    (page-down pagedown) (select-page-down shift+pagedown)
    (scroll-up ctrl+up) (scroll-down ctrl+down)
    (cancel escape)

    # several selections; Escape goes back to one
    (add-caret-above ctrl+alt+up) (add-caret-below ctrl+alt+down)
    (select-next-occurrence ctrl+d) (skip-occurrence ctrl+k)
    (select-all-occurrences alt+f3)
    (split-selection-into-lines alt+shift+l)
    (column-select-up alt+shift+up) (column-select-down alt+shift+down)
    (column-select-left alt+shift+left) (column-select-right alt+shift+right)
    (focus-selection alt+shift+f)

    # lines and text
    (sort-lines-ascending f9) (sort-lines-descending shift+f9)
    (sort-ascending-and-unique-lines ctrl+f9) (unique-lines alt+f9)
    (randomize-lines alt+shift+r) (reverse-lines alt+r)
    (duplicate-line alt+shift+d) (reverse-text ctrl+t)
    (spaces-to-tabs alt+shift+t) (tabs-to-spaces alt+t)
    (toggle-comment ctrl+/ alt+/) (toggle-block-comment alt+shift+a)
    (upper-case alt+u) (lower-case alt+shift+u) (title-case alt+c)
    (move-lines-up alt+up) (move-lines-down alt+down)
    (join-lines alt+j) (select-enclosing-brackets alt+m))
)selfml";
}

}  // namespace vx::tui
