// The automation objects through their interfaces, as programs call them: edge cases, failures, and what they
// accept from hosts that call by name.
#include <array>
#include <limits>

#include "AutomationHelpers.h"

namespace {

using namespace quillet::test;

VARIANTARG ReferenceTo(VARIANT& variable) {
    VARIANTARG reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &variable;
    return reference;
}

class Objects : public AutomationTest {
protected:
    // Keeps the catalog from saving what a test changed.
    ~Objects() override { SaveElsewhere(m_catalog.Get()); }

    CComPtr<IDbTableData> Rows(const char* table = "IPE") const {
        return ObjectOf(m_catalog.Get(), &IDbDatabase::TableDataByName, Bstr(table));
    }
    CComPtr<IDbTableDescr> Fields(const char* table = "IPE") const {
        return ObjectOf(m_catalog.Get(), &IDbDatabase::TableDescrByName, Bstr(table));
    }
    static std::string CellOf(const CComPtr<IDbTableRow>& row, const char* field) {
        const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByName, Bstr(field));
        return AnswerOf(value.Get(), &IDbFieldValue::get_Value);
    }
    long Find(FindMode mode, const char* table, const char* where) const {
        long row = -2;
        EXPECT_EQ(m_catalog->Find(mode, Bstr(table), Bstr(where), &row), S_OK);
        return row;
    }

    const CComPtr<IDbDatabase> m_catalog = Opened();
};

// ---- Edge cases

TEST_F(Objects, TableName_MinusOneAndTheCount_AreNullStringsWithSuccess) {
    for (const long index : {-1L, 8L, std::numeric_limits<long>::min(), std::numeric_limits<long>::max()}) {
        EXPECT_EQ(AnswerOf(m_catalog.Get(), &IDbDatabase::TableName, index), "null") << index;
    }
    EXPECT_EQ(AnswerOf(m_catalog.Get(), &IDbDatabase::TableName, 0L), "'Header'");
    EXPECT_EQ(AnswerOf(m_catalog.Get(), &IDbDatabase::TableName, 7L), "'SHS'");
}

TEST_F(Objects, Row_TwoIndexes_GiveOnePointerThatShowsTheSecond) {
    const auto rows = Rows();
    const auto first = ObjectOf(rows.Get(), &IDbTableData::Row, 0L);
    EXPECT_EQ(CellOf(first, "name"), "8:IPE 80");
    const auto second = ObjectOf(rows.Get(), &IDbTableData::Row, 1L);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(CellOf(first, "name"), "8:IPE 100");
    const auto added = ObjectOf(rows.Get(), &IDbTableData::AddRow);
    EXPECT_EQ(added.Get(), first.Get());
}

TEST_F(Objects, Find_NextAfterFirst_ContinuesAndAnotherTableBeginsAnew) {
    EXPECT_EQ(Find(FindMode::First, "IPE", "h > 450"), 15);
    EXPECT_EQ(Find(FindMode::Next, "IPE", "h > 450"), 16);
    EXPECT_EQ(Find(FindMode::First, "HEA", "h > 900"), 23);
    EXPECT_EQ(Find(FindMode::Previous, "HEA", "h > 800"), 22);
    // After the first row, not after the row found last.
    EXPECT_EQ(Find(FindMode::Next, "IPE", "h > 450"), 15);
    EXPECT_EQ(Find(FindMode::Last, "IPE", "h > 450"), 17);
    EXPECT_EQ(Find(FindMode::Next, "IPE", "h > 450"), -1);
}

TEST_F(Objects, TypePut_Of8_LeavesTheTypeAndSucceeds) {
    const auto field = ObjectOf(Fields().Get(), &IDbTableDescr::FieldByIndex, 1L);
    for (const int number : {8, -1, 255, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(field->put_Type(static_cast<FieldType>(number)), S_OK);
        EXPECT_EQ(AnswerOf(field.Get(), &IDbFieldDescr::get_Type), "field type 5");
    }
    for (int number = 0; number < 8; ++number) {
        EXPECT_EQ(field->put_Type(static_cast<FieldType>(number)), S_OK);
        // A 16-bit field holds 32-bit values, and reports that type.
        EXPECT_EQ(AnswerOf(field.Get(), &IDbFieldDescr::get_Type),
                  "field type " + std::to_string(number == FieldType::Integer ? 3 : number));
    }
}

TEST_F(Objects, Row_OutOfRange_ShowsNothingAndFailsSoftly) {
    const auto rows = Rows();
    for (const long index : {-1L, 18L, std::numeric_limits<long>::max()}) {
        const auto row = ObjectOf(rows.Get(), &IDbTableData::Row, index);
        ASSERT_TRUE(row) << index;
        long count = 0;
        EXPECT_TRUE(FAILED(row->get_FieldsCount(&count))) << index;
        CComPtr<IDbFieldValue> value;
        EXPECT_TRUE(FAILED(row->FieldByIndex(0, Into(value)))) << index;
        EXPECT_TRUE(FAILED(row->FieldByName(Bstr("h"), Into(value)))) << index;
        EXPECT_FALSE(value);
        EXPECT_EQ(AnswerOf(ObjectOf(rows.Get(), &IDbTableData::Row, 0L).Get(), &IDbTableRow::get_FieldsCount),
                  "16");
    }
    EXPECT_EQ(rows->RemoveRow(-1), S_OK);
    EXPECT_EQ(rows->RemoveRow(18), S_OK);
    EXPECT_EQ(AnswerOf(rows.Get(), &IDbTableData::get_RowsCount), "18");
}

TEST_F(Objects, FieldOfAStructure_OutOfRange_IsANullInterface) {
    const auto fields = Fields();
    const auto field = ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, 1L);
    for (const long index : {-1L, 16L, std::numeric_limits<long>::max()}) {
        EXPECT_FALSE(ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, index)) << index;
        // The object given out before now shows nothing.
        EXPECT_EQ(AnswerOf(field.Get(), &IDbFieldDescr::get_Index).substr(0, 6), "failed");
        EXPECT_EQ(ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, 1L).Get(), field.Get());
    }
    EXPECT_FALSE(ObjectOf(fields.Get(), &IDbTableDescr::FieldByName, Bstr("none")));
    EXPECT_EQ(fields->DeleteField(-1), S_OK);
    EXPECT_EQ(fields->DeleteField(16), S_OK);
    EXPECT_EQ(AnswerOf(fields.Get(), &IDbTableDescr::get_FieldsCount), "16");
}

TEST_F(Objects, Booleans_GoOutAsMinusOneAndZero) {
    const auto source = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Source);
    VARIANT_BOOL boolean = 7;
    EXPECT_EQ(source->get_IsXmlBased(&boolean), S_OK);
    EXPECT_EQ(boolean, -1);
    EXPECT_EQ(source->get_SequentialAccess(&boolean), S_OK);
    EXPECT_EQ(boolean, 0);
    // Any nonzero value is true.
    EXPECT_EQ(source->put_SequentialAccess(1), S_OK);
    EXPECT_EQ(source->get_SequentialAccess(&boolean), S_OK);
    EXPECT_EQ(boolean, -1);
    Bstr name("");
    EXPECT_EQ(m_catalog->Query(Bstr("select h from IPE where h > 1"), name.Address(), &boolean), S_OK);
    EXPECT_EQ(boolean, -1);
    EXPECT_EQ(m_catalog->Query(Bstr("nonsense"), name.Address(), &boolean), S_OK);
    EXPECT_EQ(boolean, 0);
}

TEST_F(Objects, SequentialAccess_RowsOfATableAreReadWhenTheyAreAskedFor) {
    const auto source = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Source);
    EXPECT_EQ(source->put_SequentialAccess(VARIANT_TRUE), S_OK);
    EXPECT_EQ(AnswerOf(Rows("HEB").Get(), &IDbTableData::get_RowsCount), "24");
    EXPECT_EQ(CellOf(ObjectOf(Rows("SHS").Get(), &IDbTableData::Row, 92L), "name").substr(0, 5), "8:SHS");
    EXPECT_EQ(AnswerOf(Rows("IPE").Get(), &IDbTableData::get_RowsCount), "18");
}

TEST_F(Objects, HeaderAndProperties_AreOneObjectEach) {
    const auto header = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Header);
    EXPECT_EQ(ObjectOf(m_catalog.Get(), &IDbDatabase::get_Header).Get(), header.Get());
    const auto properties = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Properties);
    EXPECT_EQ(ObjectOf(m_catalog.Get(), &IDbDatabase::get_Properties).Get(), properties.Get());
    EXPECT_EQ(properties->put_Material(Bstr("S460")), S_OK);
    EXPECT_EQ(CellOf(ObjectOf(Rows("Properties").Get(), &IDbTableData::Row, 0L), "material"), "8:S460");
}

TEST_F(Objects, Value_IsConvertedToTheTypeOfTheCell_OrKeptAsItWasGiven) {
    const auto row = ObjectOf(Rows().Get(), &IDbTableData::Row, 0L);
    const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 1L);
    const std::pair<CComVariant, const char*> cases[] = {
        {Short(7), "5:7"},
        {CComVariant(-7L), "5:-7"},
        {CComVariant(1.5F), "5:1.5"},
        {CComVariant("2.25"), "5:2.25"},
        {CComVariant(true), "5:-1"},
        {CComVariant(), "5:0"},
        {CComVariant("text"), "8:text"},
        {CComVariant(2.5), "8:2.5"},
        {NullVariant(), "1:no text"},
        {CComVariant(2.5), "5:2.5"},
    };
    for (const auto& [given, expected] : cases) {
        EXPECT_EQ(value->put_Value(given), S_OK);
        EXPECT_EQ(AnswerOf(value.Get(), &IDbFieldValue::get_Value), expected);
        CComVariant variable = given;
        EXPECT_EQ(value->put_Value(ReferenceTo(variable)), S_OK);
    }
}

TEST_F(Objects, Value_OfBytes_ComesBack) {
    const auto row = ObjectOf(Rows().Get(), &IDbTableData::Row, 0L);
    const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 1L);
    EXPECT_EQ(value->put_Value(ByteArray("bytes")), S_OK);
    CComVariant back;
    EXPECT_EQ(value->get_Value(&back), S_OK);
    EXPECT_EQ(ContentOf(back), (ArrayContent{0, "bytes"}));
}

TEST_F(Objects, Value_OfAnObject_IsRefused) {
    const auto row = ObjectOf(Rows().Get(), &IDbTableData::Row, 0L);
    const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 1L);
    EXPECT_TRUE(FAILED(value->put_Value(CComVariant(static_cast<IDispatch*>(m_catalog.Get())))));
    EXPECT_EQ(AnswerOf(value.Get(), &IDbFieldValue::get_Value), "5:80");
}

TEST_F(Objects, ObjectsMadeByThemselves_ShowNothingAndFailSoftly) {
    const auto row = Made<IDbTableRow>(__uuidof(DbTableRow));
    const auto header = Made<IDbHeader>(__uuidof(DbHeader));
    const auto properties = Made<IDbProperties>(__uuidof(DbProperties));
    const auto info = Made<IDbTableInfo>(__uuidof(DbTableInfo));
    const Bstr text("text");
    CComPtr<IDbFieldValue> value;
    for (const std::string& answer :
         {AnswerOf(row.Get(), &IDbTableRow::get_FieldsCount), ResultText(row->FieldByIndex(0, Into(value))),
          ResultText(row->FieldByName(text, Into(value))), AnswerOf(header.Get(), &IDbHeader::get_Title),
          ResultText(header->put_Title(text)), AnswerOf(properties.Get(), &IDbProperties::get_Material),
          ResultText(properties->put_Units(text)), AnswerOf(info.Get(), &IDbTableInfo::get_sql),
          AnswerOf(info.Get(), &IDbTableInfo::get_Type)}) {
        EXPECT_EQ(answer.substr(0, 6), "failed") << answer;
    }
    EXPECT_FALSE(value);
}

TEST_F(Objects, ObjectsThatOnlyParentsHandOut_AreNotMadeByClients) {
    for (const CLSID& classId : {__uuidof(DbSource), __uuidof(DbTableDescr), __uuidof(DbTableData),
                                 __uuidof(DbFieldDescr), __uuidof(DbFieldValue)}) {
        void* made = nullptr;
        EXPECT_EQ(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made),
                  CLASS_E_CLASSNOTAVAILABLE);
        EXPECT_EQ(made, nullptr);
    }
}

// ---- Invalid calls

template <typename Interface, typename... Parameters, typename... Arguments>
void ExpectRefused(Interface* object, HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...),
                   const Arguments&... arguments) {
    EXPECT_EQ((object->*member)(arguments..., nullptr), E_POINTER);
}

TEST_F(Objects, NullForAResult_IsRefusedByEveryMember) {
    const auto source = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Source);
    const auto fields = Fields();
    const auto field = ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, 0L);
    const auto rows = Rows();
    const auto row = ObjectOf(rows.Get(), &IDbTableData::Row, 0L);
    const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 0L);
    const auto header = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Header);
    const auto properties = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Properties);
    const auto info = ObjectOf(m_catalog.Get(), &IDbDatabase::TableInfoByName, Bstr("IPE"));
    const Bstr name("IPE");
    Bstr answer("");

    ExpectRefused(m_catalog.Get(), &IDbDatabase::get_TablesCount);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::get_Source);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableName, 0L);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableDescrByIndex, 0L);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableDataByIndex, 0L);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::get_Header);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::get_Properties);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableDataByName, name);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableDescrByName, name);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableData, CComVariant(0L));
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableDescr, CComVariant(0L));
    ExpectRefused(m_catalog.Get(), &IDbDatabase::Query, name, answer.Address());
    ExpectRefused(m_catalog.Get(), &IDbDatabase::get_ErrorLog);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::TableInfoByName, name);
    ExpectRefused(m_catalog.Get(), &IDbDatabase::Find, FindMode::First, name, name);
    VARIANT_BOOL isAnswered = VARIANT_FALSE;
    EXPECT_EQ(m_catalog->Query(name, nullptr, &isAnswered), E_POINTER);
    ExpectRefused(source.Get(), &IDbSource::get_FilePath);
    ExpectRefused(source.Get(), &IDbSource::get_SequentialAccess);
    ExpectRefused(source.Get(), &IDbSource::get_IsXmlBased);
    ExpectRefused(source.Get(), &IDbSource::get_ForceXML);
    ExpectRefused(fields.Get(), &IDbTableDescr::get_FieldsCount);
    ExpectRefused(fields.Get(), &IDbTableDescr::FieldByIndex, 0L);
    ExpectRefused(fields.Get(), &IDbTableDescr::FieldByName, name);
    ExpectRefused(field.Get(), &IDbFieldDescr::get_Name);
    ExpectRefused(field.Get(), &IDbFieldDescr::get_Type);
    ExpectRefused(field.Get(), &IDbFieldDescr::get_TypeName);
    ExpectRefused(field.Get(), &IDbFieldDescr::get_Index);
    ExpectRefused(rows.Get(), &IDbTableData::get_RowsCount);
    ExpectRefused(rows.Get(), &IDbTableData::AddRow);
    ExpectRefused(rows.Get(), &IDbTableData::Row, 0L);
    ExpectRefused(row.Get(), &IDbTableRow::FieldByIndex, 0L);
    ExpectRefused(row.Get(), &IDbTableRow::get_FieldsCount);
    ExpectRefused(row.Get(), &IDbTableRow::FieldByName, name);
    ExpectRefused(value.Get(), &IDbFieldValue::get_Value);
    ExpectRefused(value.Get(), &IDbFieldValue::get_Index);
    for (const auto member :
         {&IDbHeader::get_Category, &IDbHeader::get_Symbol, &IDbHeader::get_Title,
          &IDbHeader::get_CatalogType, &IDbHeader::get_UnitsType, &IDbHeader::get_Version}) {
        ExpectRefused(header.Get(), member);
    }
    for (const auto member :
         {&IDbProperties::get_Units, &IDbProperties::get_Material, &IDbProperties::get_UnitLong,
          &IDbProperties::get_UnitSect, &IDbProperties::get_UnitWeight}) {
        ExpectRefused(properties.Get(), member);
    }
    ExpectRefused(info.Get(), &IDbTableInfo::get_sql);
    ExpectRefused(info.Get(), &IDbTableInfo::get_Type);
    EXPECT_EQ(AnswerOf(rows.Get(), &IDbTableData::get_RowsCount), "18");
}

TEST_F(Objects, NullForAText_IsAnEmptyText) {
    EXPECT_FALSE(ObjectOf(m_catalog.Get(), &IDbDatabase::TableDataByName, nullptr));
    EXPECT_FALSE(ObjectOf(m_catalog.Get(), &IDbDatabase::TableDescrByName, nullptr));
    EXPECT_FALSE(ObjectOf(m_catalog.Get(), &IDbDatabase::TableInfoByName, nullptr));
    EXPECT_FALSE(ObjectOf(Fields().Get(), &IDbTableDescr::FieldByName, nullptr));
    Bstr answer("");
    EXPECT_EQ(AnswerOf(m_catalog.Get(), &IDbDatabase::Query, nullptr, answer.Address()), "false");
    EXPECT_EQ(m_catalog->DeleteTable(nullptr), S_OK);
    EXPECT_EQ(m_catalog->Save(nullptr), S_OK);
    EXPECT_EQ(AnswerOf(m_catalog.Get(), &IDbDatabase::get_TablesCount), "8");
    const auto header = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Header);
    EXPECT_EQ(header->put_Title(nullptr), S_OK);
    EXPECT_EQ(AnswerOf(header.Get(), &IDbHeader::get_Title), "''");
}

TEST_F(Objects, ExceptionOfTheModel_IsAFailureWithItsMessage) {
    const auto source = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Source);
    SetErrorInfo(0, nullptr);
    EXPECT_TRUE(FAILED(source->put_FilePath(Bstr("none.xml"))));
    CComPtr<IErrorInfo> error;
    ASSERT_EQ(GetErrorInfo(0, Into(error)), S_OK);
    BSTR text = nullptr;
    EXPECT_EQ(error->GetDescription(&text), S_OK);
    const std::string description = TakeText(text);
    EXPECT_EQ(description.substr(0, 32), "Quillet exception thrown\r\nFile: ");
    EXPECT_NE(description.find("\r\nMessage: Invalid source file 'none.xml'"), std::string::npos)
        << description;
    GUID id{};
    EXPECT_EQ(error->GetGUID(&id), S_OK);
    EXPECT_EQ(GuidText(id), GuidText(__uuidof(IDbSource)));
    EXPECT_EQ(error->GetSource(&text), S_OK);
    EXPECT_NE(TakeText(text), "");
}

TEST_F(Objects, ErrorInformation_IsPromisedForTheOwnInterfaceOnly) {
    const auto expectPromised = [](IUnknown* object, REFIID id) {
        const auto support = As<ISupportErrorInfo>(object);
        ASSERT_TRUE(support);
        EXPECT_EQ(support->InterfaceSupportsErrorInfo(id), S_OK) << GuidText(id);
        EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IPersist), S_FALSE) << GuidText(id);
    };
    expectPromised(m_catalog.Get(), __uuidof(IDbDatabase));
    expectPromised(ObjectOf(m_catalog.Get(), &IDbDatabase::get_Source).Get(), __uuidof(IDbSource));
    expectPromised(ObjectOf(m_catalog.Get(), &IDbDatabase::get_Header).Get(), __uuidof(IDbHeader));
    expectPromised(ObjectOf(m_catalog.Get(), &IDbDatabase::get_Properties).Get(), __uuidof(IDbProperties));
    expectPromised(Fields().Get(), __uuidof(IDbTableDescr));
    expectPromised(ObjectOf(Fields().Get(), &IDbTableDescr::FieldByIndex, 0L).Get(), __uuidof(IDbFieldDescr));
    expectPromised(Rows().Get(), __uuidof(IDbTableData));
    const auto row = ObjectOf(Rows().Get(), &IDbTableData::Row, 0L);
    expectPromised(row.Get(), __uuidof(IDbTableRow));
    expectPromised(ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 0L).Get(), __uuidof(IDbFieldValue));
    expectPromised(ObjectOf(m_catalog.Get(), &IDbDatabase::TableInfoByName, Bstr("IPE")).Get(),
                   __uuidof(IDbTableInfo));
}

// ---- Calls by name

// A call by number; arguments in the order of the parameters.
struct Call {
    HRESULT m_result = S_OK;
    CComVariant m_value;
    UINT m_wrong = 99;
};

Call Invoked(IDispatch* object, DISPID member, std::vector<VARIANTARG> arguments,
             WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
    std::vector<VARIANTARG> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    Call call;
    call.m_result = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &call.m_value,
                                   nullptr, &call.m_wrong);
    return call;
}

constexpr DISPID TableNameId = 3;
constexpr DISPID QueryId = 13;

VARIANTARG Missing() {
    VARIANTARG missing;
    VariantInit(&missing);
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    return missing;
}

TEST_F(Objects, Invoke_IndexOfAnyNumberTypeOrText_IsConverted) {
    for (const CComVariant& index :
         {CComVariant(static_cast<signed char>(2)), CComVariant(static_cast<BYTE>(2)), Short(2),
          CComVariant(static_cast<USHORT>(2)), CComVariant(2L), CComVariant(2U), CComVariant(2LL),
          CComVariant(2ULL), CComVariant(2.0F), CComVariant(2.0), CComVariant(2.4), CComVariant("2"),
          CComVariant(" 2 ")}) {
        const Call call = Invoked(m_catalog.Get(), TableNameId, {index});
        EXPECT_EQ(call.m_result, S_OK) << index.vt;
        EXPECT_EQ(TextOf(call.m_value), "IPE") << index.vt;
        CComVariant variable = index;
        EXPECT_EQ(TextOf(Invoked(m_catalog.Get(), TableNameId, {ReferenceTo(variable)}).m_value), "IPE")
            << index.vt;
        // A reference to the number itself.
        VARIANTARG reference = index;
        if (index.vt != VT_BSTR) {
            reference.vt = static_cast<VARTYPE>(index.vt | VT_BYREF);
            reference.byref = &variable.llVal;
            EXPECT_EQ(TextOf(Invoked(m_catalog.Get(), TableNameId, {reference}).m_value), "IPE") << index.vt;
        }
    }
}

TEST_F(Objects, Invoke_ArgumentThatCantBeTranslated_FailsAndSaysWhich) {
    EXPECT_EQ(Invoked(m_catalog.Get(), TableNameId, {CComVariant("two")}).m_result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Invoked(m_catalog.Get(), TableNameId, {CComVariant(1e10)}).m_result, DISP_E_OVERFLOW);
    EXPECT_EQ(Invoked(m_catalog.Get(), TableNameId, {ByteArray("2")}).m_result, DISP_E_TYPEMISMATCH);
    const Call call =
        Invoked(m_catalog.Get(), 19, {CComVariant("first"), CComVariant("IPE"), CComVariant("h > 1")});
    EXPECT_EQ(call.m_result, DISP_E_TYPEMISMATCH);
    // Arguments are counted from the last.
    EXPECT_EQ(call.m_wrong, 2U);
}

TEST_F(Objects, Invoke_TooFewOrTooManyArguments_Fails) {
    EXPECT_EQ(Invoked(m_catalog.Get(), TableNameId, {}).m_result, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(Invoked(m_catalog.Get(), TableNameId, {CComVariant(1L), CComVariant(2L)}).m_result,
              DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(Invoked(m_catalog.Get(), TableNameId, {Missing()}).m_result, DISP_E_PARAMNOTOPTIONAL);
}

TEST_F(Objects, Invoke_UnknownMemberOrKind_Fails) {
    EXPECT_EQ(Invoked(m_catalog.Get(), 20, {}).m_result, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Invoked(m_catalog.Get(), DISPID_VALUE, {}).m_result, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Invoked(m_catalog.Get(), 1, {CComVariant(1L)}, DISPATCH_PROPERTYPUT).m_result,
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(m_catalog->Invoke(1, IID_NULL, 0, DISPATCH_PROPERTYGET, nullptr, nullptr, nullptr, nullptr),
              E_INVALIDARG);
    DISPPARAMS none{};
    EXPECT_EQ(m_catalog->Invoke(1, IID_IUnknown, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
    // A caller may omit the result.
    EXPECT_EQ(m_catalog->Invoke(1, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
              S_OK);
}

TEST_F(Objects, InvokeQuery_ReferenceToAVariant_ReceivesTheName) {
    const CComVariant sql("select name from IPE where h > 500");
    for (const CComVariant& before :
         {CComVariant("before"), CComVariant(), CComVariant(5.5), NullVariant(), CComVariant(true)}) {
        CComVariant variable = before;
        const Call call = Invoked(m_catalog.Get(), QueryId, {sql, ReferenceTo(variable)});
        EXPECT_EQ(call.m_result, S_OK);
        EXPECT_EQ(call.m_value.boolVal, VARIANT_TRUE);
        EXPECT_EQ(TextOf(variable).substr(0, 6), "Query_") << before.vt;
    }
}

TEST_F(Objects, InvokeQuery_ReferenceToAString_ReceivesTheName) {
    BSTR name = SysAllocString(L"before");
    VARIANTARG reference;
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &name;
    const Call call =
        Invoked(m_catalog.Get(), QueryId, {CComVariant("select h from IPE where h > 1"), reference});
    EXPECT_EQ(call.m_result, S_OK);
    EXPECT_EQ(TakeText(name).substr(0, 6), "Query_");
}

TEST_F(Objects, InvokeQuery_ValueOrNothing_IsAnsweredWithoutTheName) {
    const CComVariant sql("select h from IPE where h > 1");
    const CComVariant value("before");
    EXPECT_EQ(Invoked(m_catalog.Get(), QueryId, {sql, value}).m_value.boolVal, VARIANT_TRUE);
    EXPECT_EQ(TextOf(value), "before");
    EXPECT_EQ(Invoked(m_catalog.Get(), QueryId, {sql, Missing()}).m_value.boolVal, VARIANT_TRUE);
    EXPECT_EQ(Invoked(m_catalog.Get(), QueryId, {sql}).m_value.boolVal, VARIANT_TRUE);
}

TEST_F(Objects, InvokeQuery_FailedQuery_IsFalse) {
    CComVariant variable("before");
    const Call call = Invoked(m_catalog.Get(), QueryId, {CComVariant("nonsense"), ReferenceTo(variable)});
    EXPECT_EQ(call.m_result, S_OK);
    EXPECT_EQ(call.m_value.boolVal, VARIANT_FALSE);
    EXPECT_EQ(variable.vt, VT_BSTR);
}

TEST_F(Objects, Invoke_NamedArguments_FindTheirParameters) {
    CString names[] = {"Find", "mode", "TableName", "sqlwhere"};
    std::array<std::wstring, 4> texts;
    std::array<LPOLESTR, 4> pointers{};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] = names[i].View();
        pointers[i] = texts[i].data();
    }
    std::array<DISPID, 4> ids{};
    ASSERT_EQ(m_catalog->GetIDsOfNames(IID_NULL, pointers.data(), 4, LOCALE_USER_DEFAULT, ids.data()), S_OK);
    EXPECT_EQ(ids, (std::array<DISPID, 4>{19, 0, 1, 2}));
    const CComVariant where("h > 450");
    const CComVariant table("IPE");
    const CComVariant mode = CComVariant(0L);
    std::array<VARIANTARG, 3> arguments = {table, where, mode};
    std::array<DISPID, 3> order = {ids[2], ids[3], ids[1]};
    DISPPARAMS parameters{arguments.data(), order.data(), 3, 3};
    CComVariant found;
    EXPECT_EQ(m_catalog->Invoke(19, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &found,
                                nullptr, nullptr),
              S_OK);
    EXPECT_EQ(found.vt, VT_I4);
    EXPECT_EQ(found.lVal, 15);
}

TEST_F(Objects, Invoke_ExceptionOfTheModel_FillsTheHostsRecord) {
    const auto source = ObjectOf(m_catalog.Get(), &IDbDatabase::get_Source);
    CComVariant path("none.xml");
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&path, &put, 1, 1};
    EXCEPINFO exception{};
    EXPECT_EQ(source->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr,
                             &exception, nullptr),
              DISP_E_EXCEPTION);
    if (exception.pfnDeferredFillIn != nullptr) {
        exception.pfnDeferredFillIn(&exception);
    }
    EXPECT_NE(TakeText(exception.bstrDescription).find("Invalid source file 'none.xml'"), std::string::npos);
    EXPECT_TRUE(FAILED(exception.scode));
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
}

TEST_F(Objects, TypeInformation_IsThatOfTheInterface) {
    UINT count = 0;
    EXPECT_EQ(m_catalog->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    CComPtr<ITypeInfo> type;
    EXPECT_EQ(m_catalog->GetTypeInfo(0, LOCALE_USER_DEFAULT, Into(type)), S_OK);
    BSTR name = nullptr;
    EXPECT_EQ(type->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(TakeText(name), "IDbDatabase");
    EXPECT_EQ(m_catalog->GetTypeInfo(1, LOCALE_USER_DEFAULT, Into(type)), DISP_E_BADINDEX);
    EXPECT_FALSE(type);
}

}  // namespace
