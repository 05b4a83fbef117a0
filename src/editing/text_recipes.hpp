// The everyday text recipes beside the line transforms: comment toggling, case changes, moving
// lines, joining lines and selecting what the enclosing brackets hold. Each works on the one
// selection it is given (the view runs it once per selection) and keeps that selection on the
// same text by carrying it through the edit.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "editing/recipe.hpp"
#include "document/transaction.hpp"

namespace vx {

// Applies replacements (ascending, in the current text's coordinates) as one change and carries
// the selection through it; false when there is nothing to replace.
bool applyReplacements(VXRecipe& recipe, const std::vector<Replacement>& replacements);

// Comments the lines out with the line comment marker, or back in when every non-blank line has it.
// Without a line marker the lines are wrapped in the block markers.
class VXToggleLineCommentRecipe final : public VXRecipe {
public:
    using VXRecipe::VXRecipe;
    bool main() override;
};

// Wraps the selection (or the caret's line) in the block comment markers, or takes them off.
class VXToggleBlockCommentRecipe final : public VXRecipe {
public:
    using VXRecipe::VXRecipe;
    bool main() override;
};

// Upper, lower or title case of the selection, or of the word at the caret.
class VXChangeCaseRecipe final : public VXRecipe {
public:
    enum class Case { Upper, Lower, Title };
    VXChangeCaseRecipe(RecipeTarget& target, Case to) : VXRecipe(target), m_case(to) {}
    bool main() override;

private:
    Case m_case;
};

// Moves the selected lines one line up or down, the selection with them.
class VXMoveLinesRecipe final : public VXRecipe {
public:
    VXMoveLinesRecipe(RecipeTarget& target, bool down) : VXRecipe(target), m_down(down) {}
    bool main() override;

private:
    bool m_down;
};

// Joins the selected lines (or the caret's line and the next) with single spaces.
class VXJoinLinesRecipe final : public VXRecipe {
public:
    using VXRecipe::VXRecipe;
    bool main() override;
};

// Selects what the innermost brackets around the selection hold; when that is already selected,
// the brackets too.
class VXSelectEnclosingBracketsRecipe final : public VXRecipe {
public:
    using VXRecipe::VXRecipe;
    bool main() override;
};

// The recipe a name stands for (the editor's command names, `vx edit`'s command:NAME); null when none.
std::unique_ptr<VXRecipe> makeTextRecipe(std::string_view name, RecipeTarget& target);
const std::vector<std::string_view>& textRecipeNames();

}  // namespace vx
