// Handles to XML nodes: of our own documents, or of any other automation DOM, which is driven late-bound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Quillet/base/CComVariant.h"

namespace pugi {
struct xml_node_struct;
struct xml_attribute_struct;
}  // namespace pugi

namespace quillet::xml {

class PendingLeaves;
class Tree;
struct PackedLeaves;

// Thrown by value when a DOM refuses an operation; always caught inside the library.
struct DomError {
    std::string m_message;
};

// A node of one of our trees.
struct NativeNode {
    Tree* m_tree = nullptr;
    pugi::xml_node_struct* m_node = nullptr;
};

// A light value: walking allocates nothing in our own documents. A null node answers every question with
// nothing; operations that change a document throw DomError when they can't, and std::bad_alloc out of
// memory, which leaves our own documents as they were.
class QUILLET_API Node {
public:
    Node() = default;
    // The node of an automation interface; a null interface gives a null node.
    explicit Node(IDispatch* dispatch);
    explicit Node(NativeNode native) : m_native(native) {}

    bool IsNull() const { return m_native.m_node == nullptr && !m_foreign; }
    bool IsElement() const;
    std::string Name() const;

    // Children and siblings in document order, elements and text alike; blanks between elements, comments and
    // processing instructions are skipped.
    Node FirstChild() const;
    Node NextSibling() const;
    std::size_t CountChildren() const;

    // The offset of the element's '<' in the text that its document was read from; nullopt for an element
    // that was created, and in other document object models.
    std::optional<std::uint64_t> OffsetInText() const;

    // The value of the first attribute, whatever it is called.
    std::optional<std::string> FirstAttributeValue() const;

    // This node must be a document. The new node has no parent until it is appended.
    Node CreateElement(std::string_view name) const;
    Node CreateProcessingInstruction(std::string_view target, std::string_view data) const;

    // Sets the attribute, replacing one of that name.
    void SetAttribute(std::string_view name, std::string_view value) const;
    void SetAttribute(std::string_view name, WideView value) const;

    // Appends child after the last child of this node. Both must belong to one document.
    void AppendChild(const Node& child) const;

    // The node for automation clients, and for the Save and Load of the model; null for a null node. A node
    // of our own documents keeps its tree alive as long as it is referenced. Throws std::bad_alloc.
    CComPtr<IDispatch> Automation() const;

    // The interface of another DOM's node; null for nodes of our own.
    IDispatch* Foreign() const { return m_foreign.Get(); }
    const NativeNode& Native() const { return m_native; }

private:
    void SetNativeAttribute(std::string_view name, const std::string& value) const;

    NativeNode m_native;
    CComPtr<IDispatch> m_foreign;
};

// Whether an element, or a document, of our own can keep leaves that are written later.
bool CanKeepLeaves(const Node& document, const Node& parent);
// Appends the leaves to such a parent.
void KeepLeaves(const Node& parent, std::unique_ptr<const PendingLeaves> leaves);

// Walks the attributes of an element in document order.
class AttributeReader {
public:
    explicit AttributeReader(const Node& element);
    AttributeReader(const AttributeReader&) = delete;
    AttributeReader& operator=(const AttributeReader&) = delete;
    ~AttributeReader();

    // Moves to the next attribute; false after the last one.
    bool Next();
    std::string_view Name() const;
    // UTF-8, the entities resolved; valid until the next move.
    std::string_view Value() const;

private:
    class Foreign;

    pugi::xml_attribute_struct* m_next = nullptr;
    pugi::xml_attribute_struct* m_current = nullptr;
    std::unique_ptr<Foreign> m_foreign;
};

// An element without children that is written attribute by attribute and appended when it is complete. If it
// is destroyed before that, it is dropped.
class LeafElement {
public:
    // Both must belong to one document: document creates the nodes, parent receives the element.
    LeafElement(const Node& document, const Node& parent, std::string_view name);
    LeafElement(const LeafElement&) = delete;
    LeafElement& operator=(const LeafElement&) = delete;
    ~LeafElement();

    // Adds an attribute. Throws DomError if the name is not one of XML or was added before, or if the text
    // contains what XML 1.0 can't carry.
    void Attribute(std::string_view name, std::string_view value);
    void Attribute(std::string_view name, WideView value);

    void Append();

private:
    class Foreign;

    void CheckName(std::string_view name);
    template <typename Text>
    void Write(std::string_view name, Text value);

    // In our own documents: where leaves are written, the piece of text that takes this one, and where it
    // begins.
    PackedLeaves* m_packed = nullptr;
    std::string* m_text = nullptr;
    std::size_t m_start = 0;
    std::size_t m_attributes = 0;
    Node m_parent;
    std::unique_ptr<Foreign> m_foreign;
};

}  // namespace quillet::xml
