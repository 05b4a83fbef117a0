// The selector bytecode and its interpreter.
//
// A compiled selector is a flat vector of slots in prefix order: each instruction is followed by
// its operand terms. sbci_match takes one scope-operand slot; sbci_pop one term; sbci_branch three
// (condition, then, else); sbci_true and sbci_false none. The interpreter walks the vector
// recursively over a private view of the scope stack (outermost scope at index 0). Running only
// ever removes entries from the top of the stack, so the view is a pointer and a size, and the
// copies a branch makes cost nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "selectors/score.hpp"
#include "syntax/scope.hpp"

namespace vx {

struct sbci_state;
using sbci_routine = bool (*)(sbci_state& state);

// One slot of compiled code.
struct sbc_encoded_ {
    static constexpr uint32_t kInstruction = 0;
    static constexpr uint32_t kScopeOperand = 1;

    uint32_t type = kInstruction;
    uint64_t reserved[3] = {0, 0, 0};
    sbci_routine fn = nullptr;  // null in an operand slot
    VXScope scope;              // nil in an instruction slot
};

using sbc_code = std::vector<sbc_encoded_>;

// The state of one run.
struct sbci_state {
    const sbc_encoded_* code = nullptr;
    size_t length = 0;
    size_t counter = 0;               // the slot to evaluate next
    const VXScope* stack = nullptr;   // stack[0] is the outermost scope
    size_t stackSize = 0;
    uint64_t popCount = 1;            // entries a descendant test drops before its outer element
    bool skip = false;                // move over terms without judging them
    BigUnsigned* score = nullptr;     // where scope tests add their scores
};

bool sbci_match(sbci_state& state);
bool sbci_pop(sbci_state& state);
bool sbci_branch(sbci_state& state);
bool sbci_true(sbci_state& state);
bool sbci_false(sbci_state& state);

// Evaluates the term at the counter. The last slot of the code is never executed: a term whose
// first slot is the last one fails without moving the counter.
bool sbci_run(sbci_state& state);

// Runs code against a stack (outermost first); false at once for empty code. The score the run
// reached is written to score when given.
bool sbci_execute(std::span<const sbc_encoded_> code, std::span<const VXScope> stack, BigUnsigned* score);

}  // namespace vx
