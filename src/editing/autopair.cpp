#include "editing/autopair.hpp"

#include <algorithm>

#include "selectors/selector.hpp"

namespace vx {

namespace {

bool endsWith(std::u16string_view text, std::u16string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}
bool startsWith(std::u16string_view text, std::u16string_view head) {
    return text.size() >= head.size() && text.substr(0, head.size()) == head;
}

}  // namespace

VXAutopair::Pairs VXAutopair::defaultPairs() {
    return {{u"(", u")"}, {u"[", u"]"}, {u"{", u"}"}, {u"\"", u"\""}, {u"'", u"'"}};
}

void VXAutopair::setUp() {
    indistinctPairs.clear();
    distinctPairs.clear();
    for (const auto& [open, close] : pairs) {
        if (open == close) indistinctPairs.push_back(open);
        else distinctPairs.emplace_back(open, close);
    }
}

bool VXAutopair::matches(const char* selector, const VXContext& context) {
    return VXSelector::compileString(selector)->doesMatchOnContext(context);
}

bool VXAutopair::isIndistinct(const std::u16string& c) const {
    return std::find(indistinctPairs.begin(), indistinctPairs.end(), c) != indistinctPairs.end();
}

int64_t VXAutopair::openness(std::u16string_view text, std::u16string_view L, std::u16string_view R) {
    if (L == R || L.empty() || R.empty()) return 0;
    int64_t count = 0;
    size_t p = 0;
    for (;;) {
        size_t l = text.find(L, p), r = text.find(R, p);
        if (l == std::u16string_view::npos && r == std::u16string_view::npos) break;
        if (l == std::u16string_view::npos || (r != std::u16string_view::npos && r < l)) {
            --count;
            p = r + 1;
        } else {
            ++count;
            p = l + 1;
        }
    }
    return count;
}

std::u16string VXAutopair::escape(std::u16string_view text, std::u16string_view quote) {
    std::u16string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        if (text[i] == u'\\') {
            out += u"\\\\";
            ++i;
        } else if (!quote.empty() && text.substr(i, quote.size()) == quote) {
            out += u'\\';
            out += quote;
            i += quote.size();
        } else {
            out += text[i++];
        }
    }
    return out;
}

int VXAutopair::action() {
    jumpLength = 0;
    if (user_action == DeletingBackward) return deletingAction();
    return typingAction();
}

int VXAutopair::typingAction() {
    const std::u16string c = insertString.value_or(u"");
    const bool questionOrPercent = c == u"?" || c == u"%";
    m_left.reset();
    m_right.reset();
    if (questionOrPercent) {
        m_left = m_right = c;
    } else {
        for (const auto& [open, close] : pairs)
            if (open == c) {
                m_left = open, m_right = close;
                break;
            }
        if (!m_left)
            for (const auto& [open, close] : distinctPairs)
                if (close == c) m_left = open, m_right = close;  // the last such pair
    }
    const bool hasPair = m_left && m_right;
    int64_t openL = 0, openR = 0;
    bool wrapAllowed = false;
    if (hasPair) {
        openL = openness(leftString, *m_left, *m_right);
        openR = openness(rightString, *m_left, *m_right);
        wrapAllowed = !isWrapDisabled;
    }
    const bool distinct = !isIndistinct(c) && !questionOrPercent;
    const bool isOpener = distinct && m_left == c;
    const bool isCloser = distinct && m_right == c;
    const bool isQuote = c == u"\"" || c == u"'";
    bool pair = false, skip = false;
    if (distinct || isQuote || questionOrPercent) {
        pair = skip = hasPair;
    } else {
        wrapAllowed = false;
    }

    if (user_action == TypingOverSelection) {
        bool balanced = false;
        if (distinct) balanced = isOpener && hasPair && openness(selectionString, *m_left, *m_right) == 0;
        else balanced = selectionString.find(c) == std::u16string::npos;
        bool wrap = balanced && wrapAllowed && !matches("string", startContext) && !matches("string", endContext);
        if (wrap && isQuote) return WrapEscaping;
        return wrap ? Wrap : PlainReplace;
    }

    const VXContext& context = startContext;
    if (distinct && !isOpener) pair = false;
    if (distinct && !isCloser) skip = false;
    const bool triple = (c == u"\"" && endsWith(leftString, u"\"\"\"") && startsWith(rightString, u"\"\"\"")) ||
                        (c == u"'" && endsWith(leftString, u"'''") && startsWith(rightString, u"'''"));

    if (pair) {
        if (!matches("text.html", context)) {
            if (questionOrPercent) pair = false;
        } else if (c == u"<") {
            pair = false;
        } else if (c == u"?") {
            pair = endsWith(leftString, u"<") && startsWith(rightString, u">");
        } else if (c == u"%") {
            pair = (endsWith(leftString, u"<") && startsWith(rightString, u">")) ||
                   (endsWith(leftString, u"{") && startsWith(rightString, u"}"));
        }
    }
    if (pair && isQuote && triple && matches("python", context)) {
        jumpLength = 3;
        pair = false;
    }
    if (pair) {
        if (endsWith(leftString, *m_left) && startsWith(rightString, *m_right) && !triple && matches("source.python", context))
            skip = false;
        else if (matches("string, comment, text.plain, text.markdown", context))
            pair = false;
    }
    if (pair && distinct && openL >= 0 && openR <= 0 && openL + openR < 0) pair = false;
    if (pair && !rightString.empty()) {
        std::u16string allowed = u"\r\n\f\t ";
        for (const auto& [open, close] : distinctPairs) allowed += close;
        if (matches("source.python", context)) allowed += u"\"'";
        if (questionOrPercent) allowed += u"?%";
        // A closer of several units counts by its first unit, as the next character is one unit.
        if (allowed.find(rightString.front()) == std::u16string::npos) pair = false;
    }

    if (skip) {
        if (!startsWith(rightString, *m_right)) skip = false;
        if (skip && distinct && openL >= 0 && openR <= 0 && openL + openR > 0) skip = false;
        if (skip && isQuote) {
            bool afterBackslash = endsWith(leftString, u"\\") && !endsWith(leftString, u"\\\\");
            if (!matches("string", context) || afterBackslash) skip = false;
        }
        if (skip && pair) {
            if (isQuote && matches("python", context) && endsWith(leftString, c) && !triple) skip = false;
            else pair = false;
        }
    }
    if (pair) return InsertPair;
    if (skip) return StepOver;
    return PlainInsert;
}

int VXAutopair::deletingAction() {
    if (selection.length > 0) return PlainDelete;
    for (const auto& [open, close] : pairs) {
        if (!endsWith(leftString, open) || endsWith(leftString, u"\\" + open) || !startsWith(rightString, close)) continue;
        lmatch = open;
        rmatch = close;
        if (open == u"\"" || open == u"'") return matches("string", startContext) ? DeletePair : PlainDelete;
        return open != close ? DeletePair : PlainDelete;
    }
    return PlainDelete;
}

VXAutopair::Insertion VXAutopair::shouldInsertText(int action) const {
    const std::u16string c = insertString.value_or(u"");
    const uint64_t at = selection.location;
    Insertion out;
    out.replaced = selection;
    switch (action) {
        case InsertPair:
            if (c == u"%") {
                out.text = c + u"  " + m_right.value_or(c);
                out.newSelection = {at + c.size() + 1, 0};
            } else {
                out.text = c + m_right.value_or(u"");
                out.newSelection = {at + c.size(), 0};
            }
            break;
        case StepOver:
            out.replaced = {at, 0};
            out.newSelection = {at + (jumpLength ? jumpLength : c.size()), 0};
            break;
        case Wrap:
        case WrapEscaping: {
            std::u16string inner = action == WrapEscaping ? escape(selectionString, c) : selectionString;
            out.text = m_left.value_or(c) + inner + m_right.value_or(c);
            out.newSelection = {at, out.text.size()};
            break;
        }
        default:  // PlainInsert, PlainReplace
            out.text = c;
            out.newSelection = {at + c.size(), 0};
            break;
    }
    return out;
}

Range VXAutopair::shouldDelete(int action) const {
    if (action != DeletePair) return {kNotFound, 0};
    return {selection.location - lmatch.size(), lmatch.size() + rmatch.size()};
}

}  // namespace vx
