// VXLineTransformRecipe: the ten line transforms, one recipe whose type picks the operation.
//
//   1 sort ascending   2 sort descending   3 shuffle   4 reverse lines   5 unique lines
//   6 sort ascending and drop adjacent repeats   7 duplicate line   8 reverse text (transpose)
//   9 spaces to tabs   10 tabs to spaces
//
// Types 1-6 work on the whole lines the selection touches and leave the selection covering them;
// the lines are joined again with the document's own line break, so a CRLF file stays CRLF.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "editing/recipe.hpp"

namespace vx {

class VXLineTransformRecipe final : public VXRecipe {
public:
    using VXRecipe::VXRecipe;

    int32_t type = 0;
    bool main() override;

    // The event names, in the order triggerEvent compares them; index + 1 is the type.
    static const std::vector<std::string_view>& eventNames();
    // The type an event name stands for; 0 for an unknown name.
    static int32_t typeForEvent(std::string_view name);

    using LineTransform = std::function<std::vector<std::u16string>(std::vector<std::u16string>)>;
    // Splits the lines covering the selection, transforms them and puts them back.
    static bool processLines(VXLineTransformRecipe& recipe, const LineTransform& transform);

    // Ascending by the user's collation: numbers by value, case ignored; stable.
    static void sortLines(std::vector<std::u16string>& lines, int direction);

private:
    bool duplicateLine();
    bool reverseText();
    bool convertIndentation(bool toTabs);
};

// Runs the transform an event name stands for on a target; false for an unknown name.
bool triggerEvent(std::string_view eventName, RecipeTarget& target);

}  // namespace vx
