#include "Quillet/xml/Face.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

#include "Quillet/xml/Tree.h"

namespace quillet::xml {

namespace {

enum Member : DISPID {
    MemberItem = DISPID_VALUE,
    MemberLength = 1,
    MemberNodeName,
    MemberNodeValue,
    MemberNodeType,
    MemberParentNode,
    MemberChildNodes,
    MemberFirstChild,
    MemberLastChild,
    MemberNextSibling,
    MemberHasChildNodes,
    MemberAttributes,
    MemberOwnerDocument,
    MemberAppendChild,
    MemberGetAttribute,
    MemberSetAttribute,
    MemberXml,
    MemberDocumentElement,
    MemberCreateElement,
    MemberCreateProcessingInstruction,
    MemberBaseName,
    MemberText,
    MemberPreviousSibling,
    MemberGetNamedItem,
    MemberLast = MemberGetNamedItem
};

struct MemberName {
    const char* m_name;
    Member m_member;
};

constexpr MemberName MemberNames[] = {
    {"item", MemberItem},
    {"length", MemberLength},
    {"nodeName", MemberNodeName},
    {"tagName", MemberNodeName},
    {"name", MemberNodeName},
    {"nodeValue", MemberNodeValue},
    {"value", MemberNodeValue},
    {"nodeType", MemberNodeType},
    {"parentNode", MemberParentNode},
    {"childNodes", MemberChildNodes},
    {"firstChild", MemberFirstChild},
    {"lastChild", MemberLastChild},
    {"nextSibling", MemberNextSibling},
    {"hasChildNodes", MemberHasChildNodes},
    {"attributes", MemberAttributes},
    {"ownerDocument", MemberOwnerDocument},
    {"appendChild", MemberAppendChild},
    {"getAttribute", MemberGetAttribute},
    {"setAttribute", MemberSetAttribute},
    {"xml", MemberXml},
    {"documentElement", MemberDocumentElement},
    {"createElement", MemberCreateElement},
    {"createProcessingInstruction", MemberCreateProcessingInstruction},
    {"baseName", MemberBaseName},
    {"text", MemberText},
    {"previousSibling", MemberPreviousSibling},
    {"getNamedItem", MemberGetNamedItem},
};

char ToLowerAscii(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// Scripts write the names in any case.
bool IsName(const OLECHAR* asked, const char* name) {
    if (asked == nullptr) {
        return false;
    }
    for (; *name != '\0'; ++asked, ++name) {
        if (*asked == 0 || *asked >= 0x80 || ToLowerAscii(static_cast<char>(*asked)) != ToLowerAscii(*name)) {
            return false;
        }
    }
    return *asked == 0;
}

// The arguments of a call in the order in which they were written.
class Arguments {
public:
    explicit Arguments(const DISPPARAMS* parameters) : m_parameters(parameters) {}

    UINT Count() const { return m_parameters == nullptr ? 0 : m_parameters->cArgs; }

    CComVariant At(UINT index) const {
        if (index >= Count()) {
            throw DomError{"An argument is missing"};
        }
        return Dereferenced(CComVariant(m_parameters->rgvarg[Count() - 1 - index]));
    }

    CString Wide(UINT index) const {
        CComVariant value = At(index);
        if (FAILED(value.ChangeType(VT_BSTR))) {
            throw DomError{"An argument is no text"};
        }
        return CString(value.Text());
    }

    std::string Text(UINT index) const { return Wide(index).ToUtf8(); }

    LONG Number(UINT index) const {
        CComVariant value = At(index);
        if (FAILED(value.ChangeType(VT_I4))) {
            throw DomError{"An argument is no number"};
        }
        return value.lVal;
    }

private:
    const DISPPARAMS* m_parameters;
};

CComVariant TextValue(const char* utf8) {
    return CComVariant(CString(utf8));
}

// The new value of a property, checked to be text that XML can carry.
std::string CheckedText(const Arguments& arguments) {
    const CString text = arguments.Wide(0);
    std::string escaped;
    if (arguments.Count() != 1 || !AppendEscaped(text.View(), escaped)) {
        throw DomError{"The text is none that XML can carry"};
    }
    return text.ToUtf8();
}

// Sets the text of a node or an attribute, one that has a text.
template <typename Place>
void SetText(Place place, const std::string& text) {
    if (!place.set_value(text.c_str())) {
        throw std::bad_alloc();
    }
}

// The part after the prefix.
const char* BaseName(const char* name) {
    const char* const colon = std::strchr(name, ':');
    return colon == nullptr ? name : colon + 1;
}

bool IsText(pugi::xml_node node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

CComVariant Nothing() {
    CComVariant nothing;
    nothing.vt = VT_DISPATCH;
    nothing.pdispVal = nullptr;
    return nothing;
}

// What the objects of a document have in common: counting, and members by name.
class ObjectBase : public INativeNode, public IDispatch {
public:
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;
    virtual ~ObjectBase() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        if (iid == IID_INativeNode && HasNode()) {
            *object = static_cast<INativeNode*>(this);
        } else if (iid == IID_IUnknown || iid == IID_IDispatch) {
            *object = static_cast<IDispatch*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) override;

    NativeNode STDMETHODCALLTYPE GetNative() override { return {}; }

protected:
    ObjectBase() = default;

    virtual bool HasNode() const { return false; }
    // Throws DomError for a member that the object does not have, or that fails.
    virtual CComVariant Call(Member member, const Arguments& arguments) = 0;
    // The new value is the only argument. False for a member that can't be set; throws DomError for a value
    // that XML can't carry.
    virtual bool Put(Member, const Arguments&) { return false; }

private:
    ULONG m_references = 1;
};

HRESULT ObjectBase::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    if (names == nullptr || ids == nullptr) {
        return E_POINTER;
    }
    HRESULT result = S_OK;
    for (UINT i = 0; i < count; ++i) {
        const auto* known =
            std::find_if(std::begin(MemberNames), std::end(MemberNames),
                         [&](const MemberName& entry) { return IsName(names[i], entry.m_name); });
        // Only the first name is a member; the others would name parameters, and there are none.
        if (i > 0 || known == std::end(MemberNames)) {
            ids[i] = DISPID_UNKNOWN;
            result = DISP_E_UNKNOWNNAME;
        } else {
            ids[i] = known->m_member;
        }
    }
    return result;
}

HRESULT ObjectBase::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                           EXCEPINFO*, UINT*) {
    if (id < MemberItem || id > MemberLast) {
        return DISP_E_MEMBERNOTFOUND;
    }
    try {
        if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
            return Put(static_cast<Member>(id), Arguments(parameters)) ? S_OK : DISP_E_MEMBERNOTFOUND;
        }
        CComVariant answer = Call(static_cast<Member>(id), Arguments(parameters));
        if (result != nullptr) {
            VariantInit(result);
            return VariantCopy(result, &answer);
        }
        return S_OK;
    } catch (const DomError&) {
        return E_FAIL;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

CComVariant Object(ObjectBase* made) {
    CComPtr<IDispatch> held;
    held.Attach(made);
    return CComVariant(held.Get());
}

// One attribute of an element.
class AttributeObject final : public ObjectBase {
public:
    AttributeObject(std::shared_ptr<Tree> tree, pugi::xml_attribute attribute)
        : m_tree(std::move(tree)), m_attribute(attribute) {}

protected:
    CComVariant Call(Member member, const Arguments&) override {
        switch (member) {
            case MemberNodeName:
                return TextValue(m_attribute.name());
            case MemberBaseName:
                return TextValue(BaseName(m_attribute.name()));
            case MemberNodeValue:
            case MemberText:
                return TextValue(m_attribute.value());
            case MemberNodeType:
                return CComVariant(2);
            default:
                throw DomError{"An attribute has no such member"};
        }
    }
    bool Put(Member member, const Arguments& arguments) override {
        if (member != MemberNodeValue && member != MemberText) {
            return false;
        }
        SetText(m_attribute, CheckedText(arguments));
        return true;
    }

private:
    std::shared_ptr<Tree> m_tree;
    pugi::xml_attribute m_attribute;
};

// The children of a node, or the attributes of an element.
class ListObject final : public ObjectBase {
public:
    enum class Kind { Children, Attributes };

    ListObject(std::shared_ptr<Tree> tree, pugi::xml_node node, Kind kind)
        : m_tree(std::move(tree)), m_node(node), m_kind(kind) {}

protected:
    CComVariant Call(Member member, const Arguments& arguments) override {
        if (member == MemberLength) {
            return CComVariant(m_kind == Kind::Children ? CountChildren() : CountAttributes());
        }
        if (member == MemberItem) {
            const LONG index = arguments.Number(0);
            if (index < 0) {
                return Nothing();
            }
            return m_kind == Kind::Children ? Child(index) : Attribute(index);
        }
        if (member == MemberGetNamedItem && m_kind == Kind::Attributes) {
            return Shown(m_node.attribute(arguments.Text(0).c_str()));
        }
        throw DomError{"A list has no such member"};
    }

private:
    LONG CountChildren() const {
        LONG count = 0;
        for (pugi::xml_node child = m_tree->FirstChild(m_node); child; child = m_tree->NextSibling(child)) {
            ++count;
        }
        return count;
    }
    LONG CountAttributes() const {
        return static_cast<LONG>(std::distance(m_node.attributes_begin(), m_node.attributes_end()));
    }
    CComVariant Child(LONG index) const {
        pugi::xml_node child = m_tree->FirstChild(m_node);
        while (child && index-- > 0) {
            child = m_tree->NextSibling(child);
        }
        return child && index <= 0
                   ? CComVariant(MakeNodeObject({m_tree.get(), child.internal_object()}).Get())
                   : Nothing();
    }
    CComVariant Attribute(LONG index) const {
        pugi::xml_attribute attribute = m_node.first_attribute();
        while (attribute && index-- > 0) {
            attribute = attribute.next_attribute();
        }
        return Shown(attribute);
    }
    CComVariant Shown(pugi::xml_attribute attribute) const {
        return attribute ? Object(new AttributeObject(m_tree, attribute)) : Nothing();
    }

    std::shared_ptr<Tree> m_tree;
    pugi::xml_node m_node;
    Kind m_kind;
};

}  // namespace

// A node of any kind, the document included.
class NodeObject final : public ObjectBase {
public:
    void Target(const NativeNode& node, std::shared_ptr<Tree> owner) {
        m_native = node;
        m_owner = std::move(owner);
    }

    NativeNode STDMETHODCALLTYPE GetNative() override { return m_native; }

protected:
    bool HasNode() const override { return true; }
    CComVariant Call(Member member, const Arguments& arguments) override;
    bool Put(Member member, const Arguments& arguments) override;

private:
    Tree& InTree() const { return *m_native.m_tree; }
    pugi::xml_node Here() const { return pugi::xml_node(m_native.m_node); }
    CComVariant Wrap(pugi::xml_node node) const {
        return node ? CComVariant(MakeNodeObject({m_native.m_tree, node.internal_object()}).Get())
                    : Nothing();
    }
    CComVariant List(ListObject::Kind kind) const {
        return Object(new ListObject(InTree().shared_from_this(), Here(), kind));
    }
    CComVariant DomName() const;
    CComVariant DomType() const;
    CComVariant DocumentElement() const;
    CComVariant Markup() const;
    CComVariant InnerText() const;
    CComVariant AppendChild(const CComVariant& child) const;

    NativeNode m_native;
    // Set if the object is reference-counted. On the stack of a Face, it leaves the tree to its document.
    std::shared_ptr<Tree> m_owner;
};

CComVariant NodeObject::Call(Member member, const Arguments& arguments) {
    switch (member) {
        case MemberNodeName:
            return DomName();
        case MemberNodeValue:
            return Here().type() == pugi::node_element || Here().type() == pugi::node_document
                       ? CComVariant()
                       : TextValue(Here().value());
        case MemberNodeType:
            return DomType();
        case MemberBaseName:
            return TextValue(BaseName(Here().name()));
        case MemberText:
            return InnerText();
        case MemberParentNode:
            return Wrap(InTree().Parent(Here()));
        case MemberChildNodes:
            return List(ListObject::Kind::Children);
        case MemberFirstChild:
            return Wrap(InTree().FirstChild(Here()));
        case MemberLastChild:
            return Wrap(InTree().LastChild(Here()));
        case MemberNextSibling:
            return Wrap(InTree().NextSibling(Here()));
        case MemberPreviousSibling:
            return Wrap(InTree().PreviousSibling(Here()));
        case MemberHasChildNodes:
            return CComVariant(!InTree().FirstChild(Here()).empty());
        case MemberAttributes:
            return Here().type() == pugi::node_element ? List(ListObject::Kind::Attributes) : Nothing();
        case MemberOwnerDocument:
            return Wrap(InTree().Root());
        case MemberAppendChild:
            return AppendChild(arguments.At(0));
        case MemberGetAttribute: {
            const pugi::xml_attribute found = Here().attribute(arguments.Text(0).c_str());
            CComVariant missing;
            missing.vt = VT_NULL;
            return found ? TextValue(found.value()) : missing;
        }
        case MemberSetAttribute:
            Node(m_native).SetAttribute(arguments.Text(0), arguments.Wide(1).View());
            return {};
        case MemberXml:
            return Markup();
        case MemberDocumentElement:
            return DocumentElement();
        case MemberCreateElement:
            return Wrap(pugi::xml_node(Node(m_native).CreateElement(arguments.Text(0)).Native().m_node));
        case MemberCreateProcessingInstruction:
            return Wrap(pugi::xml_node(Node(m_native)
                                           .CreateProcessingInstruction(arguments.Text(0), arguments.Text(1))
                                           .Native()
                                           .m_node));
        default:
            throw DomError{"A node has no such member"};
    }
}

bool NodeObject::Put(Member member, const Arguments& arguments) {
    if ((member != MemberNodeValue && member != MemberText) || !IsText(Here())) {
        return false;
    }
    SetText(Here(), CheckedText(arguments));
    return true;
}

CComVariant NodeObject::DomName() const {
    switch (Here().type()) {
        case pugi::node_document:
            return TextValue("#document");
        case pugi::node_pcdata:
            return TextValue("#text");
        case pugi::node_cdata:
            return TextValue("#cdata-section");
        default:
            return TextValue(Here().name());
    }
}

CComVariant NodeObject::DomType() const {
    switch (Here().type()) {
        case pugi::node_element:
            return CComVariant(1);
        case pugi::node_pcdata:
            return CComVariant(3);
        case pugi::node_cdata:
            return CComVariant(4);
        case pugi::node_document:
            return CComVariant(9);
        default:
            return CComVariant(7);
    }
}

CComVariant NodeObject::DocumentElement() const {
    pugi::xml_node child = InTree().FirstChild(InTree().Root());
    while (child && child.type() != pugi::node_element) {
        child = InTree().NextSibling(child);
    }
    return Wrap(child);
}

CComVariant NodeObject::Markup() const {
    std::string text;
    InTree().Write(Here(), [&](std::string_view piece) {
        text += piece;
        return true;
    });
    return CComVariant(CString(text));
}

// The text of the node and of the texts below it.
CComVariant NodeObject::InnerText() const {
    std::string text;
    pugi::xml_node node = Here();
    for (;;) {
        if (node == Here() || IsText(node)) {
            text += node.value();
        }
        pugi::xml_node next = InTree().FirstChild(node);
        while (!next && node != Here()) {
            next = InTree().NextSibling(node);
            if (!next) {
                node = InTree().Parent(node);
            }
        }
        if (!next) {
            return TextValue(text.c_str());
        }
        node = next;
    }
}

CComVariant NodeObject::AppendChild(const CComVariant& child) const {
    if (child.vt != VT_DISPATCH || child.pdispVal == nullptr) {
        throw DomError{"Only a node can be appended"};
    }
    Node(m_native).AppendChild(Node(child.pdispVal));
    return child;
}

const IID IID_INativeNode = {0x8b0f6c52, 0x3f0e, 0x4d0b, {0x9a, 0x47, 0x61, 0x2e, 0xd1, 0x7c, 0x05, 0xb8}};

Face::Face() : m_object(new NodeObject) {
}

Face::~Face() {
    m_object->Release();
}

IDispatch* Face::Show(const Node& node) {
    if (node.IsNull()) {
        m_shown = nullptr;
    } else if (node.Foreign() != nullptr) {
        m_foreign = node;
        m_shown = node.Foreign();
    } else {
        m_object->Target(node.Native(), nullptr);
        m_shown = m_object;
    }
    return m_shown;
}

CComPtr<IDispatch> MakeNodeObject(const NativeNode& node) {
    auto* object = new NodeObject;
    object->Target(node, node.m_tree->shared_from_this());
    CComPtr<IDispatch> held;
    held.Attach(object);
    return held;
}

}  // namespace quillet::xml
