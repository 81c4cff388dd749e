// The type library as clients find it in the built library, compared with its specified contents: every type,
// and for each interface every member with its slot, dispatch id, kind and parameters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ComHelpers.h"

namespace {

using namespace quillet::test;
using Strings = std::vector<std::string>;

void Require(HRESULT result) {
    ASSERT_EQ(result, S_OK);
}

std::string NameOf(ITypeInfo* type) {
    BSTR name = nullptr;
    Require(type->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    return TakeText(name);
}

// The attributes of a type, released at the end.
class Attributes {
public:
    explicit Attributes(ITypeInfo* type) : m_type(type) { Require(type->GetTypeAttr(&m_attributes)); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes() { m_type->ReleaseTypeAttr(m_attributes); }

    const TYPEATTR* operator->() const { return m_attributes; }

private:
    ITypeInfo* m_type;
    TYPEATTR* m_attributes = nullptr;
};

// A type as it is declared in the interface definition language.
std::string TypeText(ITypeInfo* context, const TYPEDESC& type) {
    switch (type.vt) {
        case VT_PTR:
            return TypeText(context, *type.lptdesc) + '*';
        case VT_USERDEFINED: {
            CComPtr<ITypeInfo> named;
            Require(context->GetRefTypeInfo(type.hreftype, Into(named)));
            return NameOf(named.Get());
        }
        case VT_BSTR:
            return "BSTR";
        case VT_BOOL:
            return "VARIANT_BOOL";
        case VT_I4:
            return "long";
        case VT_VARIANT:
            return "VARIANT";
        case VT_HRESULT:
            return "HRESULT";
        case VT_VOID:
            return "void";
        default:
            return "type " + std::to_string(type.vt);
    }
}

std::string FlagsText(USHORT flags) {
    std::string text;
    const auto append = [&](USHORT flag, const char* word) {
        if ((flags & flag) != 0) {
            text += (text.empty() ? "[" : ", ") + std::string(word);
            flags = static_cast<USHORT>(flags & ~flag);
        }
    };
    append(PARAMFLAG_FIN, "in");
    append(PARAMFLAG_FOUT, "out");
    append(PARAMFLAG_FRETVAL, "retval");
    append(flags, "others");
    return text + "] ";
}

std::string KindText(INVOKEKIND kind) {
    const std::map<INVOKEKIND, std::string> texts = {
        {INVOKE_FUNC, ""}, {INVOKE_PROPERTYGET, "get "}, {INVOKE_PROPERTYPUT, "put "}};
    const auto found = texts.find(kind);
    return found == texts.end() ? "kind " + std::to_string(kind) + ' ' : found->second;
}

// "slot: id kind name(parameters)"; what all members of an interface share is not listed but required.
std::string MemberText(ITypeInfo* type, UINT index) {
    FUNCDESC* member = nullptr;
    Require(type->GetFuncDesc(index, &member));
    EXPECT_EQ(member->funckind, FUNC_PUREVIRTUAL);
    EXPECT_EQ(member->callconv, CC_STDCALL);
    EXPECT_EQ(member->wFuncFlags, 0);
    EXPECT_EQ(member->cParamsOpt, 0);
    EXPECT_EQ(TypeText(type, member->elemdescFunc.tdesc), "HRESULT");

    constexpr UINT MaxNames = 8;
    BSTR names[MaxNames] = {};
    UINT count = 0;
    Require(type->GetNames(member->memid, names, MaxNames, &count));
    std::ostringstream text;
    text << member->oVft / static_cast<int>(sizeof(void*)) << ": " << member->memid << ' '
         << KindText(member->invkind) << CString(names[0]).ToUtf8() << '(';
    for (int i = 0; i < member->cParams; ++i) {
        const ELEMDESC& parameter = member->lprgelemdescParam[i];
        text << (i == 0 ? "" : ", ") << FlagsText(parameter.paramdesc.wParamFlags)
             << TypeText(type, parameter.tdesc);
        // The name of a property's value is not checked; the loader has none for a put.
        if (member->invkind == INVOKE_FUNC) {
            text << ' ' << CString(names[i + 1]).ToUtf8();
        }
    }
    for (BSTR name : names) {
        SysFreeString(name);
    }
    type->ReleaseFuncDesc(member);
    return text.str() + ')';
}

class TypeLibrary : public testing::Test {
protected:
    TypeLibrary() {
        const std::filesystem::path path = std::filesystem::absolute(QUILLET_LIBRARY).make_preferred();
        Require(LoadTypeLib(path.c_str(), Into(m_library)));
    }

    CComPtr<ITypeInfo> TypeOf(const char* name) const {
        CComPtr<ITypeInfo> type;
        MEMBERID member = MEMBERID_NIL;
        USHORT count = 1;
        std::wstring text(CString(name).View());
        EXPECT_EQ(m_library->FindName(text.data(), 0, Into(type), &member, &count), S_OK);
        EXPECT_EQ(count, 1) << name;
        EXPECT_EQ(member, MEMBERID_NIL) << name << " is found as a member";
        return type;
    }

    // The view of a dual interface that has its slots.
    static CComPtr<ITypeInfo> SlotsOf(const CComPtr<ITypeInfo>& dispatch) {
        HREFTYPE reference = 0;
        CComPtr<ITypeInfo> type;
        Require(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
        Require(dispatch->GetRefTypeInfo(reference, Into(type)));
        return type;
    }

    void ExpectInterface(const char* name, const char* id, const Strings& members) const {
        SCOPED_TRACE(name);
        const auto dispatch = TypeOf(name);
        constexpr WORD Dual = TYPEFLAG_FDUAL | TYPEFLAG_FNONEXTENSIBLE | TYPEFLAG_FDISPATCHABLE;
        {
            const Attributes attributes(dispatch.Get());
            EXPECT_EQ(attributes->typekind, TKIND_DISPATCH);
            // The loader gives the flag for automation compatibility only in the other view.
            EXPECT_EQ(attributes->wTypeFlags & ~TYPEFLAG_FOLEAUTOMATION, Dual);
            EXPECT_EQ(GuidText(attributes->guid), id);
        }
        const auto slots = SlotsOf(dispatch);
        const Attributes attributes(slots.Get());
        EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
        EXPECT_EQ(attributes->wTypeFlags, Dual | TYPEFLAG_FOLEAUTOMATION);
        EXPECT_EQ(GuidText(attributes->guid), id);
        EXPECT_EQ(attributes->cVars, 0);
        ASSERT_EQ(attributes->cImplTypes, 1);
        HREFTYPE reference = 0;
        CComPtr<ITypeInfo> base;
        Require(slots->GetRefTypeOfImplType(0, &reference));
        Require(slots->GetRefTypeInfo(reference, Into(base)));
        EXPECT_EQ(NameOf(base.Get()), "IDispatch");
        Strings found;
        for (UINT i = 0; i < attributes->cFuncs; ++i) {
            found.push_back(MemberText(slots.Get(), i));
        }
        EXPECT_THAT(found, testing::ElementsAreArray(members));
    }

    void ExpectEnum(const char* name, const Strings& members) const {
        SCOPED_TRACE(name);
        const auto type = TypeOf(name);
        const Attributes attributes(type.Get());
        EXPECT_EQ(attributes->typekind, TKIND_ENUM);
        EXPECT_EQ(attributes->cbSizeInstance, 4U);
        Strings found;
        for (UINT i = 0; i < attributes->cVars; ++i) {
            VARDESC* variable = nullptr;
            Require(type->GetVarDesc(i, &variable));
            EXPECT_EQ(variable->varkind, VAR_CONST);
            EXPECT_EQ(variable->lpvarValue->vt, VT_I4);
            BSTR member = nullptr;
            UINT count = 0;
            Require(type->GetNames(variable->memid, &member, 1, &count));
            found.push_back(TakeText(member) + ' ' + std::to_string(variable->lpvarValue->lVal));
            type->ReleaseVarDesc(variable);
        }
        EXPECT_THAT(found, testing::ElementsAreArray(members));
    }

    CComPtr<ITypeLib> m_library;
};

TEST_F(TypeLibrary, Library_HasItsIdentifierVersionLocaleAndHelpString) {
    TLIBATTR* attributes = nullptr;
    Require(m_library->GetLibAttr(&attributes));
    EXPECT_EQ(GuidText(attributes->guid), "{EB8EB6CC-B0FC-4DA8-988D-B5737A0CE5B4}");
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    EXPECT_EQ(attributes->lcid, 0x409U);
    EXPECT_EQ(attributes->syskind, SYS_WIN64);
    m_library->ReleaseTLibAttr(attributes);

    BSTR name = nullptr;
    BSTR help = nullptr;
    Require(m_library->GetDocumentation(-1, &name, &help, nullptr, nullptr));
    EXPECT_EQ(TakeText(name), "IQuilletLib");
    EXPECT_EQ(TakeText(help), "IQuillet 1.0 Type Library");
}

TEST_F(TypeLibrary, Types_AreTheListedOnesAndNoOthers) {
    Strings found;
    for (UINT i = 0; i < m_library->GetTypeInfoCount(); ++i) {
        TYPEKIND kind = TKIND_MAX;
        CComPtr<ITypeInfo> type;
        Require(m_library->GetTypeInfoType(i, &kind));
        Require(m_library->GetTypeInfo(i, Into(type)));
        found.push_back((kind == TKIND_ENUM       ? "enum "
                         : kind == TKIND_DISPATCH ? "interface "
                         : kind == TKIND_COCLASS  ? "coclass "
                                                  : "other ") +
                        NameOf(type.Get()));
    }
    EXPECT_THAT(found,
                testing::UnorderedElementsAre(
                    "enum FieldType", "enum TableType", "enum FindMode", "interface IDbDatabase",
                    "interface IDbSource", "interface IDbTableDescr", "interface IDbFieldDescr",
                    "interface IDbTableData", "interface IDbTableRow", "interface IDbFieldValue",
                    "interface IDbHeader", "interface IDbProperties", "interface IDbTableInfo",
                    "coclass DbDatabase", "coclass DbSource", "coclass DbTableDescr", "coclass DbTableData",
                    "coclass DbFieldDescr", "coclass DbFieldValue", "coclass DbTableRow", "coclass DbHeader",
                    "coclass DbProperties", "coclass DbTableInfo"));
}

TEST_F(TypeLibrary, Enumerations_HaveTheirMembers) {
    ExpectEnum("FieldType",
               {"Empty 0", "Boolean 1", "Integer 2", "Long 3", "Float 4", "Double 5", "Text 6", "Binary 7"});
    ExpectEnum("TableType", {"None 0", "table 1", "Query 2"});
    ExpectEnum("FindMode", {"First 0", "Next 1", "Last 2", "Previous 3"});
}

TEST_F(TypeLibrary, DbDatabase_HasItsMembers) {
    ExpectInterface("IDbDatabase", "{A9822CC5-CDD8-47FC-B0BF-12FBAB9170B3}",
                    {
                        "7: 1 get TablesCount([out, retval] long*)",
                        "8: 2 get Source([out, retval] IDbSource**)",
                        "9: 3 TableName([in] long tableIdx, [out, retval] BSTR* pVal)",
                        "10: 4 TableDescrByIndex([in] long tableIdx, [out, retval] IDbTableDescr** pVal)",
                        "11: 5 TableDataByIndex([in] long tableIdx, [out, retval] IDbTableData** pVal)",
                        "12: 6 Save([in] BSTR xmlPath)",
                        "13: 7 get Header([out, retval] IDbHeader**)",
                        "14: 8 get Properties([out, retval] IDbProperties**)",
                        "15: 9 TableDataByName([in] BSTR TableName, [out, retval] IDbTableData** pVal)",
                        "16: 10 TableDescrByName([in] BSTR TableName, [out, retval] IDbTableDescr** pVal)",
                        "17: 11 TableData([in] VARIANT table, [out, retval] IDbTableData** pVal)",
                        "18: 12 TableDescr([in] VARIANT table, [out, retval] IDbTableDescr** pVal)",
                        "19: 13 Query([in] BSTR sql, [in, out] BSTR* pVal, [out, retval] VARIANT_BOOL* pRet)",
                        "20: 14 get ErrorLog([out, retval] BSTR*)",
                        "21: 15 TableInfoByName([in] BSTR TableName, [out, retval] IDbTableInfo** tableInfo)",
                        "22: 16 Create([in] BSTR path)",
                        "23: 17 CreateTable([in] BSTR TableName)",
                        "24: 18 DeleteTable([in] BSTR TableName)",
                        "25: 19 Find([in] FindMode mode, [in] BSTR TableName, [in] BSTR sqlwhere, [out, "
                        "retval] long* Row)",
                    });
}

TEST_F(TypeLibrary, DbSource_HasItsMembers) {
    ExpectInterface("IDbSource", "{3CD0BA7D-323E-4650-A0B0-7E8776DFFC5E}",
                    {
                        "7: 1 get FilePath([out, retval] BSTR*)",
                        "8: 1 put FilePath([in] BSTR)",
                        "9: 2 get SequentialAccess([out, retval] VARIANT_BOOL*)",
                        "10: 2 put SequentialAccess([in] VARIANT_BOOL)",
                        "11: 3 get IsXmlBased([out, retval] VARIANT_BOOL*)",
                        "12: 4 get ForceXML([out, retval] VARIANT_BOOL*)",
                        "13: 4 put ForceXML([in] VARIANT_BOOL)",
                    });
}

TEST_F(TypeLibrary, DbTableDescr_HasItsMembers) {
    ExpectInterface("IDbTableDescr", "{85F13465-5AD1-45FC-B5F3-5AAF821EC112}",
                    {
                        "7: 1 get FieldsCount([out, retval] long*)",
                        "8: 2 FieldByIndex([in] long fieldIdx, [out, retval] IDbFieldDescr** pVal)",
                        "9: 3 FieldByName([in] BSTR fieldName, [out, retval] IDbFieldDescr** pVal)",
                        "10: 4 CreateField([in] BSTR fieldName, [in] FieldType Type)",
                        "11: 5 DeleteField([in] long fieldIdx)",
                        "12: 6 CreateIndex([in] BSTR Name, [in] BSTR fields)",
                    });
}

TEST_F(TypeLibrary, DbFieldDescr_HasItsMembers_ThePutOfTypeFirst) {
    ExpectInterface("IDbFieldDescr", "{437288FD-3447-41E6-8CF2-1F9899B1169E}",
                    {
                        "7: 1 get Name([out, retval] BSTR*)",
                        "8: 2 put Type([in] FieldType)",
                        "9: 2 get Type([out, retval] FieldType*)",
                        "10: 3 get TypeName([out, retval] BSTR*)",
                        "11: 4 get Index([out, retval] long*)",
                    });
}

TEST_F(TypeLibrary, DbTableData_HasItsMembers) {
    ExpectInterface("IDbTableData", "{BE749381-99AC-4B07-A0DF-FE4D47308F8B}",
                    {
                        "7: 1 get RowsCount([out, retval] long*)",
                        "8: 2 AddRow([out, retval] IDbTableRow** pVal)",
                        "9: 3 Row([in] long rowIdx, [out, retval] IDbTableRow** pVal)",
                        "10: 4 RemoveRow([in] long rowIndex)",
                    });
}

TEST_F(TypeLibrary, DbTableRow_HasItsMembers) {
    ExpectInterface("IDbTableRow", "{612E2780-CA51-4762-ACB1-25F120959AE3}",
                    {
                        "7: 1 FieldByIndex([in] long fieldIdx, [out, retval] IDbFieldValue** pVal)",
                        "8: 2 get FieldsCount([out, retval] long*)",
                        "9: 3 FieldByName([in] BSTR fieldName, [out, retval] IDbFieldValue** pVal)",
                    });
}

TEST_F(TypeLibrary, DbFieldValue_HasItsMembers) {
    ExpectInterface("IDbFieldValue", "{32F9DDCB-766F-4615-ABC8-D0FF86ECA6B1}",
                    {
                        "7: 1 get Value([out, retval] VARIANT*)",
                        "8: 1 put Value([in] VARIANT)",
                        "9: 2 get Index([out, retval] long*)",
                    });
}

TEST_F(TypeLibrary, DbHeader_HasItsMembers) {
    ExpectInterface("IDbHeader", "{5AF77755-2DAE-44DB-93DE-41D3DB0F743A}",
                    {
                        "7: 1 get Category([out, retval] BSTR*)",
                        "8: 1 put Category([in] BSTR)",
                        "9: 2 get Symbol([out, retval] BSTR*)",
                        "10: 2 put Symbol([in] BSTR)",
                        "11: 3 get Title([out, retval] BSTR*)",
                        "12: 3 put Title([in] BSTR)",
                        "13: 4 get CatalogType([out, retval] BSTR*)",
                        "14: 4 put CatalogType([in] BSTR)",
                        "15: 5 get UnitsType([out, retval] BSTR*)",
                        "16: 5 put UnitsType([in] BSTR)",
                        "17: 6 get Version([out, retval] BSTR*)",
                        "18: 6 put Version([in] BSTR)",
                    });
}

TEST_F(TypeLibrary, DbProperties_HasItsMembers) {
    ExpectInterface("IDbProperties", "{80DA0A9A-2B7F-434F-8A70-127BDA62DD1F}",
                    {
                        "7: 1 get Units([out, retval] BSTR*)",
                        "8: 1 put Units([in] BSTR)",
                        "9: 2 get Material([out, retval] BSTR*)",
                        "10: 2 put Material([in] BSTR)",
                        "11: 3 get UnitLong([out, retval] BSTR*)",
                        "12: 3 put UnitLong([in] BSTR)",
                        "13: 4 get UnitSect([out, retval] BSTR*)",
                        "14: 4 put UnitSect([in] BSTR)",
                        "15: 5 get UnitWeight([out, retval] BSTR*)",
                        "16: 5 put UnitWeight([in] BSTR)",
                    });
}

TEST_F(TypeLibrary, DbTableInfo_HasItsMembers) {
    ExpectInterface("IDbTableInfo", "{8F6F8908-EB9B-4306-8FEA-A24DCEED44A9}",
                    {
                        "7: 1 get sql([out, retval] BSTR*)",
                        "8: 2 get Type([out, retval] TableType*)",
                    });
}

struct ClassEntry {
    const char* m_name;
    const char* m_id;
    bool m_creatable;
};

class TypeLibraryClass : public TypeLibrary, public testing::WithParamInterface<ClassEntry> {};

TEST_P(TypeLibraryClass, ImplementsTheInterfaceOfItsStemAndNothingElse) {
    const ClassEntry& entry = GetParam();
    const auto type = TypeOf(entry.m_name);
    const Attributes attributes(type.Get());
    EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
    EXPECT_EQ(GuidText(attributes->guid), entry.m_id);
    EXPECT_EQ(attributes->wTypeFlags, entry.m_creatable ? TYPEFLAG_FCANCREATE : 0);
    ASSERT_EQ(attributes->cImplTypes, 1);
    int flags = 0;
    HREFTYPE reference = 0;
    CComPtr<ITypeInfo> implemented;
    Require(type->GetImplTypeFlags(0, &flags));
    Require(type->GetRefTypeOfImplType(0, &reference));
    Require(type->GetRefTypeInfo(reference, Into(implemented)));
    EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
    EXPECT_EQ(NameOf(implemented.Get()), std::string("I") + entry.m_name);
}

INSTANTIATE_TEST_SUITE_P(
    Each, TypeLibraryClass,
    testing::Values(ClassEntry{"DbDatabase", "{D9BA1988-7E9D-4FFE-AF8A-E7D8F522A7C7}", true},
                    ClassEntry{"DbSource", "{BC8BD44C-4FDD-438E-8B3B-876E97EE5E05}", false},
                    ClassEntry{"DbTableDescr", "{7E15803C-1511-4446-BF01-98C07D276878}", false},
                    ClassEntry{"DbTableData", "{737F686B-360D-441F-ADE6-37B2CEB96816}", false},
                    ClassEntry{"DbFieldDescr", "{5D710155-5539-407C-80C5-5012E79089F6}", false},
                    ClassEntry{"DbFieldValue", "{B88E804A-6884-4006-8697-3876FE307486}", false},
                    ClassEntry{"DbTableRow", "{26BF8CDF-EF9A-4F96-B0BA-A62F0CD4CB1F}", true},
                    ClassEntry{"DbHeader", "{742E98B0-B3EF-43A6-9A10-8EA954976EE9}", true},
                    ClassEntry{"DbProperties", "{BAC243B2-253F-4A8F-AE01-379489FBA37D}", true},
                    ClassEntry{"DbTableInfo", "{381F4145-B653-463C-AFF4-5BB7A4216EC2}", true}),
    [](const auto& entry) { return std::string(entry.param.m_name); });

}  // namespace
