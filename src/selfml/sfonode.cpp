#include "selfml/sfonode.hpp"

#include <cstring>

#include "platform/file_cache.hpp"
#include "selfml/sfwriter.hpp"

namespace vx {

// Owns one low-level list (its children, not its siblings). Every wrapper of a node in the
// tree holds a reference, so a child wrapper stays valid after its root wrapper is gone.
struct SFONode::Tree {
    explicit Tree(SFNode* node) : root(node) {}
    ~Tree() {
        if (!root) return;
        SFNodeFree(root->firstChild);
        SFNodeFreeNonRecursive(root);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    SFNode* root;
};

namespace {

char* duplicate(std::string_view text) { return SFStringDuplicate(text.data(), text.size()); }

// A deep copy of one list (its children, not its siblings).
SFNode* copyOne(const SFNode* node) {
    if (!node) return nullptr;
    SFNode* copy = SFNodeCreate();
    if (!copy) return nullptr;
    copy->type = node->type;
    if (node->value) copy->value = duplicate(node->value);
    copy->firstChild = SFNodeCopy(node->firstChild);
    for (SFNode* child = copy->firstChild; child; child = child->next)
        if (child->type == SFNodeTypeList) child->parent = copy;
    return copy;
}

bool isValidUtf8(std::string_view bytes) {
    size_t i = 0;
    const size_t n = bytes.size();
    while (i < n) {
        const auto c = static_cast<unsigned char>(bytes[i]);
        size_t extra;
        uint32_t min;
        uint32_t code;
        if (c < 0x80) {
            ++i;
            continue;
        } else if ((c & 0xE0) == 0xC0) {
            extra = 1, min = 0x80, code = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2, min = 0x800, code = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3, min = 0x10000, code = c & 0x07;
        } else {
            return false;
        }
        if (i + extra >= n) return false;
        for (size_t k = 1; k <= extra; ++k) {
            const auto d = static_cast<unsigned char>(bytes[i + k]);
            if ((d & 0xC0) != 0x80) return false;
            code = (code << 6) | (d & 0x3F);
        }
        if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
        i += extra + 1;
    }
    return true;
}

}  // namespace

// --- SFOChild ---------------------------------------------------------------------------

std::optional<std::string> SFOChild::firstIfString() const {
    if (isString()) return string();
    return node() ? node()->firstIfString() : std::nullopt;
}

std::vector<std::string> SFOChild::extractStrings() const {
    if (isString()) return {string()};
    return node() ? node()->extractStrings() : std::vector<std::string>{};
}

std::string SFOChild::selfmlRepresentation() const {
    if (isNode()) return node() ? node()->selfmlRepresentation() : std::string();
    std::string out;
    SFWriteQuotedString(string(), out);
    return out;
}

bool operator==(const SFOChild& a, const SFOChild& b) {
    if (a.isString() != b.isString()) return false;
    if (a.isString()) return a.string() == b.string();
    if (a.node() == b.node()) return true;
    return a.node() && b.node() && a.node()->isEqual(b);
}

// --- construction -----------------------------------------------------------------------

SFONodePtr SFONode::wrap(std::shared_ptr<Tree> tree, SFNode* node, bool lazy) {
    auto wrapper = std::make_shared<SFONode>(Key{});
    wrapper->m_tree = std::move(tree);
    wrapper->m_node = node;
    if (!lazy) wrapper->buildChildren();
    return wrapper;
}

SFONodePtr SFONode::node() {
    SFNode* list = SFNodeCreate();
    return wrap(std::make_shared<Tree>(list), list, true);
}

SFONodePtr SFONode::nodeFromString(std::string_view text) {
    SFNode* root = SFNodeCreateFromBytes(text.data(), text.size());
    if (!root) return nullptr;
    return wrap(std::make_shared<Tree>(root), root, true);
}

SFONodePtr SFONode::nodeFromData(std::string_view bytes) {
    if (!isValidUtf8(bytes)) return nullptr;
    return nodeFromString(bytes);
}

SFONodePtr SFONode::nodeWithContentsOfFile(std::string path) {
    auto wrapper = std::make_shared<SFONode>(Key{});
    wrapper->m_filePath = std::move(path);
    wrapper->m_shouldLoadFile = true;
    return wrapper;
}

SFONodePtr SFONode::nodeFromList(const std::vector<std::optional<SFOChild>>& list) {
    for (const auto& element : list)
        if (!element || (element->isNode() && !element->node())) return nullptr;
    auto result = node();
    if (!list.empty() && list.front()->isString()) result->setHead(list.front()->string());
    for (size_t i = 1; i < list.size(); ++i) result->addChild(*list[i]);
    return result;
}

std::optional<SFOChild> SFONode::nodeFromNodeRef(SFNode* node) {
    if (!node) return std::nullopt;
    if (node->type == SFNodeTypeString) {
        std::string text = node->value ? node->value : "";
        SFNodeFreeNonRecursive(node);
        return SFOChild(std::move(text));
    }
    node->next = nullptr;
    return SFOChild(wrap(std::make_shared<Tree>(node), node, false));
}

std::optional<SFOChild> SFONode::lazyNodeFromNodeRef(SFNode* node) {
    if (!node) return std::nullopt;
    if (node->type == SFNodeTypeString) return nodeFromNodeRef(node);
    node->next = nullptr;
    return SFOChild(wrap(std::make_shared<Tree>(node), node, true));
}

SFONode::~SFONode() = default;

// --- lazy state -------------------------------------------------------------------------

void SFONode::thaw() {
    if (m_shouldLoadFile) {
        m_shouldLoadFile = false;
        auto text = VXFileCache::sharedFileCache().contentsOfFile(m_filePath);
        SFNode* root = text ? SFNodeCreateFromBytes(text->data(), text->size()) : nullptr;
        if (!root) root = SFNodeCreate();
        m_tree = std::make_shared<Tree>(root);
        m_node = root;
    }
    if (m_isSuspended) buildChildren();
}

std::optional<SFOChild> SFONode::wrapChild(SFNode* child, bool lazy) {
    if (child->type == SFNodeTypeString) return SFOChild(std::string(child->value ? child->value : ""));
    auto wrapper = wrap(m_tree, child, lazy);
    wrapper->m_parent = weak_from_this();
    wrapper->m_root = m_root.expired() ? weak_from_this() : m_root;
    return SFOChild(std::move(wrapper));
}

void SFONode::buildChildren() {
    m_isSuspended = false;
    m_children.clear();
    if (!m_node) return;
    for (SFNode* child = m_node->firstChild; child; child = child->next)
        if (auto wrapped = wrapChild(child, true)) m_children.push_back(std::move(*wrapped));
}

// A node freed from under its wrapper: the wrapper and every wrapper below it become empty.
void SFONode::detach() {
    for (auto& child : m_children)
        if (child.isNode() && child.node()) child.node()->detach();
    m_children.clear();
    m_node = nullptr;
    m_isSuspended = false;
    m_parent.reset();
}

// --- reading ----------------------------------------------------------------------------

std::string SFONode::head() {
    thaw();
    const char* head = SFNodeHead(m_node);
    return head ? std::string(head) : std::string();
}

void SFONode::setHead(const std::string& head) {
    thaw();
    if (head.empty() || !m_node) return;
    SFNodeSetHead(m_node, duplicate(head));
}

const std::vector<SFOChild>& SFONode::children() {
    thaw();
    return m_children;
}

size_t SFONode::childCount() { return children().size(); }

std::optional<SFOChild> SFONode::childAtIndex(size_t index) {
    const auto& all = children();
    if (index >= all.size()) return std::nullopt;
    return all[index];
}

size_t SFONode::indexOfChildNode(const SFOChild& child) {
    const auto& all = children();
    for (size_t i = 0; i < all.size(); ++i) {
        if (all[i].isString() != child.isString()) continue;
        if (child.isString() ? all[i].string() == child.string() : all[i].node() == child.node()) return i;
    }
    return npos;
}

std::optional<SFOChild> SFONode::first() { return childAtIndex(0); }

std::optional<std::vector<SFOChild>> SFONode::rest() {
    const auto& all = children();
    if (all.size() < 2) return std::nullopt;
    return std::vector<SFOChild>(all.begin() + 1, all.end());
}

std::optional<std::string> SFONode::firstIfString() {
    const auto& all = children();
    if (all.empty() || !all.front().isString()) return std::nullopt;
    return all.front().string();
}

std::vector<SFONodePtr> SFONode::extract(std::string_view head) {
    std::vector<SFONodePtr> found;
    for (const auto& child : children())
        if (child.isNode() && child.node()->head() == head) found.push_back(child.node());
    return found;
}

std::vector<std::string> SFONode::extractStrings() {
    std::vector<std::string> found;
    for (const auto& child : children())
        if (child.isString()) found.push_back(child.string());
    return found;
}

std::vector<SFONodePtr> SFONode::extractLists() {
    std::vector<SFONodePtr> found;
    for (const auto& child : children())
        if (child.isNode()) found.push_back(child.node());
    return found;
}

std::vector<SFONodePtr> SFONode::extractSingletonNodes() {
    std::vector<SFONodePtr> found;
    for (const auto& child : children())
        if (child.isNode() && !child.node()->head().empty() && child.node()->childCount() == 0)
            found.push_back(child.node());
    return found;
}

bool SFONode::hasSingletonNodeWithHead(std::string_view head) {
    for (const auto& child : children())
        if (child.isNode() && child.node()->childCount() == 0 && child.node()->head() == head) return true;
    return false;
}

SFONodePtr SFONode::nodeForKey(std::string_view key) {
    for (const auto& child : children())
        if (child.isNode() && child.node()->head() == key) return child.node();
    return nullptr;
}

// When no child has the key, the platform's generic key-value lookup would be asked; there is
// none here, so the answer is nothing.
std::optional<std::string> SFONode::valueForKey(std::string_view key) {
    auto keyed = nodeForKey(key);
    return keyed ? keyed->firstIfString() : std::nullopt;
}

// --- changing ---------------------------------------------------------------------------

void SFONode::setValue(const SFOChild& value, std::string_view key) {
    auto keyed = nodeForKey(key);
    if (!keyed) return;  // no generic key-value setter to fall back on
    if (keyed->childCount() == 1 && keyed->children().front().isString()) {
        keyed->replaceChildNodeAtIndex(0, value);
        return;
    }
    const size_t index = indexOfChildNode(SFOChild(keyed));
    if (index != npos) replaceChildNodeAtIndex(static_cast<int64_t>(index), value);
}

// A node from elsewhere joins this tree as a copy of its low-level list; the wrapper the
// caller holds is re-pointed at the copy, so it reads and changes this tree from now on.
void SFONode::adopt(const SFONodePtr& child) {
    child->thaw();
    SFNode* copy = copyOne(child->m_node);
    if (!copy) copy = SFNodeCreate();
    if (!copy) return;
    child->m_tree = m_tree;
    child->m_node = copy;
    child->m_children.clear();
    child->m_isSuspended = true;
    child->m_parent = weak_from_this();
    child->m_root = m_root.expired() ? weak_from_this() : m_root;
    SFNodeAddChild(m_node, copy);
}

void SFONode::addChild(const SFOChild& child) {
    thaw();
    if (!m_node) return;
    if (child.isString()) {
        SFNodeAddString(m_node, duplicate(child.string()));
        m_children.push_back(child);
    } else if (child.node()) {
        adopt(child.node());
        m_children.push_back(child);
    }
}

void SFONode::replaceChildNodeAtIndex(int64_t index, const SFOChild& value) {
    thaw();
    if (index < 0 || !m_node) return;
    const size_t oldCount = m_children.size();
    addChild(value);
    const auto position = static_cast<size_t>(index);
    if (position >= oldCount || m_children.size() != oldCount + 1) return;
    if (m_children[position].isNode()) m_children[position].node()->detach();
    SFNodeReplaceChildAtIndexWithLast(m_node, position);
    m_children[position] = m_children.back();
    m_children.pop_back();
}

// --- writing, copying, links ------------------------------------------------------------

std::string SFONode::selfmlRepresentation() {
    thaw();
    return SFNodeSelfmlRepresentation(m_node);
}

bool SFONode::isEqual(const SFOChild& other) {
    if (!other.isNode() || !other.node()) return false;
    return selfmlRepresentation() == other.node()->selfmlRepresentation();
}

SFONodePtr SFONode::copy() {
    thaw();
    SFNode* duplicateTree = m_node ? copyOne(m_node) : SFNodeCreate();
    if (!duplicateTree) return nullptr;
    return wrap(std::make_shared<Tree>(duplicateTree), duplicateTree, true);
}

SFONodePtr SFONode::rootNode() {
    auto root = m_root.lock();
    return root ? root : shared_from_this();
}

SFNode* SFONode::nodeRef() {
    thaw();
    return m_node;
}

void SFONode::setNodeRef(SFNode* node) {
    m_shouldLoadFile = false;
    for (auto& child : m_children)
        if (child.isNode() && child.node()) child.node()->m_parent.reset();
    if (node) node->next = nullptr;
    m_tree = node ? std::make_shared<Tree>(node) : nullptr;
    m_node = node;
    buildChildren();
}

}  // namespace vx
