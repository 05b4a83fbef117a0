// The rules of one version-control ignore file (".gitignore" and the repository's
// ".git/info/exclude"): which paths below the file's folder are left out.
//
//     # comment            blank lines and comments are skipped; "\#" and "\!" start a literal
//     *.log                no "/" inside: matches a name at any depth below the folder
//     /build  doc/*.txt    a "/" at the start or inside: matched against the path from the folder
//     out/                 a trailing "/" matches folders only
//     !keep.log            re-includes what an earlier rule of the same file left out
//     a/**/b  **/x  y/**   "**" between slashes spans any number of folders
//
// "*" and "?" never match "/"; "[a-z]", "[!x]" and "[^x]" are classes; "\" escapes the next byte.
// Within one file the last matching rule decides; files deeper in the tree are asked first (see
// IgnoreStack). A folder that is left out is not walked into, so nothing below it can be
// re-included, which is also how the version-control tools read these files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx {

// Whether `text` matches the glob `pattern` as described above ("*", "?", classes, escapes and
// "**" across folders). Runs in time proportional to the product of the two lengths at worst.
bool ignoreGlobMatches(std::string_view pattern, std::string_view text);

class IgnoreRules {
public:
    struct Rule {
        std::string pattern;
        bool negated = false;
        bool directoryOnly = false;
        bool anchored = false;  // matched against the whole relative path, not the name alone
    };

    // Reads the text of an ignore file.
    static IgnoreRules parse(std::string_view text);
    // Reads a file; no rules when it cannot be read.
    static IgnoreRules load(const std::string& path);

    // The verdict of the last matching rule for a path relative to the file's folder: true for
    // left out, false for re-included, nothing when no rule speaks of it.
    std::optional<bool> verdict(std::string_view relativePath, bool isDirectory) const;

    bool empty() const { return m_rules.empty(); }
    const std::vector<Rule>& rules() const { return m_rules; }

private:
    std::vector<Rule> m_rules;
};

// The ignore files in force during a walk: one per folder on the way down that has one.
class IgnoreStack {
public:
    // `relativeFolder` is the folder's path relative to the walk's root ("" for the root itself).
    void push(std::string relativeFolder, std::shared_ptr<const IgnoreRules> rules);
    void pop();
    size_t depth() const { return m_frames.size(); }

    // Whether a path (relative to the walk's root) is left out: the deepest file with an opinion
    // decides.
    bool isIgnored(std::string_view relativePath, bool isDirectory) const;

private:
    struct Frame {
        std::string folder;
        std::shared_ptr<const IgnoreRules> rules;
    };
    std::vector<Frame> m_frames;
};

}  // namespace vx
