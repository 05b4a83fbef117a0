#include "selectors/selectorbytecode_run.hpp"

#include <utility>

namespace vx {
namespace {

// Moves the counter over the term at the counter without judging it.
void skipTerm(sbci_state& state) {
    bool wasSkipping = std::exchange(state.skip, true);
    sbci_run(state);
    state.skip = wasSkipping;
}

// count × 16^depth, added to the score.
void addScopeScore(BigUnsigned& score, size_t count, size_t depth) {
    if (depth < 15 && count < 16) {
        score += uint64_t(count) << (4 * depth);
    } else {
        BigUnsigned term = count;
        term <<= 4 * depth;
        score += term;
    }
}

}  // namespace

bool sbci_run(sbci_state& state) {
    if (state.counter + 1 >= state.length) return false;
    sbci_routine routine = state.code[state.counter].fn;
    return routine ? routine(state) : false;
}

bool sbci_true(sbci_state& state) {
    ++state.counter;
    return true;
}

bool sbci_false(sbci_state& state) {
    ++state.counter;
    return false;
}

bool sbci_match(sbci_state& state) {
    if (state.counter + 1 >= state.length) return false;
    const sbc_encoded_& operand = state.code[state.counter + 1];
    state.counter += 2;
    if (state.skip || operand.type != sbc_encoded_::kScopeOperand) return false;

    // Search down from the innermost scope; the entries passed over are dropped for good, and
    // their number tells an enclosing descendant test how far to pop.
    uint64_t examined = 1;
    while (state.stackSize > 0) {
        if (state.stack[state.stackSize - 1].isSupersetOf(operand.scope)) {
            addScopeScore(*state.score, operand.scope.count(), state.stackSize);
            state.popCount = examined;
            return true;
        }
        --state.stackSize;
        ++examined;
    }
    return false;
}

bool sbci_pop(sbci_state& state) {
    ++state.counter;
    if (state.skip) {
        skipTerm(state);
        return false;
    }
    for (uint64_t i = 0; i < state.popCount; ++i) {
        if (state.stackSize == 0) {
            sbci_run(state);  // still moves over the term; nothing in it can match now
            return false;
        }
        --state.stackSize;
    }
    state.popCount = 1;
    return sbci_run(state);
}

bool sbci_branch(sbci_state& state) {
    ++state.counter;
    if (state.skip) {
        skipTerm(state);
        skipTerm(state);
        skipTerm(state);
        return false;
    }

    BigUnsigned* callerScore = state.score;
    const size_t callerStackSize = state.stackSize;
    const uint64_t callerPopCount = state.popCount;

    BigUnsigned conditionScore = 0;
    state.score = &conditionScore;
    const bool condition = sbci_run(state);
    const size_t conditionStackSize = state.stackSize;
    const uint64_t conditionPopCount = state.popCount;

    // The chosen arm runs on the stack as it was before the condition.
    state.stackSize = callerStackSize;
    state.popCount = callerPopCount;
    BigUnsigned armScore = 0;
    bool result;
    if (condition) {
        state.score = &armScore;
        result = sbci_run(state);
        skipTerm(state);
    } else {
        skipTerm(state);
        state.score = &armScore;
        result = sbci_run(state);
    }
    state.score = callerScore;
    // A branch scores the larger of its parts, never their sum.
    if (result) *callerScore = conditionScore > armScore ? std::move(conditionScore) : std::move(armScore);

    // What follows sees the stack as the condition left it.
    state.stackSize = conditionStackSize;
    state.popCount = conditionPopCount;
    return result;
}

bool sbci_execute(std::span<const sbc_encoded_> code, std::span<const VXScope> stack, BigUnsigned* score) {
    if (code.empty()) return false;
    BigUnsigned runScore = 0;
    sbci_state state;
    state.code = code.data();
    state.length = code.size();
    state.stack = stack.data();
    state.stackSize = stack.size();
    state.score = &runScore;
    const bool result = sbci_run(state);
    if (score) *score = std::move(runScore);
    return result;
}

}  // namespace vx
