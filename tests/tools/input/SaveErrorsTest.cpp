#include "input/SaveErrors.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "Quillet/IQuillet.h"
#include "input/LogEntries.h"
#include "support/TemporaryFolder.h"

namespace quillet::tool {
namespace {

using testing::ElementsAre;

// What is told of a database that can't be saved.
std::vector<std::string> WhyNotSaved(DbDatabase& database) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(database.Save(CString(test::Utf8(folder / "out.xml"))));
    std::vector<DbLogEntry> entries;
    database.GetLogEntries(entries);
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [](const DbLogEntry& entry) { return !IsFault(entry); }),
                  entries.end());
    database.Sync();
    return ExplainSaveErrors(database, entries);
}

class SaveErrors : public testing::Test {
protected:
    void SetUp() override {
        m_database.CreateTable("Mine", DbTableInfo::Table);
        Structure().CreateField("name", true, DbFieldDescr::Text);
    }

    DbTableDescr& Structure() { return *m_database.GetTableDescr("Mine"); }
    DbTableRow& AddRow() {
        DbTableData& data = *m_database.GetTableData("Mine");
        return data[data.AddRow()];
    }

    DbDatabase m_database;
};

TEST_F(SaveErrors, TextThatNoCatalogCarries_IsNamedByTableRowAndField) {
    Structure().CreateField("note", false, DbFieldDescr::Text);
    AddRow();
    AddRow()["note"].GetVariant().SetText(CString(std::string("a\x01z")).View());
    EXPECT_THAT(
        WhyNotSaved(m_database),
        ElementsAre("table 'Mine', row 2, field 'note': the text holds U+0001, which a catalog can't carry"));
}

TEST_F(SaveErrors, FieldNamesThatNoCatalogCarries_AreNamed) {
    Structure().CreateField("a&b", false, DbFieldDescr::Text);
    AddRow();
    EXPECT_THAT(
        WhyNotSaved(m_database),
        ElementsAre("Table 'Mine' can't be saved: the field 'a&b' would be saved as 'a&b', which is no "
                    "name in XML"));
}

TEST_F(SaveErrors, FieldsThatAreWrittenAlike_AreBothNamed) {
    Structure().CreateField("a b", false, DbFieldDescr::Text);
    Structure().CreateField("a_b", false, DbFieldDescr::Text);
    AddRow();
    EXPECT_THAT(WhyNotSaved(m_database),
                ElementsAre("Table 'Mine' can't be saved: the fields 'a b' and 'a_b' would both be saved as "
                            "'a_b'"));
}

TEST_F(SaveErrors, TwoTables_AreBothNamed) {
    m_database.CreateTable("Other", DbTableInfo::Table);
    m_database.GetTableDescr("Other")->CreateField(CString("\x02"), false, DbFieldDescr::Text);
    AddRow()["name"].GetVariant().SetText(CString(std::string("\x01")).View());
    EXPECT_THAT(WhyNotSaved(m_database),
                ElementsAre("table 'Other': it can't be written",
                            "table 'Mine', row 1, field 'name': the text holds U+0001, which a catalog can't "
                            "carry"));
}

TEST_F(SaveErrors, OtherEntries_StayAsTheyAre) {
    const DbLogEntry unwritten{DbLogEntry::Kind::SaveFault, "File 'x' could not be written: full"};
    const DbLogEntry unknown{DbLogEntry::Kind::SaveFault, "Error on table \"None\" - body data saving",
                             "None"};
    EXPECT_THAT(
        ExplainSaveErrors(m_database, {unwritten, unknown}),
        ElementsAre("File 'x' could not be written: full", "Error on table \"None\" - body data saving"));
}

}  // namespace
}  // namespace quillet::tool
