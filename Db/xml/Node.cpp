#include "xml/Node.h"

#include <algorithm>

#include "xml/Face.h"
#include "xml/LateBound.h"
#include "xml/Tree.h"

namespace quillet::xml {

namespace {

constexpr LONG DomElement = 1;
constexpr LONG DomProcessingInstruction = 7;
constexpr LONG DomComment = 8;

pugi::xml_node Pugi(const NativeNode& native) {
    return pugi::xml_node(native.m_node);
}

Node Wrap(const NativeNode& origin, pugi::xml_node node) {
    return Node(NativeNode{origin.m_tree, node.internal_object()});
}

LONG DomType(IDispatch* node) {
    CComVariant type = GetProperty(node, "nodeType");
    return SUCCEEDED(type.ChangeType(VT_I4)) ? type.lVal : 0;
}

Node SkipSilent(CComPtr<IDispatch> node) {
    while (node) {
        const LONG type = DomType(node.Get());
        if (type != DomProcessingInstruction && type != DomComment) {
            break;
        }
        node = AsDispatch(GetProperty(node.Get(), "nextSibling"));
    }
    return Node(node.Get());
}

pugi::xml_node SkipSilent(Tree& tree, pugi::xml_node node) {
    while (node && (node.type() == pugi::node_declaration || node.type() == pugi::node_pi)) {
        node = tree.NextSibling(node);
    }
    return node;
}

void RequireName(std::string_view name) {
    if (!IsXmlName(name)) {
        throw DomError{"'" + std::string(name) + "' is no XML name"};
    }
}

// The declaration at the head of a document is written with double quotes, however it was given.
std::string DeclarationData(std::string_view data) {
    std::string text(data);
    if (text.find('"') == std::string::npos) {
        std::replace(text.begin(), text.end(), '\'', '"');
    }
    return text;
}

pugi::xml_node CreateInstruction(Tree& tree, std::string_view target, const std::string& data) {
    pugi::xml_node instruction = tree.Create(pugi::node_pi);
    if (!instruction.set_name(std::string(target).c_str()) || !instruction.set_value(data.c_str())) {
        throw DomError{"Memory is short"};
    }
    return instruction;
}

void RequireNode(const Node& node) {
    if (node.IsNull()) {
        throw DomError{"There is no node"};
    }
}

[[noreturn]] void RefuseText() {
    throw DomError{"The text holds a character that XML can't carry"};
}

template <typename Text>
void RequireText(Text value) {
    std::string escaped;
    if (!AppendEscaped(value, escaped)) {
        RefuseText();
    }
}

}  // namespace

Node::Node(IDispatch* dispatch) {
    if (dispatch == nullptr) {
        return;
    }
    void* found = nullptr;
    if (SUCCEEDED(dispatch->QueryInterface(IID_INativeNode, &found))) {
        auto* native = static_cast<INativeNode*>(found);
        m_native = native->GetNative();
        native->Release();
    } else {
        m_foreign = CComPtr<IDispatch>(dispatch);
    }
}

bool Node::IsElement() const {
    if (m_foreign) {
        return DomType(m_foreign.Get()) == DomElement;
    }
    return Pugi(m_native).type() == pugi::node_element;
}

std::string Node::Name() const {
    return m_foreign ? AsUtf8(GetProperty(m_foreign.Get(), "nodeName")) : Pugi(m_native).name();
}

Node Node::FirstChild() const {
    if (IsNull()) {
        return {};
    }
    if (m_foreign) {
        return SkipSilent(AsDispatch(GetProperty(m_foreign.Get(), "firstChild")));
    }
    return Wrap(m_native, SkipSilent(*m_native.m_tree, m_native.m_tree->FirstChild(Pugi(m_native))));
}

Node Node::NextSibling() const {
    if (IsNull()) {
        return {};
    }
    if (m_foreign) {
        return SkipSilent(AsDispatch(GetProperty(m_foreign.Get(), "nextSibling")));
    }
    return Wrap(m_native, SkipSilent(*m_native.m_tree, m_native.m_tree->NextSibling(Pugi(m_native))));
}

std::size_t Node::CountChildren() const {
    std::size_t count = 0;
    for (Node child = FirstChild(); !child.IsNull(); child = child.NextSibling()) {
        ++count;
    }
    return count;
}

std::optional<std::string> Node::FirstAttributeValue() const {
    AttributeReader attributes(*this);
    if (!attributes.Next()) {
        return std::nullopt;
    }
    return std::string(attributes.Value());
}

Node Node::CreateElement(std::string_view name) const {
    RequireNode(*this);
    if (m_foreign) {
        const CComVariant made = CallMethod(m_foreign.Get(), "createElement", {CString(std::string(name))});
        Node element(AsDispatch(made).Get());
        RequireNode(element);
        return element;
    }
    RequireName(name);
    pugi::xml_node element = m_native.m_tree->Create(pugi::node_element);
    if (!element.set_name(std::string(name).c_str())) {
        throw DomError{"Memory is short"};
    }
    return Wrap(m_native, element);
}

Node Node::CreateProcessingInstruction(std::string_view target, std::string_view data) const {
    RequireNode(*this);
    if (m_foreign) {
        const CComVariant made = CallMethod(m_foreign.Get(), "createProcessingInstruction",
                                            {CString(std::string(target)), CString(std::string(data))});
        Node instruction(AsDispatch(made).Get());
        RequireNode(instruction);
        return instruction;
    }
    RequireName(target);
    RequireText(data);
    if (data.find("?>") != std::string_view::npos) {
        throw DomError{"A processing instruction can't hold its own end"};
    }
    return Wrap(m_native, CreateInstruction(*m_native.m_tree, target,
                                            target == "xml" ? DeclarationData(data) : std::string(data)));
}

void Node::SetAttribute(std::string_view name, std::string_view value) const {
    RequireNode(*this);
    RequireText(value);
    if (m_foreign) {
        CallMethod(m_foreign.Get(), "setAttribute",
                   {CString(std::string(name)), CString(std::string(value))});
    } else {
        SetNativeAttribute(name, std::string(value));
    }
}

void Node::SetAttribute(std::string_view name, WideView value) const {
    RequireNode(*this);
    RequireText(value);
    if (m_foreign) {
        CallMethod(m_foreign.Get(), "setAttribute", {CString(std::string(name)), CString(value)});
        return;
    }
    std::string utf8;
    AppendUtf8(value, utf8);
    SetNativeAttribute(name, utf8);
}

// The value is known to be one that XML carries.
void Node::SetNativeAttribute(std::string_view name, const std::string& value) const {
    RequireName(name);
    const std::string nameText(name);
    pugi::xml_node element = Pugi(m_native);
    if (element.type() != pugi::node_element) {
        throw DomError{"Only an element has attributes"};
    }
    pugi::xml_attribute attribute = element.attribute(nameText.c_str());
    if (!attribute) {
        attribute = element.append_attribute(nameText.c_str());
    }
    if (!attribute.set_value(value.c_str())) {
        throw DomError{"The attribute '" + nameText + "' can't be set"};
    }
}

void Node::AppendChild(const Node& child) const {
    RequireNode(*this);
    RequireNode(child);
    if (m_foreign) {
        if (!child.m_foreign) {
            throw DomError{"The node belongs to another document"};
        }
        CallMethod(m_foreign.Get(), "appendChild", {CComVariant(child.Foreign())});
        return;
    }
    if (child.m_native.m_tree != m_native.m_tree) {
        throw DomError{"The node belongs to another document"};
    }
    m_native.m_tree->Append(Pugi(m_native), Pugi(child.m_native));
}

AttributeReader::AttributeReader(const Node& element) {
    if (element.Foreign() != nullptr) {
        m_foreignMap = AsDispatch(GetProperty(element.Foreign(), "attributes"));
        if (m_foreignMap) {
            CComVariant count = GetProperty(m_foreignMap.Get(), "length");
            m_foreignCount = SUCCEEDED(count.ChangeType(VT_I4)) ? count.lVal : 0;
        }
        return;
    }
    m_next = Pugi(element.Native()).first_attribute().internal_object();
}

bool AttributeReader::Next() {
    if (m_foreignMap) {
        if (m_foreignIndex >= m_foreignCount) {
            return false;
        }
        const auto attribute =
            AsDispatch(GetProperty(m_foreignMap.Get(), "item", {CComVariant(m_foreignIndex++)}));
        if (!attribute) {
            throw DomError{"An attribute is missing"};
        }
        m_foreignName = AsUtf8(GetProperty(attribute.Get(), "nodeName"));
        m_foreignValue = AsUtf8(GetProperty(attribute.Get(), "nodeValue"));
        return true;
    }
    m_current = m_next;
    if (m_current == nullptr) {
        return false;
    }
    m_next = pugi::xml_attribute(m_current).next_attribute().internal_object();
    return true;
}

std::string_view AttributeReader::Name() const {
    return m_foreignMap ? std::string_view(m_foreignName) : pugi::xml_attribute(m_current).name();
}

std::string_view AttributeReader::Value() const {
    return m_foreignMap ? std::string_view(m_foreignValue) : pugi::xml_attribute(m_current).value();
}

LeafElement::LeafElement(const Node& document, const Node& parent, std::string_view name) : m_parent(parent) {
    RequireNode(parent);
    if (parent.Foreign() != nullptr) {
        m_foreignElement = document.CreateElement(name);
        return;
    }
    if (document.Native().m_tree != parent.Native().m_tree) {
        throw DomError{"The document and the element do not belong together"};
    }
    const pugi::xml_node_type type = Pugi(parent.Native()).type();
    if (type != pugi::node_element && type != pugi::node_document) {
        throw DomError{"Only an element can hold an element"};
    }
    m_packed = &parent.Native().m_tree->Packed(Pugi(parent.Native()));
    constexpr std::size_t PieceSize = std::size_t(1) << 20;
    constexpr std::size_t Slack = PieceSize / 16;
    std::vector<std::string>& pieces = m_packed->m_pieces;
    if (pieces.empty()) {
        pieces.emplace_back();
    } else if (pieces.back().size() >= PieceSize) {
        pieces.emplace_back().reserve(PieceSize + Slack);
    }
    m_text = &pieces.back();
    m_start = m_text->size();
    *m_text += '<';
    *m_text += name;
}

LeafElement::~LeafElement() {
    if (m_text != nullptr) {
        m_text->resize(m_start);
    }
}

void LeafElement::Attribute(std::string_view name, std::string_view value) {
    CheckName(name);
    if (m_packed == nullptr) {
        m_foreignElement.SetAttribute(name, value);
    } else {
        Write(name, value);
    }
}

void LeafElement::Attribute(std::string_view name, WideView value) {
    CheckName(name);
    if (m_packed == nullptr) {
        m_foreignElement.SetAttribute(name, value);
    } else {
        Write(name, value);
    }
}

template <typename Text>
void LeafElement::Write(std::string_view name, Text value) {
    *m_text += ' ';
    *m_text += name;
    *m_text += "=\"";
    if (!AppendEscaped(value, *m_text)) {
        RefuseText();
    }
    *m_text += '"';
}

void LeafElement::CheckName(std::string_view name) {
    std::vector<std::string>& names = m_packed != nullptr ? m_packed->m_names : m_foreignNames;
    const std::size_t index = m_attributes++;
    if (index < names.size() && names[index] == name) {
        return;
    }
    names.resize(std::min(index, names.size()));
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        throw DomError{"The attribute '" + std::string(name) + "' stands twice"};
    }
    RequireName(name);
    names.emplace_back(name);
}

void LeafElement::Append() {
    if (m_packed == nullptr) {
        m_parent.AppendChild(m_foreignElement);
        return;
    }
    *m_text += " />\n";
    m_text = nullptr;
}

}  // namespace quillet::xml
