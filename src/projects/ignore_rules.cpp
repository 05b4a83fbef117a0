#include "projects/ignore_rules.hpp"

#include <fstream>
#include <sstream>

namespace vx {
namespace {

// Matches a bracket class starting at pattern[p] == '[' against one byte. Answers the position
// after the class, or npos when the class is not closed (then "[" is a literal byte).
size_t matchClass(std::string_view pattern, size_t p, unsigned char c, bool& matched) {
    size_t i = p + 1;
    bool negated = false;
    if (i < pattern.size() && (pattern[i] == '!' || pattern[i] == '^')) {
        negated = true;
        ++i;
    }
    bool found = false;
    bool first = true;
    while (i < pattern.size() && (first || pattern[i] != ']')) {
        first = false;
        unsigned char low = static_cast<unsigned char>(pattern[i]);
        if (low == '\\' && i + 1 < pattern.size()) low = static_cast<unsigned char>(pattern[++i]);
        ++i;
        unsigned char high = low;
        if (i + 1 < pattern.size() && pattern[i] == '-' && pattern[i + 1] != ']') {
            high = static_cast<unsigned char>(pattern[i + 1]);
            if (high == '\\' && i + 2 < pattern.size()) high = static_cast<unsigned char>(pattern[++i + 1]);
            i += 2;
        }
        if (low <= c && c <= high) found = true;
    }
    if (i >= pattern.size()) return std::string_view::npos;
    matched = found != negated && c != '/';
    return i + 1;
}

// Memoised matcher over (pattern position, text position): every state is decided once, so
// patterns full of stars cannot make it take exponential time.
class GlobMatcher {
public:
    GlobMatcher(std::string_view pattern, std::string_view text)
        : m_pattern(pattern), m_text(text), m_memo((pattern.size() + 1) * (text.size() + 1), kUnknown) {}

    bool match(size_t p, size_t t) {
        signed char& memo = m_memo[p * (m_text.size() + 1) + t];
        if (memo == kUnknown) memo = compute(p, t) ? 1 : 0;
        return memo == 1;
    }

private:
    static constexpr signed char kUnknown = -1;

    bool compute(size_t p, size_t t) {
        if (p == m_pattern.size()) return t == m_text.size();
        const char pc = m_pattern[p];
        if (pc == '*') {
            const bool doubleStar = p + 1 < m_pattern.size() && m_pattern[p + 1] == '*';
            const bool atSegmentStart = p == 0 || m_pattern[p - 1] == '/';
            if (doubleStar && atSegmentStart) {
                const size_t after = p + 2;
                if (after == m_pattern.size()) return true;  // "x/**": everything below
                if (m_pattern[after] == '/') {
                    // "**/": zero or more whole folders.
                    if (match(after + 1, t)) return true;
                    for (size_t i = t; i < m_text.size(); ++i)
                        if (m_text[i] == '/' && match(after + 1, i + 1)) return true;
                    return false;
                }
            }
            // A plain star (or "**" inside a name) spans anything but "/".
            size_t next = p + 1;
            while (next < m_pattern.size() && m_pattern[next] == '*') ++next;
            for (size_t i = t;; ++i) {
                if (match(next, i)) return true;
                if (i == m_text.size() || m_text[i] == '/') return false;
            }
        }
        if (t == m_text.size()) return false;
        const unsigned char tc = static_cast<unsigned char>(m_text[t]);
        if (pc == '?') return tc != '/' && match(p + 1, t + 1);
        if (pc == '[') {
            bool matched = false;
            const size_t after = matchClass(m_pattern, p, tc, matched);
            if (after != std::string_view::npos) return matched && match(after, t + 1);
        }
        if (pc == '\\' && p + 1 < m_pattern.size())
            return static_cast<unsigned char>(m_pattern[p + 1]) == tc && match(p + 2, t + 1);
        return static_cast<unsigned char>(pc) == tc && match(p + 1, t + 1);
    }

    std::string_view m_pattern;
    std::string_view m_text;
    std::vector<signed char> m_memo;
};

}  // namespace

bool ignoreGlobMatches(std::string_view pattern, std::string_view text) {
    GlobMatcher matcher(pattern, text);
    return matcher.match(0, 0);
}

IgnoreRules IgnoreRules::parse(std::string_view text) {
    IgnoreRules result;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        // Trailing spaces go unless the last one is escaped.
        while (!line.empty() && line.back() == ' ' && !(line.size() >= 2 && line[line.size() - 2] == '\\'))
            line.remove_suffix(1);
        if (line.empty() || line.front() == '#') continue;
        Rule rule;
        if (line.front() == '!') {
            rule.negated = true;
            line.remove_prefix(1);
        } else if (line.size() >= 2 && line.front() == '\\' && (line[1] == '#' || line[1] == '!')) {
            line.remove_prefix(1);
        }
        if (!line.empty() && line.back() == '/') {
            rule.directoryOnly = true;
            while (!line.empty() && line.back() == '/') line.remove_suffix(1);
        }
        if (line.empty()) continue;
        rule.anchored = line.find('/') != std::string_view::npos;
        while (!line.empty() && line.front() == '/') line.remove_prefix(1);
        if (line.empty()) continue;
        rule.pattern = std::string(line);
        result.m_rules.push_back(std::move(rule));
    }
    return result;
}

IgnoreRules IgnoreRules::load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return {};
    std::ostringstream text;
    text << in.rdbuf();
    return parse(text.str());
}

std::optional<bool> IgnoreRules::verdict(std::string_view relativePath, bool isDirectory) const {
    const size_t slash = relativePath.rfind('/');
    const std::string_view name = slash == std::string_view::npos ? relativePath : relativePath.substr(slash + 1);
    for (auto rule = m_rules.rbegin(); rule != m_rules.rend(); ++rule) {
        if (rule->directoryOnly && !isDirectory) continue;
        if (ignoreGlobMatches(rule->pattern, rule->anchored ? relativePath : name)) return !rule->negated;
    }
    return std::nullopt;
}

void IgnoreStack::push(std::string relativeFolder, std::shared_ptr<const IgnoreRules> rules) {
    m_frames.push_back({std::move(relativeFolder), std::move(rules)});
}

void IgnoreStack::pop() {
    if (!m_frames.empty()) m_frames.pop_back();
}

bool IgnoreStack::isIgnored(std::string_view relativePath, bool isDirectory) const {
    for (auto frame = m_frames.rbegin(); frame != m_frames.rend(); ++frame) {
        std::string_view below = relativePath;
        if (!frame->folder.empty()) {
            if (below.size() <= frame->folder.size() || below.substr(0, frame->folder.size()) != frame->folder ||
                below[frame->folder.size()] != '/')
                continue;
            below.remove_prefix(frame->folder.size() + 1);
        }
        if (auto verdict = frame->rules->verdict(below, isDirectory)) return *verdict;
    }
    return false;
}

}  // namespace vx
