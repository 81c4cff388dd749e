// The members of the objects, one by one, with missing objects and invalid arguments.
#include <limits>

#include "Server.h"
#include "support/CatalogHelpers.h"

namespace {

using namespace quillet::test;

constexpr LONG FarAway = std::numeric_limits<LONG>::max();
constexpr LONG FarBelow = std::numeric_limits<LONG>::min();

class Members : public ServerTest {
protected:
    // A file in the catalog's folder.
    void Write(const std::string& xml) const { WriteBytes(m_folder / "given.xml", xml); }
    void Open(bool sequential = false) const {
        EXPECT_EQ(
            PutProperty(ObjectFrom(m_catalog, "Source"), "FilePath", CComVariant(CString(Path("given.xml")))),
            S_OK);
        if (sequential) {
            EXPECT_EQ(PutProperty(ObjectFrom(m_catalog, "Source"), "SequentialAccess", true), S_OK);
        }
    }
};

// ---- The catalog

TEST_F(Members, TableName_MinusOneAndCount_AreNullStrings) {
    auto* const catalog = static_cast<IDbDatabase*>(m_catalog.Get());
    for (const LONG index : {-1L, 3L, FarAway, FarBelow}) {
        BSTR name = SysAllocString(L"before");
        BSTR const before = name;
        EXPECT_EQ(catalog->TableName(index, &name), S_OK);
        EXPECT_EQ(name, nullptr) << index;
        SysFreeString(before);
    }
    EXPECT_EQ(ResultText(m_catalog, "TableName", {2}), "T");
}

TEST_F(Members, Tables_OutOfRangeOrUnknown_AreNothing) {
    for (const LONG index : {-1L, 3L, FarAway, FarBelow}) {
        for (const char* const member :
             {"TableDataByIndex", "TableDescrByIndex", "TableData", "TableDescr"}) {
            EXPECT_EQ(ResultText(m_catalog, member, {index}), "nothing") << member << index;
        }
    }
    for (const char* const member : {"TableDataByName", "TableDescrByName", "TableData", "TableDescr"}) {
        EXPECT_EQ(ResultText(m_catalog, member, {"U"}), "nothing") << member;
        EXPECT_EQ(ResultText(m_catalog, member, {""}), "nothing") << member;
        EXPECT_EQ(ResultText(m_catalog, member, {"t"}), "object") << member;
    }
    EXPECT_EQ(ResultText(m_catalog, "TableInfoByName", {"U"}), "nothing");
}

TEST_F(Members, TableInfoByName_Unknown_TheKeptOneShowsNothing) {
    const auto entry = ObjectFrom(m_catalog, "TableInfoByName", {"T"});
    EXPECT_EQ(ResultText(entry, "Type"), "1");
    ObjectFrom(m_catalog, "TableInfoByName", {"U"});
    EXPECT_EQ(ResultText(entry, "Type"), "failed");
}

TEST_F(Members, Table_HoweverItIsNamed_HasOneWrapper) {
    const auto contents = Contents("T");
    EXPECT_EQ(ObjectFrom(m_catalog, "TableDataByName", {"t"}).Get(), contents.Get());
    EXPECT_EQ(ObjectFrom(m_catalog, "TableDataByIndex", {2}).Get(), contents.Get());
    const auto structure = Structure("T");
    EXPECT_EQ(ObjectFrom(m_catalog, "TableDescrByName", {"t"}).Get(), structure.Get());
    EXPECT_EQ(ObjectFrom(m_catalog, "TableDescrByIndex", {2}).Get(), structure.Get());
    EXPECT_NE(Contents("Header").Get(), contents.Get());
}

TEST_F(Members, TableData_ByAnyNumberOrReference_FindsTheTable) {
    auto* const catalog = static_cast<IDbDatabase*>(m_catalog.Get());
    CComVariant number(2);
    CComVariant text("T");
    CComVariant ofNumber;
    ofNumber.vt = VT_BYREF | VT_I4;
    ofNumber.plVal = &number.lVal;
    CComVariant ofText;
    ofText.vt = VT_BYREF | VT_BSTR;
    ofText.pbstrVal = &text.bstrVal;
    CComVariant ofVariant;
    ofVariant.vt = VT_BYREF | VT_VARIANT;
    ofVariant.pvarVal = &text;
    CComVariant currency(2);
    ASSERT_EQ(currency.ChangeType(VT_CY), S_OK);
    CComVariant decimal(2);
    ASSERT_EQ(decimal.ChangeType(VT_DECIMAL), S_OK);
    const CComVariant keys[] = {CComVariant(static_cast<BYTE>(2)),
                                CComVariant(SHORT{2}),
                                CComVariant(LONG{2}),
                                CComVariant(2LL),
                                CComVariant(2ULL),
                                CComVariant(2.0F),
                                CComVariant(2.0),
                                currency,
                                decimal,
                                ofNumber,
                                ofText,
                                ofVariant};
    for (const CComVariant& key : keys) {
        IDbTableData* found = nullptr;
        EXPECT_EQ(catalog->TableData(key, &found), S_OK) << key.vt;
        EXPECT_EQ(static_cast<IDispatch*>(found), Contents("T").Get()) << key.vt;
        if (found != nullptr) {
            found->Release();
        }
    }
}

TEST_F(Members, TableData_ByWhatIsNeitherTextNorNumber_Fails) {
    auto* const catalog = static_cast<IDbDatabase*>(m_catalog.Get());
    CComVariant missing;
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    for (const CComVariant& key :
         {CComVariant(), NullVariant(), CComVariant(true), CComVariant(m_catalog.Get()), missing,
          DateVariant(2), ByteArray("T"), CComVariant(1e300)}) {
        IDbTableData* contents = nullptr;
        EXPECT_EQ(catalog->TableData(key, &contents), DISP_E_TYPEMISMATCH) << key.vt;
        EXPECT_EQ(contents, nullptr);
        IDbTableDescr* structure = nullptr;
        EXPECT_EQ(catalog->TableDescr(key, &structure), DISP_E_TYPEMISMATCH) << key.vt;
        EXPECT_EQ(structure, nullptr);
    }
}

TEST_F(Members, CreateTable_TakenName_SucceedsAndLeavesALine) {
    ObjectFrom(m_catalog, "CreateTable", {"t"});
    EXPECT_EQ(ResultText(m_catalog, "TablesCount"), "3");
    EXPECT_NE(ResultText(m_catalog, "ErrorLog").find("Table 't' already in database"), std::string::npos);
    ObjectFrom(m_catalog, "DeleteTable", {"none"});
    EXPECT_EQ(ResultText(m_catalog, "TablesCount"), "3");
}

TEST_F(Members, Save_WhereNothingCanBeWritten_SucceedsAndLeavesALine) {
    EXPECT_EQ(InvokeByName(m_catalog.Get(), "Save", {CComVariant(CString(Path("none/at/all.xml")))}).m_result,
              S_OK);
    EXPECT_NE(ResultText(m_catalog, "ErrorLog").find("could not be written"), std::string::npos);
}

TEST_F(Members, Query_ThatFails_KeepsTheName) {
    auto* const catalog = static_cast<IDbDatabase*>(m_catalog.Get());
    BSTR name = SysAllocString(L"before");
    VARIANT_BOOL answered = 7;
    CComVariant sql("select nothing from nowhere");
    EXPECT_EQ(catalog->Query(sql.bstrVal, &name, &answered), S_OK);
    EXPECT_EQ(answered, VARIANT_FALSE);
    EXPECT_STREQ(name, L"before");
    sql = CComVariant("select t from T where n = 2");
    EXPECT_EQ(catalog->Query(sql.bstrVal, &name, &answered), S_OK);
    EXPECT_EQ(answered, VARIANT_TRUE);
    EXPECT_EQ(CString(name).ToUtf8().substr(0, 6), "Query_");
    const auto entry = ObjectFrom(m_catalog, "TableInfoByName", {CComVariant(CString(name))});
    EXPECT_EQ(ResultText(entry, "sql"), "select t from T where n = 2");
    EXPECT_EQ(ResultText(entry, "Type"), "2");
    SysFreeString(name);
}

TEST_F(Members, Find_NextAfterFirst_ContinuesOnTheSameTable) {
    EXPECT_EQ(ResultText(m_catalog, "Find", {0, "T", "n > 1"}), "1");
    EXPECT_EQ(ResultText(m_catalog, "Find", {1, "T", "n > 1"}), "2");
    EXPECT_EQ(ResultText(m_catalog, "Find", {1, "t", "n > 1"}), "-1");
    EXPECT_EQ(ResultText(m_catalog, "Find", {3, "T", "n > 0"}), "1") << "the last match is where it stands";
    EXPECT_EQ(ResultText(m_catalog, "Find", {2, "T", "n < 3"}), "1");
}

TEST_F(Members, Find_AnotherTable_RestartsOnAFreshCursor) {
    MakeTable("U");
    AddRow("U", 7, "x");
    AddRow("U", 8, "y");
    EXPECT_EQ(ResultText(m_catalog, "Find", {2, "T", "n > 0"}), "2");
    EXPECT_EQ(ResultText(m_catalog, "Find", {1, "U", "n > 0"}), "1");
    EXPECT_EQ(ResultText(m_catalog, "Find", {1, "T", "n > 0"}), "1")
        << "the first table's place is forgotten";
}

TEST_F(Members, Find_UnknownTableModeOrCondition_IsMinusOne) {
    EXPECT_EQ(ResultText(m_catalog, "Find", {0, "none", "n > 0"}), "-1");
    EXPECT_EQ(ResultText(m_catalog, "Find", {0, "", ""}), "-1");
    EXPECT_EQ(ResultText(m_catalog, "Find", {0, "T", "no condition"}), "-1");
    for (const LONG mode : {-1L, 4L, FarAway, FarBelow}) {
        EXPECT_EQ(ResultText(m_catalog, "Find", {mode, "T", "n > 0"}), "-1") << mode;
    }
}

TEST_F(Members, Find_RowsWereAddedSince_AreFound) {
    EXPECT_EQ(ResultText(m_catalog, "Find", {2, "T", "n > 0"}), "2");
    AddRow("T", 4, "d");
    EXPECT_EQ(ResultText(m_catalog, "Find", {1, "T", "n > 0"}), "3");
}

TEST_F(Members, Find_TableWithSelectInItsName_IsSearched) {
    MakeTable("Selection");
    AddRow("Selection", 7, "x");
    EXPECT_EQ(ResultText(m_catalog, "Find", {0, "selection", "n > 0"}), "0");
}

// ---- The source

TEST_F(Members, FilePath_Put_DoesNotSwitchSequentialAccessOn) {
    Write(SmallCatalog());
    const auto source = ObjectFrom(m_catalog, "Source");
    Open(true);
    EXPECT_EQ(ResultText(source, "SequentialAccess"), "-1");
    Open();
    EXPECT_EQ(ResultText(source, "SequentialAccess"), "0");
    EXPECT_EQ(ResultText(source, "IsXmlBased"), "-1");
}

TEST_F(Members, FilePath_ThatCantBeRead_FailsWithTheModelsMessage) {
    auto* const source = static_cast<IDbSource*>(ObjectFrom(m_catalog, "Source").Get());
    const CComVariant path("Z:\\no such folder\\none.xml");
    EXPECT_EQ(source->put_FilePath(path.bstrVal), E_FAIL);
    IErrorInfo* thrown = nullptr;
    ASSERT_EQ(GetErrorInfo(0, &thrown), S_OK);
    CComPtr<IErrorInfo> error;
    error.Attach(thrown);
    CComVariant text;
    text.vt = VT_BSTR;
    ASSERT_EQ(error->GetDescription(&text.bstrVal), S_OK);
    EXPECT_NE(TextOf(text).find("Invalid source file 'Z:\\no such folder\\none.xml'"), std::string::npos);
    GUID raisedBy{};
    EXPECT_EQ(error->GetGUID(&raisedBy), S_OK);
    EXPECT_TRUE(IsEqualGUID(raisedBy, __uuidof(IDbSource)));
}

TEST_F(Members, ForceXML_IsOneSettingForAll) {
    const StaticsGuard statics;
    const auto source = ObjectFrom(m_catalog, "Source");
    EXPECT_EQ(ResultText(source, "ForceXML"), "-1");
    EXPECT_EQ(PutProperty(source, "ForceXML", false), S_OK);
    const auto other = NewObject(__uuidof(DbDatabase));
    EXPECT_EQ(ResultText(ObjectFrom(other, "Source"), "ForceXML"), "0");
    EXPECT_EQ(PutProperty(source, "ForceXML", true), S_OK);
    EXPECT_EQ(ResultText(ObjectFrom(other, "Source"), "ForceXML"), "-1");
}

TEST_F(Members, SequentialAccess_RowsThatWait_AreReadBeforeTheFirstUse) {
    Write(SmallCatalog());
    Open(true);
    const auto row = ObjectFrom(Contents("Alpha"), "AddRow");
    EXPECT_EQ(CellsOf(row), " 0");
    EXPECT_EQ(ResultText(Contents("Alpha"), "RowsCount"), "3");
    EXPECT_EQ(CellsOf(Row("Alpha", 0)), "one 1");
    EXPECT_EQ(CellsOf(Row("Alpha", 2)), " 0");
    Open(true);
    ObjectFrom(Contents("Alpha"), "RemoveRow", {0});
    EXPECT_EQ(CellsOf(Row("Alpha", 0)), "two 2");
    Open(true);
    ObjectFrom(Structure("Alpha"), "DeleteField", {0});
    EXPECT_EQ(CellsOf(Row("Alpha", 1)), "2");
}

// ---- Structures and fields

TEST_F(Members, FieldByIndex_OutOfRange_IsNothingAndTheKeptOneShowsNothing) {
    const auto structure = Structure("T");
    const auto field = ObjectFrom(structure, "FieldByIndex", {1});
    EXPECT_EQ(ObjectFrom(structure, "FieldByName", {"[N]"}).Get(), field.Get());
    EXPECT_EQ(ResultText(field, "Name"), "n");
    for (const LONG index : {-1L, 2L, FarAway, FarBelow}) {
        ObjectFrom(structure, "FieldByIndex", {0});
        EXPECT_EQ(ResultText(structure, "FieldByIndex", {index}), "nothing") << index;
        EXPECT_EQ(ResultText(field, "Name"), "failed") << index;
    }
    ObjectFrom(structure, "FieldByIndex", {0});
    EXPECT_EQ(ResultText(structure, "FieldByName", {"none"}), "nothing");
    EXPECT_EQ(ResultText(field, "Name"), "failed");
}

TEST_F(Members, TypePut_With8_LeavesTheTypeAndSucceeds) {
    const auto field = ObjectFrom(Structure("T"), "FieldByName", {"t"});
    for (const LONG type : {8L, -1L, FarAway, FarBelow}) {
        EXPECT_EQ(PutProperty(field, "Type", type), S_OK) << type;
        EXPECT_EQ(ResultText(field, "Type"), "6") << type;
    }
    EXPECT_EQ(PutProperty(field, "Type", 5), S_OK);
    EXPECT_EQ(ResultText(field, "TypeName"), "double");
    // A field of 16-bit numbers holds 32-bit ones.
    EXPECT_EQ(PutProperty(field, "Type", 2), S_OK);
    EXPECT_EQ(ResultText(field, "Type"), "3");
    EXPECT_EQ(PutProperty(field, "Type", 0), S_OK);
    EXPECT_EQ(ResultText(field, "TypeName"), "empty");
}

TEST_F(Members, Index_BehindADeletedField_IsTheOneItHad) {
    const auto structure = Structure("T");
    ObjectFrom(structure, "DeleteField", {0});
    EXPECT_EQ(ResultText(ObjectFrom(structure, "FieldByIndex", {0}), "Index"), "1");
}

TEST_F(Members, Structure_ChangesThatCantBe_SucceedWithoutEffect) {
    const auto structure = Structure("T");
    for (const LONG index : {-1L, 2L, FarAway, FarBelow}) {
        EXPECT_NE(ResultText(structure, "DeleteField", {index}), "failed");
    }
    EXPECT_NE(ResultText(structure, "CreateField", {"N", TextField}), "failed");
    EXPECT_NE(ResultText(structure, "CreateIndex", {"", "n"}), "failed");
    EXPECT_NE(ResultText(structure, "CreateIndex", {"i", "none"}), "failed");
    EXPECT_EQ(ResultText(structure, "FieldsCount"), "2");
    EXPECT_NE(ResultText(structure, "CreateField", {"odd", 99}), "failed");
    EXPECT_EQ(ResultText(ObjectFrom(structure, "FieldByName", {"odd"}), "Type"), "0");
}

// ---- Rows and cells

TEST_F(Members, Row_TwoIndexes_AreOneInterfaceOnTheSecondRow) {
    const auto contents = Contents("T");
    const auto first = ObjectFrom(contents, "Row", {0});
    EXPECT_EQ(CellsOf(first), "1 a");
    const auto second = ObjectFrom(contents, "Row", {1});
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(CellsOf(first), "2 b");
    EXPECT_EQ(ObjectFrom(contents, "AddRow").Get(), first.Get());
    EXPECT_EQ(CellsOf(first), "0 ");
}

TEST_F(Members, Row_OutOfRange_IsTheKeptOneOnNothing) {
    const auto contents = Contents("T");
    const auto row = ObjectFrom(contents, "Row", {0});
    for (const LONG index : {-1L, 3L, FarAway, FarBelow}) {
        ObjectFrom(contents, "Row", {0});
        EXPECT_EQ(ObjectFrom(contents, "Row", {index}).Get(), row.Get());
        EXPECT_EQ(ResultText(row, "FieldsCount"), "failed") << index;
        EXPECT_NE(ResultText(contents, "RemoveRow", {index}), "failed");
    }
    EXPECT_EQ(ResultText(contents, "RowsCount"), "3");
}

TEST_F(Members, FieldOfARow_OutOfRangeOrUnknown_IsTheKeptOneOnNothing) {
    const auto row = Row("T", 0);
    const auto cell = ObjectFrom(row, "FieldByIndex", {0});
    EXPECT_EQ(ObjectFrom(row, "FieldByName", {"t"}).Get(), cell.Get());
    for (const LONG index : {-1L, 2L, FarAway, FarBelow}) {
        ObjectFrom(row, "FieldByIndex", {0});
        EXPECT_EQ(ObjectFrom(row, "FieldByIndex", {index}).Get(), cell.Get());
        EXPECT_EQ(ResultText(cell, "Value"), "failed") << index;
    }
    ObjectFrom(row, "FieldByIndex", {0});
    EXPECT_EQ(ObjectFrom(row, "FieldByName", {"none"}).Get(), cell.Get());
    EXPECT_EQ(ResultText(cell, "Value"), "failed");
}

TEST_F(Members, Value_Put_IsConvertedToTheCellsType) {
    const auto cell = ObjectFrom(Row("T", 0), "FieldByName", {"n"});
    EXPECT_EQ(PutProperty(cell, "Value", "42"), S_OK);
    EXPECT_EQ(InvokeByName(cell.Get(), "Value").m_value.vt, VT_I4);
    EXPECT_EQ(ResultText(cell, "Value"), "42");
    EXPECT_EQ(PutProperty(cell, "Value", "abc"), S_OK);
    EXPECT_EQ(InvokeByName(cell.Get(), "Value").m_value.vt, VT_BSTR);
    EXPECT_EQ(ResultText(cell, "Value"), "abc");
    EXPECT_EQ(ResultText(cell, "Index"), "0");
}

TEST_F(Members, Value_PutOfWhatNoCellHolds_FailsAndLeavesTheCell) {
    const auto cell = ObjectFrom(Row("T", 0), "FieldByName", {"t"});
    CComVariant missing;
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    CComVariant unknown;
    unknown.vt = VT_UNKNOWN;
    // What VBScript creates for Array(...).
    CComVariant list;
    list.vt = VT_ARRAY | VT_VARIANT;
    list.parray = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    for (const CComVariant& value : {CComVariant(m_catalog.Get()), unknown, missing, list}) {
        EXPECT_EQ(static_cast<IDbFieldValue*>(cell.Get())->put_Value(value), DISP_E_TYPEMISMATCH) << value.vt;
        EXPECT_NE(PutProperty(cell, "Value", value), S_OK) << value.vt;
    }
    EXPECT_EQ(ResultText(cell, "Value"), "a");
}

TEST_F(Members, Value_OfBytes_GoesThereAndBack) {
    ObjectFrom(Structure("T"), "CreateField", {"b", int{FieldType::Binary}});
    const auto cell = ObjectFrom(Row("T", 0), "FieldByName", {"b"});
    EXPECT_EQ(PutProperty(cell, "Value", ByteArray("\x01\x02\xFF")), S_OK);
    EXPECT_EQ(ContentOf(InvokeByName(cell.Get(), "Value").m_value), (ArrayContent{0, "\x01\x02\xFF"}));
    CComVariant bytes = ByteArray("by reference");
    CComVariant reference;
    reference.vt = VT_BYREF | ByteArrayType;
    reference.pparray = &bytes.parray;
    EXPECT_EQ(PutProperty(cell, "Value", reference), S_OK);
    EXPECT_EQ(ContentOf(InvokeByName(cell.Get(), "Value").m_value), (ArrayContent{0, "by reference"}));
    EXPECT_EQ(static_cast<IDbFieldValue*>(cell.Get())->put_Value(reference), S_OK);
    EXPECT_EQ(ContentOf(InvokeByName(cell.Get(), "Value").m_value), (ArrayContent{0, "by reference"}));
}

// ---- Header and properties

TEST_F(Members, Properties_MaterialIsTheFifthField) {
    const auto properties = ObjectFrom(m_catalog, "Properties");
    const char* const members[] = {"Units", "UnitLong", "UnitSect", "UnitWeight", "Material"};
    for (const char* const member : members) {
        EXPECT_EQ(PutProperty(properties, member, member), S_OK);
    }
    EXPECT_EQ(CellsOf(Row("Properties", 0)), "Units UnitLong UnitSect UnitWeight Material");
    for (const char* const member : members) {
        EXPECT_EQ(ResultText(properties, member), member);
    }
}

TEST_F(Members, Header_EachPropertyIsTheFieldAtItsPlace) {
    const auto header = ObjectFrom(m_catalog, "Header");
    const char* const members[] = {"Category", "Symbol", "Title", "CatalogType", "UnitsType", "Version"};
    for (const char* const member : members) {
        EXPECT_EQ(PutProperty(header, member, member), S_OK);
    }
    EXPECT_EQ(CellsOf(Row("Header", 0)), "Category Symbol Title CatalogType UnitsType Version");
    EXPECT_EQ(ResultText(header, "Version"), "Version");
}

TEST_F(Members, Header_OfAFileWithOtherFields_HasEmptyTextsAndTakesNone) {
    Write(SmallCatalog());
    Open();
    const auto header = ObjectFrom(m_catalog, "Header");
    EXPECT_EQ(ResultText(header, "Category"), "Small") << "the first field, whatever its name";
    EXPECT_EQ(ResultText(header, "Version"), "");
    EXPECT_EQ(PutProperty(header, "Version", "2"), S_OK);
    EXPECT_EQ(ResultText(header, "Version"), "");
    ObjectFrom(Contents("Header"), "RemoveRow", {0});
    EXPECT_EQ(ResultText(header, "Category"), "");
    EXPECT_EQ(PutProperty(header, "Category", "none"), S_OK);
    EXPECT_EQ(ResultText(Contents("Header"), "RowsCount"), "0");
}

TEST_F(Members, Header_NumbersAreTexts) {
    CatalogParts parts;
    parts.m_headerStructure =
        TableXml("Header", FieldXml("number", DoubleType)) + TableXml("Properties", FieldXml("u", TextType));
    parts.m_headerData =
        TableXml("Header", "<row number=\"2.5\" />\n") + TableXml("Properties", "<row u=\"\" />\n");
    Write(parts.Xml());
    Open();
    const auto header = ObjectFrom(m_catalog, "Header");
    EXPECT_EQ(ResultText(header, "Category"), "2.5");
    EXPECT_EQ(PutProperty(header, "Category", "3.5"), S_OK);
    EXPECT_EQ(InvokeByName(ObjectFrom(Row("Header", 0), "FieldByIndex", {0}).Get(), "Value").m_value.vt,
              VT_R8);
}

TEST_F(Members, HeaderAndProperties_AreTheFirstTwoTablesWhicheverTheyAre) {
    ObjectFrom(m_catalog, "DeleteTable", {"Properties"});
    EXPECT_EQ(ResultText(ObjectFrom(m_catalog, "Properties"), "Units"), "1");
    ObjectFrom(m_catalog, "DeleteTable", {"T"});
    const auto properties = ObjectFrom(m_catalog, "Properties");
    EXPECT_EQ(ResultText(properties, "Units"), "failed");
    EXPECT_NE(PutProperty(properties, "Units", "mm"), S_OK);
    ObjectFrom(m_catalog, "DeleteTable", {"Header"});
    EXPECT_EQ(ResultText(ObjectFrom(m_catalog, "Header"), "Title"), "failed");
}

// ---- Null for a result

template <typename Interface, typename... Parameters, typename... Arguments>
HRESULT WithoutResult(const CComPtr<IDispatch>& object,
                      HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...), Arguments... arguments) {
    return (static_cast<Interface*>(object.Get())->*member)(arguments..., nullptr);
}

TEST_F(Members, NullForTheResult_IsRefusedBeforeAnythingHappens) {
    EXPECT_EQ(WithoutResult(Contents("T"), &IDbTableData::AddRow), E_POINTER);
    EXPECT_EQ(ResultText(Contents("T"), "RowsCount"), "3");
    const CComVariant sql("select * from T where n = 2");
    BSTR name = nullptr;
    EXPECT_EQ(WithoutResult(m_catalog, &IDbDatabase::Query, sql.bstrVal, &name), E_POINTER);
    EXPECT_EQ(name, nullptr);
    VARIANT_BOOL answered = VARIANT_TRUE;
    EXPECT_EQ(static_cast<IDbDatabase*>(m_catalog.Get())->Query(sql.bstrVal, nullptr, &answered), E_POINTER);
    EXPECT_EQ(answered, VARIANT_FALSE);
    EXPECT_EQ(ResultText(m_catalog, "TablesCount"), "3");
    // Even if there is nothing to show.
    EXPECT_EQ(WithoutResult(NewObject(__uuidof(DbHeader)), &IDbHeader::get_Title), E_POINTER);
}

}  // namespace
