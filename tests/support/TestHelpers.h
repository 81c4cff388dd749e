// Helpers for tests of the model: values, calls by name, documents to save into.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "Quillet/IQuillet.h"
#include "Quillet/xml/Face.h"
#include "support/LogLines.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {

inline CComVariant NullVariant() {
    CComVariant value;
    value.vt = VT_NULL;
    return value;
}

inline CComVariant Short(SHORT number) {
    return CComVariant(number);
}

inline CComVariant Long(LONG number) {
    return CComVariant(number);
}

// A boolean with any bits: VARIANT_TRUE is one of many values.
inline CComVariant BooleanBits(VARIANT_BOOL bits) {
    CComVariant value(false);
    value.boolVal = bits;
    return value;
}

inline CComVariant DateVariant(double days) {
    CComVariant value(days);
    value.vt = VT_DATE;
    return value;
}

inline CComVariant ByteArray(std::string_view bytes, LONG lowerBound = 0) {
    CComVariant value;
    value.SetBytes(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<ULONG>(bytes.size()), lowerBound);
    return value;
}

constexpr VARTYPE ByteArrayType = VT_ARRAY | VT_UI1;

struct ArrayContent {
    LONG m_lower = 0;
    std::string m_bytes;

    friend bool operator==(const ArrayContent&, const ArrayContent&) = default;
};

inline void PrintTo(const ArrayContent& content, std::ostream* stream) {
    *stream << "lower bound " << content.m_lower << ", " << content.m_bytes.size()
            << " bytes: " << testing::PrintToString(content.m_bytes);
}

// The contents of a byte array; a lower bound of -1 if the value is not one.
inline ArrayContent ContentOf(const VARIANT& value) {
    ArrayContent content;
    LONG upper = 0;
    void* data = nullptr;
    if (value.vt != ByteArrayType || FAILED(SafeArrayGetLBound(value.parray, 1, &content.m_lower)) ||
        FAILED(SafeArrayGetUBound(value.parray, 1, &upper)) ||
        FAILED(SafeArrayAccessData(value.parray, &data))) {
        return {-1, {}};
    }
    content.m_bytes.assign(static_cast<const char*>(data),
                           static_cast<std::size_t>(upper - content.m_lower + 1));
    SafeArrayUnaccessData(value.parray);
    return content;
}

inline std::string TextOf(const CComVariant& value) {
    return value.vt == VT_BSTR ? CString(value.Text()).ToUtf8() : "not a text";
}

inline std::string PrintedText(const DbFieldValue& value) {
    CString text = "what stood there before";
    value.ValueToString(text);
    return text.ToUtf8();
}

// UTF-16 units of any value, paired or not.
inline CString Units(std::initializer_list<unsigned> units) {
    WideString text;
    for (const unsigned unit : units) {
        text.push_back(static_cast<WCHAR>(unit));
    }
    return CString(WideView(text));
}

// A call by name, as a script makes it.
struct InvokeResult {
    HRESULT m_result = S_OK;
    CComVariant m_value;

    bool Succeeded() const { return SUCCEEDED(m_result); }
    CComPtr<IDispatch> Object() const {
        return m_value.vt == VT_DISPATCH ? CComPtr<IDispatch>(m_value.pdispVal) : CComPtr<IDispatch>();
    }
    bool IsNothing() const { return m_value.vt == VT_DISPATCH && m_value.pdispVal == nullptr; }
    std::string Text() const { return TextOf(m_value); }
};

inline InvokeResult InvokeByName(IDispatch* object, const char* name, std::vector<CComVariant> arguments = {},
                                 WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
    InvokeResult answer;
    WideString wide(CString(name).View());
    LPOLESTR names[] = {wide.data()};
    DISPID member = DISPID_UNKNOWN;
    answer.m_result = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(answer.m_result)) {
        return answer;
    }
    std::vector<VARIANTARG> reversed(arguments.rbegin(), arguments.rend());
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    if (flags == DISPATCH_PROPERTYPUT) {
        parameters.rgdispidNamedArgs = &put;
        parameters.cNamedArgs = 1;
    }
    answer.m_result = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                     &answer.m_value, nullptr, nullptr);
    return answer;
}

// An XML document with a root element <t> to save into.
class SaveTarget {
public:
    SaveTarget() : m_automation(m_document.Automation()) {
        const xml::Node root = m_document.Root().CreateElement("t");
        m_document.Root().AppendChild(root);
        m_element = InvokeByName(m_automation.Get(), "documentElement").Object();
    }

    xml::Document& Document() { return m_document; }
    IDispatch* Automation() const { return m_automation.Get(); }
    IDispatch* Element() const { return m_element.Get(); }

    // The text of the children of the root element.
    std::string Content() const {
        const std::string text = m_document.SaveText();
        const std::string start = "<t>\n";
        const std::string end = "</t>\n";
        return text == "<t />\n" ? "" : text.substr(start.size(), text.size() - start.size() - end.size());
    }

private:
    xml::Document m_document;
    CComPtr<IDispatch> m_automation;
    CComPtr<IDispatch> m_element;
};

// The root element of a text, as an automation object that keeps its document.
inline CComPtr<IDispatch> ElementOf(const std::string& text) {
    xml::Document document;
    EXPECT_TRUE(document.LoadText(text)) << document.Error().m_message;
    return InvokeByName(document.Automation().Get(), "documentElement").Object();
}

inline std::vector<CString> Names(std::initializer_list<const char*> names) {
    return std::vector<CString>(names.begin(), names.end());
}

inline std::vector<std::string> Utf8Of(const std::vector<CString>& texts) {
    std::vector<std::string> result;
    for (const CString& text : texts) {
        result.push_back(text.ToUtf8());
    }
    return result;
}

}  // namespace quillet::test
