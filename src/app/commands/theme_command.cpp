// vx theme zone THEME SCOPES | vx theme color TEXT | vx themes
#include <nlohmann/json.hpp>

#include <sstream>

#include "app/commands/command.hpp"
#include "selectors/color.hpp"
#include "selectors/theme.hpp"

namespace vx::cli {
namespace {

nlohmann::ordered_json colorJson(const std::optional<VXColor>& color) {
    return color ? nlohmann::ordered_json(color->hexString()) : nlohmann::ordered_json(nullptr);
}

VXContext contextFromScopes(const std::string& text) {
    std::vector<VXScope> scopes;
    std::istringstream words(text);
    for (std::string word; words >> word;) scopes.push_back(VXScope(word));
    return VXContext::fromScopes(scopes);
}

void registerTheme(CLI::App& app) {
    auto* theme = app.add_subcommand("theme", "Ask the theme engine");
    theme->require_subcommand(1);

    static std::string zoneTheme, zoneScopes;
    auto* zone = theme->add_subcommand("zone", "Print the zone a theme picks for a scope stack, as JSON");
    zone->add_option("THEME", zoneTheme, "A bundled theme's name or a theme file's path")->required();
    zone->add_option("SCOPES", zoneScopes, "Space-separated scopes, outermost first")->required();
    zone->callback([] {
        auto loaded = loadThemeOrFail(zoneTheme);
        auto picked = loaded->zoneForContext(contextFromScopes(zoneScopes));
        nlohmann::ordered_json out;
        out["selector"] = picked->selectorString();
        out["name"] = picked->name;
        out["foreground"] = colorJson(picked->foregroundColor);
        out["background"] = colorJson(picked->backgroundColor);
        out["bold"] = picked->bold;
        out["italic"] = picked->italic;
        out["underline"] = picked->underline;
        out["strikethrough"] = picked->strikethrough;
        writeOutput(out.dump() + "\n");
    });

    static std::string colorText;
    auto* color = theme->add_subcommand("color", "Print the colour read from TEXT as #RRGGBBAA, or nil");
    color->add_option("TEXT", colorText, "A colour: #hex, a CSS name, rgb()/rgba()/hsl()/hsla()")->required();
    color->callback([] {
        auto parsed = colorFromThemeString(colorText);
        writeOutput((parsed ? parsed->hexString() : std::string("nil")) + "\n");
    });
}

void registerThemes(CLI::App& app) {
    auto* themes = app.add_subcommand("themes", "List the themes: name and file, one a line");
    themes->callback([] {
        std::string out;
        for (const auto& [name, path] : availableThemes()) out += name + "\t" + path + "\n";
        writeOutput(out);
    });
}

const CommandRegistration registration("theme", registerTheme);
const CommandRegistration themesRegistration("themes", registerThemes);

}  // namespace
}  // namespace vx::cli
