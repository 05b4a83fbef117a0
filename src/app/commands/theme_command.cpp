// vx theme color TEXT: the colour a theme reads from a colour node whose first child is TEXT.
#include "app/commands/command.hpp"
#include "selectors/color.hpp"

namespace vx::cli {
namespace {

void registerTheme(CLI::App& app) {
    auto* theme = app.add_subcommand("theme", "Ask the theme engine");
    theme->require_subcommand(1);

    static std::string colorText;
    auto* color = theme->add_subcommand("color", "Print the colour read from TEXT as #RRGGBBAA, or nil");
    color->add_option("TEXT", colorText, "A colour: #hex, a CSS name, rgb()/rgba()/hsl()/hsla()")->required();
    color->callback([] {
        auto parsed = colorFromThemeString(colorText);
        writeOutput((parsed ? parsed->hexString() : std::string("nil")) + "\n");
    });
}

const CommandRegistration registration("theme", registerTheme);

}  // namespace
}  // namespace vx::cli
