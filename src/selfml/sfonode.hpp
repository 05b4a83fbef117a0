// SFONode: the object view of a self-ml list, through which definitions, themes and settings
// are read. A node has a head word and ordered children, each either a string or a node:
//
//     (zone (name string) [a b])
//     node "zone": children = [ node "name" (children = ["string"]), "a b" ]
//
// Children are wrapped lazily: a node built from a file reads nothing until it is first
// asked something, and a child list gets its own wrapper only when it is visited.
// Not thread-safe: one thread at a time reads or changes a tree.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "selfml/sfnode.hpp"

namespace vx {

class SFONode;
using SFONodePtr = std::shared_ptr<SFONode>;

// One child of a list: a string or a node. Both answer sfNodeType, firstIfString and
// extractStrings, so code walking children can treat them alike.
class SFOChild {
public:
    SFOChild(std::string text) : m_value(std::move(text)) {}
    SFOChild(const char* text) : m_value(std::string(text)) {}
    SFOChild(SFONodePtr node) : m_value(std::move(node)) {}

    bool isString() const { return std::holds_alternative<std::string>(m_value); }
    bool isNode() const { return !isString(); }
    const std::string& string() const { return std::get<std::string>(m_value); }
    const SFONodePtr& node() const { return std::get<SFONodePtr>(m_value); }

    // 0 for a node, 1 for a string.
    uint32_t sfNodeType() const { return isString() ? SFNodeTypeString : SFNodeTypeList; }
    // A string answers itself; a node its first child if that is a string.
    std::optional<std::string> firstIfString() const;
    // A string answers itself alone; a node its string children.
    std::vector<std::string> extractStrings() const;
    std::string selfmlRepresentation() const;

    friend bool operator==(const SFOChild& a, const SFOChild& b);

private:
    std::variant<std::string, SFONodePtr> m_value;
};

class SFONode : public std::enable_shared_from_this<SFONode> {
public:
    // A new, empty list (no head, no children).
    static SFONodePtr node();
    // Parses the text; any bytes give a tree.
    static SFONodePtr nodeFromString(std::string_view text);
    // Decodes the bytes as UTF-8 first: bytes that are not UTF-8 give no node.
    static SFONodePtr nodeFromData(std::string_view bytes);
    // Records the path; nothing is read until the node is first asked something. A file that
    // cannot be read leaves an empty node.
    static SFONodePtr nodeWithContentsOfFile(std::string path);
    // Element 0 is the head, the rest become children in order; a missing element gives no node.
    static SFONodePtr nodeFromList(const std::vector<std::optional<SFOChild>>& list);
    // Wraps (and takes ownership of) a low-level node: a string node yields its text, a list a
    // node. The lazy form defers wrapping the children until they are asked for.
    static std::optional<SFOChild> nodeFromNodeRef(SFNode* node);
    static std::optional<SFOChild> lazyNodeFromNodeRef(SFNode* node);

    // Construction goes through the factories above; the key keeps the constructor theirs.
    struct Key {
        explicit Key() = default;
    };
    explicit SFONode(Key) {}
    ~SFONode();
    SFONode(const SFONode&) = delete;
    SFONode& operator=(const SFONode&) = delete;

    std::string head();
    // An empty head is ignored.
    void setHead(const std::string& head);

    const std::vector<SFOChild>& children();
    size_t childCount();
    std::optional<SFOChild> childAtIndex(size_t index);
    // The index of a child node (by identity) or string (by value); kNotFound-like npos when absent.
    size_t indexOfChildNode(const SFOChild& child);

    std::optional<SFOChild> first();
    // The children after the first, or nothing at all when there are fewer than two children.
    std::optional<std::vector<SFOChild>> rest();
    std::optional<std::string> firstIfString();
    std::vector<SFONodePtr> extract(std::string_view head);
    std::vector<std::string> extractStrings();
    std::vector<SFONodePtr> extractLists();
    // List children with a non-empty head and no children, such as a bare (ignore-case).
    std::vector<SFONodePtr> extractSingletonNodes();
    bool hasSingletonNodeWithHead(std::string_view head);

    // The first list child whose head equals key byte for byte; later namesakes are never seen.
    SFONodePtr nodeForKey(std::string_view key);
    // firstIfString of nodeForKey.
    std::optional<std::string> valueForKey(std::string_view key);
    // In (key value) the value replaces the string; any other keyed list is replaced whole.
    void setValue(const SFOChild& value, std::string_view key);

    // Appends a string, or a node (which becomes this node's child and joins this tree).
    void addChild(const SFOChild& child);
    void replaceChildNodeAtIndex(int64_t index, const SFOChild& value);

    std::string selfmlRepresentation();
    std::string xmlRepresentation() { return selfmlRepresentation(); }
    bool isEqual(const SFOChild& other);
    SFONodePtr copy();

    SFONodePtr parent() const { return m_parent.lock(); }
    SFONodePtr rootNode();
    SFNode* nodeRef();
    // Wraps another low-level list (taking ownership); the children are wrapped anew.
    void setNodeRef(SFNode* node);

    static constexpr size_t npos = static_cast<size_t>(-1);

private:
    struct Tree;  // owns a low-level tree; every wrapper of it holds a reference
    static SFONodePtr wrap(std::shared_ptr<Tree> tree, SFNode* node, bool lazy);
    void thaw();
    void buildChildren();
    std::optional<SFOChild> wrapChild(SFNode* child, bool lazy);
    void adopt(const SFONodePtr& child);
    void detach();

    std::shared_ptr<Tree> m_tree;
    SFNode* m_node = nullptr;
    std::vector<SFOChild> m_children;
    std::weak_ptr<SFONode> m_parent;
    std::weak_ptr<SFONode> m_root;
    std::string m_filePath;
    bool m_isSuspended = true;
    bool m_shouldLoadFile = false;
};

}  // namespace vx
