#include "Quillet/registry/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <tuple>

#include "support/ReadingTest.h"
#include "support/RecordHelpers.h"

namespace {

using quillet::Log;
using Kind = DbLogEntry::Kind;
using testing::Contains;
using testing::ElementsAre;

// What an entry is about: kind, table, row, field.
using About = std::tuple<Kind, std::string, uint64, std::string>;

std::vector<About> Abouts(DbDatabase& database) {
    std::vector<DbLogEntry> entries;
    database.GetLogEntries(entries);
    std::vector<About> abouts;
    for (const DbLogEntry& entry : entries) {
        abouts.emplace_back(entry.m_kind, entry.m_table.ToUtf8(), entry.m_row, entry.m_field.ToUtf8());
    }
    return abouts;
}

DbTableInfo& AddTable(DbDatabase& database, const char* name, const std::vector<const char*>& fields) {
    DbTableInfo& info = *database.CreateTable(name, DbTableInfo::Table);
    for (const char* field : fields) {
        info.GetDescr()->CreateField(field, false, DbFieldDescr::Text);
    }
    return info;
}

// ---- the log

TEST(Log, MoveTo_TextsOrEntries_AreTheSameLines) {
    Log log;
    for (int round = 0; round < 2; ++round) {
        log.Add(Kind::Refused, "first");
        log.Print(Kind::ReadFault, Log::Place("T", 7), "%s of %d", "second", 2);
        std::vector<DbLogEntry> entries;
        std::vector<CString> lines;
        if (round == 0) {
            log.MoveTo(lines);
            EXPECT_THAT(lines, ElementsAre(CString("first"), CString("second of 2")));
        } else {
            log.MoveTo(entries);
            ASSERT_EQ(entries.size(), 2U);
            EXPECT_EQ(entries[0].m_text, CString("first"));
            EXPECT_EQ(entries[0].m_kind, Kind::Refused);
            EXPECT_TRUE(entries[0].m_table.IsEmpty());
            EXPECT_EQ(entries[0].m_row, 0U);
            EXPECT_EQ(entries[1].m_text, CString("second of 2"));
            EXPECT_EQ(entries[1].m_kind, Kind::ReadFault);
            EXPECT_EQ(entries[1].m_table, CString("T"));
            EXPECT_EQ(entries[1].m_row, 7U);
        }
        EXPECT_EQ(log.Count(), 0U);
    }
}

// ---- what the lines of a database are about

TEST(LogEntries, TablesOfASoundCatalog_AreReportsWithTheirNames) {
    for (const quillet::test::Reading reading :
         {quillet::test::Reading::Whole, quillet::test::Reading::Sequential}) {
        const quillet::test::TemporaryFolder folder;
        quillet::test::WriteBytes(folder / "small.xml", quillet::test::SmallCatalog());
        const auto database = quillet::test::Open(folder / "small.xml", reading);
        database->LoadTables();
        for (int i = 0; i < database->GetTablesCount(); ++i) {
            database->GetTableData(static_cast<std::size_t>(i))->ParseXmlData();
        }
        database->RenameTable("Alpha", "Renamed");
        const std::vector<About> abouts = Abouts(*database);
        EXPECT_GT(abouts.size(), 5U);
        for (const auto& [kind, table, row, field] : abouts) {
            EXPECT_EQ(kind, Kind::Report);
            EXPECT_NE(table, "");
            EXPECT_EQ(row, 0U);
            EXPECT_EQ(field, "");
        }
        EXPECT_EQ(abouts.back(), About(Kind::Report, "Renamed", 0, ""));
        database->Sync();
    }
}

TEST(LogEntries, TakenName_IsRefusedWithTheTable) {
    DbDatabase database;
    AddTable(database, "T", {});
    Abouts(database);
    EXPECT_EQ(database.CreateTable("t", DbTableInfo::Table), nullptr);
    EXPECT_THAT(Abouts(database), ElementsAre(About(Kind::Refused, "t", 0, "")));
}

TEST(LogEntries, Queries_TellTheirTextTheirFaultsAndWhatBecameOfThem) {
    DbDatabase database;
    AddTable(database, "Bolts", {"d", "l"});
    Abouts(database);
    const About read(Kind::QueryRead, "", 0, "");
    const About report(Kind::QueryReport, "", 0, "");
    const auto fault = [](const char* table, const char* field) {
        return About(Kind::QueryFault, table, 0, field);
    };
    CString name;
    EXPECT_TRUE(database.Query("select d from Bolts", name));
    EXPECT_THAT(Abouts(database), ElementsAre(read, report, About(Kind::Report, name.ToUtf8(), 0, ""),
                                              About(Kind::QueryReport, name.ToUtf8(), 0, "")));
    EXPECT_FALSE(database.Query("select d from Bolts where d 1", name));
    EXPECT_THAT(Abouts(database), ElementsAre(read, fault("", ""), report));
    EXPECT_FALSE(database.Query("select e from Bolts", name));
    EXPECT_THAT(Abouts(database), ElementsAre(read, fault("bolts", "e"), report));
    EXPECT_FALSE(database.Query("Nuts", name));
    EXPECT_THAT(Abouts(database), ElementsAre(fault("nuts", "")));
    EXPECT_TRUE(database.inner_join("Bolts", "Nuts", "d", "=", "d").IsEmpty());
    EXPECT_THAT(Abouts(database), ElementsAre(fault("Nuts", "")));
}

std::vector<std::string> Messages(DbDatabase& database) {
    std::vector<DbLogEntry> entries;
    database.GetLogEntries(entries);
    std::vector<std::string> messages;
    for (const DbLogEntry& entry : entries) {
        messages.push_back(entry.Message().ToUtf8());
    }
    return messages;
}

TEST(LogEntries, Message_LeavesOutWhatEveryLineOfAnAnalysisBeginsWith) {
    DbDatabase database;
    AddTable(database, "Bolts", {"d", "l"});
    Abouts(database);
    CString name;
    EXPECT_FALSE(database.Query("select e from Bolts where d 1", name));
    EXPECT_THAT(Messages(database),
                ElementsAre("query 'select e from bolts where d 1'", "no 'e' field found in 'bolts' table",
                            "invalid condintion 'd 1'", "failed"));
    EXPECT_FALSE(database.Query("select d", name));
    EXPECT_THAT(Messages(database), Contains("check 'SELECT' and/or 'FROM' statement"));
    EXPECT_FALSE(database.Query("SQL Analyze - x", name));
    EXPECT_THAT(Messages(database), ElementsAre("table 'sql analyze - x' not found"));
    EXPECT_TRUE(database.inner_join("Bolts", "Nuts", "d", "=", "d").IsEmpty());
    EXPECT_THAT(Messages(database), ElementsAre("no table 'Nuts' found"));
}

TEST(LogEntries, Message_OfOtherLines_IsTheWholeText) {
    EXPECT_EQ((DbLogEntry{Kind::QueryFault, "Query 'x' stands on itself"}).Message(),
              CString("Query 'x' stands on itself"));
    EXPECT_EQ((DbLogEntry{Kind::ReadFault, "SQL Analyze - x"}).Message(), CString("SQL Analyze - x"));
}

class NoCatalogEntries : public quillet::test::ReadingTest {
protected:
    NoCatalogEntries() : m_database(OpenXml("<database><header/></database>")) { m_database->LoadTables(); }
    ~NoCatalogEntries() override { m_database->Sync(); }

    std::unique_ptr<DbDatabase> m_database;
};

INSTANTIATE_TEST_SUITE_P(Readings, NoCatalogEntries,
                         testing::Values(quillet::test::Reading::Whole, quillet::test::Reading::Sequential),
                         quillet::test::ReadingName);

TEST_P(NoCatalogEntries, AreToldApartFromOtherFaults) {
    EXPECT_THAT(Abouts(*m_database), Contains(About(Kind::NoCatalog, "", 0, "")));
}

TEST_P(NoCatalogEntries, LastReadFault_SaysSoBeforeAndAfterReadingItWhole) {
    EXPECT_EQ(m_database->LastReadFault().m_kind, Kind::NoCatalog);
    EXPECT_EQ(m_database->LastReadFault().m_text, m_database->LastReadError());
    EXPECT_FALSE(m_database->LoadWhole());
    EXPECT_EQ(m_database->LastReadFault().m_kind, Kind::NoCatalog);
    EXPECT_EQ(m_database->LastReadFault().m_text, m_database->LastReadError());
}

TEST(LogEntries, LastReadFault_WhereMoreIsKnown_IsAReadFault) {
    const quillet::test::TemporaryFolder folder;
    quillet::test::WriteBytes(folder / "broken.xml", "<database>\n</header>");
    const auto broken = quillet::test::Open(folder / "broken.xml", quillet::test::Reading::Whole);
    broken->LoadTables();
    EXPECT_EQ(broken->LastReadFault().m_kind, Kind::ReadFault);
    EXPECT_THAT(broken->LastReadFault().m_text.ToUtf8(), testing::StartsWith("line 2: "));
    EXPECT_EQ(broken->LastReadFault().m_text, broken->LastReadError());

    std::string surplus = quillet::test::SmallCatalog();
    const std::size_t rows = surplus.rfind("<table name=\"Alpha\">");
    surplus.insert(rows, "<table name=\"Ghost\"><row/></table>");
    quillet::test::WriteBytes(folder / "ghost.xml", surplus);
    const auto ghost = quillet::test::Open(folder / "ghost.xml", quillet::test::Reading::Whole);
    ghost->LoadTables();
    EXPECT_EQ(ghost->LastReadFault().m_kind, Kind::ReadFault);
    EXPECT_EQ(ghost->LastReadFault().m_table, CString("Ghost"));
    EXPECT_EQ(ghost->LastReadFault().m_text, ghost->LastReadError());
}

TEST(LogEntries, LastReadFault_OfASoundCatalog_HasNoText) {
    const quillet::test::TemporaryFolder folder;
    quillet::test::WriteBytes(folder / "small.xml", quillet::test::SmallCatalog());
    const auto database = quillet::test::Open(folder / "small.xml", quillet::test::Reading::Sequential);
    EXPECT_TRUE(database->LoadWhole());
    EXPECT_TRUE(database->LastReadFault().m_text.IsEmpty());
}

TEST(LogEntries, SurplusValues_CountTheFirstRowFrom1) {
    DbDatabase database;
    DbTableInfo& info = AddTable(database, "T", {"a"});
    Abouts(database);
    info.GetData()->SetXmlSource(R"(<table name="T"><row a="1"/><row a="2"/><row a="3" b="4"/></table>)");
    info.GetData()->AddRows(2);
    EXPECT_TRUE(info.GetData()->ParseXmlData());
    EXPECT_THAT(Abouts(database), Contains(About(Kind::ReadFault, "T", 5, "")))
        << "after the rows that were there";
}

TEST(LogEntries, SurplusColumnsOfRecords_CountTheFirstRowFrom1) {
    using quillet::test::Column;
    DbDatabase database;
    const DBACCESS_RECORD narrow = quillet::test::Record({Column("a", "x")});
    const DBACCESS_RECORD wide = quillet::test::Record({Column("a", "x"), Column("b", "y")});
    database.CopyTableFrom({"T", quillet::test::Rows({narrow, narrow, wide, wide})});
    EXPECT_THAT(Abouts(database), Contains(About(Kind::ReadFault, "T", 3, "")));
}

TEST(LogEntries, ValueThatCantBeSaved_IsNamedByTableRowAndField) {
    const quillet::test::TemporaryFolder folder;
    DbDatabase database;
    DbTableInfo& info = AddTable(database, "T", {"a", "b"});
    for (int i = 0; i < 3; ++i) {
        info.GetData()->AddRow();
    }
    info.GetData()->GetRow(1)->SetValue("b", CString("\x1F"));
    Abouts(database);
    EXPECT_FALSE(database.Save(CString(quillet::test::Utf8(folder / "out.xml"))));
    EXPECT_THAT(Abouts(database),
                ElementsAre(About(Kind::Report, "Header", 0, ""), About(Kind::Report, "Properties", 0, ""),
                            About(Kind::SaveTrace, "T", 2, "b"), About(Kind::SaveTrace, "T", 0, ""),
                            About(Kind::SaveFault, "T", 0, "")));
    database.Sync();
}

TEST(LogEntries, FieldNameThatCantBeSaved_IsNamedBesideTheRow) {
    const quillet::test::TemporaryFolder folder;
    DbDatabase database;
    AddTable(database, "T", {"a&b"}).GetData()->AddRow();
    EXPECT_FALSE(database.Save(CString(quillet::test::Utf8(folder / "out.xml"))));
    const std::vector<About> abouts = Abouts(database);
    EXPECT_THAT(abouts, Contains(About(Kind::SaveFault, "T", 0, "a&b")));
    EXPECT_THAT(abouts, Contains(About(Kind::SaveTrace, "T", 1, "a&b")));
    database.Sync();
}

TEST(LogEntries, CallsWithoutEffect_AreRefused) {
    DbDatabase database;
    DbTableDef definition(&database);
    EXPECT_FALSE(definition.Append());
    EXPECT_THAT(Abouts(database), ElementsAre(About(Kind::Refused, "", 0, "")));
}

}  // namespace
