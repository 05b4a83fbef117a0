// The patterns of a zone definition: a literal string, a list of words, or a regular
// expression with capture scopes; each with the boundary, anchor and ignore-case flags.
//
//     (match (regex [(\w+)\s*\(] (1 entity.name.function)) (boundary.left))
//     (start (list if else while) (boundary.both))
//     (end `"`)
//
// A pattern answers two questions: whether it matches anchored at one position (the test the
// line loop is defined by), and what expression finds its next match further along a line
// (the same test written so that Oniguruma can search for it; see candidate_set.hpp).
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/range.hpp"
#include "syntax/hash_trie.hpp"
#include "syntax/regex.hpp"
#include "syntax/regex_prefilter.hpp"
#include "syntax/scope.hpp"
#include "selfml/sfonode.hpp"

namespace vx {

// The text a pattern is matched against: one line with its line break, and where its content
// (the text before the break) ends. Positions are relative to the line's start.
struct VXSyntaxLine {
    std::u16string_view text;
    uint64_t contentLength = 0;
    uint64_t documentOffset = 0;  // where the line starts in the document
};

// The next position after `position`: a surrogate pair counts as one character, so that no
// match is ever tried inside one.
inline uint64_t VXSyntaxNextCharacter(std::u16string_view text, uint64_t position) {
    if (position + 1 < text.size() && text[position] >= 0xD800 && text[position] <= 0xDBFF &&
        text[position + 1] >= 0xDC00 && text[position + 1] <= 0xDFFF)
        return position + 2;
    return position + 1;
}

// Word characters, for the boundary flags: ASCII letters, ASCII digits and "_" only.
inline bool isSyntaxWordCharacter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_';
}

struct VXSyntaxCaptureDefinition {
    std::optional<int> captureIndex;
    std::string captureName;  // when there is no index
    VXScope scope;            // nil when the entry has no scope
};

// An expression compiled for one zone instance from its start match (back-references).
struct VXSyntaxEndPatternInstance {
    std::shared_ptr<const VXRegex> anchored;  // null when the expanded text does not compile
    std::shared_ptr<const VXRegex> search;    // the flags written into the expression
};

class VXSyntaxPatternDefinition {
public:
    enum Kind : uint32_t { String = 0, List = 1, Regex = 2 };

    // The right kind for a start, end or match node, or nothing (empty string, empty list,
    // empty or broken expression).
    static std::unique_ptr<VXSyntaxPatternDefinition> patternWithSFONode(const SFONodePtr& node);
    virtual ~VXSyntaxPatternDefinition() = default;

    uint32_t patternType() const { return m_patternType; }
    bool beforeWordBoundary = false;
    bool afterWordBoundary = false;
    bool beforeAnchor = false;
    bool afterAnchor = false;
    bool caseInsensitive = false;

    // The length of the match anchored at `position`, boundary and anchor flags included.
    // Regex patterns fill `region` (which must not be null for them).
    std::optional<uint64_t> matchAt(const VXSyntaxLine& line, uint64_t position, VXRegexRegion* region,
                                    const VXRegex* instanceRegex = nullptr) const;

    // An expression that matches at a position exactly when matchAt does, so that a search
    // finds the leftmost position where matchAt would succeed; empty when there is none (an
    // expression that uses \G, whose meaning depends on where a search starts).
    std::u16string searchExpression() const;
    VXRegexOptions searchOptions() const;
    // Whether findNext can find the pattern (decided once): strings and lists always, by
    // testing the positions where one of their words begins; a regular expression by testing
    // the positions its prefilter admits, or else with its search expression; not one that
    // uses \G.
    bool searchable() const {
        ensureSearch();
        return m_searchable;
    }
    // Whether a line holding just the units `present` can hold a match (true when unknown).
    bool mayOccurIn(const VXCharFilter& present) const {
        ensureSearch();
        return !m_shape || m_shape->mayMatchIn(present);
    }
    // A number of its own for each searchable pattern (dense, from 0), so that a line's search
    // results can be kept in an array.
    uint32_t searchId() const {
        ensureSearch();
        return m_searchId;
    }
    static uint32_t searchIdCount();
    // The leftmost position at or after `from` where matchAt succeeds, or kNotFound (see
    // searchable(): the pattern must be).
    // `memo` (optional) carries what a scan learned about the line to the next scan of it.
    uint64_t findNext(const VXSyntaxLine& line, uint64_t from, VXRegexRegion* region,
                      VXRegexPrefilter::Memo* memo = nullptr) const;

    virtual std::string selfmlDebuggingRepresentation() const = 0;

protected:
    explicit VXSyntaxPatternDefinition(uint32_t type) : m_patternType(type) {}
    // The kind's own anchored test, without flags.
    virtual std::optional<uint64_t> kindMatchAt(const VXSyntaxLine& line, uint64_t position, VXRegexRegion* region,
                                                const VXRegex* instanceRegex) const = 0;
    // The kind's own expression, without flags; empty when it has none (strings and lists scan
    // for themselves).
    virtual std::u16string kindExpression() const { return {}; }
    // What the kind's matches can begin with, when it can be told (regular expressions).
    virtual std::optional<VXRegexPrefilter> kindPrefilter() const { return std::nullopt; }
    // Compiles the search expression.
    virtual std::shared_ptr<const VXRegex> compileSearch(const std::u16string& expression) const;
    // Whether the kind is found by scanning whatever its prefilter (strings and lists, which
    // have no expression to search with).
    virtual bool kindAlwaysScans() const { return false; }
    std::string flagsRepresentation() const;

private:
    uint32_t m_patternType;
    void ensureSearch() const {
        if (!m_searchReady.load(std::memory_order_acquire)) prepareSearch();
    }
    void prepareSearch() const;
    mutable std::once_flag m_searchOnce;
    mutable std::atomic<bool> m_searchReady{false};  // the fast way past m_searchOnce
    mutable bool m_searchable = false;
    // The search expression compiled, when the pattern is searched with it.
    mutable std::shared_ptr<const VXRegex> m_searchRegex;
    mutable uint32_t m_searchId = UINT32_MAX;
    // What a match needs, when the kind can tell (see mayOccurIn).
    mutable std::optional<VXRegexPrefilter> m_shape;
    // Where a match can begin, when knowing it lets a scan skip most positions.
    mutable std::optional<VXRegexPrefilter> m_prefilter;
};

// What literal patterns share: the characters that can begin a match.
class VXSyntaxLiteralPatternDefinition : public VXSyntaxPatternDefinition {
protected:
    using VXSyntaxPatternDefinition::VXSyntaxPatternDefinition;
    // Records a word's first character (both cases when case is ignored).
    void addFirstCharacter(char16_t c, bool ignoringCase);
    bool kindAlwaysScans() const override { return true; }
    std::optional<VXRegexPrefilter> kindPrefilter() const override;
    VXCharFilter m_first;
};

class VXSyntaxPatternStringDefinition : public VXSyntaxLiteralPatternDefinition {
public:
    explicit VXSyntaxPatternStringDefinition(std::u16string text, bool ignoringCase);
    std::u16string string;
    std::string selfmlDebuggingRepresentation() const override;

protected:
    std::optional<uint64_t> kindMatchAt(const VXSyntaxLine&, uint64_t, VXRegexRegion*, const VXRegex*) const override;
};

class VXSyntaxPatternListDefinition : public VXSyntaxLiteralPatternDefinition {
public:
    VXSyntaxPatternListDefinition(std::vector<std::u16string> words, bool caseInsensitive);
    std::vector<std::u16string> strings;
    VXHashTrie hashTrie;
    std::string selfmlDebuggingRepresentation() const override;

protected:
    std::optional<uint64_t> kindMatchAt(const VXSyntaxLine&, uint64_t, VXRegexRegion*, const VXRegex*) const override;
};

class VXSyntaxPatternRegexDefinition : public VXSyntaxPatternDefinition {
public:
    std::u16string regexString;
    std::shared_ptr<const VXRegex> regexObject;  // compiled when the definition is built
    bool freeSpacing = false;
    bool hasBackrefs = false;
    std::vector<VXSyntaxCaptureDefinition> captures;

    // Builds and compiles; nothing when the expression is empty or (without back-references)
    // does not compile.
    static std::unique_ptr<VXSyntaxPatternRegexDefinition> make(std::u16string expression, bool caseInsensitive,
                                                                std::vector<VXSyntaxCaptureDefinition> captures);
    // The expression for one zone instance: back-references replaced by the escaped text of
    // the start match's groups; compiled once per distinct text and shared.
    std::shared_ptr<const VXSyntaxEndPatternInstance> instanceForStartMatch(std::u16string_view line,
                                                                           const VXRegexRegion* startRegion) const;
    std::string selfmlDebuggingRepresentation() const override;

protected:
    VXSyntaxPatternRegexDefinition() : VXSyntaxPatternDefinition(Regex) {}
    std::optional<uint64_t> kindMatchAt(const VXSyntaxLine&, uint64_t, VXRegexRegion*, const VXRegex*) const override;
    std::u16string kindExpression() const override;
    std::optional<VXRegexPrefilter> kindPrefilter() const override;
    std::shared_ptr<const VXRegex> compileSearch(const std::u16string& expression) const override;

private:
    mutable std::mutex m_instancesMutex;
    mutable std::unordered_map<std::u16string, std::shared_ptr<const VXSyntaxEndPatternInstance>> m_instances;
};

// Wraps an expression so that the pattern's flags are tested inside it.
std::u16string expressionWithFlags(std::u16string body, bool freeSpacing,
                                   const VXSyntaxPatternDefinition& flags);

}  // namespace vx
