// The automation server without the registry: through the entry points of IQuillet.dll, with members called
// by name, as scripts do.
#pragma once

#include <Quillet/automation/IQuillet.h>

#include <filesystem>
#include <string>

#include "support/MsxmlDocument.h"
#include "support/TemporaryFolder.h"
#include "support/TestHelpers.h"

namespace quillet::test {

constexpr int LongField = FieldType::Long;
constexpr int TextField = FieldType::Text;

template <typename Function>
Function* EntryPoint(const char* name) {
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"IQuillet.dll"), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

inline HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
    return EntryPoint<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**)>("DllGetClassObject")(
        classId, interfaceId, object);
}

inline HRESULT CanUnloadNow() {
    return EntryPoint<HRESULT STDAPICALLTYPE()>("DllCanUnloadNow")();
}

// An object of a class; null if there is none.
inline CComPtr<IDispatch> NewObject(REFCLSID classId) {
    void* factory = nullptr;
    if (FAILED(GetClassObject(classId, IID_IClassFactory, &factory))) {
        return {};
    }
    CComPtr<IClassFactory> owned;
    owned.Attach(static_cast<IClassFactory*>(factory));
    void* made = nullptr;
    CComPtr<IDispatch> object;
    if (SUCCEEDED(owned->CreateInstance(nullptr, IID_IDispatch, &made))) {
        object.Attach(static_cast<IDispatch*>(made));
    }
    return object;
}

// A member's result as text: the value, "nothing" for no object, "object" for one, "failed" for a failure.
inline std::string ResultText(const CComPtr<IDispatch>& object, const char* member,
                              std::vector<CComVariant> arguments = {}) {
    InvokeResult answer = InvokeByName(object.Get(), member, std::move(arguments));
    if (!answer.Succeeded()) {
        return "failed";
    }
    if (answer.m_value.vt == VT_DISPATCH) {
        return answer.IsNothing() ? "nothing" : "object";
    }
    return SUCCEEDED(answer.m_value.ChangeType(VT_BSTR)) ? answer.Text() : "no text";
}

// The object that a member gives; null, with a test failure, if the call fails.
inline CComPtr<IDispatch> ObjectFrom(const CComPtr<IDispatch>& object, const char* member,
                                     std::vector<CComVariant> arguments = {}) {
    const InvokeResult answer = InvokeByName(object.Get(), member, std::move(arguments));
    EXPECT_EQ(answer.m_result, S_OK) << member;
    return answer.Object();
}

inline HRESULT PutProperty(const CComPtr<IDispatch>& object, const char* member, const CComVariant& value) {
    return InvokeByName(object.Get(), member, {value}, DISPATCH_PROPERTYPUT).m_result;
}

// A new catalog with a table T: a long field n, a text field t, and the rows 1 a, 2 b, 3 c.
class ServerTest : public testing::Test {
protected:
    ServerTest() {
        ObjectFrom(m_catalog, "Create", {CComVariant(CString(Path()))});
        MakeTable("T");
        AddRow("T", 1, "a");
        AddRow("T", 2, "b");
        AddRow("T", 3, "c");
    }
    ~ServerTest() override {
        // A changed one would save itself.
        if (m_catalog) {
            ObjectFrom(m_catalog, "Save", {CComVariant(CString(Path()))});
        }
    }

    std::string Path(const char* name = "catalog.xml") const { return Utf8(m_folder / name); }

    void MakeTable(const char* name) const {
        ObjectFrom(m_catalog, "CreateTable", {name});
        const auto structure = Structure(name);
        ObjectFrom(structure, "CreateField", {"n", LongField});
        ObjectFrom(structure, "CreateField", {"t", TextField});
    }
    void AddRow(const char* table, int number, const char* text) const {
        const auto row = ObjectFrom(Contents(table), "AddRow");
        EXPECT_EQ(PutProperty(ObjectFrom(row, "FieldByName", {"n"}), "Value", number), S_OK);
        EXPECT_EQ(PutProperty(ObjectFrom(row, "FieldByName", {"t"}), "Value", text), S_OK);
    }

    CComPtr<IDispatch> Structure(const char* table) const {
        return ObjectFrom(m_catalog, "TableDescr", {table});
    }
    CComPtr<IDispatch> Contents(const char* table) const {
        return ObjectFrom(m_catalog, "TableData", {table});
    }
    CComPtr<IDispatch> Row(const char* table, int position) const {
        return ObjectFrom(Contents(table), "Row", {position});
    }
    // A row's cells with blanks between them.
    static std::string CellsOf(const CComPtr<IDispatch>& row) {
        const InvokeResult count = InvokeByName(row.Get(), "FieldsCount");
        std::string text = count.Succeeded() ? "" : "failed";
        for (LONG i = 0; count.Succeeded() && i < count.m_value.lVal; ++i) {
            text += (i == 0 ? "" : " ") + ResultText(ObjectFrom(row, "FieldByIndex", {i}), "Value");
        }
        return text;
    }
    // The name of the query's answer.
    CComVariant AnswerName(const char* sql) const {
        CComVariant name("");
        CComVariant reference;
        reference.vt = VT_BYREF | VT_VARIANT;
        reference.pvarVal = &name;
        EXPECT_EQ(ResultText(m_catalog, "Query", {sql, reference}), "-1") << sql;
        reference.vt = VT_EMPTY;
        return name;
    }

    TemporaryFolder m_folder;
    ComApartment m_apartment;
    CComPtr<IDispatch> m_catalog = NewObject(__uuidof(DbDatabase));
};

}  // namespace quillet::test
