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
        PutProperty("async", CComVariant(false));
    }

    IDispatch* Automation() const { return m_object.Get(); }
    // The root element; null while there is none.
    CComPtr<IDispatch> Element() const { return Invoke("documentElement").Object(); }
    std::string Xml() const { return Invoke("xml").Text(); }

    // A new element as the last child of parent.
    CComPtr<IDispatch> Append(IDispatch* parent, const char* name) const {
        const auto made = Invoke("createElement", {CComVariant(name)}).Object();
        return Checked(InvokeByName(parent, "appendChild", {CComVariant(made.Get())}), "appendChild")
            .Object();
    }
    CComPtr<IDispatch> AppendRoot() const { return Append(m_object.Get(), "t"); }
    void AppendDeclaration() const {
        const auto made = Invoke("createProcessingInstruction",
                                 {CComVariant("xml"), CComVariant("version='1.0' encoding='UTF-8'")})
                              .Object();
        Invoke("appendChild", {CComVariant(made.Get())});
    }

    void KeepBlanks() const { PutProperty("preserveWhiteSpace", CComVariant(true)); }
    // The root element of the text.
    CComPtr<IDispatch> Load(const std::string& text) const {
        RequireTrue(Invoke("loadXML", {CComVariant(CString(text))}));
        return Element();
    }
    CComPtr<IDispatch> LoadFile(const std::filesystem::path& path) const {
        RequireTrue(Invoke("load", {CComVariant(CString(Utf8(path)))}));
        return Element();
    }
    void SaveFile(const std::filesystem::path& path) const {
        Invoke("save", {CComVariant(CString(Utf8(path)))});
    }

private:
    static InvokeResult Checked(const InvokeResult& answer, const char* name) {
        if (!answer.Succeeded()) {
            throw std::runtime_error(std::string("The XML parser refused ") + name);
        }
        return answer;
    }
    static void RequireTrue(const InvokeResult& answer) {
        if (answer.m_value.vt != VT_BOOL || answer.m_value.boolVal == VARIANT_FALSE) {
            throw std::runtime_error("The XML parser could not load");
        }
    }
    InvokeResult Invoke(const char* name, std::vector<CComVariant> arguments = {}) const {
        return Checked(InvokeByName(m_object.Get(), name, std::move(arguments)), name);
    }
    void PutProperty(const char* name, const CComVariant& value) const {
        Checked(InvokeByName(m_object.Get(), name, {value}, DISPATCH_PROPERTYPUT), name);
    }

    CComPtr<IDispatch> m_object;
};

// A node and all below it, one line each, as the object model itself reports them: the type, the name, the
// value and the attributes in their order. Values are quoted as in C++.
inline std::string Outline(IDispatch* node, const std::string& indent = {}) {
    const auto printed = [](IDispatch* object) {
        const InvokeResult name = InvokeByName(object, "nodeName");
        const InvokeResult value = InvokeByName(object, "nodeValue");
        return name.Text() + (value.m_value.vt == VT_BSTR ? "=" + testing::PrintToString(value.Text()) : "");
    };
    std::string text =
        indent + std::to_string(InvokeByName(node, "nodeType").m_value.lVal) + ' ' + printed(node);
    if (const auto attributes = InvokeByName(node, "attributes").Object()) {
        const LONG count = InvokeByName(attributes.Get(), "length").m_value.lVal;
        for (LONG i = 0; i < count; ++i) {
            text += ' ' + printed(InvokeByName(attributes.Get(), "item", {Long(i)}).Object().Get());
        }
    }
    text += '\n';
    for (auto child = InvokeByName(node, "firstChild").Object(); child;
         child = InvokeByName(child.Get(), "nextSibling").Object()) {
        text += Outline(child.Get(), indent + ' ');
    }
    return text;
}

inline CComPtr<IDispatch> ChildAt(const CComPtr<IDispatch>& node, int position) {
    auto child = InvokeByName(node.Get(), "firstChild").Object();
    for (; position > 0 && child; --position) {
        child = InvokeByName(child.Get(), "nextSibling").Object();
    }
    return child;
}

// The number of references to an object besides the caller's.
inline ULONG ReferencesOf(IDispatch* object) {
    object->AddRef();
    return object->Release();
}

}  // namespace quillet::test
