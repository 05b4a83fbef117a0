// Parse, write and parse again: any bytes give a tree, the writer's text reads back to the
// same text, and nothing leaks or overruns under the sanitizers.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "selfml/sfnode.hpp"
#include "selfml/sfonode.hpp"
#include "selfml/sfwriter.hpp"

namespace {

// Heads are written as they stand, so only trees whose heads are plain words read back alike.
bool headsArePlainWords(const SFNode* node) {
    for (; node; node = node->next) {
        if (node->type != SFNodeTypeList) continue;
        if (node->value) {
            std::string quoted;
            vx::SFWriteQuotedString(node->value, quoted);
            if (quoted != node->value) return false;
        }
        if (!headsArePlainWords(node->firstChild)) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    SFNode* root = SFNodeCreateFromBytes(text.data(), text.size());
    if (!root) return 0;
    const std::string written = vx::SFNodeSelfmlRepresentation(root);
    SFNode* copy = SFNodeCopy(root);
    const bool plainHeads = headsArePlainWords(root->firstChild);
    SFNodeFree(root);

    // Written text is stable: writing what was read back gives the same text again.
    SFNode* reread = SFNodeCreateFromBytes(written.data(), written.size());
    if (plainHeads && vx::SFNodeSelfmlRepresentation(reread) != written) std::abort();
    if (vx::SFNodeSelfmlRepresentation(copy) != written) std::abort();
    SFNodeFree(reread);
    SFNodeFree(copy);

    // The object layer over the same text.
    auto node = vx::SFONode::nodeFromString(text);
    for (const auto& child : node->children())
        if (child.isNode()) {
            child.node()->valueForKey("name");
            child.node()->rest();
        }
    if (node->selfmlRepresentation() != written) std::abort();
    return 0;
}
