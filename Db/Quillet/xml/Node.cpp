#include "Quillet/xml/Node.h"

#include <algorithm>
#include <new>
#include <unordered_set>

#include "Quillet/base/Rollback.h"
#include "Quillet/xml/Face.h"
#include "Quillet/xml/LateBound.h"
#include "Quillet/xml/Tree.h"

namespace quillet::xml {

namespace {

constexpr LONG DomElement = 1;
constexpr LONG DomText = 3;
constexpr LONG DomProcessingInstruction = 7;
constexpr LONG DomComment = 8;

pugi::xml_node Pugi(const NativeNode& native) {
    return pugi::xml_node(native.m_node);
}

Node Wrap(const NativeNode& origin, pugi::xml_node node) {
    return Node(NativeNode{origin.m_tree, node.internal_object()});
}

LONG DomType(IDispatch* node) {
    return AsLong(GetProperty(node, OLESTR("nodeType")));
}

bool IsSilent(IDispatch* node) {
    switch (DomType(node)) {
        case DomProcessingInstruction:
        case DomComment:
            return true;
        case DomText:
            // A document that was told to keep white space has the blanks between its elements as text.
            return AsUtf8(GetProperty(node, OLESTR("nodeValue"))).find_first_not_of(" \t\r\n") ==
                   std::string::npos;
        default:
            return false;
    }
}

Node SkipSilent(CComPtr<IDispatch> node) {
    while (node && IsSilent(node.Get())) {
        node = AsDispatch(GetProperty(node.Get(), OLESTR("nextSibling")));
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
    Rollback created([&] { tree.Drop(instruction); });
    if (!instruction.set_name(std::string(target).c_str()) || !instruction.set_value(data.c_str())) {
        throw std::bad_alloc();
    }
    created.Keep();
    return instruction;
}

void RequireNode(const Node& node) {
    if (node.IsNull()) {
        throw DomError{"There is no node"};
    }
}

// The node that another DOM created.
Node MadeBy(const CComVariant& result) {
    Node made(AsDispatch(result).Get());
    if (made.Foreign() == nullptr) {
        throw DomError{"The document object model made no node of its own"};
    }
    return made;
}

[[noreturn]] void RefuseSecond(std::string_view name) {
    throw DomError{"The attribute '" + std::string(name) + "' stands twice"};
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

CComVariant Argument(WideView text) {
    CComVariant argument;
    argument.SetText(text);
    return argument;
}

CComVariant Argument(std::string_view utf8) {
    WideString text;
    AppendWide(utf8, text);
    return Argument(WideView(text));
}

}  // namespace

Node::Node(IDispatch* dispatch) {
    if (dispatch == nullptr) {
        return;
    }
    void* found = nullptr;
    if (SUCCEEDED(Guarded([&] { return dispatch->QueryInterface(IID_INativeNode, &found); }))) {
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
    return m_foreign ? AsUtf8(GetProperty(m_foreign.Get(), OLESTR("nodeName"))) : Pugi(m_native).name();
}

Node Node::FirstChild() const {
    if (IsNull()) {
        return {};
    }
    if (m_foreign) {
        return SkipSilent(AsDispatch(GetProperty(m_foreign.Get(), OLESTR("firstChild"))));
    }
    return Wrap(m_native, SkipSilent(*m_native.m_tree, m_native.m_tree->FirstChild(Pugi(m_native))));
}

Node Node::NextSibling() const {
    if (IsNull()) {
        return {};
    }
    if (m_foreign) {
        return SkipSilent(AsDispatch(GetProperty(m_foreign.Get(), OLESTR("nextSibling"))));
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

std::optional<std::uint64_t> Node::OffsetInText() const {
    const std::ptrdiff_t ofName = pugi::xml_node(m_native.m_node).offset_debug();
    return ofName < 1 ? std::nullopt : std::optional(static_cast<std::uint64_t>(ofName) - 1);
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
        return MadeBy(CallMethod(m_foreign.Get(), OLESTR("createElement"), {Argument(name)}));
    }
    RequireName(name);
    const std::string text(name);
    pugi::xml_node element = m_native.m_tree->Create(pugi::node_element);
    if (!element.set_name(text.c_str())) {
        m_native.m_tree->Drop(element);
        throw std::bad_alloc();
    }
    return Wrap(m_native, element);
}

Node Node::CreateProcessingInstruction(std::string_view target, std::string_view data) const {
    RequireNode(*this);
    if (m_foreign) {
        return MadeBy(CallMethod(m_foreign.Get(), OLESTR("createProcessingInstruction"),
                                 {Argument(target), Argument(data)}));
    }
    RequireName(target);
    RequireText(data);
    if (data.find("?>") != std::string_view::npos) {
        throw DomError{"A processing instruction can't hold its own end"};
    }
    return Wrap(m_native, CreateInstruction(*m_native.m_tree, target,
                                            target == "xml" ? DeclarationData(data) : std::string(data)));
}

CComPtr<IDispatch> Node::Automation() const {
    if (IsNull()) {
        return {};
    }
    return m_foreign ? m_foreign : MakeNodeObject(m_native);
}

void Node::SetAttribute(std::string_view name, std::string_view value) const {
    RequireNode(*this);
    RequireText(value);
    if (m_foreign) {
        CallMethod(m_foreign.Get(), OLESTR("setAttribute"), {Argument(name), Argument(value)});
    } else {
        SetNativeAttribute(name, std::string(value));
    }
}

void Node::SetAttribute(std::string_view name, WideView value) const {
    RequireNode(*this);
    RequireText(value);
    if (m_foreign) {
        CallMethod(m_foreign.Get(), OLESTR("setAttribute"), {Argument(name), Argument(value)});
        return;
    }
    std::string utf8;
    AppendUtf8(value, utf8);
    SetNativeAttribute(name, utf8);
}

// The value must be one that XML can carry.
void Node::SetNativeAttribute(std::string_view name, const std::string& value) const {
    RequireName(name);
    const std::string nameText(name);
    pugi::xml_node element = Pugi(m_native);
    if (element.type() != pugi::node_element) {
        throw DomError{"Only an element has attributes"};
    }
    pugi::xml_attribute attribute = element.attribute(nameText.c_str());
    const bool isNew = !attribute;
    if (isNew) {
        attribute = element.append_attribute(nameText.c_str());
    }
    // A new attribute exists without a name if there was no memory for it.
    if (nameText != attribute.name() || !attribute.set_value(value.c_str())) {
        if (isNew) {
            element.remove_attribute(attribute);
        }
        throw std::bad_alloc();
    }
}

void Node::AppendChild(const Node& child) const {
    RequireNode(*this);
    RequireNode(child);
    if (m_foreign) {
        if (!child.m_foreign) {
            throw DomError{"The node belongs to another document"};
        }
        CallMethod(m_foreign.Get(), OLESTR("appendChild"), {CComVariant(child.Foreign())});
        return;
    }
    if (child.m_native.m_tree != m_native.m_tree) {
        throw DomError{"The node belongs to another document"};
    }
    m_native.m_tree->Append(Pugi(m_native), Pugi(child.m_native));
}

// The attributes of an element of another DOM.
class AttributeReader::Foreign {
public:
    explicit Foreign(CComPtr<IDispatch> map)
        : m_map(std::move(map)),
          m_item(m_map.Get(), OLESTR("item")),
          m_count(AsLong(GetProperty(m_map.Get(), OLESTR("length")))) {}

    bool Next() {
        if (m_index >= m_count) {
            return false;
        }
        m_attribute = AsDispatch(m_item.Get({CComVariant(m_index++)}));
        if (!m_attribute) {
            throw DomError{"An attribute is missing"};
        }
        m_name.reset();
        m_value = AsUtf8(GetProperty(m_attribute.Get(), OLESTR("nodeValue")));
        return true;
    }
    // Rows take their values by position, so the name is fetched only on request.
    std::string_view Name() {
        if (!m_name) {
            m_name = AsUtf8(GetProperty(m_attribute.Get(), OLESTR("nodeName")));
        }
        return *m_name;
    }
    std::string_view Value() const { return m_value; }

private:
    CComPtr<IDispatch> m_map;
    LateMember m_item;
    LONG m_count;
    LONG m_index = 0;
    CComPtr<IDispatch> m_attribute;
    std::optional<std::string> m_name;
    std::string m_value;
};

AttributeReader::AttributeReader(const Node& element) {
    if (element.Foreign() == nullptr) {
        m_next = Pugi(element.Native()).first_attribute().internal_object();
    } else if (CComPtr<IDispatch> map = AsDispatch(GetProperty(element.Foreign(), OLESTR("attributes")))) {
        m_foreign = std::make_unique<Foreign>(std::move(map));
    }
}

AttributeReader::~AttributeReader() = default;

bool AttributeReader::Next() {
    if (m_foreign) {
        return m_foreign->Next();
    }
    m_current = m_next;
    if (m_current == nullptr) {
        return false;
    }
    m_next = pugi::xml_attribute(m_current).next_attribute().internal_object();
    return true;
}

std::string_view AttributeReader::Name() const {
    return m_foreign ? m_foreign->Name() : pugi::xml_attribute(m_current).name();
}

std::string_view AttributeReader::Value() const {
    return m_foreign ? m_foreign->Value() : pugi::xml_attribute(m_current).value();
}

bool CanKeepLeaves(const Node& document, const Node& parent) {
    if (parent.IsNull() || parent.Foreign() != nullptr || document.Foreign() != nullptr ||
        document.Native().m_tree != parent.Native().m_tree) {
        return false;
    }
    const pugi::xml_node_type type = Pugi(parent.Native()).type();
    return type == pugi::node_element || type == pugi::node_document;
}

void KeepLeaves(const Node& parent, std::unique_ptr<const PendingLeaves> leaves) {
    std::vector<PackedLeaves::Piece>& pieces = parent.Native().m_tree->Packed(Pugi(parent.Native())).m_pieces;
    pieces.emplace_back().m_pending = std::move(leaves);
}

// The element in another DOM, without a parent until it is appended.
class LeafElement::Foreign {
public:
    explicit Foreign(Node element)
        : m_element(std::move(element)), m_setAttribute(m_element.Foreign(), OLESTR("setAttribute")) {}

    const Node& Element() const { return m_element; }

    // Not every DOM refuses what XML does not allow.
    template <typename Text>
    void Attribute(std::string_view name, Text value) {
        RequireName(name);
        if (!m_names.emplace(name).second) {
            RefuseSecond(name);
        }
        RequireText(value);
        m_setAttribute.Call({Argument(name), Argument(value)});
    }

private:
    Node m_element;
    LateMember m_setAttribute;
    std::unordered_set<std::string> m_names;
};

LeafElement::LeafElement(const Node& document, const Node& parent, std::string_view name) : m_parent(parent) {
    RequireNode(parent);
    if ((document.Foreign() == nullptr) != (parent.Foreign() == nullptr) ||
        document.Native().m_tree != parent.Native().m_tree) {
        throw DomError{"The document and the element do not belong together"};
    }
    if (parent.Foreign() != nullptr) {
        m_foreign = std::make_unique<Foreign>(document.CreateElement(name));
        return;
    }
    const pugi::xml_node_type type = Pugi(parent.Native()).type();
    if (type != pugi::node_element && type != pugi::node_document) {
        throw DomError{"Only an element can hold an element"};
    }
    m_packed = &parent.Native().m_tree->Packed(Pugi(parent.Native()));
    constexpr std::size_t PieceSize = std::size_t(1) << 20;
    constexpr std::size_t Slack = PieceSize / 16;
    std::vector<PackedLeaves::Piece>& pieces = m_packed->m_pieces;
    if (pieces.empty() || pieces.back().m_pending != nullptr) {
        pieces.emplace_back();
    } else if (pieces.back().m_text.size() >= PieceSize) {
        pieces.emplace_back().m_text.reserve(PieceSize + Slack);
    }
    std::string& text = pieces.back().m_text;
    m_start = text.size();
    // One append for both: if a second one failed, nothing would take back the first.
    text.append(name.size() + 1, '<');
    std::copy(name.begin(), name.end(), text.end() - static_cast<std::ptrdiff_t>(name.size()));
    m_text = &text;
}

LeafElement::~LeafElement() {
    if (m_text != nullptr) {
        m_text->resize(m_start);
    }
}

void LeafElement::Attribute(std::string_view name, std::string_view value) {
    Write(name, value);
}

void LeafElement::Attribute(std::string_view name, WideView value) {
    Write(name, value);
}

template <typename Text>
void LeafElement::Write(std::string_view name, Text value) {
    if (m_foreign) {
        m_foreign->Attribute(name, value);
        return;
    }
    CheckName(name);
    *m_text += ' ';
    *m_text += name;
    *m_text += "=\"";
    if (!AppendEscaped(value, *m_text)) {
        RefuseText();
    }
    *m_text += '"';
}

void LeafElement::CheckName(std::string_view name) {
    std::vector<std::string>& names = m_packed->m_names;
    const std::size_t index = m_attributes++;
    if (index < names.size() && names[index] == name) {
        return;
    }
    names.resize(std::min(index, names.size()));
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        RefuseSecond(name);
    }
    RequireName(name);
    names.emplace_back(name);
}

void LeafElement::Append() {
    if (m_foreign) {
        m_parent.AppendChild(m_foreign->Element());
        return;
    }
    *m_text += " />\n";
    m_text = nullptr;
}

}  // namespace quillet::xml
