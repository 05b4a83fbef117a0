// The commands of several selections, the line transforms and the text recipes, by the names
// the key bindings use. Each runs on every selection of the active tab.
#include <string>

#include "app/editor/editor.hpp"
#include "editing/line_transform_recipe.hpp"
#include "editing/text_recipes.hpp"

namespace vx::editor {
namespace {

void onView(Editor& editor, std::string name, std::function<void(Editor&, VXTextView&)> action) {
    editor.addCommand(std::move(name), [action = std::move(action)](Editor& e) {
        if (Tab* tab = e.activeTab()) action(e, tab->view());
    });
}

void registerMultipleSelections(Editor& editor) {
    onView(editor, "add-caret-above", [](Editor&, VXTextView& v) { v.addCaretOnAdjacentLine(-1); });
    onView(editor, "add-caret-below", [](Editor&, VXTextView& v) { v.addCaretOnAdjacentLine(1); });
    onView(editor, "select-next-occurrence", [](Editor& e, VXTextView& v) {
        if (!v.selectNextOccurrence(false)) e.showMessage("No other occurrence");
    });
    onView(editor, "skip-occurrence", [](Editor& e, VXTextView& v) {
        if (!v.selectNextOccurrence(true)) e.showMessage("No other occurrence");
    });
    onView(editor, "select-all-occurrences", [](Editor& e, VXTextView& v) {
        size_t count = v.selectAllOccurrences();
        if (count > 1) e.showMessage(std::to_string(count) + " selections");
    });
    onView(editor, "split-selection-into-lines", [](Editor&, VXTextView& v) { v.splitSelectionIntoLines(); });
    onView(editor, "column-select-up", [](Editor&, VXTextView& v) { v.extendColumnSelection(-1, 0); });
    onView(editor, "column-select-down", [](Editor&, VXTextView& v) { v.extendColumnSelection(1, 0); });
    onView(editor, "column-select-left", [](Editor&, VXTextView& v) { v.extendColumnSelection(0, -1); });
    onView(editor, "column-select-right", [](Editor&, VXTextView& v) { v.extendColumnSelection(0, 1); });
    onView(editor, "focus-selection", [](Editor& e, VXTextView& v) {
        if (v.focusPrimary()) e.showMessage("Editing this selection only (Escape to leave)");
    });
}

void registerRecipes(Editor& editor) {
    // The line transforms by their event names without the "vx." prefix.
    for (std::string_view event : VXLineTransformRecipe::eventNames()) {
        std::string name(event.substr(3));
        onView(editor, name, [event](Editor&, VXTextView& v) { v.runTransform(event); });
    }
    for (std::string_view recipe : textRecipeNames()) {
        onView(editor, std::string(recipe), [recipe](Editor&, VXTextView& v) {
            v.runRecipe([recipe](RecipeTarget& target) { return makeTextRecipe(recipe, target); });
        });
    }
}

}  // namespace

void registerSelectionCommands(Editor& editor) {
    registerMultipleSelections(editor);
    registerRecipes(editor);
}

}  // namespace vx::editor
