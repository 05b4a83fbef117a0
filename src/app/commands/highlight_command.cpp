// vx highlight FILE [--language NAME | --syntax PATH] [--theme NAME|PATH] [--format FORMAT]
// [--colors 24bit|256]: the whole file through the highlighter, printed in one of the formats below.
//
// For people: ansi (colour escapes for a terminal; the default when standard output is one) and
// html (a standalone page with inline styles), coloured by a theme (Nightfall unless --theme
// says otherwise). For checking: scopes and events.
//
// The text streams: it is read in blocks, highlighted line by line and written as each block is
// done, so output begins before the input ends (a pipe that never closes works) and memory
// grows with the longest line, not with the number of lines.
//
// Formats are a table: a format turns each highlighted line into text as it comes, so output for
// people (colours from a theme) is added as another entry without touching the rest.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>

#include <cmath>
#include <cstdlib>

#include "app/commands/command.hpp"
#include "app/commands/streamed_input.hpp"
#include "selectors/theme.hpp"
#include "syntax/document_highlighter.hpp"
#include "syntax/line_stream.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/zone_manager.hpp"

namespace vx::cli {
namespace {

constexpr const char* kDefaultTheme = "Nightfall";

struct FormatOptions {
    std::string themeName = kDefaultTheme;
    bool trueColor = true;  // ansi: 24-bit escapes, else the 256-colour palette
    std::string title;      // html: the page's title
};

// Turns highlighted lines into output as they come: begin, then each line in order, then end.
class HighlightFormat {
public:
    virtual ~HighlightFormat() = default;
    virtual void begin(std::string&) {}
    // The n-th line (events in document offsets) and its text with its line break.
    virtual void line(std::string& out, uint64_t n, const VXHighlightedLine& line, std::u16string_view text) = 0;
    virtual void end(std::string&) {}
};

// --- colours from the theme ------------------------------------------------------------------------

struct Rgb {
    int r = 0, g = 0, b = 0;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

// A theme colour over the background: what the eye sees of a half-transparent colour.
Rgb over(const VXColor& color, const Rgb& background) {
    auto channel = [&](double c, int under) {
        const double clamped = std::clamp(c, 0.0, 1.0);
        const double alpha = std::clamp(color.alpha, 0.0, 1.0);
        return static_cast<int>(std::lround(clamped * 255.0 * alpha + under * (1.0 - alpha)));
    };
    return {channel(color.red, background.r), channel(color.green, background.g), channel(color.blue, background.b)};
}

// How one run of text looks, colours resolved against the theme's defaults.
struct Look {
    Rgb foreground;
    std::optional<Rgb> background;  // only where it differs from the page's
    bool bold = false, italic = false, underline = false, strikethrough = false;
    friend bool operator==(const Look&, const Look&) = default;
};

class ThemeLooks {
public:
    explicit ThemeLooks(const std::string& name) : m_theme(loadThemeOrFail(name)) {
        const VXAttrDict defaults = m_theme->attributesForZone(m_theme->defaultZone);
        // A theme without default colours draws light on dark.
        m_page.background = defaults.background.alpha > 0 ? over(defaults.background, {0, 0, 0}) : Rgb{0x1e, 0x1e, 0x1e};
        m_page.foreground = defaults.foreground.alpha > 0 ? over(defaults.foreground, *m_page.background)
                                                          : Rgb{0xdd, 0xdd, 0xdd};
    }
    const Rgb& pageForeground() const { return m_page.foreground; }
    const Rgb& pageBackground() const { return *m_page.background; }

    // The look of a stack of scopes; the reference stays valid as long as this object.
    const Look& lookFor(const std::vector<VXScope>& scopes) {
        if (auto found = m_cache.find(scopes); found != m_cache.end()) return found->second;
        const VXAttrDict attributes = m_theme->attributesForZone(m_theme->zoneForContext(VXContext::fromScopes(scopes)));
        Look look;
        look.foreground = attributes.foreground.alpha > 0 ? over(attributes.foreground, *m_page.background) : m_page.foreground;
        if (attributes.background.alpha > 0) {
            const Rgb background = over(attributes.background, *m_page.background);
            if (background != *m_page.background) look.background = background;
        }
        look.bold = attributes.bold;
        look.italic = attributes.italic;
        look.underline = attributes.underline;
        look.strikethrough = attributes.strikethrough;
        return m_cache.emplace(scopes, look).first->second;
    }

private:
    struct StackHash {
        size_t operator()(const std::vector<VXScope>& scopes) const {
            size_t hash = scopes.size();
            for (const VXScope& scope : scopes) hash = hash * 31 + scope.hash();
            return hash;
        }
    };
    std::shared_ptr<VXTheme> m_theme;
    Look m_page;
    // Scopes are interned, so a stack hashes and compares as the pointers it holds.
    std::unordered_map<std::vector<VXScope>, Look, StackHash> m_cache;
};

// A line's runs with their looks, the text of each run in UTF-8; endLine after its line break.
template <class Emit, class EndLine>
void forEachStyledRun(const VXHighlightedLine& line, std::u16string_view text, ThemeLooks& looks, Emit&& emit,
                      EndLine&& endLine) {
    // Neighbouring runs that look the same are written as one.
    const Look* pending = nullptr;
    std::string pendingText;
    forEachScopeRun(line, [&](const VXScopeRun& run) {
        const Look& look = looks.lookFor(run.scopes);
        if (pending && *pending != look) {
            emit(*pending, pendingText);
            pendingText.clear();
        }
        pending = &look;
        appendUtf8FromUtf16(pendingText, text.substr(run.start, run.end - run.start));
    });
    if (pending) emit(*pending, pendingText);
    if (line.line.length > line.line.contentLength) endLine();
}

// --- ansi ----------------------------------------------------------------------------------------

// The nearest colour of the 256-colour palette: the 6x6x6 cube or the grey ramp.
int paletteIndex(const Rgb& c) {
    static constexpr int kLevels[6] = {0, 95, 135, 175, 215, 255};
    auto level = [](int v) {
        int best = 0;
        for (int i = 1; i < 6; ++i)
            if (std::abs(kLevels[i] - v) < std::abs(kLevels[best] - v)) best = i;
        return best;
    };
    auto distance = [&](int r, int g, int b) { return (r - c.r) * (r - c.r) + (g - c.g) * (g - c.g) + (b - c.b) * (b - c.b); };
    const int ri = level(c.r), gi = level(c.g), bi = level(c.b);
    const int cube = 16 + 36 * ri + 6 * gi + bi;
    const int cubeDistance = distance(kLevels[ri], kLevels[gi], kLevels[bi]);
    const int average = (c.r + c.g + c.b) / 3;
    const int grey = std::clamp((average - 8 + 5) / 10, 0, 23);
    const int greyValue = 8 + 10 * grey;
    return distance(greyValue, greyValue, greyValue) < cubeDistance ? 232 + grey : cube;
}

std::string sgrColor(bool foreground, const Rgb& c, bool trueColor) {
    const char* kind = foreground ? "38" : "48";
    if (trueColor)
        return std::string(kind) + ";2;" + std::to_string(c.r) + ";" + std::to_string(c.g) + ";" + std::to_string(c.b);
    return std::string(kind) + ";5;" + std::to_string(paletteIndex(c));
}

// Text colours only, on the terminal's own background (as pagers show code); zones with a
// background of their own get it. Escapes are written only where the look changes.
class AnsiFormat final : public HighlightFormat {
public:
    explicit AnsiFormat(const FormatOptions& options) : m_looks(options.themeName), m_trueColor(options.trueColor) {}

    void line(std::string& out, uint64_t, const VXHighlightedLine& line, std::u16string_view text) override {
        forEachStyledRun(
            line, text, m_looks,
            [&](const Look& look, const std::string& runText) {
                if (!m_current || *m_current != look) {
                    out += escapeFor(look);
                    m_current = look;
                }
                out += runText;
            },
            [&] {
                if (m_current) out += "\x1b[0m";
                m_current.reset();
                out += "\n";
            });
    }
    void end(std::string& out) override {
        if (m_current) out += "\x1b[0m";
    }

private:
    const std::string& escapeFor(const Look& look) {
        auto [entry, added] = m_escapes.try_emplace(&look);  // looks live as long as m_looks
        if (added) {
            std::string& escape = entry->second;
            escape = "\x1b[0";
            if (look.bold) escape += ";1";
            if (look.italic) escape += ";3";
            if (look.underline) escape += ";4";
            if (look.strikethrough) escape += ";9";
            escape += ";" + sgrColor(true, look.foreground, m_trueColor);
            if (look.background) escape += ";" + sgrColor(false, *look.background, m_trueColor);
            escape += "m";
        }
        return entry->second;
    }

    ThemeLooks m_looks;
    bool m_trueColor;
    std::optional<Look> m_current;
    std::unordered_map<const Look*, std::string> m_escapes;
};

// --- html ----------------------------------------------------------------------------------------

std::string cssColor(const Rgb& c) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x", c.r, c.g, c.b);
    return buffer;
}

void appendEscaped(std::string& out, std::string_view text) {
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
}

class HtmlFormat final : public HighlightFormat {
public:
    explicit HtmlFormat(const FormatOptions& options)
        : m_looks(options.themeName), m_plain{m_looks.pageForeground(), std::nullopt}, m_title(options.title) {}

    void begin(std::string& out) override {
        out += "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>";
        appendEscaped(out, m_title);
        out += "</title>\n</head>\n<body style=\"margin:0;background:" + cssColor(m_looks.pageBackground()) + "\">\n";
        out += "<pre style=\"margin:0;padding:1em;font-family:monospace;color:" + cssColor(m_looks.pageForeground()) +
               ";background:" + cssColor(m_looks.pageBackground()) + "\">";
    }
    void line(std::string& out, uint64_t, const VXHighlightedLine& line, std::u16string_view text) override {
        forEachStyledRun(
            line, text, m_looks, [&](const Look& look, const std::string& runText) { appendRun(out, look, runText); },
            [&] { out += "\n"; });
    }
    void end(std::string& out) override { out += "</pre>\n</body>\n</html>\n"; }

private:
    void appendRun(std::string& out, const Look& look, const std::string& text) const {
        if (look == m_plain) {
            appendEscaped(out, text);
            return;
        }
        std::string style;
        if (look.foreground != m_plain.foreground) style += "color:" + cssColor(look.foreground) + ";";
        if (look.background) style += "background:" + cssColor(*look.background) + ";";
        if (look.bold) style += "font-weight:bold;";
        if (look.italic) style += "font-style:italic;";
        if (look.underline || look.strikethrough)
            style += std::string("text-decoration:") + (look.underline ? " underline" : "") +
                     (look.strikethrough ? " line-through" : "") + ";";
        out += "<span style=\"" + style + "\">";
        appendEscaped(out, text);
        out += "</span>";
    }

    ThemeLooks m_looks;
    const Look m_plain;
    std::string m_title;
};

// The checking formats: a line at a time already.
class ScopesFormat final : public HighlightFormat {
public:
    void line(std::string& out, uint64_t n, const VXHighlightedLine& line, std::u16string_view) override {
        appendScopesForLine(out, n, line);
    }
};

class EventsFormat final : public HighlightFormat {
public:
    void line(std::string& out, uint64_t n, const VXHighlightedLine& line, std::u16string_view) override {
        appendEventsForLine(out, n, line);
    }
};

using FormatFactory = std::function<std::unique_ptr<HighlightFormat>(const FormatOptions&)>;

const std::map<std::string, FormatFactory>& formats() {
    static const std::map<std::string, FormatFactory> table = {
        {"scopes", [](const FormatOptions&) { return std::make_unique<ScopesFormat>(); }},
        {"events", [](const FormatOptions&) { return std::make_unique<EventsFormat>(); }},
        {"ansi", [](const FormatOptions& options) { return std::make_unique<AnsiFormat>(options); }},
        {"html", [](const FormatOptions& options) { return std::make_unique<HtmlFormat>(options); }},
    };
    return table;
}

// 24-bit colour when the terminal says it has it (COLORTERM), the 256-colour palette otherwise.
bool terminalHasTrueColor() {
    const char* colorterm = std::getenv("COLORTERM");
    if (!colorterm) return false;
    const std::string value = colorterm;
    return value == "truecolor" || value == "24bit";
}

struct Options {
    std::string file;
    std::string language;
    std::string syntax;
    std::string format;
    std::string theme;
    std::string colors;
};

// One definition file loaded on its own (for grammar authors): its folder names the language,
// and its includes of other languages resolve against the bundled ones.
const VXSyntaxRuleset* loadSyntaxFile(const std::string& path) {
    static VXSyntaxZoneManager manager;
    const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
    catalog.attachTo(manager);
    const std::string language = std::filesystem::absolute(path).parent_path().filename().string();
    auto ruleset = VXSyntaxRuleset::rulesetWithContentsOfFile(path, language, "", manager);
    if (!ruleset) throw CommandFailure(path + ": cannot read the definition file");
    return manager.addRuleset(std::move(ruleset));
}

// Output is written whenever this much has gathered, and after every block of input.
constexpr size_t kOutputBlock = 1 << 16;

void flushOutput(std::string& out) {
    if (out.empty()) return;
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fflush(stdout);
    out.clear();
}

// The language the options name, or the one chosen from the file's name and the head of its text.
const VXSyntaxRuleset& chooseRuleset(const Options& options, StreamedInput& input, std::u16string& head) {
    if (!options.syntax.empty()) return *loadSyntaxFile(options.syntax);
    const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
    const VXLanguage* language = nullptr;
    if (!options.language.empty()) {
        language = catalog.languageNamed(options.language);
        if (!language) throw CommandFailure("unknown language: " + options.language);
    } else {
        while (head.size() < VXLanguageCatalog::kDetectionHeadLength && input.readInto(head)) {
        }
        language = catalog.detectLanguageForFilePath(options.file == "-" ? std::string() : options.file, head);
    }
    const VXSyntaxRuleset* ruleset = language ? catalog.rulesetForLanguage(*language) : nullptr;
    if (!ruleset) throw CommandFailure("cannot load the language definition for " + options.file);
    return *ruleset;
}

void run(const Options& options) {
    const std::string formatName = !options.format.empty() ? options.format : isatty(STDOUT_FILENO) ? "ansi" : "scopes";
    auto factory = formats().find(formatName);
    if (factory == formats().end()) throw CommandFailure("unknown format: " + formatName);

    FormatOptions formatOptions;
    if (!options.theme.empty()) formatOptions.themeName = options.theme;
    formatOptions.trueColor = options.colors.empty() ? terminalHasTrueColor() : options.colors == "24bit";
    formatOptions.title = options.file == "-" ? "standard input" : std::filesystem::path(options.file).filename().string();

    // Everything that can fail is settled before the first byte of output.
    StreamedInput input(options.file);
    std::u16string text;
    const VXSyntaxRuleset& ruleset = chooseRuleset(options, input, text);
    const std::unique_ptr<HighlightFormat> format = factory->second(formatOptions);

    std::string out;
    format->begin(out);
    VXLineStreamHighlighter highlighter(ruleset, [&](const VXHighlightedLine& line, std::u16string_view lineText) {
        format->line(out, highlighter.linesDone(), line, lineText);
        if (out.size() >= kOutputBlock) flushOutput(out);
    });
    do {
        highlighter.append(text);
        text.clear();
        flushOutput(out);
    } while (input.readInto(text));
    highlighter.finish();
    format->end(out);
    flushOutput(out);
}

void registerHighlight(CLI::App& app) {
    static Options options;
    auto* command = app.add_subcommand("highlight", "Highlight a whole file");
    command->add_option("FILE", options.file, "The file, or - for standard input")->required();
    auto* language = command->add_option("--language", options.language, "Highlight as this language");
    command->add_option("--syntax", options.syntax, "Load this syntax.selfml instead of choosing a language")
        ->excludes(language);
    std::string names;
    for (const auto& [name, _] : formats()) names += (names.empty() ? "" : "|") + name;
    command->add_option("--format", options.format,
                        "Output format: " + names + " (default ansi on a terminal, else scopes)");
    command->add_option("--theme", options.theme, "Colour theme for ansi and html: a name or a path (default Nightfall)");
    command->add_option("--colors", options.colors, "ansi colours: 24bit or 256 (default from COLORTERM)")
        ->check(CLI::IsMember({"24bit", "256"}));
    command->callback([] { run(options); });
}

const CommandRegistration registration("highlight", registerHighlight);

}  // namespace
}  // namespace vx::cli
