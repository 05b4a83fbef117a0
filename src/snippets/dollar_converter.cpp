// A recursive-descent reader of the dollar-sign syntax that writes this syntax as it goes.
#include "snippets/dollar_converter.hpp"

#include <cstdint>

namespace vx {
namespace {

constexpr size_t npos = std::u16string_view::npos;

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool isNameStart(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_'; }
bool isNameChar(char16_t c) { return isNameStart(c) || isDigit(c); }

// The variables of the dollar syntax that have a counterpart here; other names carry over as
// they are (and resolve from the process environment).
struct VariableAlias {
    std::u16string_view from, to;
};
constexpr VariableAlias kVariableAliases[] = {
    {u"TM_SELECTED_TEXT", u"VX_SELECTED_TEXT"}, {u"SELECTION", u"VX_SELECTED_TEXT"},
    {u"TM_CURRENT_LINE", u"VX_CURRENT_LINE"},   {u"TM_CURRENT_WORD", u"VX_CURRENT_WORD"},
    {u"TM_FILENAME", u"VX_FILENAME"},           {u"TM_FILEPATH", u"VX_FILEPATH"},
    {u"TM_DIRECTORY", u"VX_DIRECTORY"},         {u"TM_LINE_NUMBER", u"VX_LINE_NUMBER"},
    {u"CURRENT_YEAR", u"VX_YEAR"},
};

std::u16string_view variableName(std::u16string_view name) {
    for (const VariableAlias& alias : kVariableAliases)
        if (alias.from == name) return alias.to;
    return name;
}

enum class Place { TopLevel, Quoted };

// Writes literal text so that it reads back as the same characters in `place`. Inside a quoted
// string a double quote and a backslash need escaping; anywhere, "%{" would open a construct
// (it is written as a constant "%" followed by "{"), and a backquote that could pair with a
// later one across a construct is written as a constant too. A backquoted run that stays
// within the text is kept: it reads back as the text it is.
void appendLiteral(std::u16string& out, std::u16string_view text, Place place) {
    std::u16string escaped;
    for (char16_t c : text) {
        if (place == Place::Quoted && (c == u'"' || c == u'\\')) escaped += u'\\';
        escaped += c;
    }
    for (size_t i = 0; i < escaped.size(); ++i) {
        char16_t c = escaped[i];
        if (c == u'%' && i + 1 < escaped.size() && escaped[i + 1] == u'{') {
            out += u"%{\"%\"}";
            continue;
        }
        if (c == u'`') {
            size_t stop = escaped.find_first_of(u"`\"", i + 1);
            if (stop != npos && escaped[stop] == u'"') {  // cannot become a shell token
                out += c;
                continue;
            }
            if (stop != npos) {
                size_t end = stop + 1 < escaped.size() && escaped[stop + 1] == u'`' ? stop + 2 : stop + 1;
                std::u16string_view token = std::u16string_view(escaped).substr(i, end - i);
                if (place == Place::TopLevel || token.find(u'\\') == npos) {
                    out += token;
                    i = end - 1;
                    continue;
                }
            }
            out += u"%{\"`\"}";
            continue;
        }
        out += c;
    }
}

// Where a piece of replacement text ends.
enum class FormatEnd { Slash, Brace, ColonOrBrace, ColonOrParen, Paren };

class Converter {
public:
    explicit Converter(std::u16string_view text) : m_text(text) {}

    SnippetConversion run() {
        SnippetConversion result;
        std::u16string out;
        if (convertText(out, Place::TopLevel, false)) {
            result.ok = true;
            result.text = std::move(out);
        } else {
            result.problem = m_problem;
            result.offset = m_problemAt;
        }
        return result;
    }

private:
    bool fail(const char* problem, size_t at) {
        if (m_problem.empty()) {
            m_problem = problem;
            m_problemAt = at;
        }
        return false;
    }
    bool at(char16_t c) const { return m_pos < m_text.size() && m_text[m_pos] == c; }
    bool expect(char16_t c, const char* problem) {
        if (!at(c)) return fail(problem, m_pos);
        ++m_pos;
        return true;
    }
    std::u16string_view readWhile(bool (*accept)(char16_t)) {
        size_t start = m_pos;
        while (m_pos < m_text.size() && accept(m_text[m_pos])) ++m_pos;
        return m_text.substr(start, m_pos - start);
    }

    bool startsConstruct() const {
        char16_t c = m_text[m_pos];
        if (c == u'`') return m_text.find(u'`', m_pos + 1) != npos;
        if (c != u'$' || m_pos + 1 >= m_text.size()) return false;
        char16_t next = m_text[m_pos + 1];
        return isDigit(next) || isNameStart(next) || next == u'{';
    }

    // Text and constructs up to the end, or for a default up to its closing "}".
    bool convertText(std::u16string& out, Place place, bool inDefault) {
        std::u16string literal;
        while (m_pos < m_text.size()) {
            char16_t c = m_text[m_pos];
            if (c == u'\\' && m_pos + 1 < m_text.size() && std::u16string_view(u"$\\}`").find(m_text[m_pos + 1]) != npos) {
                literal += m_text[m_pos + 1];
                m_pos += 2;
                continue;
            }
            if (c == u'}' && inDefault) break;
            if ((c == u'$' || c == u'`') && startsConstruct()) {
                appendLiteral(out, literal, place);
                literal.clear();
                if (!convertConstruct(out)) return false;
                continue;
            }
            literal += c;
            ++m_pos;
        }
        appendLiteral(out, literal, place);
        return true;
    }

    bool convertConstruct(std::u16string& out) {
        size_t start = m_pos;
        if (at(u'`')) {
            size_t close = m_text.find(u'`', m_pos + 1);
            std::u16string_view command = m_text.substr(m_pos + 1, close - m_pos - 1);
            if (command.find(u'"') != npos) return fail("a shell command with a double quote cannot be written here", start);
            out += u"%{`";
            out += command;
            out += u"`}";
            m_pos = close + 1;
            return true;
        }
        ++m_pos;  // the dollar
        if (!at(u'{')) {
            out += u"%{";
            out += isDigit(m_text[m_pos]) ? readWhile(isDigit) : variableName(readWhile(isNameChar));
            out += u'}';
            return true;
        }
        ++m_pos;
        std::u16string_view head;
        if (m_pos < m_text.size() && isDigit(m_text[m_pos])) head = readWhile(isDigit);
        else if (m_pos < m_text.size() && isNameStart(m_text[m_pos])) head = variableName(readWhile(isNameChar));
        else return fail("expected a number or a name after \"${\"", m_pos);
        out += u"%{";
        out += head;
        if (at(u'}')) {
            ++m_pos;
            out += u'}';
            return true;
        }
        if (at(u':')) {
            ++m_pos;
            out += u":\"";
            if (!convertText(out, Place::Quoted, true)) return false;
            out += u"\"}";
            return expect(u'}', "a default without its closing \"}\"");
        }
        if (at(u'/')) {
            ++m_pos;
            return convertTransform(out);
        }
        if (at(u'|')) return fail("choices cannot be written in this syntax", m_pos);
        return fail("unexpected character in a construct", m_pos);
    }

    // "${N/pattern/format/options}" after the first slash.
    bool convertTransform(std::u16string& out) {
        out += u'/';
        if (!convertPattern(out)) return false;
        out += u'/';
        if (!convertFormat(out, FormatEnd::Slash)) return false;
        ++m_pos;
        out += u'/';
        std::u16string_view options = readWhile(isNameStart);
        out += options;
        out += u'}';
        return expect(u'}', "expected \"}\" after the options of a transformation");
    }

    bool convertPattern(std::u16string& out) {
        for (;;) {
            if (m_pos >= m_text.size()) return fail("a transformation without its closing \"/\"", m_pos);
            char16_t c = m_text[m_pos];
            if (c == u'/') {
                ++m_pos;
                return true;
            }
            if (c == u'\\' && m_pos + 1 < m_text.size()) {
                char16_t next = m_text[m_pos + 1];
                m_pos += 2;
                if (next == u'}') out += u"\\x7d";
                else if (next == u'`') out += u"\\x60";
                else out += {c, next};
                continue;
            }
            ++m_pos;
            if (c == u'{' && isCountedRepetition()) return fail("a counted repetition {n} cannot be written in a pattern here", m_pos - 1);
            if (c == u'}') out += u"\\x7d";  // a "}" cannot appear in a regex part; Oniguruma reads the escape
            else if (c == u'`') out += u"\\x60";
            else if (c == u'{' && !out.empty() && out.back() == u'%') out += u"\\{";  // "%{" would open a construct
            else out += c;
        }
    }

    bool isCountedRepetition() const {
        size_t i = m_pos;
        while (i < m_text.size() && (isDigit(m_text[i]) || m_text[i] == u',')) ++i;
        return i > m_pos && i < m_text.size() && m_text[i] == u'}';
    }

    // A group reference that stays one reference whatever follows it.
    bool appendGroup(std::u16string& out, std::u16string_view digits, bool digitFollows) {
        if (digits.size() == 1) {
            out += u'\\';
            out += digits;
            return true;
        }
        if (digitFollows) return fail("a group above 9 followed by a digit cannot be written here", m_pos);
        out += u'$';
        out += digits;
        return true;
    }

    bool atFormatEnd(FormatEnd end) const {
        char16_t c = m_text[m_pos];
        switch (end) {
        case FormatEnd::Slash: return c == u'/';
        case FormatEnd::Brace: return c == u'}';
        case FormatEnd::ColonOrBrace: return c == u':' || c == u'}';
        case FormatEnd::ColonOrParen: return c == u':' || c == u')';
        case FormatEnd::Paren: return c == u')';
        }
        return false;
    }

    // Replacement text up to (not past) its end. Inside a conditional's branch, ":" and
    // parentheses are escaped so that they do not end the branch.
    bool convertFormat(std::u16string& out, FormatEnd end) {
        bool inBranch = end != FormatEnd::Slash;
        for (;;) {
            if (m_pos >= m_text.size()) return fail("a transformation without its end", m_pos);
            if (atFormatEnd(end)) return true;
            char16_t c = m_text[m_pos];
            size_t start = m_pos++;
            if (c == u'\\' && m_pos < m_text.size()) {
                char16_t next = m_text[m_pos++];
                if (std::u16string_view(u"ulULE").find(next) != npos) return fail("case changes cannot be written in this syntax", start);
                if (next == u'}' || next == u'`') return fail("this character cannot be written in a replacement here", start);
                out += {c, next};
            } else if (c == u'$' && m_pos < m_text.size() && isDigit(m_text[m_pos])) {
                std::u16string_view digits = readWhile(isDigit);
            if (!appendGroup(out, digits, false)) return false;
            } else if (c == u'$' && at(u'{')) {
                ++m_pos;
                if (!convertFormatGroup(out, start)) return false;
            } else if (c == u'(' && at(u'?') && m_pos + 1 < m_text.size() && isDigit(m_text[m_pos + 1])) {
                ++m_pos;
                if (!convertConditional(out)) return false;
            } else if (c == u'}' || c == u'`') {
                return fail("this character cannot be written in a replacement here", start);
            } else if (inBranch && (c == u':' || c == u'(' || c == u')' || c == u'/')) {
                out += {u'\\', c};  // "\/" reads back as "/", the others stay literal
            } else if (c == u'{' && !out.empty() && out.back() == u'%') {
                out += u"\\{";
            } else {
                out += c;
            }
        }
    }

    // "${N}", "${N:+then}", "${N:?then:else}", "${N:-else}" and "${N:else}" after "${".
    bool convertFormatGroup(std::u16string& out, size_t start) {
        std::u16string_view digits = readWhile(isDigit);
        if (digits.empty()) return fail("expected a group number after \"${\"", m_pos);
        if (at(u'}')) {
            ++m_pos;
            return appendGroup(out, digits, m_pos < m_text.size() && isDigit(m_text[m_pos]));
        }
        if (!expect(u':', "expected \":\" or \"}\" after a group number")) return false;
        std::u16string thenText, elseText;
        if (at(u'+')) {
            ++m_pos;
            if (!convertFormat(thenText, FormatEnd::Brace)) return false;
        } else if (at(u'?')) {
            ++m_pos;
            if (!convertFormat(thenText, FormatEnd::ColonOrBrace)) return false;
            if (at(u':')) {
                ++m_pos;
                if (!convertFormat(elseText, FormatEnd::Brace)) return false;
            }
        } else if (at(u'/')) {
            return fail("case changes cannot be written in this syntax", start);
        } else {
            if (at(u'-')) ++m_pos;
            appendGroup(thenText, digits, false);  // the ":" that follows ends the reference
            if (!convertFormat(elseText, FormatEnd::Brace)) return false;
        }
        ++m_pos;  // the closing brace
        out += u"(?";
        out += digits;
        out += u':';
        out += thenText;
        out += u':';
        out += elseText;
        out += u')';
        return true;
    }

    // "(?N:then:else)" after "(?": the same conditional here, with its branches converted.
    bool convertConditional(std::u16string& out) {
        std::u16string_view digits = readWhile(isDigit);
        if (!expect(u':', "expected \":\" in a conditional")) return false;
        out += u"(?";
        out += digits;
        out += u':';
        if (!convertFormat(out, FormatEnd::ColonOrParen)) return false;
        if (at(u':')) {
            ++m_pos;
            out += u':';
            if (!convertFormat(out, FormatEnd::Paren)) return false;
        }
        ++m_pos;
        out += u')';
        return true;
    }

    std::u16string_view m_text;
    size_t m_pos = 0;
    std::string m_problem;
    size_t m_problemAt = 0;
};

}  // namespace

SnippetConversion convertDollarSnippet(std::u16string_view text) { return Converter(text).run(); }

}  // namespace vx
