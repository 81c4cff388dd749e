#include "Quillet/Db_TableData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Quillet/rows/RowsView.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using Order = std::vector<uint64>;
using Fields = std::vector<uint64>;
using Key = std::vector<CComVariant>;
using Strings = std::vector<std::string>;

std::string Row(const std::string& number, const std::string& text) {
    return "<row n=\"" + number + "\" t=\"" + text + "\" />\n";
}

std::string TableText(const std::string& rows, const std::string& name = "T") {
    return "<table name=\"" + name + "\">\n" + rows + "</table>";
}

// A line without the time at its end.
std::string WithoutSeconds(const std::string& line) {
    const std::string marker = " in: ";
    const std::size_t place = line.find(marker);
    return place == std::string::npos ? line : line.substr(0, place + marker.size());
}

// A table T with the fields n (long) and t (text) in a database without a file.
class DataTest : public testing::Test {
protected:
    DataTest() : m_info(m_database.CreateTable("T", DbTableInfo::Table)) {
        Descr().CreateField("n", true, DbFieldDescr::Long);
        Descr().CreateField("t", false, DbFieldDescr::Text);
        TakeLog(m_database);
        m_database.Sync();
    }

    DbTableDescr& Descr() { return *m_info->GetDescr(); }
    DbTableData& Data() { return *m_info->GetData(); }
    void AddNumber(const CComVariant& number, const char* text = "") {
        DbTableRow& row = Data()[Data().AddRow()];
        row[uint64(0)].GetVariant() = number;
        row[uint64(1)].GetVariant() = CComVariant(text);
    }
    Strings Numbers() {
        Strings numbers;
        for (uint64 i = 0; i < Data().size(); ++i) {
            numbers.push_back(PrintedText(Data()[i][uint64(0)]));
        }
        return numbers;
    }

    DbDatabase m_database;
    DbTableInfo* m_info;
};

TEST_F(DataTest, Construct_IsEmptyAndUninitialized) {
    EXPECT_EQ(Data().size(), 0U);
    EXPECT_FALSE(Data().IsInitialized());
    EXPECT_EQ(Data().GetTableDescr(), &Descr());
    EXPECT_EQ(Data().GetParent(), &m_database);
    EXPECT_NE(Data().GetRows(), nullptr);
    EXPECT_EQ(Data().GetRows()->GetParent(), &Data());
    EXPECT_TRUE(Data().ParseXmlData());
}

TEST_F(DataTest, GetSize_IsThirtyForTheRowsAndTwentySix) {
    EXPECT_EQ(Data().GetSize(), 22U + 8U + 26U);
    EXPECT_EQ(Data().CalcSize(), 22U + 8U + 26U + 8U);
}

TEST_F(DataTest, AddRow_GivesThePositionAndTheDefaults) {
    EXPECT_EQ(Data().AddRow(), 0U);
    EXPECT_EQ(Data().AddRow(), 1U);
    EXPECT_EQ(Data()[1][uint64(0)].GetType(), VT_I4);
    EXPECT_TRUE(Data().IsChanged());
    EXPECT_TRUE(m_database.IsChanged());
    EXPECT_FALSE(Data().IsInitialized()) << "nobody gave data";
}

TEST_F(DataTest, AddRows_GivesThePositionOfTheFirst) {
    EXPECT_EQ(Data().AddRows(3), 0U);
    EXPECT_EQ(Data().AddRows(2), 3U);
    EXPECT_EQ(Data().size(), 5U);
}

TEST_F(DataTest, GetRow_OutOfRange_IsNullAndBracketsARowOfNobody) {
    Data().AddRows(2);
    EXPECT_NE(Data().GetRow(1), nullptr);
    EXPECT_EQ(Data().GetRow(2), nullptr);
    EXPECT_EQ(Data().GetRow(-1), nullptr);
    EXPECT_TRUE(Data()[2].empty());
    EXPECT_TRUE(Data()[~uint64(0)].empty());
    Data()[2].SetValue("n", Long(5));
    EXPECT_EQ(Data()[2]["n"].GetType(), VT_EMPTY);
}

TEST_F(DataTest, Brackets_PositionBeyondThirtyTwoBits_IsARowOfNobody) {
    AddNumber(Long(7));
    EXPECT_TRUE(Data()[uint64(1) << 32].empty());
}

TEST_F(DataTest, DeleteRow_RenumbersAndStamps) {
    for (LONG number = 0; number < 4; ++number) {
        AddNumber(Long(number));
    }
    Data().Sync();
    Data().DeleteRow(1);
    EXPECT_EQ(Numbers(), (Strings{"0", "2", "3"}));
    EXPECT_TRUE(Data().IsChanged());
}

TEST_F(DataTest, DeleteRow_OutOfRange_IsIgnored) {
    Data().AddRows(2);
    Data().Sync();
    Data().DeleteRow(2);
    Data().DeleteRow(uint64(1) << 32);
    Data().DeleteRow(~uint64(0));
    EXPECT_EQ(Data().size(), 2U);
    EXPECT_FALSE(Data().IsChanged());
}

TEST_F(DataTest, Clear_DropsTheRowsAndThePendingTextAndStamps) {
    Data().AddRows(2);
    Data().SetXmlSource(TableText(Row("1", "a")));
    Data().Sync();
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
    EXPECT_TRUE(Data().IsChanged());
    EXPECT_TRUE(Data().IsInitialized()) << "data was given once";
    EXPECT_EQ(Data().GetSize(), 22U + 8U + 26U);
}

TEST_F(DataTest, Update_ForwardsToTheRows) {
    Data().AddRow();
    Data().Update(0, false);
    EXPECT_EQ(Data()[0].size(), 1U);
    Data().Update(0, true);
    EXPECT_EQ(Data()[0].size(), 2U);
}

TEST_F(DataTest, SetXmlSource_IsInitializedButParsedOnFirstUse) {
    Data().SetXmlSource(TableText(Row("1", "a") + Row("2", "b")));
    EXPECT_TRUE(Data().IsInitialized());
    EXPECT_TRUE(TakeLog(m_database).empty()) << "nothing was parsed yet";
    EXPECT_EQ(Data().size(), 2U);
    EXPECT_EQ(TakeLog(m_database).size(), 1U);
    EXPECT_EQ(Data().size(), 2U);
    EXPECT_TRUE(TakeLog(m_database).empty()) << "a second look does not parse again";
    EXPECT_EQ(Numbers(), (Strings{"1", "2"}));
}

TEST_F(DataTest, SetXmlSource_EveryParsingAccessor_SeesTheRows) {
    const CString text(TableText(Row("1", "a")));
    Data().SetXmlSource(text);
    EXPECT_EQ(Data().GetRows()->GetRowsCount(), 1U);
    Data().Clear();
    Data().SetXmlSource(text);
    EXPECT_EQ(Data()[0].size(), 2U);
    Data().Clear();
    Data().SetXmlSource(text);
    EXPECT_NE(Data().GetRow(0), nullptr);
    Data().Clear();
    Data().SetXmlSource(text);
    Data().DeleteRow(0);
    EXPECT_EQ(Data().size(), 0U);
    Data().SetXmlSource(text);
    SaveTarget target;
    EXPECT_TRUE(Data().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), Row("1", "a"));
}

TEST_F(DataTest, SetXmlSource_Bind_ParsesBeforeItBinds) {
    Data().SetXmlSource(TableText(Row("1", "a")));
    DbRows others(nullptr, &Descr());
    Order none;
    Data().Bind(&others, none);
    EXPECT_EQ(Data().size(), 0U);
    EXPECT_TRUE(Data().GetRows()->IsBinded());
    EXPECT_EQ(TakeLog(m_database).size(), 1U);
}

TEST_F(DataTest, SetXmlSource_AddRowDoesNotParse_TheNewRowComesFirst) {
    Data().SetXmlSource(TableText(Row("1", "a")));
    EXPECT_EQ(Data().AddRow(), 0U);
    EXPECT_EQ(Data().AddRows(1), 1U);
    EXPECT_TRUE(TakeLog(m_database).empty());
    EXPECT_EQ(Numbers(), (Strings{"0", "0", "1"}));
}

TEST_F(DataTest, ParseXmlData_ParsedRows_CountAsUnchanged) {
    Data().SetXmlSource(TableText(Row("1", "a")));
    EXPECT_TRUE(Data().ParseXmlData());
    EXPECT_FALSE(Data().IsChanged());
    EXPECT_FALSE(m_database.IsChanged());
    Data()[0][uint64(0)].SetValue(Long(2));
    EXPECT_TRUE(Data().IsChanged());
}

TEST_F(DataTest, ParseXmlData_RowsAddedBefore_StayMarked) {
    Data().SetXmlSource(TableText(Row("1", "a")));
    Data().AddRow();
    EXPECT_TRUE(Data().IsChanged());
    EXPECT_EQ(Data().size(), 2U);
    EXPECT_TRUE(Data().IsChanged());
    EXPECT_TRUE(m_database.IsChanged());
}

TEST_F(DataTest, ParseXmlData_ARowEditedBefore_IsTheOneThatStaysMarked) {
    Data().AddRows(2);
    DbTableRow* const untouched = Data().GetRow(0);
    DbTableRow* const edited = Data().GetRow(1);
    m_database.Sync();
    Data().SetXmlSource(TableText(Row("1", "a")));
    edited->SetValue("n", 7);
    ASSERT_TRUE(Data().ParseXmlData());
    EXPECT_EQ(Numbers(), (Strings{"0", "7", "1"}));
    EXPECT_FALSE(untouched->IsChanged());
    EXPECT_TRUE(edited->IsChanged());
    EXPECT_FALSE(Data()[2].IsChanged());
}

TEST_F(DataTest, ParseXmlData_TextThatIsNoDocument_StaysPending) {
    for (const char* text : {"", "no xml", "<table name='T'>", "<table name='T'><row></table>"}) {
        Data().SetXmlSource(text);
        EXPECT_FALSE(Data().ParseXmlData()) << text;
        EXPECT_EQ(Data().size(), 0U) << text;
        EXPECT_FALSE(Data().ParseXmlData()) << "it is still pending: " << text;
    }
    Data().SetXmlSource(TableText(Row("1", "a")));
    EXPECT_EQ(Data().size(), 1U);
}

TEST_F(DataTest, ParseXmlData_TextThatNamesNoKnownTable_IsFalse) {
    Data().SetXmlSource(TableText(Row("1", "a"), "Unknown"));
    EXPECT_FALSE(Data().ParseXmlData());
    Data().SetXmlSource("<table><row n='1'/></table>");
    EXPECT_FALSE(Data().ParseXmlData());
}

TEST_F(DataTest, ParseXmlData_TextThatNamesAnotherTable_FillsThatTable) {
    DbTableInfo* const other = m_database.CreateTable("Other", DbTableInfo::Table);
    other->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
    Data().SetXmlSource(TableText("<row n='5'/>", "OTHER"));
    EXPECT_TRUE(Data().ParseXmlData());
    EXPECT_EQ(Data().size(), 0U);
    EXPECT_EQ(other->GetData()->size(), 1U);
}

TEST_F(DataTest, ParseXmlData_ARowThatFails_AddsNoRowTwice) {
    Data().SetXmlSource(TableText(Row("1", "a") + "stray text" + Row("2", "b")));
    const uint64 first = Data().GetRows()->GetRowsCount();
    Data().size();
    Data().ParseXmlData();
    EXPECT_EQ(Data().GetRows()->GetRowsCount(), first);
}

TEST_F(DataTest, ParseXmlData_WithoutADatabase_CannotReadTheText) {
    DbTableData data(nullptr, &Descr());
    data.SetXmlSource(TableText(Row("1", "a")));
    EXPECT_FALSE(data.ParseXmlData());
    EXPECT_EQ(data.size(), 0U);
}

TEST_F(DataTest, Save_TextThatCannotBeRead_IsFalse) {
    Data().SetXmlSource("no xml");
    SaveTarget target;
    EXPECT_FALSE(Data().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "");
}

TEST_F(DataTest, Save_RowsInVisibleOrder_StandDirectlyUnderTheElement) {
    AddNumber(Long(1), "a");
    AddNumber(Long(2), "b");
    SaveTarget target;
    EXPECT_TRUE(Data().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), Row("1", "a") + Row("2", "b"));
}

TEST_F(DataTest, Save_BoundRows_WritesTheSelection) {
    for (LONG number = 0; number < 3; ++number) {
        AddNumber(Long(number));
    }
    DbTableData view(&m_database, &Descr());
    Order order = {2, 0};
    view.Bind(Data().GetRows(), order);
    SaveTarget target;
    EXPECT_TRUE(view.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), Row("2", "") + Row("0", ""));
}

TEST_F(DataTest, Save_ARowThatFails_EndsItWithBothLines) {
    AddNumber(Long(1), "a");
    AddNumber(Long(2), "\x01");
    AddNumber(Long(3), "c");
    SaveTarget target;
    EXPECT_FALSE(Data().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), Row("1", "a"));
    EXPECT_EQ(TakeLog(m_database),
              (Strings{"Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), t, 1",
                       "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)"}));
}

TEST_F(DataTest, Save_FieldNamesThatXmlRefuses_DoNotMatterWithoutRows) {
    Descr().CreateField("1", false, DbFieldDescr::Text);
    SaveTarget target;
    EXPECT_TRUE(Data().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "");
    EXPECT_TRUE(TakeLog(m_database).empty());
}

TEST_F(DataTest, Load_Children_BecomeRows) {
    EXPECT_TRUE(Data().Load(ElementOf(TableText(Row("1", "a") + "<!-- remark -->" + Row("2", "b"))).Get()));
    EXPECT_EQ(Numbers(), (Strings{"1", "2"}));
    EXPECT_TRUE(Data().IsInitialized());
    EXPECT_TRUE(Data().IsChanged()) << "only parsing the pending text syncs";
}

TEST_F(DataTest, Load_LogsTheRowsInTheRightNumber) {
    EXPECT_TRUE(Data().Load(ElementOf(TableText("")).Get()));
    EXPECT_TRUE(Data().Load(ElementOf(TableText(Row("1", "a"))).Get()));
    EXPECT_TRUE(Data().Load(ElementOf(TableText(Row("1", "a") + Row("1", "a"))).Get()));
    Strings lines;
    for (const std::string& line : TakeLog(m_database)) {
        lines.push_back(WithoutSeconds(line));
    }
    EXPECT_EQ(lines, (Strings{"Table 'T' [0 rows] data parsed in: ", "Table 'T' [1 row] data parsed in: ",
                              "Table 'T' [2 rows] data parsed in: "}));
}

TEST_F(DataTest, Load_LogLine_EndsInSecondsWithFourDecimals) {
    Data().Load(ElementOf(TableText("")).Get());
    const Strings lines = TakeLog(m_database);
    ASSERT_EQ(lines.size(), 1U);
    const std::string seconds = lines[0].substr(WithoutSeconds(lines[0]).size());
    ASSERT_GE(seconds.size(), 10U) << lines[0];
    EXPECT_EQ(seconds.substr(seconds.size() - 4), " [s]");
    const std::string digits = seconds.substr(0, seconds.size() - 4);
    EXPECT_EQ(digits.find_first_not_of("0123456789"), digits.size() - 5);
    EXPECT_EQ(digits.substr(digits.size() - 4).find_first_not_of("0123456789"), std::string::npos);
}

TEST_F(DataTest, Load_RowsThatStand_AreKept) {
    AddNumber(Long(7));
    EXPECT_TRUE(Data().Load(ElementOf(TableText(Row("1", "a"))).Get()));
    EXPECT_EQ(Numbers(), (Strings{"7", "1"}));
}

TEST_F(DataTest, Load_ARowThatFails_EndsTheLoad) {
    EXPECT_FALSE(Data().Load(ElementOf(TableText(Row("1", "a") + "stray text" + Row("2", "b"))).Get()));
    EXPECT_EQ(Data().size(), 3U) << "the rows were made before they were read";
    EXPECT_EQ(PrintedText(Data()[0][uint64(0)]), "1");
    EXPECT_EQ(Data()[2][uint64(0)].GetType(), VT_EMPTY);
    EXPECT_TRUE(Data().IsInitialized());
    EXPECT_TRUE(TakeLog(m_database).empty());
}

TEST_F(DataTest, Load_RowsOfAnotherWidth_AreReadAsFarAsTheyGo) {
    EXPECT_TRUE(
        Data().Load(ElementOf(TableText("<row n='1'/><row n='2' t='b' u='c'/><row n='3' t='c'/>")).Get()));
    EXPECT_EQ(Numbers(), (Strings{"1", "2", "3"}));
    EXPECT_EQ(Data()[0][uint64(1)].GetType(), VT_EMPTY);
    EXPECT_EQ(Data()[1].size(), 2U);
    EXPECT_EQ(TextOf(Data()[2][uint64(1)].GetValue()), "c");
}

TEST_F(DataTest, Load_WhatIsNoElement_IsFalse) {
    EXPECT_FALSE(Data().Load(nullptr));
    EXPECT_FALSE(Data().IsInitialized());
    EXPECT_FALSE(Data().Load(InvokeByName(ElementOf("<t a='1'/>").Get(), "attributes").Object().Get()));
}

TEST_F(DataTest, SaveAndLoad_Rows_ComeBack) {
    AddNumber(Long(1), "<&>\"'\t\r\n");
    AddNumber(Long(-2), "\u017C\U0001F600");
    SaveTarget target;
    ASSERT_TRUE(Data().Save(target.Automation(), target.Element()));
    Data().Clear();
    EXPECT_TRUE(Data().Load(target.Element()));
    EXPECT_EQ(Numbers(), (Strings{"1", "-2"}));
    EXPECT_EQ(TextOf(Data()[0][uint64(1)].GetValue()), "<&>\"'\t\r\n");
    EXPECT_EQ(TextOf(Data()[1][uint64(1)].GetValue()), "\u017C\U0001F600");
}

TEST_F(DataTest, Destroy_DatabaseFirst_FreeStandingDataWorksOn) {
    auto database = std::make_unique<DbDatabase>();
    DbTableDescr descr(database.get());
    descr.CreateField("n", false, DbFieldDescr::Long);
    DbTableData data(database.get(), &descr);
    data.AddRow();
    database.reset();
    data.AddRow();
    data[0].SetValue("n", CString("x"));
    EXPECT_EQ(data.size(), 2U);
    data[0][uint64(0)].GetVariant() = CComVariant("\x01");
    SaveTarget target;
    EXPECT_FALSE(data.Save(target.Automation(), target.Element()));
    EXPECT_TRUE(data.Load(ElementOf(TableText(Row("1", "a"))).Get()));
    data.Clear();
    EXPECT_EQ(data.size(), 0U);
}

TEST_F(DataTest, Destroy_DatabaseFirst_PendingTextCannotBeRead) {
    auto database = std::make_unique<DbDatabase>();
    DbTableInfo* const info = database->CreateTable("T", DbTableInfo::Table);
    DbTableDescr descr(database.get());
    DbTableData data(database.get(), &descr);
    data.SetXmlSource(TableText(Row("1", "a")));
    EXPECT_NE(info, nullptr);
    database.reset();
    EXPECT_FALSE(data.ParseXmlData());
    EXPECT_EQ(data.size(), 0U);
}

TEST_F(DataTest, Destroy_TableDeletedWhileAViewIsBound_ViewTouchesNothingFreed) {
    AddNumber(Long(1), "text that stands on the heap");
    DbTableDescr ownDescr(nullptr);
    ownDescr.CreateField("n", false, DbFieldDescr::Long);
    DbTableData view(nullptr, &ownDescr);
    Order order = {0};
    view.Bind(Data().GetRows(), order);
    m_database.DeleteTable("T");
    EXPECT_EQ(view.size(), 1U);
    EXPECT_EQ(PrintedText(view[0][uint64(1)]), "text that stands on the heap");
    view[0]["n"].SetValue(Long(2));
    view[0].SetValue("t", CString("new"));
    SaveTarget target;
    view.Save(target.Automation(), target.Element());
    view.AddRow();
    view.DeleteRow(0);
}

TEST_F(DataTest, Destroy_DescriptorFirst_FreeStandingDataTouchesNothingFreed) {
    auto descr = std::make_unique<DbTableDescr>(nullptr);
    descr->CreateField("n", false, DbFieldDescr::Long);
    DbTableData data(nullptr, descr.get());
    data.AddRow();
    descr.reset();
    data.AddRow();
    data.Clear();
    data.AddRows(2);
    EXPECT_EQ(data.size(), 2U);
}

// Catalog files that are read table by table.
class SequentialData : public testing::Test {
protected:
    SequentialData() {
        const std::string structure =
            "<table name=\"T\">\n<field name=\"n\" key=\"true\" type=\"3\" required=\"0\" />\n"
            "<field name=\"t\" key=\"false\" type=\"8\" required=\"0\" />\n</table>\n";
        WriteBytes(
            Path(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<database>\n<header>\n<structure>\n</structure>\n"
            "<data>\n</data>\n</header>\n<body>\n<structure>\n" +
                structure + "</structure>\n<data>\n" + TableText(Row("1", "a") + Row("2", "b")) +
                "\n</data>\n</body>\n</database>\n");
        m_database = std::make_unique<DbDatabase>(CString(Utf8(Path())));
        m_database->GetSource()->SetSequentialAccess(true);
    }

    std::filesystem::path Path() const { return m_folder / "catalog.xml"; }
    Strings Cells(uint64 row) {
        Strings cells;
        for (const DbFieldValue* cell : (*m_database->GetTableData("T"))[row]) {
            cells.push_back(PrintedText(*cell));
        }
        return cells;
    }

    TemporaryFolder m_folder;
    std::unique_ptr<DbDatabase> m_database;
};

TEST_F(SequentialData, CreateField_RowsStillInTheFile_AreReadFirst) {
    EXPECT_TRUE(m_database->GetTableDescr("T")->CreateField("d", false, DbFieldDescr::Double));
    EXPECT_EQ(m_database->GetTableData("T")->size(), 2U);
    EXPECT_EQ(Cells(0), (Strings{"1", "a", "0"}));
    EXPECT_EQ(Cells(1), (Strings{"2", "b", "0"}));
}

TEST_F(SequentialData, DeleteField_RowsStillInTheFile_AreReadFirst) {
    EXPECT_TRUE(m_database->GetTableDescr("T")->DeleteField("n"));
    EXPECT_EQ(Cells(0), (Strings{"a"}));
    EXPECT_EQ(Cells(1), (Strings{"b"}));
}

TEST_F(SequentialData, DeleteField_RowsExtractedButNotParsed_AreParsedFirst) {
    DbTableData* const data = m_database->GetTableData("T");
    EXPECT_TRUE(data->IsInitialized());
    EXPECT_TRUE(m_database->GetTableDescr("T")->DeleteField(0));
    EXPECT_EQ(Cells(1), (Strings{"b"}));
}

TEST_F(SequentialData, Clear_RowsStillInTheFile_AreReadFirst) {
    m_database->GetTableDescr("T")->Clear();
    EXPECT_EQ(m_database->GetTableData("T")->size(), 2U);
    EXPECT_EQ(Cells(1), (Strings{"2", "b"}));
}

TEST_F(SequentialData, CreateFieldThatFails_ReadsNothing) {
    EXPECT_FALSE(m_database->GetTableDescr("T")->CreateField("N", false, DbFieldDescr::Text));
    EXPECT_FALSE(m_database->GetTableDescr("T")->DeleteField("unknown"));
    for (const std::string& line : TakeLog(*m_database)) {
        EXPECT_EQ(line.find("extracted"), std::string::npos) << line;
    }
}

// Databases with a file, and how the file changes.
class DataToFile : public testing::Test {
protected:
    DataToFile() {
        m_database.Create(CString(Utf8(Path())));
        DbTableInfo* const info = m_database.CreateTable("T", DbTableInfo::Table);
        info->GetDescr()->CreateField("n", false, DbFieldDescr::Text);
        info->GetDescr()->CreateField("m", false, DbFieldDescr::Text);
        info->GetData()->AddRow();
        EXPECT_TRUE(Save());
        m_saved = ReadBytes(Path());
        TakeLog(m_database);
    }
    ~DataToFile() override { m_database.GetTableData("T")->Clear(); }

    std::filesystem::path Path() const { return m_folder / "catalog.xml"; }
    bool Save() { return m_database.Save(CString(Utf8(Path()))); }
    DbTableDescr& Descr() { return *m_database.GetTableDescr("T"); }
    DbTableRow& FirstRow() { return (*m_database.GetTableData("T"))[0]; }

    TemporaryFolder m_folder;
    DbDatabase m_database;
    std::string m_saved;
};

TEST_F(DataToFile, Save_TextThatXmlCannotCarry_KeepsTheOldFileWhole) {
    for (const CString& text : {Units({1}), Units({0xD800}), Units({0xFFFE})}) {
        FirstRow()[uint64(1)].SetValue(text);
        EXPECT_FALSE(Save());
        EXPECT_EQ(ReadBytes(Path()), m_saved);
        EXPECT_EQ(TakeLog(m_database),
                  (Strings{"Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), m, 1",
                           "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)",
                           "Error on table \"T\" - body data saving"}));
        EXPECT_TRUE(m_database.IsChanged());
    }
}

TEST_F(DataToFile, Save_SafeNameThatIsNoXmlName_KeepsTheOldFileWhole) {
    Descr().CreateField("2nd", false, DbFieldDescr::Text);
    EXPECT_FALSE(Save());
    EXPECT_EQ(ReadBytes(Path()), m_saved);
    EXPECT_EQ(
        TakeLog(m_database),
        (Strings{"Table 'T' can't be saved: the field '2nd' would be saved as '2nd', which is no name in "
                 "XML",
                 "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), 2nd, 2",
                 "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)",
                 "Error on table \"T\" - body data saving"}));
    Descr().DeleteField("2nd");
    EXPECT_TRUE(Save());
}

TEST_F(DataToFile, Save_TwoFieldsOfOneSafeName_KeepTheOldFileWhole) {
    Descr().CreateField("a b", false, DbFieldDescr::Text);
    Descr().CreateField("a_b", false, DbFieldDescr::Text);
    EXPECT_FALSE(Save());
    EXPECT_EQ(ReadBytes(Path()), m_saved);
    EXPECT_EQ(TakeLog(m_database).front(),
              "Table 'T' can't be saved: the fields 'a b' and 'a_b' would both be saved as 'a_b'");
}

TEST_F(DataToFile, Save_FailsForANewFile_LeavesNone) {
    FirstRow()[uint64(0)].SetValue(Units({2}));
    EXPECT_FALSE(m_database.Save(CString(Utf8(m_folder / "other.xml"))));
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(DataToFile, Save_FieldNameThatXmlCannotCarry_FailsTheStructure) {
    Descr()[0].SetName(Units({'n', 0xD800}));
    FirstRow().SetChanged();
    EXPECT_FALSE(Save());
    EXPECT_EQ(ReadBytes(Path()), m_saved);
    const Strings lines = TakeLog(m_database);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), "Error on table \"T\" - body structure saving");
}

// The search as the format describes it, step by step.
uint64 PlainSearch(uint64 count, const std::vector<DbTableRow::eCmpResult>& results,
                   DbTableRow::eCmpResult& last) {
    int low = 0;
    int high = static_cast<int>(count) - 1;
    last = DbTableRow::CmpEqual;
    while (high - low >= 0) {
        const int middle = (low + high) >> 1;
        last = results[static_cast<std::size_t>(middle)];
        if (last == DbTableRow::CmpEqual) {
            low = middle;
            high = middle - 1;
            break;
        }
        if (last == DbTableRow::CmpLess) {
            high = middle - 1;
        } else {
            low = middle + 1;
        }
    }
    return static_cast<uint64>(low);
}

TEST_F(DataTest, SpatialIndex_EmptyTable_IsZero) {
    Fields fields = {0};
    Order order;
    Key key = {Long(1)};
    EXPECT_EQ(Data().SpatialIndex(fields, order, key), 0U);
    DbTableRow row(nullptr);
    EXPECT_EQ(Data().SpatialIndex(fields, order, row), 0U);
    DbTableDescr::DbIndex* const index = Descr().CreateIndex("i");
    uint64 position = 99;
    EXPECT_EQ(Data().SpatialIndex(index, key.data(), 1, position), DbTableRow::CmpEqual);
    EXPECT_EQ(position, 0U);
}

TEST_F(DataTest, SpatialIndex_ValueBetweenTwoRows_IsThePositionOfTheLarger) {
    for (const LONG number : {10, 20, 30}) {
        AddNumber(Long(number));
    }
    Fields fields = {0};
    Order order;
    const auto search = [&](LONG number) {
        Key key = {Long(number)};
        return Data().SpatialIndex(fields, order, key);
    };
    EXPECT_EQ(search(5), 0U);
    EXPECT_EQ(search(10), 0U);
    EXPECT_EQ(search(15), 1U);
    EXPECT_EQ(search(20), 1U);
    EXPECT_EQ(search(25), 2U);
    EXPECT_EQ(search(30), 2U);
    EXPECT_EQ(search(35), 3U);
}

TEST_F(DataTest, SpatialIndex_EmptyOrder_MeansNothingForARowAndEverythingForAKey) {
    for (const LONG number : {10, 20, 30}) {
        AddNumber(Long(number));
    }
    Fields fields = {0};
    Order order;
    Key key = {Long(30)};
    EXPECT_EQ(Data().SpatialIndex(fields, order, Data()[2]), 0U);
    EXPECT_EQ(Data().SpatialIndex(fields, order, key), 2U);
}

TEST_F(DataTest, SpatialIndex_ByRow_SearchesTheOrder) {
    for (const LONG number : {30, 10, 20}) {
        AddNumber(Long(number));
    }
    Fields fields = {0};
    Order order = {1, 2, 0};
    EXPECT_EQ(Data().SpatialIndex(fields, order, Data()[0]), 2U);
    EXPECT_EQ(Data().SpatialIndex(fields, order, Data()[1]), 0U);
    EXPECT_EQ(Data().SpatialIndex(fields, order, Data()[2]), 1U);
}

TEST_F(DataTest, SpatialIndex_SeveralEqualRows_StopsAtTheFirstItMeets) {
    for (int i = 0; i < 7; ++i) {
        AddNumber(Long(5));
    }
    Fields fields = {0};
    Order order;
    Key key = {Long(5)};
    EXPECT_EQ(Data().SpatialIndex(fields, order, key), 3U);
}

TEST_F(DataTest, SpatialIndex_ByIndex_GivesPlaceAndLastComparison) {
    for (const LONG number : {10, 20, 30}) {
        AddNumber(Long(number));
    }
    Descr().CreateIndex("i", CString("n"));
    DbTableDescr::DbIndex* const index = Descr().FindIndex("i");
    const auto search = [&](LONG number, uint64& position) {
        const CComVariant key[] = {Long(number)};
        return Data().SpatialIndex(index, key, 1, position);
    };
    uint64 position = 99;
    EXPECT_EQ(search(20, position), DbTableRow::CmpEqual);
    EXPECT_EQ(position, 1U);
    EXPECT_EQ(search(25, position), DbTableRow::CmpLess);
    EXPECT_EQ(position, 2U);
    EXPECT_EQ(search(35, position), DbTableRow::CmpGreater);
    EXPECT_EQ(position, 3U);
    EXPECT_EQ(search(5, position), DbTableRow::CmpLess);
    EXPECT_EQ(position, 0U);
}

TEST_F(DataTest, SpatialIndex_ByIndexWithARowOrder_SearchesThatOrder) {
    for (const LONG number : {30, 10, 20}) {
        AddNumber(Long(number));
    }
    Descr().CreateIndex("i", CString("n"));
    DbTableDescr::DbIndex* const index = Descr().FindIndex("i");
    index->GetRowOrder() = {1, 2, 0};
    const CComVariant key[] = {Long(30)};
    uint64 position = 99;
    EXPECT_EQ(Data().SpatialIndex(index, key, 1, position), DbTableRow::CmpEqual);
    EXPECT_EQ(position, 2U);
}

TEST_F(DataTest, SpatialIndex_WithoutIndexOrKey_FailsSoftly) {
    AddNumber(Long(1));
    const CComVariant key[] = {Long(1)};
    uint64 position = 99;
    EXPECT_EQ(Data().SpatialIndex(nullptr, key, 1, position), DbTableRow::CmpEqual);
    EXPECT_EQ(position, 0U);
    Descr().CreateIndex("i", CString("n"));
    EXPECT_EQ(Data().SpatialIndex(Descr().FindIndex("i"), nullptr, 1, position), DbTableRow::CmpEqual);
    EXPECT_EQ(position, 0U);
}

TEST_F(DataTest, SpatialIndex_OrderThatPointsAtNothing_ReadsAsNoRow) {
    AddNumber(Long(1), "a");
    Fields fields = {0, 7};
    Order order = {9, ~uint64(0), uint64(1) << 32};
    Key key = {Long(1), CComVariant("x")};
    EXPECT_LE(Data().SpatialIndex(fields, order, key), 3U);
    EXPECT_LE(Data().SpatialIndex(fields, order, Data()[0]), 3U);
    EXPECT_LE(Data().SpatialIndex(fields, order, Data()[77]), 3U);
}

TEST_F(DataTest, SpatialIndex_OrderEntryBeyondThirtyTwoBits_IsNotTheRowOfItsLowBits) {
    AddNumber(Long(1));
    Fields fields = {0};
    Order order = {uint64(1) << 32};
    Key key = {Long(1)};
    EXPECT_EQ(Data().SpatialIndex(fields, order, key), 1U) << "one is greater than the empty cell of no row";
}

TEST_F(DataTest, SpatialIndex_PendingText_IsReadFirst) {
    Data().SetXmlSource(TableText(Row("1", "a") + Row("2", "b")));
    Fields fields = {0};
    Order order;
    Key key = {Long(3)};
    EXPECT_EQ(Data().SpatialIndex(fields, order, key), 2U);
}

TEST_F(DataTest, SpatialIndex_RandomOrderedRows_MatchTheLiteralLoop) {
    std::mt19937 random(quillet::test::Seed(20250301));
    const char* const texts[] = {"", "a", "A", "b", "Ba", "\u0105", "z"};
    for (int round = 0; round < 60; ++round) {
        Data().Clear();
        const std::size_t count = random() % 40;
        for (std::size_t i = 0; i < count; ++i) {
            AddNumber(Long(static_cast<LONG>(random() % 6)), texts[random() % 7]);
        }
        Fields fields = random() % 2 == 0 ? Fields{0, 1} : Fields{1, 0};
        Order order;
        for (uint64 i = 0; i < count; ++i) {
            order.push_back(i);
        }
        std::stable_sort(order.begin(), order.end(), [&](uint64 left, uint64 right) {
            return Data()[left].CompareEx(fields, Data()[right]) == DbTableRow::CmpLess;
        });
        DbTableDescr::DbIndex index("i");
        index.GetFieldIndexes() = fields;
        index.GetRowOrder() = order;
        for (int probe = 0; probe < 20; ++probe) {
            const CComVariant number = Long(static_cast<LONG>(random() % 8) - 1);
            const CComVariant text = CComVariant(texts[random() % 7]);
            Key key = fields[0] == 0 ? Key{number, text} : Key{text, number};
            std::vector<DbTableRow::eCmpResult> results;
            for (const uint64 position : order) {
                results.push_back(DbTableRow::CompareEx(fields, key, Data()[position]));
            }
            DbTableRow::eCmpResult last{};
            const uint64 expected = PlainSearch(count, results, last);
            ASSERT_EQ(Data().SpatialIndex(fields, order, key), expected);
            uint64 place = 99;
            ASSERT_EQ(Data().SpatialIndex(&index, key.data(), static_cast<int>(key.size()), place), last);
            ASSERT_EQ(place, expected);
            DbTableRow& keyRow = Data()[Data().AddRow()];
            keyRow[uint64(0)].GetVariant() = number;
            keyRow[uint64(1)].GetVariant() = text;
            ASSERT_EQ(Data().SpatialIndex(fields, order, keyRow), expected);
            Data().DeleteRow(Data().size() - 1);
            // It is a valid insertion point for the key, or an equal row.
            if (expected < count && results[expected] != DbTableRow::CmpEqual) {
                ASSERT_EQ(results[expected], DbTableRow::CmpLess);
            }
            if (expected > 0 && (expected == count || results[expected] != DbTableRow::CmpEqual)) {
                ASSERT_EQ(results[expected - 1], DbTableRow::CmpGreater);
            }
        }
    }
}

TEST_F(DataTest, CountWhere_CountsTheRowsThatAQueryFinds) {
    for (LONG i = 0; i < 10; ++i) {
        AddNumber(Long(i), i % 2 == 0 ? "even" : "odd");
    }
    for (const char* const condition :
         {"n >= 3", "n > 2 AND t = 'Odd'", "n=4", "(n < 2 or n > 7) and t = 'even'", "not (n = 1)", "t > 'f'",
          "n = 100"}) {
        CString name;
        ASSERT_TRUE(m_database.Query(CString("select n from T where ") + condition, name)) << condition;
        EXPECT_EQ(Data().CountWhere(condition),
                  static_cast<std::int64_t>(m_database.GetTableData(name)->size()))
            << condition;
        m_database.DropAnswers();
    }
    EXPECT_EQ(Data().CountWhere(""), 10);
    EXPECT_TRUE(Descr().GetFilters().empty());
}

TEST_F(DataTest, CountWhere_NoCondition_IsMinusOneAndTheLogSaysWhy) {
    AddNumber(Long(1));
    for (const char* const text : {"nowhere = 1", "n >", "n ? 1"}) {
        TakeLog(m_database);
        EXPECT_EQ(Data().CountWhere(text), -1) << text;
        EXPECT_FALSE(TakeLog(m_database).empty()) << text;
    }
    EXPECT_EQ(Data().CountWhere("(n = 1"), -1);
    EXPECT_TRUE(Descr().GetFilters().empty());
    DbTableData alone(nullptr, &Descr());
    EXPECT_EQ(alone.CountWhere("n = 1"), -1);
}

TEST_F(DataTest, CountWhere_RowsThatAreStillText_AreReadFirst) {
    Data().SetXmlSource(TableText(Row("1", "a") + Row("2", "b") + Row("3", "c")));
    EXPECT_EQ(Data().CountWhere("n >= 2"), 2);
    EXPECT_EQ(quillet::RowsView(*Data().GetRows()).MadeRow(0), nullptr);
}

}  // namespace
