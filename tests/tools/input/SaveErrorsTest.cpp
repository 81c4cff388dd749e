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

TEST_F(SaveErrors, FileThatCantBeWritten_GivesTheReasonWithoutThePath) {
    const test::TemporaryFolder folder;
    const CString path(test::Utf8(folder / "none" / "out.xml"));
    EXPECT_FALSE(m_database.Save(path));
    std::vector<DbLogEntry> entries;
    m_database.GetLogEntries(entries);
    ASSERT_EQ(entries.back().m_text,
              "File '" + path + "' could not be written: " + m_database.LastSaveError());
    EXPECT_THAT(ExplainSaveErrors(m_database, {entries.back()}),
                ElementsAre(m_database.LastSaveError().ToUtf8()));
    m_database.Sync();
}

TEST_F(SaveErrors, OtherEntries_AreGivenBesideTheTable) {
    const DbLogEntry malformed{DbLogEntry::Kind::MalformedRows, "Table 'Mine' has malformed rows", "Mine"};
    const DbLogEntry failed{DbLogEntry::Kind::SaveFault, "Error on table \"Mine\" - body data saving",
                            "Mine"};
    EXPECT_THAT(ExplainSaveErrors(m_database, {malformed, failed}),
                ElementsAre("Table 'Mine' has malformed rows", "table 'Mine': it can't be written"));
}

}  // namespace
}  // namespace quillet::tool
