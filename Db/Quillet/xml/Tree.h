// The tree of a document: a pugixml document, nodes without a parent yet, and leaves that were written
// directly as text.
#pragma once

#include <functional>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Quillet/xml/Node.h"
#include "Quillet/xml/PendingLeaves.h"

namespace quillet::xml {

// Leaf elements at the end of an element's children, kept as the text that will be saved, or as what it will
// be made of. They become nodes before anything walks the children.
struct PackedLeaves {
    // Some leaves: either text of bounded size that ends after one of them, or those that are pending.
    struct Piece {
        std::string m_text;
        std::unique_ptr<const PendingLeaves> m_pending;
    };

    std::vector<Piece> m_pieces;
    // Attribute names of the leaf written last, known to be well-formed and different: the rows of a table
    // repeat them.
    std::vector<std::string> m_names;
};

// Out of memory, every member throws std::bad_alloc and leaves the tree as it was; only Load does not.
class Tree : public std::enable_shared_from_this<Tree> {
public:
    // Receives text piece by piece; false stops the writing.
    using Sink = std::function<bool(std::string_view)>;

    Tree() = default;
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    // Replaces the content by that of a text, which the nodes will point into.
    pugi::xml_parse_result Load(std::string text);

    pugi::xml_node Root() const { return m_document; }

    // A new node without a parent; Drop deletes it.
    pugi::xml_node Create(pugi::xml_node_type type);
    void Drop(pugi::xml_node node);
    // Throws DomError if parent can't hold child.
    void Append(pugi::xml_node parent, pugi::xml_node child);

    // The leaves at the end of the element, to be written to.
    PackedLeaves& Packed(pugi::xml_node parent);

    pugi::xml_node FirstChild(pugi::xml_node parent);
    pugi::xml_node NextSibling(pugi::xml_node node);
    pugi::xml_node PreviousSibling(pugi::xml_node node) const;
    pugi::xml_node LastChild(pugi::xml_node parent);
    // Null for a node without a parent.
    pugi::xml_node Parent(pugi::xml_node node) const;

    // Writes the node and everything below it, without recursion: the nesting may be of any depth.
    bool Write(pugi::xml_node top, const Sink& sink) const;

private:
    void Unpack(pugi::xml_node parent);
    bool AppendPiece(pugi::xml_node parent, const PackedLeaves::Piece& piece);

    std::string m_source;
    pugi::xml_document m_document;
    // The parent of all nodes that have none for the outside; never seen from there.
    pugi::xml_node m_detached;
    std::unordered_map<const void*, PackedLeaves> m_packed;
};

// Throws std::bad_alloc if the parser ran out of memory.
void RequireMemory(const pugi::xml_parse_result& result);

// Whether text is a Name of XML 1.0 (fifth edition).
bool IsXmlName(std::string_view text);

// Appends an attribute value with its markup escaped; false if it contains what XML 1.0 can't carry.
bool AppendEscaped(std::string_view value, std::string& target);
bool AppendEscaped(WideView value, std::string& target);

}  // namespace quillet::xml
