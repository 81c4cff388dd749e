// Incorrect calls by name.
#include <array>

#include "Server.h"

namespace {

using namespace quillet::test;

using Invoking = ServerTest;

constexpr DISPID TableNameId = 3;
constexpr DISPID QueryId = 13;
constexpr DISPID FindId = 19;

HRESULT Invoke(const CComPtr<IDispatch>& object, DISPID member, DISPPARAMS parameters,
               WORD flags = DISPATCH_METHOD, UINT* wrong = nullptr) {
    CComVariant result;
    return object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &result, nullptr, wrong);
}

TEST_F(Invoking, NoArgumentsWhereSomeAreCounted_IsRefused) {
    EXPECT_EQ(Invoke(m_catalog, TableNameId, {nullptr, nullptr, 1, 0}), E_INVALIDARG);
    CComVariant index(2);
    EXPECT_EQ(Invoke(m_catalog, TableNameId, {&index, nullptr, 1, 1}), E_INVALIDARG);
    DISPID name = 0;
    EXPECT_EQ(Invoke(m_catalog, TableNameId, {&index, &name, 0, 1}), DISP_E_BADPARAMCOUNT);
}

TEST_F(Invoking, ArgumentOfAnUnknownName_IsRefused) {
    CComVariant index(2);
    for (DISPID name : {DISPID{1}, DISPID{-1}, DISPID{1000}, DISPID{DISPID_PROPERTYPUT}}) {
        EXPECT_NE(Invoke(m_catalog, TableNameId, {&index, &name, 1, 1}), S_OK) << name;
    }
    DISPID name = 0;
    EXPECT_EQ(Invoke(m_catalog, TableNameId, {&index, &name, 1, 1}), S_OK);
}

TEST_F(Invoking, NullBehindAReference_IsRefused) {
    CComVariant inner;
    inner.vt = VT_BYREF | VT_BSTR;
    inner.pbstrVal = nullptr;
    VARIANTARG reference = inner;
    VARIANTARG ofReference{};
    ofReference.vt = VT_BYREF | VT_VARIANT;
    ofReference.pvarVal = &inner;
    const auto contents = Contents("T");
    constexpr DISPID RemoveRowId = 4;
    const CComVariant sql("select t from T where n = 1");
    std::array<VARIANTARG, 2> arguments = {reference, sql};
    EXPECT_EQ(Invoke(m_catalog, QueryId, {arguments.data(), nullptr, 2, 0}), DISP_E_BADVARTYPE);
    EXPECT_EQ(Invoke(contents, RemoveRowId, {&ofReference, nullptr, 1, 0}), DISP_E_BADVARTYPE);
    for (const VARTYPE type : {VT_VARIANT, VT_I4, VT_DISPATCH}) {
        reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
        EXPECT_EQ(Invoke(contents, RemoveRowId, {&reference, nullptr, 1, 0}), DISP_E_BADVARTYPE) << type;
    }
    EXPECT_EQ(ResultText(contents, "RowsCount"), "3");
}

TEST_F(Invoking, ReferenceOfAnotherType_IsReadAndStaysAsItIs) {
    LONG number = 5;
    std::array<CComVariant, 2> arguments = {CComVariant(), CComVariant("select t from T where n = 1")};
    arguments[0].vt = VT_BYREF | VT_I4;
    arguments[0].plVal = &number;
    EXPECT_EQ(Invoke(m_catalog, QueryId, {arguments.data(), nullptr, 2, 0}), S_OK);
    EXPECT_EQ(number, 5);
}

TEST_F(Invoking, MoreArgumentsThanPlaces_AreRefused) {
    std::array<CComVariant, 2> arguments = {CComVariant("select t from T where n = 1"), CComVariant("name")};
    // Both are the first one.
    DISPID name = 0;
    EXPECT_EQ(Invoke(m_catalog, QueryId, {arguments.data(), &name, 2, 1}), DISP_E_PARAMNOTFOUND);
    // The second may be left out, but not be another.
    name = 7;
    EXPECT_EQ(Invoke(m_catalog, QueryId, {arguments.data(), &name, 2, 1}), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(ResultText(m_catalog, "TablesCount"), "3");
}

TEST_F(Invoking, TypeThatNoValueHas_IsRefused) {
    CComVariant reference;
    CComVariant number(1);
    reference.vt = VT_BYREF | VT_VOID;
    reference.byref = &number.lVal;
    VARIANTARG impossible = CComVariant(1);
    impossible.vt = VT_LPWSTR;
    CComVariant ofImpossible;
    ofImpossible.vt = VT_BYREF | VT_VARIANT;
    ofImpossible.pvarVal = &impossible;
    const auto contents = Contents("T");
    const auto cell = ObjectFrom(Row("T", 0), "FieldByName", {"t"});
    constexpr DISPID RemoveRowId = 4;
    for (VARIANTARG argument : {VARIANTARG(reference), impossible, VARIANTARG(ofImpossible)}) {
        EXPECT_EQ(Invoke(contents, RemoveRowId, {&argument, nullptr, 1, 0}), DISP_E_BADVARTYPE)
            << argument.vt;
        EXPECT_EQ(static_cast<IDbFieldValue*>(cell.Get())->put_Value(argument), DISP_E_BADVARTYPE)
            << argument.vt;
    }
    EXPECT_EQ(ResultText(contents, "RowsCount"), "3");
    EXPECT_EQ(ResultText(cell, "Value"), "a");
}

TEST_F(Invoking, QueryThatFails_LeavesTheVariableAsItIs) {
    for (const CComVariant& before : {CComVariant(), NullVariant(), CComVariant(5), CComVariant("before")}) {
        CComVariant variable = before;
        CComVariant reference;
        reference.vt = VT_BYREF | VT_VARIANT;
        reference.pvarVal = &variable;
        EXPECT_EQ(ResultText(m_catalog, "Query", {"nonsense", reference}), "0");
        EXPECT_EQ(variable.vt, before.vt);
        EXPECT_EQ(variable, before);
    }
}

TEST_F(Invoking, VariableThatStandsForAText_ReceivesTheNameThere) {
    BSTR text = SysAllocString(L"before");
    CComVariant variable;
    variable.vt = VT_BYREF | VT_BSTR;
    variable.pbstrVal = &text;
    CComVariant reference;
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &variable;
    EXPECT_EQ(ResultText(m_catalog, "Query", {"select t from T where n = 1", reference}), "-1");
    EXPECT_EQ(variable.vt, VT_BYREF | VT_BSTR);
    EXPECT_EQ(CString(text).ToUtf8().substr(0, 6), "Query_");
    SysFreeString(text);
}

TEST_F(Invoking, WrongArgument_IsNamedByItsPosition) {
    std::array<CComVariant, 3> arguments = {CComVariant("n > 1"), NullVariant(), CComVariant(0)};
    UINT wrong = 99;
    EXPECT_EQ(Invoke(m_catalog, FindId, {arguments.data(), nullptr, 3, 0}, DISPATCH_METHOD, &wrong),
              DISP_E_TYPEMISMATCH);
    EXPECT_EQ(wrong, 1U);
}

TEST_F(Invoking, ValueIsPutAsAReference_IsPutAllTheSame) {
    const auto cell = ObjectFrom(Row("T", 0), "FieldByName", {"t"});
    CComVariant value("by reference");
    DISPID put = DISPID_PROPERTYPUT;
    EXPECT_EQ(Invoke(cell, 1, {&value, &put, 1, 1}, DISPATCH_PROPERTYPUTREF), S_OK);
    EXPECT_EQ(ResultText(cell, "Value"), "by reference");
    // Hosts that don't name it mean it too.
    value = CComVariant("unnamed");
    EXPECT_EQ(Invoke(cell, 1, {&value, nullptr, 1, 0}, DISPATCH_PROPERTYPUT), S_OK);
    EXPECT_EQ(ResultText(cell, "Value"), "unnamed");
}

TEST_F(Invoking, NamesWithoutAPlace_AreRefused) {
    DISPID id = DISPID_UNKNOWN;
    quillet::WideString text(CString("TableName").View());
    LPOLESTR name = text.data();
    EXPECT_EQ(m_catalog->GetIDsOfNames(IID_NULL, nullptr, 1, LOCALE_USER_DEFAULT, &id), E_INVALIDARG);
    EXPECT_EQ(m_catalog->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, nullptr), E_INVALIDARG);
    EXPECT_EQ(m_catalog->GetIDsOfNames(IID_NULL, &name, 0, LOCALE_USER_DEFAULT, &id), E_INVALIDARG);
    std::array<LPOLESTR, 2> names = {name, nullptr};
    std::array<DISPID, 2> ids{};
    EXPECT_EQ(m_catalog->GetIDsOfNames(IID_NULL, names.data(), 2, LOCALE_USER_DEFAULT, ids.data()),
              E_INVALIDARG);
    EXPECT_EQ(m_catalog->GetIDsOfNames(IID_IUnknown, &name, 1, LOCALE_USER_DEFAULT, &id),
              DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(m_catalog->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    EXPECT_EQ(id, TableNameId);
    EXPECT_EQ(m_catalog->GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(m_catalog->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr), E_POINTER);
}

TEST_F(Invoking, FailureWithoutARecordForIt_IsStillAFailure) {
    CComVariant path("Z:\\none.xml");
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&path, &put, 1, 1};
    EXPECT_EQ(ObjectFrom(m_catalog, "Source")
                  ->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr,
                           nullptr, nullptr),
              DISP_E_EXCEPTION);
}

}  // namespace
