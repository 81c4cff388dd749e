// Documents of the system's XML parser, called late-bound as a host does, and nodes of any document object
// model as text.
#pragma once

#include <objbase.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "support/TestHelpers.h"

namespace quillet::test {

// COM on this thread, for the object's lifetime.
class ComApartment {
public:
    ComApartment() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (SUCCEEDED(m_result)) {
            CoUninitialize();
        }
    }

private:
    HRESULT m_result;
};

// Every call throws on failure.
class MsxmlDocument {
public:
    MsxmlDocument() {
        constexpr CLSID ClassId = {
            0x2933bf90, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
        void* made = nullptr;
        if (FAILED(CoCreateInstance(ClassId, nullptr, CLSCTX_ALL, IID_IDispatch, &made))) {
            throw std::runtime_error("There is no XML parser");
        }
        m_object.Attach(static_cast<IDispatch*>(made));
        Put("async", CComVariant(false));
    }

    IDispatch* Automation() const { return m_object.Get(); }
    // The root element; null while there is none.
    CComPtr<IDispatch> Element() const { return Call("documentElement").Object(); }
    std::string Xml() const { return Call("xml").Text(); }

    // A new element as the last child of parent.
    CComPtr<IDispatch> Append(IDispatch* parent, const char* name) const {
        const auto made = Call("createElement", {CComVariant(name)}).Object();
        return Checked(Ask(parent, "appendChild", {CComVariant(made.Get())}), "appendChild").Object();
    }
    CComPtr<IDispatch> AppendRoot() const { return Append(m_object.Get(), "t"); }
    void AppendDeclaration() const {
        const auto made = Call("createProcessingInstruction",
                               {CComVariant("xml"), CComVariant("version='1.0' encoding='UTF-8'")})
                              .Object();
        Call("appendChild", {CComVariant(made.Get())});
    }

    void KeepBlanks() const { Put("preserveWhiteSpace", CComVariant(true)); }
    // The root element of the text.
    CComPtr<IDispatch> Load(const std::string& text) const {
        RequireTrue(Call("loadXML", {CComVariant(CString(text))}));
        return Element();
    }
    CComPtr<IDispatch> LoadFile(const std::filesystem::path& path) const {
        RequireTrue(Call("load", {CComVariant(CString(Utf8(path)))}));
        return Element();
    }
    void SaveFile(const std::filesystem::path& path) const {
        Call("save", {CComVariant(CString(Utf8(path)))});
    }

private:
    static Answer Checked(const Answer& answer, const char* name) {
        if (!answer.Succeeded()) {
            throw std::runtime_error(std::string("The XML parser refused ") + name);
        }
        return answer;
    }
    static void RequireTrue(const Answer& answer) {
        if (answer.m_value.vt != VT_BOOL || answer.m_value.boolVal == VARIANT_FALSE) {
            throw std::runtime_error("The XML parser could not load");
        }
    }
    Answer Call(const char* name, std::vector<CComVariant> arguments = {}) const {
        return Checked(Ask(m_object.Get(), name, std::move(arguments)), name);
    }
    void Put(const char* name, const CComVariant& value) const {
        Checked(Ask(m_object.Get(), name, {value}, DISPATCH_PROPERTYPUT), name);
    }

    CComPtr<IDispatch> m_object;
};

// A node and all below it, one line each, as the object model itself reports them: the type, the name, the
// value and the attributes in their order. Values are quoted as in C++.
inline std::string Outline(IDispatch* node, const std::string& indent = {}) {
    const auto printed = [](IDispatch* object) {
        const Answer name = Ask(object, "nodeName");
        const Answer value = Ask(object, "nodeValue");
        return name.Text() + (value.m_value.vt == VT_BSTR ? "=" + testing::PrintToString(value.Text()) : "");
    };
    std::string text = indent + std::to_string(Ask(node, "nodeType").m_value.lVal) + ' ' + printed(node);
    if (const auto attributes = Ask(node, "attributes").Object()) {
        const LONG count = Ask(attributes.Get(), "length").m_value.lVal;
        for (LONG i = 0; i < count; ++i) {
            text += ' ' + printed(Ask(attributes.Get(), "item", {Long(i)}).Object().Get());
        }
    }
    text += '\n';
    for (auto child = Ask(node, "firstChild").Object(); child;
         child = Ask(child.Get(), "nextSibling").Object()) {
        text += Outline(child.Get(), indent + ' ');
    }
    return text;
}

inline CComPtr<IDispatch> ChildAt(const CComPtr<IDispatch>& node, int position) {
    auto child = Ask(node.Get(), "firstChild").Object();
    for (; position > 0 && child; --position) {
        child = Ask(child.Get(), "nextSibling").Object();
    }
    return child;
}

// The number of references to an object besides the caller's.
inline ULONG ReferencesOf(IDispatch* object) {
    object->AddRef();
    return object->Release();
}

}  // namespace quillet::test
