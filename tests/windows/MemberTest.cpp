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
        EXPECT_EQ(Put(Given(m_catalog, "Source"), "FilePath", CComVariant(CString(Path("given.xml")))), S_OK);
        if (sequential) {
            EXPECT_EQ(Put(Given(m_catalog, "Source"), "SequentialAccess", true), S_OK);
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
    EXPECT_EQ(Said(m_catalog, "TableName", {2}), "T");
}

TEST_F(Members, Tables_OutOfRangeOrUnknown_AreNothing) {
    for (const LONG index : {-1L, 3L, FarAway, FarBelow}) {
        for (const char* const member :
             {"TableDataByIndex", "TableDescrByIndex", "TableData", "TableDescr"}) {
            EXPECT_EQ(Said(m_catalog, member, {index}), "nothing") << member << index;
        }
    }
    for (const char* const member : {"TableDataByName", "TableDescrByName", "TableData", "TableDescr"}) {
        EXPECT_EQ(Said(m_catalog, member, {"U"}), "nothing") << member;
        EXPECT_EQ(Said(m_catalog, member, {""}), "nothing") << member;
        EXPECT_EQ(Said(m_catalog, member, {"t"}), "object") << member;
    }
    EXPECT_EQ(Said(m_catalog, "TableInfoByName", {"U"}), "nothing");
}

TEST_F(Members, TableInfoByName_Unknown_TheKeptOneShowsNothing) {
    const auto entry = Given(m_catalog, "TableInfoByName", {"T"});
    EXPECT_EQ(Said(entry, "Type"), "1");
    Given(m_catalog, "TableInfoByName", {"U"});
    EXPECT_EQ(Said(entry, "Type"), "failed");
}

TEST_F(Members, Table_HoweverItIsNamed_HasOneWrapper) {
    const auto contents = Contents("T");
    EXPECT_EQ(Given(m_catalog, "TableDataByName", {"t"}).Get(), contents.Get());
    EXPECT_EQ(Given(m_catalog, "TableDataByIndex", {2}).Get(), contents.Get());
    const auto structure = Structure("T");
    EXPECT_EQ(Given(m_catalog, "TableDescrByName", {"t"}).Get(), structure.Get());
    EXPECT_EQ(Given(m_catalog, "TableDescrByIndex", {2}).Get(), structure.Get());
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
    Given(m_catalog, "CreateTable", {"t"});
    EXPECT_EQ(Said(m_catalog, "TablesCount"), "3");
    EXPECT_NE(Said(m_catalog, "ErrorLog").find("Table 't' already in database"), std::string::npos);
    Given(m_catalog, "DeleteTable", {"none"});
    EXPECT_EQ(Said(m_catalog, "TablesCount"), "3");
}

TEST_F(Members, Save_WhereNothingCanBeWritten_SucceedsAndLeavesALine) {
    EXPECT_EQ(Ask(m_catalog.Get(), "Save", {CComVariant(CString(Path("none/at/all.xml")))}).m_result, S_OK);
    EXPECT_NE(Said(m_catalog, "ErrorLog").find("could not be written"), std::string::npos);
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
    const auto entry = Given(m_catalog, "TableInfoByName", {CComVariant(CString(name))});
    EXPECT_EQ(Said(entry, "sql"), "select t from T where n = 2");
    EXPECT_EQ(Said(entry, "Type"), "2");
    SysFreeString(name);
}

TEST_F(Members, Find_NextAfterFirst_ContinuesOnTheSameTable) {
    EXPECT_EQ(Said(m_catalog, "Find", {0, "T", "n > 1"}), "1");
    EXPECT_EQ(Said(m_catalog, "Find", {1, "T", "n > 1"}), "2");
    EXPECT_EQ(Said(m_catalog, "Find", {1, "t", "n > 1"}), "-1");
    EXPECT_EQ(Said(m_catalog, "Find", {3, "T", "n > 0"}), "1") << "the last match is where it stands";
    EXPECT_EQ(Said(m_catalog, "Find", {2, "T", "n < 3"}), "1");
}

TEST_F(Members, Find_AnotherTable_RestartsOnAFreshCursor) {
    MakeTable("U");
    AddRow("U", 7, "x");
    AddRow("U", 8, "y");
    EXPECT_EQ(Said(m_catalog, "Find", {2, "T", "n > 0"}), "2");
    EXPECT_EQ(Said(m_catalog, "Find", {1, "U", "n > 0"}), "1");
    EXPECT_EQ(Said(m_catalog, "Find", {1, "T", "n > 0"}), "1") << "the first table's place is forgotten";
}

TEST_F(Members, Find_UnknownTableModeOrCondition_IsMinusOne) {
    EXPECT_EQ(Said(m_catalog, "Find", {0, "none", "n > 0"}), "-1");
    EXPECT_EQ(Said(m_catalog, "Find", {0, "", ""}), "-1");
    EXPECT_EQ(Said(m_catalog, "Find", {0, "T", "no condition"}), "-1");
    for (const LONG mode : {-1L, 4L, FarAway, FarBelow}) {
        EXPECT_EQ(Said(m_catalog, "Find", {mode, "T", "n > 0"}), "-1") << mode;
    }
}

TEST_F(Members, Find_RowsWereAddedSince_AreFound) {
    EXPECT_EQ(Said(m_catalog, "Find", {2, "T", "n > 0"}), "2");
    AddRow("T", 4, "d");
    EXPECT_EQ(Said(m_catalog, "Find", {1, "T", "n > 0"}), "3");
}

TEST_F(Members, Find_TableWithSelectInItsName_IsSearched) {
    MakeTable("Selection");
    AddRow("Selection", 7, "x");
    EXPECT_EQ(Said(m_catalog, "Find", {0, "selection", "n > 0"}), "0");
}

// ---- The source

TEST_F(Members, FilePath_Put_DoesNotSwitchSequentialAccessOn) {
    Write(SmallCatalog());
    const auto source = Given(m_catalog, "Source");
    Open(true);
    EXPECT_EQ(Said(source, "SequentialAccess"), "-1");
    Open();
    EXPECT_EQ(Said(source, "SequentialAccess"), "0");
    EXPECT_EQ(Said(source, "IsXmlBased"), "-1");
}

TEST_F(Members, FilePath_ThatCantBeRead_FailsWithTheModelsMessage) {
    auto* const source = static_cast<IDbSource*>(Given(m_catalog, "Source").Get());
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
    const auto source = Given(m_catalog, "Source");
    EXPECT_EQ(Said(source, "ForceXML"), "-1");
    EXPECT_EQ(Put(source, "ForceXML", false), S_OK);
    const auto other = NewObject(__uuidof(DbDatabase));
    EXPECT_EQ(Said(Given(other, "Source"), "ForceXML"), "0");
    EXPECT_EQ(Put(source, "ForceXML", true), S_OK);
    EXPECT_EQ(Said(Given(other, "Source"), "ForceXML"), "-1");
}

TEST_F(Members, SequentialAccess_RowsThatWait_AreReadBeforeTheFirstUse) {
    Write(SmallCatalog());
    Open(true);
    const auto row = Given(Contents("Alpha"), "AddRow");
    EXPECT_EQ(CellsOf(row), " 0");
    EXPECT_EQ(Said(Contents("Alpha"), "RowsCount"), "3");
    EXPECT_EQ(CellsOf(Row("Alpha", 0)), "one 1");
    EXPECT_EQ(CellsOf(Row("Alpha", 2)), " 0");
    Open(true);
    Given(Contents("Alpha"), "RemoveRow", {0});
    EXPECT_EQ(CellsOf(Row("Alpha", 0)), "two 2");
    Open(true);
    Given(Structure("Alpha"), "DeleteField", {0});
    EXPECT_EQ(CellsOf(Row("Alpha", 1)), "2");
}

// ---- Structures and fields

TEST_F(Members, FieldByIndex_OutOfRange_IsNothingAndTheKeptOneShowsNothing) {
    const auto structure = Structure("T");
    const auto field = Given(structure, "FieldByIndex", {1});
    EXPECT_EQ(Given(structure, "FieldByName", {"[N]"}).Get(), field.Get());
    EXPECT_EQ(Said(field, "Name"), "n");
    for (const LONG index : {-1L, 2L, FarAway, FarBelow}) {
        Given(structure, "FieldByIndex", {0});
        EXPECT_EQ(Said(structure, "FieldByIndex", {index}), "nothing") << index;
        EXPECT_EQ(Said(field, "Name"), "failed") << index;
    }
    Given(structure, "FieldByIndex", {0});
    EXPECT_EQ(Said(structure, "FieldByName", {"none"}), "nothing");
    EXPECT_EQ(Said(field, "Name"), "failed");
}

TEST_F(Members, TypePut_With8_LeavesTheTypeAndSucceeds) {
    const auto field = Given(Structure("T"), "FieldByName", {"t"});
    for (const LONG type : {8L, -1L, FarAway, FarBelow}) {
        EXPECT_EQ(Put(field, "Type", type), S_OK) << type;
        EXPECT_EQ(Said(field, "Type"), "6") << type;
    }
    EXPECT_EQ(Put(field, "Type", 5), S_OK);
    EXPECT_EQ(Said(field, "TypeName"), "double");
    // A field of 16-bit numbers holds 32-bit ones.
    EXPECT_EQ(Put(field, "Type", 2), S_OK);
    EXPECT_EQ(Said(field, "Type"), "3");
    EXPECT_EQ(Put(field, "Type", 0), S_OK);
    EXPECT_EQ(Said(field, "TypeName"), "empty");
}

TEST_F(Members, Index_BehindADeletedField_IsTheOneItHad) {
    const auto structure = Structure("T");
    Given(structure, "DeleteField", {0});
    EXPECT_EQ(Said(Given(structure, "FieldByIndex", {0}), "Index"), "1");
}

TEST_F(Members, Structure_ChangesThatCantBe_SucceedWithoutEffect) {
    const auto structure = Structure("T");
    for (const LONG index : {-1L, 2L, FarAway, FarBelow}) {
        EXPECT_NE(Said(structure, "DeleteField", {index}), "failed");
    }
    EXPECT_NE(Said(structure, "CreateField", {"N", TextField}), "failed");
    EXPECT_NE(Said(structure, "CreateIndex", {"", "n"}), "failed");
    EXPECT_NE(Said(structure, "CreateIndex", {"i", "none"}), "failed");
    EXPECT_EQ(Said(structure, "FieldsCount"), "2");
    EXPECT_NE(Said(structure, "CreateField", {"odd", 99}), "failed");
    EXPECT_EQ(Said(Given(structure, "FieldByName", {"odd"}), "Type"), "0");
}

// ---- Rows and cells

TEST_F(Members, Row_TwoIndexes_AreOneInterfaceOnTheSecondRow) {
    const auto contents = Contents("T");
    const auto first = Given(contents, "Row", {0});
    EXPECT_EQ(CellsOf(first), "1 a");
    const auto second = Given(contents, "Row", {1});
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(CellsOf(first), "2 b");
    EXPECT_EQ(Given(contents, "AddRow").Get(), first.Get());
    EXPECT_EQ(CellsOf(first), "0 ");
}

TEST_F(Members, Row_OutOfRange_IsTheKeptOneOnNothing) {
    const auto contents = Contents("T");
    const auto row = Given(contents, "Row", {0});
    for (const LONG index : {-1L, 3L, FarAway, FarBelow}) {
        Given(contents, "Row", {0});
        EXPECT_EQ(Given(contents, "Row", {index}).Get(), row.Get());
        EXPECT_EQ(Said(row, "FieldsCount"), "failed") << index;
        EXPECT_NE(Said(contents, "RemoveRow", {index}), "failed");
    }
    EXPECT_EQ(Said(contents, "RowsCount"), "3");
}

TEST_F(Members, FieldOfARow_OutOfRangeOrUnknown_IsTheKeptOneOnNothing) {
    const auto row = Row("T", 0);
    const auto cell = Given(row, "FieldByIndex", {0});
    EXPECT_EQ(Given(row, "FieldByName", {"t"}).Get(), cell.Get());
    for (const LONG index : {-1L, 2L, FarAway, FarBelow}) {
        Given(row, "FieldByIndex", {0});
        EXPECT_EQ(Given(row, "FieldByIndex", {index}).Get(), cell.Get());
        EXPECT_EQ(Said(cell, "Value"), "failed") << index;
    }
    Given(row, "FieldByIndex", {0});
    EXPECT_EQ(Given(row, "FieldByName", {"none"}).Get(), cell.Get());
    EXPECT_EQ(Said(cell, "Value"), "failed");
}

TEST_F(Members, Value_Put_IsConvertedToTheCellsType) {
    const auto cell = Given(Row("T", 0), "FieldByName", {"n"});
    EXPECT_EQ(Put(cell, "Value", "42"), S_OK);
    EXPECT_EQ(Ask(cell.Get(), "Value").m_value.vt, VT_I4);
    EXPECT_EQ(Said(cell, "Value"), "42");
    EXPECT_EQ(Put(cell, "Value", "abc"), S_OK);
    EXPECT_EQ(Ask(cell.Get(), "Value").m_value.vt, VT_BSTR);
    EXPECT_EQ(Said(cell, "Value"), "abc");
    EXPECT_EQ(Said(cell, "Index"), "0");
}

TEST_F(Members, Value_PutOfWhatNoCellHolds_FailsAndLeavesTheCell) {
    const auto cell = Given(Row("T", 0), "FieldByName", {"t"});
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
        EXPECT_NE(Put(cell, "Value", value), S_OK) << value.vt;
    }
    EXPECT_EQ(Said(cell, "Value"), "a");
}

TEST_F(Members, Value_OfBytes_GoesThereAndBack) {
    Given(Structure("T"), "CreateField", {"b", int{FieldType::Binary}});
    const auto cell = Given(Row("T", 0), "FieldByName", {"b"});
    EXPECT_EQ(Put(cell, "Value", ByteArray("\x01\x02\xFF")), S_OK);
    EXPECT_EQ(ContentOf(Ask(cell.Get(), "Value").m_value), (ArrayContent{0, "\x01\x02\xFF"}));
    CComVariant bytes = ByteArray("by reference");
    CComVariant reference;
    reference.vt = VT_BYREF | ByteArrayType;
    reference.pparray = &bytes.parray;
    EXPECT_EQ(Put(cell, "Value", reference), S_OK);
    EXPECT_EQ(ContentOf(Ask(cell.Get(), "Value").m_value), (ArrayContent{0, "by reference"}));
    EXPECT_EQ(static_cast<IDbFieldValue*>(cell.Get())->put_Value(reference), S_OK);
    EXPECT_EQ(ContentOf(Ask(cell.Get(), "Value").m_value), (ArrayContent{0, "by reference"}));
}

// ---- Header and properties

TEST_F(Members, Properties_MaterialIsTheFifthField) {
    const auto properties = Given(m_catalog, "Properties");
    const char* const members[] = {"Units", "UnitLong", "UnitSect", "UnitWeight", "Material"};
    for (const char* const member : members) {
        EXPECT_EQ(Put(properties, member, member), S_OK);
    }
    EXPECT_EQ(CellsOf(Row("Properties", 0)), "Units UnitLong UnitSect UnitWeight Material");
    for (const char* const member : members) {
        EXPECT_EQ(Said(properties, member), member);
    }
}

TEST_F(Members, Header_EachPropertyIsTheFieldAtItsPlace) {
    const auto header = Given(m_catalog, "Header");
    const char* const members[] = {"Category", "Symbol", "Title", "CatalogType", "UnitsType", "Version"};
    for (const char* const member : members) {
        EXPECT_EQ(Put(header, member, member), S_OK);
    }
    EXPECT_EQ(CellsOf(Row("Header", 0)), "Category Symbol Title CatalogType UnitsType Version");
    EXPECT_EQ(Said(header, "Version"), "Version");
}

TEST_F(Members, Header_OfAFileWithOtherFields_HasEmptyTextsAndTakesNone) {
    Write(SmallCatalog());
    Open();
    const auto header = Given(m_catalog, "Header");
    EXPECT_EQ(Said(header, "Category"), "Small") << "the first field, whatever its name";
    EXPECT_EQ(Said(header, "Version"), "");
    EXPECT_EQ(Put(header, "Version", "2"), S_OK);
    EXPECT_EQ(Said(header, "Version"), "");
    Given(Contents("Header"), "RemoveRow", {0});
    EXPECT_EQ(Said(header, "Category"), "");
    EXPECT_EQ(Put(header, "Category", "none"), S_OK);
    EXPECT_EQ(Said(Contents("Header"), "RowsCount"), "0");
}

TEST_F(Members, Header_NumbersAreTexts) {
    CatalogParts parts;
    parts.m_headerStructure =
        TableXml("Header", FieldXml("number", DoubleType)) + TableXml("Properties", FieldXml("u", TextType));
    parts.m_headerData =
        TableXml("Header", "<row number=\"2.5\" />\n") + TableXml("Properties", "<row u=\"\" />\n");
    Write(parts.Xml());
    Open();
    const auto header = Given(m_catalog, "Header");
    EXPECT_EQ(Said(header, "Category"), "2.5");
    EXPECT_EQ(Put(header, "Category", "3.5"), S_OK);
    EXPECT_EQ(Ask(Given(Row("Header", 0), "FieldByIndex", {0}).Get(), "Value").m_value.vt, VT_R8);
}

TEST_F(Members, HeaderAndProperties_AreTheFirstTwoTablesWhicheverTheyAre) {
    Given(m_catalog, "DeleteTable", {"Properties"});
    EXPECT_EQ(Said(Given(m_catalog, "Properties"), "Units"), "1");
    Given(m_catalog, "DeleteTable", {"T"});
    const auto properties = Given(m_catalog, "Properties");
    EXPECT_EQ(Said(properties, "Units"), "failed");
    EXPECT_NE(Put(properties, "Units", "mm"), S_OK);
    Given(m_catalog, "DeleteTable", {"Header"});
    EXPECT_EQ(Said(Given(m_catalog, "Header"), "Title"), "failed");
}

// ---- Null for a result

template <typename Interface, typename... Parameters, typename... Arguments>
HRESULT WithoutResult(const CComPtr<IDispatch>& object,
                      HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...), Arguments... arguments) {
    return (static_cast<Interface*>(object.Get())->*member)(arguments..., nullptr);
}

TEST_F(Members, NullForTheResult_IsRefusedBeforeAnythingHappens) {
    EXPECT_EQ(WithoutResult(Contents("T"), &IDbTableData::AddRow), E_POINTER);
    EXPECT_EQ(Said(Contents("T"), "RowsCount"), "3");
    const CComVariant sql("select * from T where n = 2");
    BSTR name = nullptr;
    EXPECT_EQ(WithoutResult(m_catalog, &IDbDatabase::Query, sql.bstrVal, &name), E_POINTER);
    EXPECT_EQ(name, nullptr);
    VARIANT_BOOL answered = VARIANT_TRUE;
    EXPECT_EQ(static_cast<IDbDatabase*>(m_catalog.Get())->Query(sql.bstrVal, nullptr, &answered), E_POINTER);
    EXPECT_EQ(answered, VARIANT_FALSE);
    EXPECT_EQ(Said(m_catalog, "TablesCount"), "3");
    // Even if there is nothing to show.
    EXPECT_EQ(WithoutResult(NewObject(__uuidof(DbHeader)), &IDbHeader::get_Title), E_POINTER);
}

}  // namespace
